#pragma once

#include "rules/RuleIndex.h"
#include "rules/RuleRef.h"
#include "rules/RuleValue.h"
#include "workflow/JoinedRules.h"
#include "workflow/RuleFindings.h"
#include "workflow/RulesPlace.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <unordered_map>
#include <vector>

namespace quorvane::workflow {

// Something that is wrong with a stored rule.
struct KnownProblem {
    rules::RuleRef rule;
    RuleFinding finding; // which names no other rule itself
    std::optional<rules::RuleRef> other{}; // that covers the rule or that it overlaps
};

// The problems of all rules, by kind, each in stored order. Never changes; any thread.
class ProblemLists {
public:
    using Lists = std::array<std::vector<KnownProblem>, findingKindCount>; // by kind

    ProblemLists() = default;
    explicit ProblemLists(Lists lists)
        : m_lists(std::move(lists))
    {
    }
    const std::vector<KnownProblem>& of(FindingKind kind) const
    {
        return m_lists[static_cast<std::size_t>(kind)];
    }

private:
    Lists m_lists;
};
using ProblemListsPtr = std::shared_ptr<const ProblemLists>;

// The problems of a store's rules, kept by difference: of rules that stay as they are nothing is looked up
// again. A joined line of the rules file is a problem of the rule that it is read as.
//
// Works on rows that never change and touches no store, so that it can have a thread of its own; one thread
// at a time. What changes about a path or a program is seen only when its rule changes or forget() is called.
class KnownProblems {
public:
    // `rulesFile` is the user's; empty for none.
    explicit KnownProblems(RulesPlace place = RulesPlace::thisMachine(), std::string rulesFile = {});

    // The problems of `rules`, all rules of a store in stored order. Looks at those that have come or changed
    // since the last call, and for redundancy at the rules of their application groups. Overlaps are found
    // anew whenever a rule has changed, and only when they are asked for.
    //
    // Null when it was stopped; then nothing has changed. Throws std::bad_alloc likewise.
    ProblemListsPtr follow(
        std::shared_ptr<const rules::RuleRows> rules, bool withOverlaps, const std::stop_token& stop = {});

    // The next call looks at everything again, in that place.
    void forget(RulesPlace place);

    // A rule with the value that it had, by addresses: which rule it is, and that it is unchanged.
    struct Seen {
        const void* record;
        const void* value;
        std::uint32_t place; // in stored order
    };
    // Rules as they were seen. Keeps records and values, and so their addresses.
    struct SeenRules {
        std::shared_ptr<const rules::RuleRows> rows;
        std::vector<rules::RuleValue> values; // in stored order
        std::vector<Seen> byAddress; // sorted
    };
    using FindingsOf = std::unordered_map<const void*, std::vector<RuleFinding>>; // by address of the record
    using OtherOf = std::unordered_map<const void*, rules::RuleRef>; // likewise

private:
    RulesPlace m_place;
    JoinedLinesOfFile m_joined;
    SeenRules m_seen;
    FindingsOf m_alone; // what rules show by themselves
    OtherOf m_covering; // the rules that cover redundant ones
    OtherOf m_overlapped;
    bool m_knowsOverlaps = false;
};

} // namespace quorvane::workflow
