#pragma once

#include <QString>

// Texts of rules and files for the places where Qt would take them for markup or placeholders.

namespace quorvane::windows {

// A tool tip that shows `text` as it is, wrapped; of a very long one the beginning. Empty for no text.
QString plainToolTip(const QString& text);

// A window title that shows `text` as it is, "[*]" included.
QString plainTitle(const QString& text);

// With break points, which take no room, wherever `text` goes on for long without one.
QString withBreakPoints(const QString& text);

} // namespace quorvane::windows
