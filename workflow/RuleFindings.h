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

// Problems found with a rule: the table colours and explains them, and the command line checks for them.

namespace quorvane::workflow {

enum class FindingKind {
    redundant, // another rule covers it
    invalidProgram, // its program is missing or no longer matches
    missingPath, // nothing exists at its path
    doesNotReadBack, // written to a file and read back it would differ
    joined, // a line of the file contains more than one rule
    overlap, // an earlier rule decides the opposite about the same accesses
    unproven, // its team is a name that anyone could have signed with
};
constexpr std::size_t findingKindCount = 7;

// In the order in which they are reported.
constexpr std::array<FindingKind, findingKindCount> allFindingKinds{FindingKind::redundant,
    FindingKind::invalidProgram, FindingKind::missingPath, FindingKind::doesNotReadBack, FindingKind::joined,
    FindingKind::overlap, FindingKind::unproven};

// "redundant", "invalid", "missing", "unwritable", "joined", "overlap" or "unproven".
std::string_view findingName(FindingKind kind);
std::optional<FindingKind> findingKindNamed(std::string_view name);

// The same for display, as a heading: "Path is gone".
std::string_view findingTitle(FindingKind kind);

// A description of the kind, in a sentence that names no rule.
std::string_view findingKindText(FindingKind kind);

// True for kinds that need programs and paths to be looked up.
bool needsPlace(FindingKind kind);

// A set of kinds. A value object.
class FindingKinds {
public:
    FindingKinds() = default;
    FindingKinds(std::initializer_list<FindingKind> kinds)
    {
        for (const FindingKind kind : kinds)
            add(kind);
    }
    static FindingKinds all();
    // All but overlaps, which are often intended.
    static FindingKinds usual();

    void add(FindingKind kind) { m_kinds.set(static_cast<std::size_t>(kind)); }
    void remove(FindingKind kind) { m_kinds.reset(static_cast<std::size_t>(kind)); }
    bool contains(FindingKind kind) const { return m_kinds.test(static_cast<std::size_t>(kind)); }

private:
    std::bitset<findingKindCount> m_kinds;
};

struct RuleFinding {
    FindingKind kind;
    // The rule that covers a redundant one, or that a rule overlaps; null otherwise. Valid as long as it is
    // stored.
    const rules::PolicyRule* other = nullptr;
    // The fault of an invalid program; none otherwise.
    std::optional<ProgramFault> programFault{};
    TeamProof teamProof = TeamProof::proven; // why a team name is not proven
};

// A sentence for the user.
std::string findingText(const RuleFinding& finding);

// Why the program or its team fails, in a few words; empty for other findings.
std::string_view findingReason(const RuleFinding& finding);

// The rule as a line of a rules file, without the line feed.
std::string ruleText(const rules::RuleRef& rule);
std::string ruleText(const rules::PolicyRule& rule);

// True for a user rule, other than a suffix rule, whose file or folder does not exist. Devices and resources
// other than files are never missing.
bool isPathMissing(const rules::RuleRef& rule, const RulesPlace& place = RulesPlace::thisMachine());

// What to search for, and where.
struct FindingSearch {
    FindingKinds kinds = FindingKinds::usual();
    RulesPlace place = RulesPlace::thisMachine();
};

// The findings about a rule's program, which are the same for all rules of one program and constraint.
struct ProgramFindings {
    std::optional<ProgramFault> fault{};
    TeamProof proof = TeamProof::proven;
};

// All findings of one rule, in the order of FindingKind, except joined lines and overlaps, which need all
// rules. For a system rule never doesNotReadBack, since it is not written. For the store's thread.
std::vector<RuleFinding> findingsForRule(
    const rules::RuleManager& store, const rules::RuleRef& rule, const FindingSearch& search = {});

// The same without findings that involve other rules. Any thread that may read the rule; needs no store.
std::vector<RuleFinding> findingsOfRuleAlone(const rules::RuleRef& rule, const FindingSearch& search = {});

// The findings of findingsForRule() without those about the program: reads no program file.
std::vector<RuleFinding> pathFindingsForRule(const rules::RuleManager& store, const rules::RuleRef& rule,
    const RulesPlace& place = RulesPlace::thisMachine());

// The findings of the rows of a store, overlaps included. For the store's thread, until its rows change.
class RowFindings {
public:
    RowFindings(const rules::RuleManager& store, bool includeSystemRules, FindingSearch search);

    // The findings of a row, in the order of FindingKind. The program of rows that follow each other is asked
    // about once: rows of a store that is not sorted are grouped by program.
    std::vector<RuleFinding> at(std::size_t row) const;

private:
    const ProgramFindings& programOf(const rules::RuleRef& rule) const;

    const rules::RuleManager& m_store;
    const std::shared_ptr<const rules::RuleRows> m_rows;
    const bool m_includeSystemRules;
    const FindingSearch m_search;
    std::vector<std::size_t> m_overlapped; // by row; empty when overlaps are not searched for
    mutable std::optional<rules::PolicyValue> m_lastAsked; // the rule that m_lastProgram is about
    mutable ProgramFindings m_lastProgram;
};

} // namespace quorvane::workflow
