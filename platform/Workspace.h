#pragma once

#include <QIcon>

#include <string>
#include <unordered_map>

namespace quorvane {

// What the desktop knows of files. User interface thread only.
class Workspace {
public:
    Workspace() = default;
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;
    virtual ~Workspace() = default;

    // The icon by which a person knows the file: an application bundle's own, else the desktop's for the type
    // of the file. A generic one when nothing exists at `path` or nothing better is known. Remembered for the
    // run.
    QIcon iconForFile(const std::string& path);

    // Opens the file with the desktop's program for it, without waiting for that program. False when there is
    // no such file or the desktop has nothing to open it with.
    bool openFile(const std::string& path);

    // Whether the desktop has a program for files of the type, such as "text/html".
    virtual bool hasProgramFor(const std::string& mimeType);

private:
    std::unordered_map<std::string, QIcon> m_icons; // by path
};

} // namespace quorvane
