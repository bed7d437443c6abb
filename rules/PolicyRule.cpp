#include "rules/PolicyRule.h"

#include "rules/ApplicationIdentity.h"
#include "rules/RuleCodes.h"
#include "rules/RuleIdentity.h"

namespace quorvane::rules {

PolicyRule::PolicyRule(PolicyRuleFields fields, std::uint64_t initialized)
    : PolicyRule(makeRuleValue(std::move(fields)), initialized)
{
}

PolicyRule::PolicyRule(PolicyValue value, std::uint64_t initialized)
    : RuleHandle(std::move(value))
    , m_initialized(initialized)
{
}

std::string PolicyRule::getProcessShortName() const
{
    return applicationNameForProcess(processName());
}

std::int32_t PolicyRule::getRuleState() const
{
    constexpr std::uint64_t day = 86400;
    if (system())
        return RuleState::system;
    return m_initialized - created() < day ? RuleState::recent : RuleState::user;
}

bool PolicyRule::isEqualToPolicyRule(const PolicyRule& other) const
{
    return isEqualRule(fields(), other.fields());
}

bool PolicyRule::isEqualToPolicyRuleWithPrefix(const PolicyRule& other) const
{
    return isEqualButForPath(fields(), other.fields());
}

} // namespace quorvane::rules
