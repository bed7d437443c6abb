#include "workflow/CleanUp.h"

#include "rules/ApplicationIdentity.h"
#include "rules/RuleProperties.h"
#include "workflow/RuleProblems.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace quorvane::workflow {

namespace {

bool isWithin(std::string_view path, std::string_view folder)
{
    if (folder == "/")
        return true;
    return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

// The innermost file system that contains the path; null when none is known.
const platform::Mount* mountOf(std::string_view path, const std::vector<platform::Mount>& mounts)
{
    const platform::Mount* innermost = nullptr;
    for (const platform::Mount& mount : mounts) {
        // Of several at the same folder the last is visible.
        if (isWithin(path, mount.folder)
            && (innermost == nullptr || mount.folder.size() >= innermost->folder.size()))
            innermost = &mount;
    }
    return innermost;
}

// Folders in which removable and temporary volumes are mounted.
constexpr std::array<std::string_view, 5> foldersOfVolumes{
    "/Volumes", "/media", "/mnt", "/run/media", "/net"};

std::string whyOfVolume(std::string_view path, const std::vector<platform::Mount>& mounts)
{
    const platform::Mount* mount = mountOf(path, mounts);
    for (const std::string_view volumes : foldersOfVolumes) {
        const bool isMounted
            = mount != nullptr && isWithin(mount->folder, volumes) && mount->folder != volumes;
        if (isWithin(path, volumes) && !isMounted)
            return "on a volume that is not mounted";
    }
    if (mount == nullptr)
        return {};
    if (isNetworkMount(*mount))
        return "on another machine";
    return mount->isRemovable ? "on a removable volume" : std::string();
}

// The home folder that contains the path; empty when there is none.
std::string homeOf(const std::string& path)
{
    for (const std::string_view homes : {std::string_view("/Users/"), std::string_view("/home/")}) {
        if (path.starts_with(homes))
            return path.substr(0, path.find('/', homes.size()));
    }
    return {};
}

// The missing program: the rule's own, or its parent.
std::string goneProgramOf(const rules::RuleValue& rule, ProgramFault fault)
{
    return askValue(rule, [fault](const auto& fields) {
        return fault == ProgramFault::parentMissing
            ? applicationParentPathForProcess(fields.processName).value_or("")
            : applicationPathForProcess(fields.processName);
    });
}

class Collector {
public:
    Collector(const ChangingPlaces& places, const RulesPlace& place)
        : m_places(places)
        , m_place(place)
    {
    }

    void add(const KnownProblem& problem)
    {
        const rules::RuleValue value = valueOf(problem.rule);
        const bool isSystem = askValue(value, [](const auto& fields) { return fields.system; });
        if (isSystem || problem.finding.programFault == ProgramFault::constraintMismatch)
            return;
        DispensableRule rule = problem.other ? DispensableRule{problem.rule, problem.finding.kind,
                                   problemWith(problem.finding.kind, valueOf(*problem.other)).text}
                                             : gone(problem, value);
        const auto [known, isNew] = m_known.emplace(addressOf(problem.rule), m_rules.size());
        if (isNew)
            m_rules.push_back(std::move(rule));
        else if (!m_rules[known->second].doubt.empty() && rule.doubt.empty())
            m_rules[known->second] = std::move(rule); // a reason without doubt wins
    }

    std::vector<DispensableRule> take() { return std::move(m_rules); }

private:
    DispensableRule gone(const KnownProblem& problem, const rules::RuleValue& value) const
    {
        const std::string path = problem.finding.programFault
            ? goneProgramOf(value, *problem.finding.programFault)
            : pathOf(value);
        return {problem.rule, problem.finding.kind,
            problemOf(value, problem.finding, m_place, rules::LineEnds::whole).text,
            whyItMayComeBack(path, m_places, m_place.facts())};
    }

    const ChangingPlaces& m_places;
    const RulesPlace& m_place;
    std::unordered_map<const void*, std::size_t> m_known; // by address of the record
    std::vector<DispensableRule> m_rules;
};

// Those of the rules that are still stored and can be removed together.
std::vector<rules::RuleRef> goingTogether(
    const rules::RuleManager& store, const std::vector<DispensableRule>& chosen)
{
    std::vector<rules::RuleRef> rules;
    std::vector<rules::RuleRef> gone;
    for (const DispensableRule& each : chosen) {
        if (!store.isStored(each.rule))
            continue;
        rules.push_back(each.rule);
        if (each.kind != FindingKind::redundant)
            gone.push_back(each.rule);
    }
    return dispensableRules(store, rules, gone);
}

} // namespace

std::string whyItMayComeBack(const std::string& path, const ChangingPlaces& places, ProgramFacts& facts)
{
    std::string file = path;
    if (path.starts_with("~/")) {
        if (places.home.empty() || !facts.exists(places.home))
            return "in a home folder that is not there";
        file.replace(0, 1, places.home);
    }
    if (const std::string home = homeOf(file); !home.empty() && !facts.exists(home))
        return "in a home folder that is not there";
    return whyOfVolume(file, places.mounts);
}

std::vector<DispensableRule> cleanUpCandidates(
    const ProblemLists& problems, const ChangingPlaces& places, const RulesPlace& place)
{
    Collector collector(places, place);
    for (const FindingKind kind :
        {FindingKind::invalidProgram, FindingKind::missingPath, FindingKind::redundant}) {
        for (const KnownProblem& problem : problems.of(kind))
            collector.add(problem);
    }
    return collector.take();
}

void doubtWhatMustStay(const rules::RuleManager& store, std::vector<DispensableRule>& candidates)
{
    std::vector<DispensableRule> undoubted;
    std::copy_if(candidates.begin(), candidates.end(), std::back_inserter(undoubted),
        [](const DispensableRule& each) { return each.doubt.empty(); });
    std::unordered_set<const void*> going;
    for (const rules::RuleRef& rule : goingTogether(store, undoubted))
        going.insert(addressOf(rule));
    for (DispensableRule& each : candidates) {
        if (each.doubt.empty() && !going.contains(addressOf(each.rule)) && store.isStored(each.rule))
            each.doubt = "the rule that covers it goes";
    }
}

PlannedChange cleaningUp(
    const rules::RuleManager& store, const std::vector<DispensableRule>& chosen, rules::LineEnds lineEnds)
{
    const std::vector<rules::RuleRef> going = goingTogether(store, chosen);
    PlannedChange plan = removalOf(store, going, lineEnds);
    const auto stored = std::count_if(chosen.begin(), chosen.end(),
        [&store](const DispensableRule& each) { return store.isStored(each.rule); });
    plan.unchanged = static_cast<std::size_t>(stored) - going.size();
    if (plan.unchanged > 0)
        plan.remarks.push_back(plan.unchanged == 1
                ? "1 redundant rule stays: no rule that stays covers it."
                : std::to_string(plan.unchanged) + " redundant rules stay: no rule that stays covers them.");
    return plan;
}

} // namespace quorvane::workflow
