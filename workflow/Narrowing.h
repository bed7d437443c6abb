#pragma once

#include "rules/AppendOnlyTable.h"
#include "rules/RuleIndex.h"
#include "rules/RuleRef.h"
#include "workflow/KnownProblems.h"
#include "workflow/RuleCriteria.h"

#include <cstddef>
#include <memory>
#include <stop_token>
#include <string>
#include <vector>

namespace quorvane::workflow {

// The rules that a table shows of those that its search finds: the ones that meet all criteria.
//
// Rules are looked at once, as they get their numbers, and marked; so the rows of a new search or order cost
// a test of a bit each. Which rules have a problem is what was known when the narrowing was made: a changed
// rule keeps its problems until the next one is made. One thread at a time.
class Narrowing {
public:
    // `problems` are needed where findings are asked for, and may be null elsewhere. Rows that are asked for
    // by their numbers do not count.
    Narrowing(RuleCriteria criteria, const ProblemListsPtr& problems);

    // Marks the rules of `rows` that it does not know yet; false when it was stopped, and then only some of
    // them. Many rules take a while.
    bool follow(const rules::RuleRows& rows, const std::stop_token& stop = {});

    // The rows that remain, in the order of `rows`, which it follows first.
    std::shared_ptr<const rules::RuleRows> narrowed(const rules::RuleRows& rows);

private:
    bool isWanted(const rules::RuleRef& rule) const;

    const RuleCriteria m_criteria;
    const ProblemListsPtr m_problems; // keeps the addresses of its rules
    std::vector<const void*> m_withProblem; // records, sorted
    rules::AppendOnlyTable<rules::RuleRef> m_rules; // that were looked at
    std::vector<bool> m_marks; // of these, by number
};

// The tags and programs of rules, for a person to choose one.
struct NamesInUse {
    static constexpr std::size_t most = 1000;

    // Each once, in the order of the alphabet; of more than the most, those of most rules.
    struct List {
        std::vector<std::string> names{};
        std::size_t further = 0; // that are left out

        bool operator==(const List&) const = default;
    };
    List tags{}; // the empty one of rules without a tag is not among them
    List programs{}; // paths

    bool operator==(const NamesInUse&) const = default;
};

// Of all rules among `rows`, those of the system included; of some of them when it was stopped. Any thread.
NamesInUse namesInUse(const rules::RuleRows& rows, const std::stop_token& stop = {});

} // namespace quorvane::workflow
