#include "rules/PolicyRule.h"

#include "rules/ApplicationIdentity.h"
#include "rules/RuleCodes.h"

namespace quorvane {

PolicyRule::PolicyRule(PolicyRuleFields fields, std::uint64_t initialized)
    : LockedFields(std::move(fields))
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
    return sameText(fields().path, other.fields().path) && isEqualToPolicyRuleWithPrefix(other);
}

bool PolicyRule::isEqualToPolicyRuleWithPrefix(const PolicyRule& other) const
{
    const PolicyRuleFields& mine = fields();
    const PolicyRuleFields& theirs = other.fields();
    return mine.policyClass == theirs.policyClass && mine.policyType == theirs.policyType
        && mine.operations == theirs.operations && mine.flags == theirs.flags && !mine.path.isNull()
        && sameText(mine.processName, theirs.processName) && sameText(mine.constraint, theirs.constraint);
}

} // namespace quorvane
