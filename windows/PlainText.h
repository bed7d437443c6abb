#pragma once

#include <QString>

// Texts of rules and files, escaped where Qt would interpret them as markup or placeholders. Pure.

namespace quorvane::windows {

// A tool tip that shows `text` verbatim, wrapped; a very long one is truncated. Empty for an empty text.
QString plainToolTip(const QString& text);

// A window title that shows `text` verbatim, including "[*]".
QString plainTitle(const QString& text);

// `text` with zero-width break points inserted into very long words.
QString withBreakPoints(const QString& text);

} // namespace quorvane::windows
