#pragma once

#include "rules/RuleRef.h"
#include "workflow/AccessMap.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

// The access map as a tree to be looked at: folders in the folders that hold them, or programs with the
// folders that their rules are about.

namespace quorvane::workflow {

struct AccessBranch {
    enum class Kind { program, everyPath, byEnding, folder, other };

    Kind kind;
    std::string text; // the whole folder or process; empty for every path and for endings
    std::string title; // what of the text its parent does not say
    AccessCounts counts{}; // of its rules and those of everything in it
    std::vector<std::size_t> rules{}; // its own: where they stand in AccessTree::rules()
    // Those that the rules counted are about, the ones with most rules first; not of a program's branches.
    std::vector<std::pair<std::string, std::size_t>> programs{};
    std::optional<std::size_t> parent{}; // none at the top
    std::vector<std::size_t> children{};
};

// Branches by their numbers, from 0 up; each behind its parent. Never changes; any thread.
class AccessTree {
public:
    // Any thread. None when `stop` came before it was made.
    static std::shared_ptr<const AccessTree> byFolder(
        std::vector<rules::RuleRef> rules, const std::stop_token& stop = {});
    static std::shared_ptr<const AccessTree> byProgram(
        std::vector<rules::RuleRef> rules, const std::stop_token& stop = {});

    const std::vector<AccessBranch>& branches() const { return m_branches; }
    // Those without a parent.
    const std::vector<std::size_t>& top() const { return m_top; }
    const std::vector<rules::RuleRef>& rules() const { return m_rules; }

    // The rules of a branch and of everything in it.
    std::vector<rules::RuleRef> rulesOf(std::size_t branch) const;
    // Of all rules that are on the map.
    const AccessCounts& counts() const { return m_counts; }

private:
    explicit AccessTree(std::vector<rules::RuleRef> rules)
        : m_rules(std::move(rules))
    {
    }
    std::size_t add(AccessBranch branch);
    void addFolders(std::vector<MappedFolder> folders, std::optional<std::size_t> program,
        const std::vector<std::size_t>& places);
    void sumUp();

    std::vector<rules::RuleRef> m_rules;
    std::vector<AccessBranch> m_branches;
    std::vector<std::size_t> m_top;
    AccessCounts m_counts;
};

using AccessTreePtr = std::shared_ptr<const AccessTree>;

} // namespace quorvane::workflow
