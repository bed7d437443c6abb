#pragma once

#include <QWidget>

#include <gtest/gtest.h>

#include <optional>
#include <string>

// What a person reads in windows and hears of them, compared with the words that are kept beside these tests.

namespace quorvane::test {

// The texts of the widget and of all below it, shown or not, a line each: titles, labels, hints and tool
// tips, names and descriptions for screen readers, menu items with their keys, and titles of columns.
std::string wordsOf(const QWidget& widget);

// The first line that differs, as it is kept and as it is seen. None when there is none.
std::optional<std::string> differenceOfWords(const std::string& kept, const std::string& seen);

// Whether `seen` is what is kept under the name. While pictures are renewed, keeps `seen` and succeeds.
testing::AssertionResult readsAsKept(const std::string& name, const std::string& seen);

} // namespace quorvane::test
