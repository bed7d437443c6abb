#pragma once

#include "platform/Log.h"
#include "rules/RuleManager.h"

#include <memory>
#include <string>

namespace quorvane::test {

// A log without sinks.
inline platform::Log& silentLog()
{
    static platform::Log log({});
    return log;
}

inline rules::PolicyRulePtr policyRule(rules::PolicyRuleFields fields)
{
    return std::make_shared<rules::PolicyRule>(std::move(fields));
}

inline rules::WatchRulePtr watchRule(rules::WatchRuleFields fields)
{
    return std::make_shared<rules::WatchRule>(std::move(fields));
}

// The rows of a store as lines: the written form of each rule, in order.
std::string rowsAsText(const rules::RuleManager& store, bool includeSystemRules);

} // namespace quorvane::test
