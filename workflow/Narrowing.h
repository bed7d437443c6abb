#pragma once

#include "rules/AppendOnlyTable.h"
#include "rules/RuleRef.h"
#include "rules/RuleRows.h"
#include "workflow/KnownProblems.h"
#include "workflow/RuleCriteria.h"

#include <cstddef>
#include <memory>
#include <stop_token>
#include <string>
#include <vector>

namespace quorvane::workflow {

// Filters the rows of a table's search further: keeps the rules that meet all criteria.
//
// Each rule is checked and marked once, when it gets its number; so the rows of a new search or order cost
// one bit test each. The problems are those known at construction: a changed rule keeps its problems until
// the next Narrowing is made. One thread at a time.
class Narrowing {
public:
    // `problems` are required when `criteria` name findings, otherwise they may be null. Row numbers in
    // `criteria` are ignored.
    Narrowing(RuleCriteria criteria, const ProblemListsPtr& problems);

    // Marks the rules of `rows` that are not known yet; false when it was stopped, and then only some of
    // them. Slow for many rules.
    bool follow(const rules::RuleRows& rows, const std::stop_token& stop = {});

    // The rows that remain, in the order of `rows`. Calls follow() first.
    std::shared_ptr<const rules::RuleRows> narrowed(const rules::RuleRows& rows);

private:
    bool isWanted(const rules::RuleRef& rule) const;

    const RuleCriteria m_criteria;
    const ProblemListsPtr m_problems; // keeps the addresses of its rules
    std::vector<const void*> m_withProblem; // records, sorted
    rules::AppendOnlyTable<rules::RuleRef> m_rules; // rules checked so far
    std::vector<bool> m_marks; // by number: whether the rule meets the criteria
};

// The tags and programs of rules, for the user to choose from.
struct NamesInUse {
    static constexpr std::size_t most = 1000;

    // Each once, in alphabetical order; beyond the limit, those with most rules.
    struct List {
        std::vector<std::string> names{};
        std::size_t further = 0; // that are left out

        bool operator==(const List&) const = default;
    };
    List tags{}; // without the empty one of rules without a tag
    List programs{}; // paths

    bool operator==(const NamesInUse&) const = default;
};

// Of all rules among `rows`, including system rules; incomplete when it was stopped. Any thread.
NamesInUse namesInUse(const rules::RuleRows& rows, const std::stop_token& stop = {});

} // namespace quorvane::workflow
