#pragma once

#include "rules/RuleRef.h"
#include "rules/RuleRows.h"
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

// A problem of a stored rule.
struct KnownProblem {
    rules::RuleRef rule;
    RuleFinding finding; // without a reference to another rule
    std::optional<rules::RuleRef> other{}; // the rule that covers it or that it overlaps
};

// The problems of all rules, by kind, each in stored order. Immutable; any thread.
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

// The problems of a store's rules, updated incrementally: unchanged rules are not examined again. A joined
// line of the rules file is a problem of the rule that it is read as.
//
// Works on immutable rows and uses no store, so that it can run on a thread of its own; one thread at a time.
// Changes of a path or program are noticed only when its rule changes or forget() is called.
class KnownProblems {
public:
    // `rulesFile` is the user's; empty for none.
    explicit KnownProblems(RulesPlace place = RulesPlace::thisMachine(), std::string rulesFile = {});

    // The problems of `rules`, all rules of a store in stored order. Examines those added or changed since
    // the last call, and for redundancy the rules of their application groups. Overlaps are recomputed
    // whenever a rule has changed, and only on request.
    //
    // Null when it was stopped; then nothing has changed, as when it throws std::bad_alloc.
    ProblemListsPtr follow(
        std::shared_ptr<const rules::RuleRows> rules, bool withOverlaps, const std::stop_token& stop = {});

    // The next call examines everything again, in that place.
    void forget(RulesPlace place);

    // A rule and its value, by address: identifies the rule, and detects that it is unchanged.
    struct Seen {
        const void* record;
        const void* value;
        std::uint32_t place; // in stored order
    };
    // Rules as last examined. Keeps records and values alive, so that their addresses are not reused.
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
    FindingsOf m_alone; // findings of single rules
    OtherOf m_covering; // the rules that cover redundant ones
    OtherOf m_overlapped;
    bool m_knowsOverlaps = false;
};

} // namespace quorvane::workflow
