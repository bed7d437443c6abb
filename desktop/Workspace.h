#pragma once

#include "platform/FileRoot.h"

#include <QIcon>

#include <map>
#include <optional>
#include <string>
#include <utility>

namespace quorvane::desktop {

// File icons and the desktop's programs for files. User interface thread only.
class Workspace {
public:
    Workspace() = default;
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;
    virtual ~Workspace() = default;

    // The icon of the file within the root: an application bundle's own, else the desktop's for the type of
    // the file. A generic one when nothing exists at `path`, nothing better is known or there is no root.
    // Cached until the program ends.
    QIcon iconForFile(
        const std::string& path, const std::optional<platform::FileRoot>& root = platform::FileRoot());

    // Opens the file with the desktop's program for it, without waiting for that program. False when there is
    // no such file or the desktop has no program for it.
    bool openFile(const std::string& path);

    // Whether the desktop has a program for files of the MIME type, such as "text/html".
    virtual bool hasProgramFor(const std::string& mimeType);

private:
    std::map<std::pair<std::optional<platform::FileRoot>, std::string>, QIcon> m_icons; // by root and path
};

} // namespace quorvane::desktop
