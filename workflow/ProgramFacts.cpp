#include "workflow/ProgramFacts.h"

#include "codesign/Codesign.h"
#include "codesign/Digests.h"
#include "platform/FileBytes.h"

#include <ctime>
#include <unordered_map>

#include <sys/stat.h>

namespace quorvane {

namespace {

constexpr std::size_t mostRemembered = 4096;

// Whatever changes a file changes one of these.
struct FileIdentity {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    timespec modified{};
    timespec changed{};
};

bool isSame(const timespec& left, const timespec& right)
{
    return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
}

bool isSame(const FileIdentity& left, const FileIdentity& right)
{
    return left.device == right.device && left.inode == right.inode && left.size == right.size
        && isSame(left.modified, right.modified) && isSame(left.changed, right.changed);
}

// None for anything but a regular file.
std::optional<FileIdentity> identityOf(const std::string& path)
{
    struct stat status { };
    if (path.find('\0') != std::string::npos || stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    return FileIdentity{status.st_dev, status.st_ino, status.st_size, status.st_mtim, status.st_ctim};
}

// Clocks of file systems are coarse: a file may change once more within the tick of its last change.
bool isSettled(const FileIdentity& identity)
{
    return identity.changed.tv_sec + 2 <= std::time(nullptr);
}

class FactsOnDisk : public ProgramFacts {
public:
    bool exists(const std::string& path) override { return isAnythingAt(path); }
    bool isFolder(const std::string& path) override { return isFolderAt(path); }
    std::string sha1(const std::string& path) override
    {
        return remembered(path, &Answers::sha1, [&path] {
            return sha1OfFile(path);
        }).value_or(quorvane::sha1({}));
    }
    std::string sha256(const std::string& path) override
    {
        return remembered(path, &Answers::sha256, [&path] {
            return sha256OfFile(path);
        }).value_or(quorvane::sha256({}));
    }
    bool isReadable(const std::string& path) override { return signing(path).has_value(); }
    std::optional<std::string> team(const std::string& path) override
    {
        return signing(path).value_or(Signing{}).team;
    }
    std::uint32_t platformIdentifier(const std::string& path) override
    {
        return signing(path).value_or(Signing{}).platformIdentifier;
    }

private:
    struct Signing {
        std::optional<std::string> team{};
        std::uint32_t platformIdentifier = 0;
    };
    struct Answers {
        FileIdentity identity;
        std::optional<std::string> sha1;
        std::optional<std::string> sha256;
        std::optional<Signing> signing;
    };

    // Both from one reading of the program; none when it cannot be read.
    std::optional<Signing> signing(const std::string& path)
    {
        return remembered(path, &Answers::signing, [&path]() -> std::optional<Signing> {
            const auto code = getCodeRefWithPath(path);
            if (!code)
                return std::nullopt;
            return Signing{codeSignText(code.get(), kSecCodeInfoTeamIdentifier),
                static_cast<std::uint32_t>(codeSignPlatformIdentifier(code.get()))};
        });
    }

    // A failure is not remembered: the next look may succeed on the same file.
    template <class Answer, class Find>
    std::optional<Answer> remembered(
        const std::string& path, std::optional<Answer> Answers::*member, const Find& find)
    {
        const auto before = identityOf(path);
        if (!before)
            return find();
        const auto known = m_answers.find(path);
        const bool isCurrent = known != m_answers.end() && isSame(known->second.identity, *before);
        if (isCurrent && known->second.*member)
            return known->second.*member;
        std::optional<Answer> answer = find();
        const auto after = identityOf(path);
        if (!answer || !after || !isSame(*before, *after) || !isSettled(*after))
            return answer;
        if (!isCurrent && m_answers.size() >= mostRemembered)
            m_answers.clear();
        Answers& kept = m_answers[path];
        if (!isCurrent)
            kept = {*after, {}, {}, {}};
        kept.*member = answer;
        return answer;
    }

    std::unordered_map<std::string, Answers> m_answers;
};

} // namespace

ProgramFacts& programFactsOnDisk()
{
    static FactsOnDisk facts;
    return facts;
}

} // namespace quorvane
