#pragma once

#include "rules/FailSafeMerge.h"
#include "rules/NullableText.h"
#include "rules/PolicyRule.h"
#include "rules/WatchRule.h"

#include <cstdint>
#include <memory>

namespace quorvane::platform {
class Log;
}

namespace quorvane::rules {

class FilterOptions;
class PolicyGroup;
class RuleStore;
struct ParsedLine;

// The reading of one file into a store: gives each rule its number and its record, leaves out those of which
// an equal one is stored, and logs every line. Throws std::bad_alloc. One thread.
class RulesReading {
public:
    // `former`: the store before a reload, of which a rule takes the record of an equal one; may be null.
    // `sequence`: the number of the next rule. All must outlive it.
    RulesReading(RuleStore& store, RuleStore* former, FilterOptions& options, std::int64_t& sequence,
        platform::Log& log);

    // From now on policy rules are merged into the ones before them, as in the fail-safe file.
    void mergeAsFailSafe();

    // Stores what the line holds, which is moved from.
    void store(ParsedLine& line);

private:
    void storeRule(std::shared_ptr<WatchRuleFields> fields, const ParsedLine& line);
    void storeRule(std::shared_ptr<PolicyRuleFields> fields, std::uint64_t hash);
    PolicyRulePtr recordFor(std::shared_ptr<PolicyRuleFields> fields, std::uint64_t hash);
    WatchRulePtr recordFor(std::shared_ptr<WatchRuleFields> fields, std::uint64_t hash);

    RuleStore& m_store;
    RuleStore* const m_former;
    FilterOptions& m_options;
    std::int64_t& m_sequence;
    platform::Log& m_log;
    std::unique_ptr<FailSafeMerge> m_failSafe; // of the fail-safe file only
    // Rules of one application mostly follow each other and share its texts.
    NullableText m_lastProcessName;
    NullableText m_lastConstraint;
    PolicyGroup* m_lastGroup = nullptr;
};

} // namespace quorvane::rules
