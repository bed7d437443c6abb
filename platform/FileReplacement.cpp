#include "platform/FileReplacement.h"

#include "platform/PathComponents.h"
#include "platform/SystemError.h"

#include <cerrno>
#include <cstdio> // rename
#include <cstdlib> // mkostemp

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvane::platform {

FileReplacement::FileReplacement(const std::string& path)
    : m_path(path)
    , m_folder(deletingLastPathComponent(path))
{
    if (m_folder.empty())
        m_folder = ".";
    // Not derived from the path's own name: that could get too long.
    m_name = m_folder + "/.quorvane.XXXXXX";
    m_file = FileDescriptor(mkostemp(m_name.data(), O_CLOEXEC));
    if (!m_file) {
        m_error = systemError(errno);
        m_name.clear();
    }
}

FileReplacement::~FileReplacement()
{
    if (!m_name.empty())
        unlink(m_name.c_str());
}

bool FileReplacement::isForbidden() const
{
    return m_error == std::errc::permission_denied || m_error == std::errc::operation_not_permitted;
}

bool FileReplacement::canStandFor(const struct stat& old)
{
    struct stat own { };
    if (old.st_nlink != 1 || fstat(m_file.get(), &own) != 0)
        return false;
    const bool isAlready = own.st_uid == old.st_uid && own.st_gid == old.st_gid;
    return isAlready || fchown(m_file.get(), old.st_uid, old.st_gid) == 0;
}

std::error_code FileReplacement::takePlace(mode_t permissions)
{
    if (fchmod(m_file.get(), permissions) != 0 || fsync(m_file.get()) != 0 || close(m_file.release()) != 0
        || rename(m_name.c_str(), m_path.c_str()) != 0)
        return systemError(errno);
    m_name.clear();
    // Syncs the new name too, if the folder can be opened; the file has been replaced in any case.
    const FileDescriptor folder(open(m_folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder)
        fsync(folder.get());
    return {};
}

} // namespace quorvane::platform
