#pragma once

#include <string_view>

namespace quorvane {

// True for the bytes of a binary property list that a reader can unfold in little memory and without deep
// recursion.
//
// In the binary form values refer to each other by number, so a few bytes can stand for more values than
// there is memory. Refused are lists in which containers are shared or contain themselves, which nest deeper
// than 512, or whose strings and data, counted once for every reference, exceed a mebibyte; lists that are
// written by ordinary means do none of this. Also false for a damaged list. Takes time in proportion to the
// length.
bool unfoldsWithinBounds(std::string_view binaryList);

} // namespace quorvane
