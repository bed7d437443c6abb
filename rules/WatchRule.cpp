#include "rules/WatchRule.h"

#include "rules/RuleCodes.h"

namespace quorvane {

WatchRule::WatchRule(WatchRuleFields fields)
    : LockedFields(std::move(fields))
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
    const WatchRuleFields& mine = fields();
    const WatchRuleFields& theirs = other.fields();
    return mine.policyType == theirs.policyType && mine.operations == theirs.operations
        && mine.flags == theirs.flags && sameText(mine.path, theirs.path)
        && sameText(mine.processName, theirs.processName);
}

} // namespace quorvane
