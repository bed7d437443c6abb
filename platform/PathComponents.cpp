#include "platform/PathComponents.h"

#include <cstddef>

namespace quorvane::platform {

std::string_view lastPathComponent(std::string_view path)
{
    const std::size_t last = path.find_last_not_of('/');
    if (last == std::string_view::npos)
        return path.substr(0, 1);
    const std::size_t slash = path.rfind('/', last);
    const std::size_t first = slash == std::string_view::npos ? 0 : slash + 1;
    return path.substr(first, last + 1 - first);
}

std::string deletingLastPathComponent(std::string_view path)
{
    const std::size_t end = path.find_last_not_of('/');
    const std::size_t slash = end == std::string_view::npos ? std::string_view::npos : path.rfind('/', end);
    std::string shorter;
    for (const char c : path.substr(0, slash == std::string_view::npos ? 0 : slash)) {
        if (c != '/' || shorter.empty() || shorter.back() != '/')
            shorter.push_back(c);
    }
    while (shorter.size() > 1 && shorter.back() == '/')
        shorter.pop_back();
    const bool absolute = !path.empty() && path.front() == '/';
    return shorter.empty() && absolute ? "/" : shorter;
}

} // namespace quorvane::platform
