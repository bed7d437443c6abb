#pragma once

#include <QString>

#include <string>
#include <string_view>

// The one place where text crosses between the core's UTF-8 and Qt.

namespace quorvane {

QString toQt(std::string_view text);
std::string fromQt(const QString& text);

} // namespace quorvane
