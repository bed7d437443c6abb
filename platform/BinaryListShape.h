#pragma once

#include <string_view>

namespace quorvane {

// True for the bytes of a binary property list that no reader can unfold into more than the bytes hold.
//
// In the binary form values refer to each other by number. A list in which containers are shared, or contain
// themselves, can stand for more values than there is memory; lists that are written by ordinary means share
// at most strings and numbers. Also false for a damaged list. Takes time in proportion to the length.
bool unfoldsWithinBounds(std::string_view binaryList);

} // namespace quorvane
