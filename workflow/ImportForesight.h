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

// What is to be expected of a rule under review. One rule can be of several kinds.
enum class Foresight {
    fresh, // no equal rule is there yet
    present, // an equal rule is there already
    redundant, // fresh, and another rule under review, or one that is there, covers it
    failing, // its program is gone or does not meet its constraint
    joined, // it stands on a line that holds several
};
constexpr std::size_t foresightKinds = 5;

// What a person reads of a kind: one word, and what it means.
std::string_view foresightTitle(Foresight kind);
std::string_view foresightHelp(Foresight kind);

// Sequence numbers of rules.
using RuleSequences = std::unordered_set<std::int64_t>;

// The rules whose program fails. May read whole program files. Any thread, as long as nobody changes the
// rules; what is left to do when `stop` comes is left undone.
RuleSequences failingRules(const rules::RuleRows& rows, const RulesPlace& place, const std::stop_token& stop);

// Looks at the rules under review before they are imported, some at a time: for a million it takes longer
// than a window may stand still. For the thread that owns the stores.
class ImportForesight {
public:
    // `present`: the store that rules are imported into. `reviewed`: that of the rules under review, which
    // are told apart by their sequence numbers. `joined`: rules of lines that hold several; null when there
    // are none. All must outlive this. `lineEnds`: how rules are written.
    ImportForesight(const rules::RuleManager& present, const rules::RuleManager& reviewed,
        const rules::RuleManager* joined, rules::LineEnds lineEnds);

    // Looks at up to `rules` more. False when all have been looked at.
    bool lookOn(std::size_t rules);

    // Which rules fail; until then none does.
    void setFailing(std::shared_ptr<const RuleSequences> failing) { m_failing = std::move(failing); }

    // Of the rules that were looked at.
    bool is(const rules::RuleRef& rule, Foresight kind) const;
    std::size_t count(Foresight kind) const;
    // Rules whose ends the rules file would lose, and that whole lines would keep.
    std::size_t countOfCut() const { return m_countOfCut; }

private:
    unsigned kindsOf(const rules::RuleRef& rule) const;
    bool isCovered(const rules::RuleRef& rule) const;

    const rules::RuleManager& m_present;
    const rules::RuleManager& m_reviewed;
    const rules::RuleManager* m_joined;
    const rules::LineEnds m_lineEnds;
    const std::shared_ptr<const rules::RuleRows> m_rows;
    std::shared_ptr<const RuleSequences> m_failing; // null until they are known
    std::size_t m_next = 0;
    std::unordered_map<std::int64_t, unsigned> m_kinds; // a bit for each, by sequence number
    std::array<std::size_t, foresightKinds> m_counts{};
    std::size_t m_countOfCut = 0;
};

// The load number of a rule, which identifies it in its file.
std::int64_t sequenceOf(const rules::RuleRef& rule);

} // namespace quorvane::workflow
