#include "rules/RuleRef.h"

namespace quorvane::rules {

RuleRef recordOf(const RuleValue& value)
{
    if (const auto* policy = std::get_if<PolicyValue>(&value))
        return std::make_shared<PolicyRule>(*policy);
    return std::make_shared<WatchRule>(std::get<WatchValue>(value));
}

} // namespace quorvane::rules
