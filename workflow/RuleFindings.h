#pragma once

#include "rules/RuleManager.h"
#include "rules/RuleRef.h"
#include "workflow/ApplicationValidation.h"
#include "workflow/RulesPlace.h"

#include <array>
#include <bitset>
#include <cstddef>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What is worth telling about a rule. The table colours and explains by it, and the command line checks by
// it.

namespace quorvane::workflow {

enum class FindingKind {
    redundant, // another rule covers it
    invalidProgram, // its program is gone or no longer matches
    missingPath, // nothing exists at its path
    doesNotReadBack, // written to a file and read again it would not be the same
    joined, // of a line of the file: it holds more than one rule
    overlap, // an earlier rule decides otherwise about the same
    unproven, // the team that it is bound to is a name that anybody could have signed with
};
constexpr std::size_t findingKindCount = 7;

// In the order in which they are told.
constexpr std::array<FindingKind, findingKindCount> allFindingKinds{FindingKind::redundant,
    FindingKind::invalidProgram, FindingKind::missingPath, FindingKind::doesNotReadBack, FindingKind::joined,
    FindingKind::overlap, FindingKind::unproven};

// "redundant", "invalid", "missing", "unwritable", "joined", "overlap" or "unproven".
std::string_view findingName(FindingKind kind);
std::optional<FindingKind> findingKindNamed(std::string_view name);

// The same for people, as a heading: "Path is gone".
std::string_view findingTitle(FindingKind kind);

// What a kind is about, in a sentence that names no rule.
std::string_view findingKindText(FindingKind kind);

// True for what cannot be found without looking for programs and paths.
bool needsPlace(FindingKind kind);

// Some of the kinds. A value object.
class FindingKinds {
public:
    FindingKinds() = default;
    FindingKinds(std::initializer_list<FindingKind> kinds)
    {
        for (const FindingKind kind : kinds)
            add(kind);
    }
    static FindingKinds all();
    // All but overlaps, which are often meant.
    static FindingKinds usual();

    void add(FindingKind kind) { m_kinds.set(static_cast<std::size_t>(kind)); }
    void remove(FindingKind kind) { m_kinds.reset(static_cast<std::size_t>(kind)); }
    bool contains(FindingKind kind) const { return m_kinds.test(static_cast<std::size_t>(kind)); }

private:
    std::bitset<findingKindCount> m_kinds;
};

struct RuleFinding {
    FindingKind kind;
    // The rule that covers a redundant one, or that a rule overlaps; null otherwise. Lives as long as it is
    // stored.
    const rules::PolicyRule* other = nullptr;
    // What is wrong with an invalid program; none otherwise.
    std::optional<ProgramFault> programFault{};
    TeamProof teamProof = TeamProof::proven; // what a doubtful team's name is worth
};

// A sentence for a person.
std::string findingText(const RuleFinding& finding);

// Why the program or its team fails, in a few words; empty for other findings.
std::string_view findingReason(const RuleFinding& finding);

// The rule as a line of a rules file, without the line feed.
std::string ruleText(const rules::RuleRef& rule);
std::string ruleText(const rules::PolicyRule& rule);

// True when the rule names a file or folder, as a user rule other than a suffix, that does not exist. Devices
// and resources other than files are never missing.
bool isPathMissing(const rules::RuleRef& rule, const RulesPlace& place = RulesPlace::thisMachine());

// What is looked for, and where.
struct FindingSearch {
    FindingKinds kinds = FindingKinds::usual();
    RulesPlace place = RulesPlace::thisMachine();
};

// Everything worth telling of one rule, in the order of FindingKind; joined lines and overlaps show only when
// all rules are looked at. Of a system rule it is never told that it does not read back, since it is not
// written.
std::vector<RuleFinding> findingsForRule(
    const rules::RuleManager& store, const rules::RuleRef& rule, const FindingSearch& search = {});

// The same as far as the rule alone shows it, without what other rules do to it. Any thread that may read the
// rule; needs no store.
std::vector<RuleFinding> findingsOfRuleAlone(const rules::RuleRef& rule, const FindingSearch& search = {});

// What findingsForRule() tells without what concerns the program: no program file is read.
std::vector<RuleFinding> pathFindingsForRule(const rules::RuleManager& store, const rules::RuleRef& rule,
    const RulesPlace& place = RulesPlace::thisMachine());

// The findings of the rows of a store, overlaps included. For the store's thread, until its rows change.
class RowFindings {
public:
    RowFindings(const rules::RuleManager& store, bool includeSystemRules, FindingSearch search);

    // Of that row, in the order of FindingKind.
    std::vector<RuleFinding> at(std::size_t row) const;

private:
    const rules::RuleManager& m_store;
    const std::shared_ptr<const rules::RuleRows> m_rows;
    const bool m_includeSystemRules;
    const FindingSearch m_search;
    std::vector<std::size_t> m_overlapped; // by row; empty when overlaps are not looked for
};

} // namespace quorvane::workflow
