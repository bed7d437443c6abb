#include "workflow/AccessMap.h"

#include "rules/PathCover.h"
#include "rules/RuleCodes.h"
#include "rules/RuleProperties.h"

#include <string_view>
#include <utility>

namespace quorvane::workflow {

namespace {

using Kind = MappedFolder::Kind;
using Place = std::pair<Kind, std::string>;

template <class Fields> Place placeOf(const Fields& rule)
{
    if (isEveryPath(rule.path))
        return {Kind::everyPath, {}};
    if (rule.policyType == rules::PolicyType::suffix)
        return {Kind::byEnding, {}};
    const std::string_view path = rule.path.view();
    const bool isFile = path.starts_with("/") || path.starts_with("~/");
    const std::size_t slash = isFile ? path.rfind('/') : path.find('/');
    const std::string_view folder = path.substr(0, slash == std::string_view::npos ? slash : slash + 1);
    return {isFile ? Kind::folder : Kind::other, std::string(folder)};
}

void count(AccessCounts& counts, std::int32_t policyClass)
{
    if (policyClass == rules::PolicyClass::allow)
        ++counts.allow;
    else if (policyClass == rules::PolicyClass::deny)
        ++counts.deny;
    else
        ++counts.watch;
}

// Sets how many of the folders before it contain each. They are sorted, so a stack of the current ancestors
// suffices.
void setDepths(std::vector<MappedFolder>& folders)
{
    std::vector<const MappedFolder*> holders;
    for (MappedFolder& folder : folders) {
        const auto holds = [&folder](const MappedFolder& other) {
            return other.kind == Kind::folder && folder.kind == Kind::folder
                && folder.path.starts_with(other.path);
        };
        while (!holders.empty() && !holds(*holders.back()))
            holders.pop_back();
        folder.depth = holders.size();
        holders.push_back(&folder);
    }
}

} // namespace

std::vector<MappedFolder> accessMap(const std::vector<rules::RuleRef>& rules, const std::stop_token& stop)
{
    std::map<Place, MappedFolder> found;
    for (std::size_t rule = 0; rule < rules.size() && !stop.stop_requested(); ++rule) {
        askValue(valueOf(rules[rule]), [&found, rule](const auto& fields) {
            const std::int32_t policyClass = classOf(fields);
            if (policyClass == rules::unknownCode)
                return;
            Place place = placeOf(fields);
            MappedFolder& folder
                = found.try_emplace(place, MappedFolder{place.first, place.second, 0, {}, {}}).first->second;
            count(folder.counts, policyClass);
            ++folder.programs[std::string(fields.processName.view())];
            folder.rules.push_back(rule);
        });
    }
    std::vector<MappedFolder> folders;
    folders.reserve(found.size());
    for (auto& [place, folder] : found)
        folders.push_back(std::move(folder));
    setDepths(folders);
    return folders;
}

} // namespace quorvane::workflow
