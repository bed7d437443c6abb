#include "platform/FileRoot.h"

#include "platform/RegularFile.h"
#include "platform/SystemError.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <filesystem>
#include <utility>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace quorvane::platform {

namespace {

FileDescriptor failedWith(int error)
{
    errno = error;
    return FileDescriptor();
}

bool holdsNul(const std::string& path)
{
    return path.find('\0') != std::string::npos;
}

// None, with errno ENOSYS, where the kernel lacks the call or a sandbox forbids it.
FileDescriptor openInRoot(int folder, const std::string& path, int flags)
{
    open_how how{};
    how.flags = static_cast<decltype(how.flags)>(flags | O_CLOEXEC);
    how.resolve = RESOLVE_IN_ROOT | RESOLVE_NO_MAGICLINKS;
    const auto descriptor = syscall(SYS_openat2, folder, path.c_str(), &how, sizeof how);
    if (descriptor < 0 && (errno == EPERM || errno == EAGAIN)) // EAGAIN: something was renamed concurrently
        errno = ENOSYS;
    return FileDescriptor(static_cast<int>(descriptor));
}

// Empty when it cannot be read.
std::string linkTarget(int link)
{
    std::string target(PATH_MAX, '\0');
    const ssize_t length = readlinkat(link, "", target.data(), target.size());
    target.resize(static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    return target;
}

// Resolves a path below a folder. The folders on the way are held open, so that ".." is exactly the folder
// the walk came through, and no concurrent move leads out.
class Walk {
public:
    explicit Walk(int folder)
        : m_root(folder)
    {
    }

    FileDescriptor follow(const std::string& path, int flags)
    {
        if (path.empty() || path.size() >= PATH_MAX)
            return failedWith(path.empty() ? ENOENT : ENAMETOOLONG);
        add(path);
        while (!m_names.empty()) {
            const std::string name = std::move(m_names.back());
            m_names.pop_back();
            if (name == "..") {
                if (!m_way.empty())
                    m_way.pop_back();
            } else if (!name.empty() && name != "." && !step(name)) {
                return FileDescriptor();
            }
        }
        return reopened(flags);
    }

    // The path walked so far, as an absolute path.
    std::string way() const
    {
        std::string text;
        for (const Step& step : m_way)
            text.append("/").append(step.name);
        return text.empty() ? "/" : text;
    }

private:
    struct Step {
        std::string name;
        FileDescriptor file;
    };

    int here() const { return m_way.empty() ? m_root : m_way.back().file.get(); }

    // Puts the components of a path before those still to be followed.
    void add(const std::string& path)
    {
        if (path.starts_with('/'))
            m_way.clear();
        std::size_t end = path.size();
        if (path.ends_with('/'))
            m_names.emplace_back("."); // a trailing "/" requires a folder
        while (true) {
            const std::size_t slash = end == 0 ? std::string::npos : path.rfind('/', end - 1);
            const std::size_t begin = slash == std::string::npos ? 0 : slash + 1;
            if (begin < end)
                m_names.push_back(path.substr(begin, end - begin));
            if (slash == std::string::npos)
                return;
            end = slash;
        }
    }

    bool step(const std::string& name)
    {
        FileDescriptor file(openat(here(), name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
        struct stat status { };
        if (!file || fstat(file.get(), &status) != 0)
            return false;
        if (S_ISLNK(status.st_mode))
            return followLink(file.get());
        if (!m_names.empty() && !S_ISDIR(status.st_mode)) {
            errno = ENOTDIR;
            return false;
        }
        m_way.push_back({name, std::move(file)});
        return true;
    }

    bool followLink(int link)
    {
        constexpr int mostLinks = 40; // the kernel's limit
        const std::string target = ++m_links > mostLinks ? std::string() : linkTarget(link);
        if (!target.empty())
            add(target);
        else
            errno = m_links > mostLinks ? ELOOP : ENOENT;
        return !target.empty();
    }

    // The last step, opened again with the wanted flags.
    FileDescriptor reopened(int flags) const
    {
        if (m_way.empty())
            return FileDescriptor(openat(m_root, ".", flags | O_CLOEXEC));
        const Step& last = m_way.back();
        const int above = m_way.size() == 1 ? m_root : m_way[m_way.size() - 2].file.get();
        return FileDescriptor(openat(above, last.name.c_str(), flags | O_NOFOLLOW | O_CLOEXEC));
    }

    int m_root;
    std::vector<Step> m_way; // from the root to here
    std::vector<std::string> m_names; // to be followed, the next one last
    int m_links = 0;
};

} // namespace

FileDescriptor openBelow(int folder, const std::string& path, int flags, std::string* resolved)
{
    if (holdsNul(path))
        return failedWith(ENOENT);
    Walk walk(folder);
    FileDescriptor file = walk.follow(path, flags);
    if (file && resolved != nullptr)
        *resolved = walk.way();
    return file;
}

std::optional<FileRoot> FileRoot::at(const std::string& folder, std::error_code& error)
{
    auto descriptor = std::make_shared<FileDescriptor>(
        holdsNul(folder) ? -1 : ::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!*descriptor) {
        error = systemError(holdsNul(folder) ? ENOENT : errno);
        return std::nullopt;
    }
    FileRoot root;
    root.m_folder = std::move(descriptor);
    return root;
}

FileDescriptor FileRoot::open(const std::string& path, int flags) const
{
    if (holdsNul(path))
        return failedWith(ENOENT);
    if (isThisMachines())
        return FileDescriptor(::open(path.c_str(), flags | O_CLOEXEC));
    FileDescriptor file = openInRoot(m_folder->get(), path, flags);
    return !file && errno == ENOSYS ? openBelow(m_folder->get(), path, flags) : std::move(file);
}

FileDescriptor FileRoot::openRegularFile(const std::string& path) const
{
    const auto isRegular = [](const struct stat& found) { return S_ISREG(found.st_mode); };
    const auto before = status(path); // opening anything else can have side effects
    if (!before || !isRegular(*before))
        return FileDescriptor();
    FileDescriptor file = open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
    struct stat opened { };
    return file && fstat(file.get(), &opened) == 0 && isRegular(opened) ? std::move(file) : FileDescriptor();
}

std::optional<std::string> FileRoot::contents(const std::string& path, std::size_t largestSize) const
{
    const FileDescriptor file = openRegularFile(path);
    struct stat found { };
    if (!file || fstat(file.get(), &found) != 0 || static_cast<std::size_t>(found.st_size) > largestSize)
        return std::nullopt;
    std::error_code error;
    std::string bytes(static_cast<std::size_t>(found.st_size), '\0');
    bytes.resize(readFully(file.get(), bytes.data(), bytes.size(), error));
    return error ? std::nullopt : std::optional(std::move(bytes));
}

void FileRoot::forEachName(
    const std::string& path, const std::function<bool(const std::string& name)>& use) const
{
    FileDescriptor folder = open(path, O_RDONLY | O_DIRECTORY);
    const std::unique_ptr<DIR, int (*)(DIR*)> names(folder ? fdopendir(folder.get()) : nullptr, closedir);
    if (!names)
        return;
    folder.release(); // closed together with `names`
    while (const dirent* entry = readdir(names.get())) {
        const std::string name = entry->d_name;
        if (name != "." && name != ".." && !use(name))
            return;
    }
}

std::optional<struct stat> FileRoot::status(const std::string& path) const
{
    struct stat status { };
    if (isThisMachines()) {
        const bool isThere = !holdsNul(path) && stat(path.c_str(), &status) == 0;
        return isThere ? std::optional(status) : std::nullopt;
    }
    const FileDescriptor file = open(path, O_PATH);
    return file && fstat(file.get(), &status) == 0 ? std::optional(status) : std::nullopt;
}

bool FileRoot::isFolderAt(const std::string& path) const
{
    const auto found = status(path);
    return found && S_ISDIR(found->st_mode);
}

std::optional<std::string> FileRoot::resolved(const std::string& path) const
{
    if (!isThisMachines()) {
        std::string found;
        return openBelow(m_folder->get(), path, O_PATH, &found) ? std::optional(found) : std::nullopt;
    }
    std::error_code error;
    const auto found = holdsNul(path) ? std::filesystem::path() : std::filesystem::canonical(path, error);
    return found.empty() ? std::nullopt : std::optional(found.string());
}

} // namespace quorvane::platform
