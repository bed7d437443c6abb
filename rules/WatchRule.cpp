#include "rules/WatchRule.h"

#include "rules/RuleCodes.h"
#include "rules/RuleIdentity.h"

namespace quorvane::rules {

WatchRule::WatchRule(WatchRuleFields fields)
    : WatchRule(makeRuleValue(std::move(fields)))
{
}

WatchRule::WatchRule(WatchValue value)
    : RuleHandle(std::move(value))
{
}

std::int32_t WatchRule::getPolicyClass() const
{
    return PolicyClass::watch;
}

std::int32_t WatchRule::getRuleState() const
{
    return system() ? RuleState::system : RuleState::user;
}

bool WatchRule::isEqualToWatchRule(const WatchRule& other) const
{
    return isEqualRule(fields(), other.fields());
}

} // namespace quorvane::rules
