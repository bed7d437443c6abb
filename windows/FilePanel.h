#pragma once

#include <QUrl>

#include <string>

namespace quorvane {

// The path that a file panel's answer stands for in rules and files: the address as text, fully escaped,
// without "file://" and with a space for every "%20". Deliberate: any other escape stays, so a "#" in a name
// comes out as
// "%23".
std::string pathFromPanel(const QUrl& url);

} // namespace quorvane
