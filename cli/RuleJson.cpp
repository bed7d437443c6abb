#include "cli/RuleJson.h"

#include "rules/RuleCodes.h"

namespace quorvane {

Json propertiesJson(const PolicyRuleFields& rule)
{
    return {{"kind", "policy"}, {"policyClass", rule.policyClass}, {"policyType", rule.policyType},
        {"path", jsonText(rule.path)}, {"processName", jsonText(rule.processName)},
        {"tag", jsonText(rule.tag)}, {"constraint", jsonText(rule.constraint)},
        {"operations", rule.operations}, {"flags", rule.flags}, {"created", rule.created}};
}

Json propertiesJson(const WatchRuleFields& rule)
{
    return {{"kind", "watch"}, {"policyClass", PolicyClass::watch}, {"policyType", rule.policyType},
        {"path", jsonText(rule.path)}, {"processName", jsonText(rule.processName)},
        {"tag", jsonText(rule.tag)}, {"constraint", nullptr}, {"operations", rule.operations},
        {"flags", rule.flags}, {"created", nullptr}};
}

Json propertiesJson(const RuleValue& rule)
{
    return askValue(rule, [](const auto& fields) { return propertiesJson(fields); });
}

std::string jsonLine(const Json& object)
{
    return object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace quorvane
