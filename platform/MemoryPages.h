#pragma once

#include <cstddef>

// Requests to the kernel about a part of this process's memory. They concern the pages that lie wholly within
// the part; nothing happens where there is none, or where the kernel does not grant the request. Any thread.

namespace quorvane::platform {

// Before the part is written for the first time: asks for large pages, of 2 MB, if it is long enough for
// them. For 145 MB the kernel then makes 70 pages and not 35,000.
void useLargePages(char* begin, std::size_t size);

// Returns the pages' memory. What they hold is lost; they stay usable.
void discardPages(char* begin, std::size_t size);

} // namespace quorvane::platform
