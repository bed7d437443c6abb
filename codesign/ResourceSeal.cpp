#include "codesign/ResourceSeal.h"

#include "codesign/Hasher.h"
#include "codesign/SealRules.h"
#include "codesign/XmlPropertyList.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <system_error>
#include <unordered_map>
#include <utility>
#include <vector>

namespace quorvane {

namespace {

namespace fs = std::filesystem;

struct SealedResource {
    enum class Kind { file, link, code };
    Kind kind = Kind::file;
    HashAlgorithm hash = HashAlgorithm::sha1;
    std::string value; // the file's hash, the link's target, or the hash the code is known by
    bool optional = false;
};

using SealedResources = std::unordered_map<std::string, SealedResource>;

const PropertyValue* findOfKind(
    const PropertyValue& dictionary, std::string_view key, PropertyValue::Kind kind)
{
    const PropertyValue* value = dictionary.find(key);
    return value != nullptr && value->kind == kind ? value : nullptr;
}

std::optional<SealedResource> parseResource(const PropertyValue& value)
{
    using Kind = PropertyValue::Kind;
    SealedResource resource;
    if (value.kind == Kind::data) {
        resource.value = value.text;
        return resource;
    }
    const PropertyValue* optional = findOfKind(value, "optional", Kind::boolean);
    resource.optional = optional != nullptr && optional->flag;
    const struct {
        const PropertyValue* value;
        SealedResource::Kind kind;
        HashAlgorithm hash;
    } forms[] = {
        {findOfKind(value, "symlink", Kind::string), SealedResource::Kind::link, HashAlgorithm::sha1},
        {findOfKind(value, "cdhash", Kind::data), SealedResource::Kind::code, HashAlgorithm::sha1},
        {findOfKind(value, "hash2", Kind::data), SealedResource::Kind::file, HashAlgorithm::sha256},
        {findOfKind(value, "hash", Kind::data), SealedResource::Kind::file, HashAlgorithm::sha1},
    };
    for (const auto& form : forms) {
        if (form.value == nullptr)
            continue;
        resource.kind = form.kind;
        resource.hash = form.hash;
        resource.value = form.value->text;
        return resource;
    }
    return std::nullopt;
}

// The newer lists count when both are there.
const PropertyValue* newerOf(const PropertyValue& seal, std::string_view newer, std::string_view older)
{
    const PropertyValue* found = findOfKind(seal, newer, PropertyValue::Kind::dictionary);
    return found != nullptr ? found : findOfKind(seal, older, PropertyValue::Kind::dictionary);
}

std::optional<SealedResources> parseResources(const PropertyValue& files)
{
    SealedResources resources;
    for (std::size_t i = 0; i < files.items.size(); ++i) {
        auto resource = parseResource(files.items[i]);
        if (!resource)
            return std::nullopt;
        resources.insert_or_assign(files.keys[i], std::move(*resource));
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
        // What was found has been taken out.
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
        const std::size_t cost = m_rules.costOf(path);
        if (cost > m_budget.steps)
            return false;
        m_budget.steps -= cost;
        return m_rules.mayBeUnsealed(path);
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
    const auto list = parseXmlPropertyList(seal);
    const PropertyValue* files = list ? newerOf(*list, "files2", "files") : nullptr;
    const PropertyValue* ruleList = list ? newerOf(*list, "rules2", "rules") : nullptr;
    if (files == nullptr || ruleList == nullptr)
        return false;
    auto resources = parseResources(*files);
    const auto rules = SealRules::parse(*ruleList);
    return resources && rules
        && Walk(bundle, std::move(*resources), *rules, isIntactCode, budget).everythingMatches();
}

} // namespace quorvane
