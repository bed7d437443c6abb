#pragma once

#include "platform/Log.h"
#include "rules/RuleManager.h"

#include <memory>
#include <string>

namespace quorvane {

// A log that nobody reads.
inline Log& silentLog()
{
    static Log log({});
    return log;
}

inline PolicyRulePtr policyRule(PolicyRuleFields fields)
{
    return std::make_shared<PolicyRule>(std::move(fields));
}

inline WatchRulePtr watchRule(WatchRuleFields fields)
{
    return std::make_shared<WatchRule>(std::move(fields));
}

// The rows of a store as lines: the written form of each rule, in order.
std::string rowsAsText(const RuleManager& store, bool includeSystemRules);

} // namespace quorvane
