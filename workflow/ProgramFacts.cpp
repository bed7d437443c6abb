#include "workflow/ProgramFacts.h"

#include "codesign/Digests.h"
#include "codesign/ProgramCode.h"
#include "codesign/SignatureQueries.h"
#include "platform/FileIdentity.h"

#include <chrono>
#include <mutex>
#include <unordered_map>
#include <utility>

#include <sys/stat.h>

namespace quorvane::workflow {

namespace {

constexpr std::size_t mostRemembered = 4096;

// None for anything but a regular file.
std::optional<platform::FileIdentity> identityOf(const std::string& path, const platform::FileRoot& root)
{
    const auto status = root.status(path);
    if (!status || !S_ISREG(status->st_mode))
        return std::nullopt;
    return platform::FileIdentity::ofStatus(*status);
}

// Clocks of file systems are coarse: a file may change again within the tick of its last change.
bool isSettled(const platform::FileIdentity& identity)
{
    const std::chrono::nanoseconds changed(identity.changed);
    return std::chrono::system_clock::time_point(changed) + std::chrono::seconds(2)
        <= std::chrono::system_clock::now();
}

class FactsOnDisk : public ProgramFacts {
public:
    FactsOnDisk(platform::FileRoot root, const codesign::TrustAnchor& vendor)
        : m_root(std::move(root))
        , m_vendor(vendor)
    {
    }
    bool exists(const std::string& path) override { return m_root.isAnythingAt(path); }
    bool isFolder(const std::string& path) override { return m_root.isFolderAt(path); }
    std::optional<std::string> sha1(const std::string& path) override
    {
        return remembered(path, &Answers::sha1, [&] { return codesign::sha1OfFile(path, m_root); });
    }
    std::optional<std::string> sha256(const std::string& path) override
    {
        return remembered(path, &Answers::sha256, [&] { return codesign::sha256OfFile(path, m_root); });
    }
    bool isReadable(const std::string& path) override { return signing(path).has_value(); }
    std::optional<std::string> team(const std::string& path) override
    {
        return signing(path).value_or(Signing{}).team;
    }
    TeamProof teamProof(const std::string& path) override
    {
        return remembered(path, &Answers::proof, [&]() -> std::optional<TeamProof> {
            return proofOf(codesign::ProgramCode::atPath(path, m_vendor, m_root).get());
        }).value_or(TeamProof::codeDiffers);
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
        platform::FileIdentity identity;
        std::optional<std::string> sha1;
        std::optional<std::string> sha256;
        std::optional<Signing> signing;
        std::optional<TeamProof> proof;
    };

    static TeamProof proofOf(const codesign::CodeObject* code)
    {
        if (!isSignedUnderPlatformRoot(code))
            return TeamProof::foreignRoot;
        const bool codeIsThatSigned
            = codeSignState(code, codesign::validityFlag::skipResources) == codesign::signatureState::valid;
        return codeIsThatSigned ? TeamProof::proven : TeamProof::codeDiffers;
    }

    // Both from reading the program once; none when it cannot be read.
    std::optional<Signing> signing(const std::string& path)
    {
        return remembered(path, &Answers::signing, [&]() -> std::optional<Signing> {
            const auto code = codesign::ProgramCode::atPath(path, m_vendor, m_root);
            if (!code)
                return std::nullopt;
            return Signing{codeSignText(code.get(), codesign::kSecCodeInfoTeamIdentifier),
                static_cast<std::uint32_t>(codeSignPlatformIdentifier(code.get()))};
        });
    }

    // A failure is not cached: the next attempt may succeed on the same file.
    template <class Answer, class Find>
    std::optional<Answer> remembered(
        const std::string& path, std::optional<Answer> Answers::*member, const Find& find)
    {
        const auto before = identityOf(path, m_root);
        if (!before)
            return find();
        if (std::optional<Answer> known = knownAnswer(path, *before, member))
            return known;
        std::optional<Answer> answer = find();
        const auto after = identityOf(path, m_root);
        if (answer && after && *before == *after && isSettled(*after))
            keep(path, *after, member, *answer);
        return answer;
    }

    template <class Answer>
    std::optional<Answer> knownAnswer(const std::string& path, const platform::FileIdentity& identity,
        std::optional<Answer> Answers::*member)
    {
        const std::lock_guard lock(m_lock);
        const auto known = m_answers.find(path);
        const bool isCurrent = known != m_answers.end() && known->second.identity == identity;
        return isCurrent ? known->second.*member : std::nullopt;
    }

    template <class Answer>
    void keep(const std::string& path, const platform::FileIdentity& identity,
        std::optional<Answer> Answers::*member, const Answer& answer)
    {
        const std::lock_guard lock(m_lock);
        if (m_answers.size() >= mostRemembered && !m_answers.contains(path))
            m_answers.clear();
        Answers& kept = m_answers[path];
        if (kept.identity != identity)
            kept = {identity, {}, {}, {}, {}};
        kept.*member = answer;
    }

    const platform::FileRoot m_root;
    const codesign::TrustAnchor m_vendor;
    std::mutex m_lock; // not held while a file is read
    std::unordered_map<std::string, Answers> m_answers;
};

class FactsOfNothing : public ProgramFacts {
public:
    bool exists(const std::string&) override { return false; }
    bool isFolder(const std::string&) override { return false; }
    std::optional<std::string> sha1(const std::string&) override { return std::nullopt; }
    std::optional<std::string> sha256(const std::string&) override { return std::nullopt; }
    bool isReadable(const std::string&) override { return false; }
    std::optional<std::string> team(const std::string&) override { return std::nullopt; }
    TeamProof teamProof(const std::string&) override { return TeamProof::codeDiffers; }
    std::uint32_t platformIdentifier(const std::string&) override { return 0; }
};

} // namespace

std::unique_ptr<ProgramFacts> programFactsWithin(
    const platform::FileRoot& root, const codesign::TrustAnchor& vendor)
{
    return std::make_unique<FactsOnDisk>(root, vendor);
}

ProgramFacts& programFactsOnDisk()
{
    static FactsOnDisk facts({}, codesign::platformRoot());
    return facts;
}

ProgramFacts& programFactsOfNothing()
{
    static FactsOfNothing facts;
    return facts;
}

} // namespace quorvane::workflow
