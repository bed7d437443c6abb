#pragma once

class QApplication;
class QLocale;

namespace quorvane::windows {

// From now on windows speak the first language that `locale` asks for and that they know, English among them,
// and the toolkit's own buttons and panels with them; where they know none, English. They are laid out in the
// direction of the locale all the same. What names things of the rules (classes, types, operations, notices)
// stays as it is. To be called once, before the first window.
void speakLanguageOf(QApplication& application, const QLocale& locale);

} // namespace quorvane::windows
