#pragma once

#include <QColor>

// Every colour of the windows. Each text has a contrast of at least 4.5 to 1 against each background that it
// stands on, a selection included.

namespace quorvane::shades {

// Texts.
inline constexpr QColor text(0x20, 0x20, 0x24);
inline constexpr QColor faintText(0x63, 0x63, 0x6b); // hints, titles of columns, what cannot be changed
inline constexpr QColor failureText(0xb0, 0x00, 0x20);

// Texts of cells, by the names of their colours.
inline constexpr QColor black(0x00, 0x00, 0x00);
inline constexpr QColor red(0xcc, 0x00, 0x00);
inline constexpr QColor orange(0xb0, 0x46, 0x00);
inline constexpr QColor blue(0x00, 0x00, 0xff);
inline constexpr QColor grey(0x63, 0x63, 0x6b);

// Texts of what came, went and changed, of which words tell as well.
inline constexpr QColor added(0x14, 0x66, 0x2e);
inline constexpr QColor removed(0xa8, 0x10, 0x24);
inline constexpr QColor changed(0x8a, 0x4b, 0x00);

// Backgrounds.
inline constexpr QColor table(0xff, 0xff, 0xff);
inline constexpr QColor band(0xf5, 0xf5, 0xf5); // white of level 0.8, a fifth opaque, on the table
inline constexpr QColor selection(0xdc, 0xea, 0xfc);
inline constexpr QColor addedBand(0xe8, 0xf7, 0xec);
inline constexpr QColor removedBand(0xfd, 0xea, 0xec);
inline constexpr QColor changedBand(0xfd, 0xf4, 0xdf);
inline constexpr QColor window(0xf7, 0xf7, 0xf8);
inline constexpr QColor button(0xf2, 0xf2, 0xf4);
inline constexpr QColor sheet(0xf6, 0xf6, 0xf8);

// Lines.
inline constexpr QColor line(0xd8, 0xd8, 0xdc);
inline constexpr QColor faintLine(0xe6, 0xe6, 0xea);
inline constexpr QColor keyboardFrame(0x5b, 0x8d, 0xc9);

} // namespace quorvane::shades
