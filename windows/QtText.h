#pragma once

#include <QString>

#include <string>
#include <string_view>

// Where text crosses between the core's UTF-8 and the windows.

namespace quorvane {

QString toQt(std::string_view text);
std::string fromQt(const QString& text);

} // namespace quorvane
