#pragma once

#include "rules/FailSafeMerge.h"
#include "rules/PolicyRule.h"
#include "rules/SharedBatch.h"
#include "rules/WatchRule.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace quorvane::platform {
class Log;
}

namespace quorvane::rules {

class FilterOptions;
class RuleStore;
struct ParsedLine;

// Reads one file into a store: gives each rule its sequence number and its record, skips those that are equal
// to a stored one, and logs every line. Throws std::bad_alloc. One thread only.
class RulesReading {
public:
    // `former`: the store before a reload, whose records are reused for equal rules; may be null. `sequence`:
    // the number of the next rule. All arguments must outlive this object.
    RulesReading(RuleStore& store, RuleStore* former, FilterOptions& options, std::int64_t& sequence,
        platform::Log& log);

    // From now on merges policy rules into previous ones, as for the fail-safe file.
    void mergeAsFailSafe();

    // Stores the contents of the lines and moves from them.
    void store(std::vector<ParsedLine>& lines);

private:
    void prefetch(const ParsedLine& line, std::size_t step) const;
    void store(ParsedLine& line);
    void storeRule(std::shared_ptr<WatchRuleFields> fields, const ParsedLine& line);
    void storeRule(std::shared_ptr<PolicyRuleFields> fields, std::uint64_t hash);
    PolicyRulePtr recordFor(std::shared_ptr<PolicyRuleFields> fields, std::uint64_t hash);
    WatchRulePtr recordFor(std::shared_ptr<WatchRuleFields> fields, std::uint64_t hash);

    static constexpr std::size_t recordsInBatch = 256;

    RuleStore& m_store;
    RuleStore* const m_former;
    FilterOptions& m_options;
    std::int64_t& m_sequence;
    platform::Log& m_log;
    std::unique_ptr<FailSafeMerge> m_failSafe; // only for the fail-safe file
    SharedBatch<PolicyRule> m_policyRules{recordsInBatch};
    SharedBatch<WatchRule> m_watchRules{recordsInBatch};
};

} // namespace quorvane::rules
