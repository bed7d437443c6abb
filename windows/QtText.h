#pragma once

#include <QString>

#include <cstdint>
#include <string>
#include <string_view>

// Where text crosses between the core's UTF-8 and the windows.

namespace quorvane::windows {

QString toQt(std::string_view text);
std::string fromQt(const QString& text);
// As the desktop's language writes numbers.
QString inWords(std::uint64_t number);

} // namespace quorvane::windows
