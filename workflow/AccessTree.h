#pragma once

#include "rules/RuleRef.h"
#include "workflow/AccessMap.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

// The access map as a tree for display: folders within the folders that contain them, or programs with the
// folders that their rules apply to.

namespace quorvane::workflow {

struct AccessBranch {
    enum class Kind { program, everyPath, byEnding, folder, other };

    Kind kind;
    std::string text; // the whole folder or process; empty for every path and for endings
    std::string title; // the part of the text that its parent does not show
    AccessCounts counts{}; // of its rules and those of everything below it
    std::vector<std::size_t> rules{}; // its own: indexes in AccessTree::rules()
    // The programs of the counted rules, those with most rules first; empty for the branches of a program.
    std::vector<std::pair<std::string, std::size_t>> programs{};
    std::optional<std::size_t> parent{}; // none at the top
    std::vector<std::size_t> children{};
};

// Branches by number, from 0; each after its parent. Immutable; any thread.
class AccessTree {
public:
    // Any thread that may read the rules. Null when `stop` was requested before it was complete.
    static std::shared_ptr<const AccessTree> byFolder(
        std::vector<rules::RuleRef> rules, const std::stop_token& stop = {});
    static std::shared_ptr<const AccessTree> byProgram(
        std::vector<rules::RuleRef> rules, const std::stop_token& stop = {});

    const std::vector<AccessBranch>& branches() const { return m_branches; }
    // Those without a parent.
    const std::vector<std::size_t>& top() const { return m_top; }
    const std::vector<rules::RuleRef>& rules() const { return m_rules; }

    // The rules of a branch and of everything below it.
    std::vector<rules::RuleRef> rulesOf(std::size_t branch) const;
    // Of all rules on the map.
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
