#pragma once

#include <QImage>
#include <QWidget>

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

// Pictures of what a person sees, compared with those that are kept beside these tests.

namespace quorvane::test {

// From now on the window is on a screen with two dots for each logical pixel.
void useTwoDots(QWidget& window);

// The widget as it is painted on its screen, once it is laid out and what moves has come to rest.
QImage pictureOf(QWidget& widget);

// The pictures one below the other, with a gap between them.
QImage stacked(const std::vector<QImage>& pictures);

// Where the pictures differ: red on what the kept one shows. None when they do not. Pictures of two sizes
// differ throughout.
//
// A dot differs when one of its channels is more than 4 of 255 away, which is less than lies between a band
// and the table. No dot may: one and the same font, drawn by one and the same library, leaves no room for
// more than the rounding of another processor.
std::optional<QImage> differenceOf(const QImage& kept, const QImage& seen);

// Whether `seen` is what is kept under the name. When it is not, the two and their difference are written
// side by side into the build folder. While pictures are renewed, keeps `seen` and succeeds.
testing::AssertionResult looksAsKept(const std::string& name, const QImage& seen);

// From now on looksAsKept() keeps what it is given.
void renewPictures();
bool areRenewed();

} // namespace quorvane::test
