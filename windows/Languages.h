#pragma once

class QApplication;
class QLocale;

namespace quorvane::windows {

// Sets the language of windows, and of the toolkit's own buttons and panels, to the first language of
// `locale` that is available (English is), else to English. The layout direction is that of the locale in any
// case. Terms of the rules (classes, types, operations, notices) are not translated. Call it once, before the
// first window.
void speakLanguageOf(QApplication& application, const QLocale& locale);

} // namespace quorvane::windows
