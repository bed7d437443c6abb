#pragma once

#include <QString>
#include <QUrl>

#include <optional>
#include <string>

class QWidget;

namespace quorvane {

// The path that a file panel's answer stands for in rules and files: the address as text, fully escaped,
// without "file://" and with a space for every "%20". Deliberate: any other escape stays, so a "#" in a name
// comes out as "%23".
std::string pathFromPanel(const QUrl& url);

// The folder that a panel opens in for `startPath`: that folder, else the nearest one above it that exists;
// the home folder when the path does not begin with "/".
QString folderForPanel(const std::string& startPath);

// Lets a person choose one file or folder of any kind in a panel over `parent`, which is told its title, and
// waits for the answer while windows go on being painted. A file at `startPath` is chosen beforehand. The
// address of a folder ends with "/". None when the panel was left, or when `parent` went away meanwhile.
std::optional<QUrl> chooseFileOrFolder(QWidget& parent, const QString& title, const std::string& startPath);

} // namespace quorvane
