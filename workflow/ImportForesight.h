#pragma once

#include "rules/RuleLine.h"
#include "rules/RuleManager.h"
#include "workflow/RulesPlace.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <stop_token>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace quorvane::workflow {

// The expected effect of importing a reviewed rule. A rule can have several.
enum class Foresight {
    fresh, // no equal rule exists yet
    present, // an equal rule exists already
    redundant, // fresh, and covered by another reviewed or existing rule
    failing, // its program is missing or does not meet its constraint
    joined, // its line contains several rules
};
constexpr std::size_t foresightKinds = 5;

// The texts of a kind: one word, and its meaning.
std::string_view foresightTitle(Foresight kind);
std::string_view foresightHelp(Foresight kind);

// Sequence numbers of rules.
using RuleSequences = std::unordered_set<std::int64_t>;

// The rules whose program fails. May read whole program files. Any thread, provided that the rules do not
// change meanwhile; incomplete when `stop` is requested.
RuleSequences failingRules(const rules::RuleRows& rows, const RulesPlace& place, const std::stop_token& stop);

// Examines the reviewed rules before they are imported, in batches: a million take longer than a window may
// freeze. For the thread that owns the stores.
class ImportForesight {
public:
    // `present`: the store that rules are imported into. `reviewed`: the store under review, whose rules are
    // identified by sequence number. `joined`: rules of lines that contain several; null when there are none.
    // All must outlive this object. `lineEnds`: how rules are written.
    ImportForesight(const rules::RuleManager& present, const rules::RuleManager& reviewed,
        const rules::RuleManager* joined, rules::LineEnds lineEnds);

    // Examines up to `rules` more. False when all have been examined.
    bool examine(std::size_t rules);

    // Sets which rules fail; before that none does.
    void setFailing(std::shared_ptr<const RuleSequences> failing) { m_failing = std::move(failing); }

    // For the rules examined so far.
    bool is(const rules::RuleRef& rule, Foresight kind) const;
    std::size_t count(Foresight kind) const;
    // Rules that the rules file would cut, and that writing whole lines would preserve.
    std::size_t countOfCut() const { return m_countOfCut; }

private:
    unsigned kindsOf(const rules::RuleRef& rule) const;
    bool isCovered(const rules::RuleRef& rule) const;

    const rules::RuleManager& m_present;
    const rules::RuleManager& m_reviewed;
    const rules::RuleManager* m_joined;
    const rules::LineEnds m_lineEnds;
    const std::shared_ptr<const rules::RuleRows> m_rows;
    std::shared_ptr<const RuleSequences> m_failing; // null while unknown
    std::size_t m_next = 0;
    std::unordered_map<std::int64_t, unsigned> m_kinds; // one bit per kind, by sequence number
    std::array<std::size_t, foresightKinds> m_counts{};
    std::size_t m_countOfCut = 0;
};

// The load number of a rule, which identifies it in its file.
std::int64_t sequenceOf(const rules::RuleRef& rule);

} // namespace quorvane::workflow
