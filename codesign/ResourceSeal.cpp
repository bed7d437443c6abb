#include "codesign/ResourceSeal.h"

#include "codesign/Hasher.h"
#include "codesign/SealRules.h"
#include "platform/PropertyListReader.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <system_error>
#include <unordered_map>
#include <utility>
#include <vector>

namespace quorvane::codesign {

namespace {

namespace fs = std::filesystem;

struct SealedResource {
    enum class Kind { file, link, code };
    Kind kind = Kind::file;
    HashAlgorithm hash = HashAlgorithm::sha1;
    std::string value; // the file's hash, the link's target, or the hash that identifies the code
    bool optional = false;
};

using SealedResources = std::unordered_map<std::string, SealedResource>;

std::optional<SealedResource> parseResource(const platform::PropertyValue& value)
{
    using Kind = SealedResource::Kind;
    if (const auto* hash = value.as<platform::PropertyValue::Data>())
        return SealedResource{Kind::file, HashAlgorithm::sha1, hash->bytes, false};
    const auto* optional = value.find<bool>("optional");
    const bool isOptional = optional != nullptr && *optional;
    if (const auto* target = value.find<std::string>("symlink"))
        return SealedResource{Kind::link, HashAlgorithm::sha1, *target, isOptional};
    const struct {
        const platform::PropertyValue::Data* value;
        SealedResource::Kind kind;
        HashAlgorithm hash;
    } forms[] = {
        {value.find<platform::PropertyValue::Data>("cdhash"), Kind::code, HashAlgorithm::sha1},
        {value.find<platform::PropertyValue::Data>("hash2"), Kind::file, HashAlgorithm::sha256},
        {value.find<platform::PropertyValue::Data>("hash"), Kind::file, HashAlgorithm::sha1},
    };
    for (const auto& form : forms) {
        if (form.value != nullptr)
            return SealedResource{form.kind, form.hash, form.value->bytes, isOptional};
    }
    return std::nullopt;
}

// The newer list counts when both exist.
const platform::PropertyValue::Dictionary* newerOf(
    const platform::PropertyValue& seal, std::string_view newer, std::string_view older)
{
    const auto* found = seal.find<platform::PropertyValue::Dictionary>(newer);
    return found != nullptr ? found : seal.find<platform::PropertyValue::Dictionary>(older);
}

std::optional<SealedResources> parseResources(const platform::PropertyValue::Dictionary& files)
{
    SealedResources resources;
    for (const auto& [path, value] : files) {
        auto resource = parseResource(value);
        if (!resource)
            return std::nullopt;
        resources.insert_or_assign(path, std::move(*resource));
    }
    return resources;
}

class Walk {
public:
    Walk(const BundleLayout& bundle, SealedResources resources, const SealRules& rules,
        const NestedCodeCheck& isIntactCode, SealBudget& budget)
        : m_base(bundle.sealedFolder)
        , m_executable(fs::path(bundle.executable).lexically_relative(m_base).string())
        , m_resources(std::move(resources))
        , m_rules(rules)
        , m_isIntactCode(isIntactCode)
        , m_budget(budget)
    {
    }

    bool everythingMatches()
    {
        std::vector<std::string> folders{""};
        while (!folders.empty()) {
            const std::string folder = std::move(folders.back());
            folders.pop_back();
            if (!folderMatches(folder, folders))
                return false;
        }
        // Entries that were found have been removed.
        return std::all_of(
            m_resources.begin(), m_resources.end(), [](const auto& left) { return left.second.optional; });
    }

private:
    bool folderMatches(const std::string& folder, std::vector<std::string>& subfolders)
    {
        std::error_code error;
        fs::directory_iterator entries(m_base / folder, error);
        for (; !error && entries != fs::directory_iterator(); entries.increment(error)) {
            if (m_budget.entries == 0)
                return false;
            --m_budget.entries;
            const std::string path = folder + entries->path().filename().string();
            if (!isSignatureItself(path) && !entryMatches(*entries, path, subfolders))
                return false;
        }
        return !error;
    }

    bool isSignatureItself(const std::string& path) const
    {
        return path == m_executable || path == "_CodeSignature" || path == "CodeResources"
            || path == "_MASReceipt";
    }

    bool entryMatches(
        const fs::directory_entry& entry, const std::string& path, std::vector<std::string>& subfolders)
    {
        std::error_code error;
        const fs::file_status kind = entry.symlink_status(error);
        if (const auto sealed = m_resources.find(path); sealed != m_resources.end()) {
            const SealedResource resource = std::move(sealed->second);
            m_resources.erase(sealed);
            return resourceMatches(entry.path(), kind, resource);
        }
        if (fs::is_directory(kind)) {
            subfolders.push_back(path + "/");
            return true;
        }
        return mayBeUnsealed(path);
    }

    bool mayBeUnsealed(const std::string& path)
    {
        const auto started = std::chrono::steady_clock::now();
        const bool unsealed = m_rules.mayBeUnsealed(path);
        m_budget.comparing -= std::chrono::steady_clock::now() - started;
        return unsealed && m_budget.comparing > std::chrono::nanoseconds::zero();
    }

    bool resourceMatches(const fs::path& path, fs::file_status kind, const SealedResource& resource)
    {
        std::error_code error;
        switch (resource.kind) {
        case SealedResource::Kind::link:
            return fs::is_symlink(kind) && fs::read_symlink(path, error) == resource.value;
        case SealedResource::Kind::code:
            if (m_budget.nestedCodes == 0 || fs::is_symlink(kind))
                return false;
            --m_budget.nestedCodes;
            return m_isIntactCode(path.string(), ByteView(resource.value.data(), resource.value.size()));
        default:
            return fs::is_regular_file(kind) && fileMatches(path.string(), resource);
        }
    }

    bool fileMatches(const std::string& path, const SealedResource& resource)
    {
        const auto file = CodeFile::open(path);
        if (!file || file->size() > m_budget.bytes)
            return false;
        m_budget.bytes -= file->size();
        Hasher hasher(resource.hash);
        const ReadResult result = file->forEachPiece(0, file->size(), [&hasher](ByteView piece) {
            hasher.update(piece);
            return true;
        });
        return result == ReadResult::complete && hasher.finish().view().text() == resource.value;
    }

    fs::path m_base;
    std::string m_executable;
    SealedResources m_resources;
    const SealRules& m_rules;
    const NestedCodeCheck& m_isIntactCode;
    SealBudget& m_budget;
};

} // namespace

bool resourcesMatchSeal(
    const BundleLayout& bundle, ByteView seal, const NestedCodeCheck& isIntactCode, SealBudget& budget)
{
    const auto list = platform::readPropertyList(seal.text());
    const auto* files = list ? newerOf(*list, "files2", "files") : nullptr;
    const auto* ruleList = list ? newerOf(*list, "rules2", "rules") : nullptr;
    if (files == nullptr || ruleList == nullptr)
        return false;
    auto resources = parseResources(*files);
    const auto rules = SealRules::parse(*ruleList);
    return resources && rules
        && Walk(bundle, std::move(*resources), *rules, isIntactCode, budget).everythingMatches();
}

} // namespace quorvane::codesign
