#include "rules/RuleMarks.h"

#include "rules/RuleIdentity.h"

namespace quorvane::rules {

const NullableText& tagOf(const RuleValue& rule)
{
    return askValue(rule, [](const auto& fields) -> const NullableText& { return fields.tag; });
}

std::uint64_t createdOf(const RuleValue& rule)
{
    const auto* policy = std::get_if<PolicyValue>(&rule);
    return policy == nullptr ? 0 : (*policy)->created;
}

bool hasSameTag(const RuleValue& a, const RuleValue& b)
{
    return tagOf(a).isNull() ? tagOf(b).isNull() : equalNonNull(tagOf(a), tagOf(b));
}

bool hasSameMarks(const RuleValue& a, const RuleValue& b)
{
    return createdOf(a) == createdOf(b) && hasSameTag(a, b);
}

bool isEqualWithMarks(const RuleValue& a, const RuleValue& b)
{
    return isEqualRule(a, b) && hasSameMarks(a, b);
}

RuleValue withMarks(const RuleValue& rule, const RuleValue& tagged, const RuleValue& timed)
{
    if (hasSameTag(rule, tagged) && createdOf(rule) == createdOf(timed))
        return rule;
    return askValue(rule, [&](auto fields) -> RuleValue {
        fields.tag = tagOf(tagged);
        if constexpr (requires { fields.created; })
            fields.created = createdOf(timed);
        return makeRuleValue(std::move(fields));
    });
}

} // namespace quorvane::rules
