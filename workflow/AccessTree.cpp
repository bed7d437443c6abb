#include "workflow/AccessTree.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <utility>

namespace quorvane::workflow {

namespace {

AccessBranch::Kind kindOf(const MappedFolder& folder)
{
    switch (folder.kind) {
    case MappedFolder::Kind::everyPath:
        return AccessBranch::Kind::everyPath;
    case MappedFolder::Kind::byEnding:
        return AccessBranch::Kind::byEnding;
    case MappedFolder::Kind::folder:
        return AccessBranch::Kind::folder;
    case MappedFolder::Kind::other:
        break;
    }
    return AccessBranch::Kind::other;
}

void add(AccessCounts& to, const AccessCounts& counts)
{
    to.allow += counts.allow;
    to.deny += counts.deny;
    to.watch += counts.watch;
}

using ProgramCounts = std::vector<std::pair<std::string, std::size_t>>;

ProgramCounts byNumberOfRules(const std::map<std::string, std::size_t>& counts)
{
    ProgramCounts programs(counts.begin(), counts.end());
    std::stable_sort(
        programs.begin(), programs.end(), [](const auto& a, const auto& b) { return a.second > b.second; });
    return programs;
}

} // namespace

std::shared_ptr<const AccessTree> AccessTree::byFolder(
    std::vector<rules::RuleRef> rules, const std::stop_token& stop)
{
    std::shared_ptr<AccessTree> tree(new AccessTree(std::move(rules)));
    std::vector<std::size_t> places(tree->m_rules.size());
    std::iota(places.begin(), places.end(), std::size_t{0});
    tree->addFolders(accessMap(tree->m_rules, stop), {}, places);
    tree->sumUp();
    return stop.stop_requested() ? nullptr : tree;
}

std::shared_ptr<const AccessTree> AccessTree::byProgram(
    std::vector<rules::RuleRef> rules, const std::stop_token& stop)
{
    std::shared_ptr<AccessTree> tree(new AccessTree(std::move(rules)));
    std::map<std::string, std::vector<std::size_t>> ofProgram;
    for (std::size_t place = 0; place < tree->m_rules.size() && !stop.stop_requested(); ++place)
        ofProgram[askValue(valueOf(tree->m_rules[place]), [](const auto& fields) {
            return std::string(fields.processName.view());
        })].push_back(place);
    for (const auto& [program, places] : ofProgram) {
        std::vector<rules::RuleRef> own;
        for (const std::size_t place : places)
            own.push_back(tree->m_rules[place]);
        auto folders = accessMap(own, stop);
        if (folders.empty())
            continue; // not a rule on the map
        const std::size_t branch
            = tree->add({.kind = AccessBranch::Kind::program, .text = program, .title = program});
        tree->addFolders(std::move(folders), branch, places);
    }
    tree->sumUp();
    return stop.stop_requested() ? nullptr : tree;
}

std::size_t AccessTree::add(AccessBranch branch)
{
    const std::size_t number = m_branches.size();
    (branch.parent ? m_branches[*branch.parent].children : m_top).push_back(number);
    m_branches.push_back(std::move(branch));
    return number;
}

// `places`: indexes of the rules that the folders were made from. Each folder becomes a child of the nearest
// one before it that contains it.
void AccessTree::addFolders(std::vector<MappedFolder> folders, std::optional<std::size_t> program,
    const std::vector<std::size_t>& places)
{
    std::vector<std::size_t> holders;
    for (MappedFolder& folder : folders) {
        holders.resize(folder.depth);
        AccessBranch branch{
            .kind = kindOf(folder), .text = folder.path, .title = folder.path, .counts = folder.counts};
        if (!program)
            branch.programs.assign(folder.programs.begin(), folder.programs.end());
        for (const std::size_t rule : folder.rules)
            branch.rules.push_back(places[rule]);
        branch.parent = program;
        if (!holders.empty()) {
            branch.parent = holders.back();
            branch.title.erase(0, m_branches[holders.back()].text.size());
        }
        holders.push_back(add(std::move(branch)));
    }
}

// From the last to the first, so that each is complete before it is added to its parent.
void AccessTree::sumUp()
{
    std::vector<std::map<std::string, std::size_t>> programs(m_branches.size());
    for (std::size_t number = m_branches.size(); number-- > 0;) {
        AccessBranch& branch = m_branches[number];
        auto& own = programs[number];
        for (const auto& [program, count] : branch.programs)
            own[program] += count;
        workflow::add(branch.parent ? m_branches[*branch.parent].counts : m_counts, branch.counts);
        if (branch.parent) {
            for (const auto& [program, count] : own)
                programs[*branch.parent][program] += count;
        }
        branch.programs = byNumberOfRules(std::exchange(own, {}));
    }
}

std::vector<rules::RuleRef> AccessTree::rulesOf(std::size_t branch) const
{
    std::vector<rules::RuleRef> rules;
    std::vector<std::size_t> due{branch};
    while (!due.empty()) {
        const AccessBranch& next = m_branches[due.back()];
        due.pop_back();
        for (const std::size_t rule : next.rules)
            rules.push_back(m_rules[rule]);
        due.insert(due.end(), next.children.begin(), next.children.end());
    }
    return rules;
}

} // namespace quorvane::workflow
