#include "cli/RuleJson.h"

#include "rules/RuleCodes.h"

#include <cstdint>

namespace quorvane::cli {

namespace {

// Calls `add` with the name and value of each property, in the order in which they are printed.
template <class Add> void useProperties(const rules::PolicyRuleFields& rule, Add add)
{
    add("kind", "policy");
    add("policyClass", rule.policyClass);
    add("policyType", rule.policyType);
    add("path", rule.path);
    add("processName", rule.processName);
    add("tag", rule.tag);
    add("constraint", rule.constraint);
    add("operations", rule.operations);
    add("flags", rule.flags);
    add("created", rule.created);
}

template <class Add> void useProperties(const rules::WatchRuleFields& rule, Add add)
{
    add("kind", "watch");
    add("policyClass", static_cast<std::int32_t>(rules::PolicyClass::watch));
    add("policyType", rule.policyType);
    add("path", rule.path);
    add("processName", rule.processName);
    add("tag", rule.tag);
    add("constraint", nullptr);
    add("operations", rule.operations);
    add("flags", rule.flags);
    add("created", nullptr);
}

Json jsonOf(const rules::NullableText& text)
{
    return jsonText(text);
}

template <class Value> Json jsonOf(const Value& value)
{
    return Json(value);
}

template <class Fields> Json jsonOfProperties(const Fields& rule)
{
    Json object = Json::object();
    useProperties(rule, [&object](const JsonKey& key, const auto& value) {
        object[std::string(key.name())] = jsonOf(value);
    });
    return object;
}

template <class Fields> void addAll(JsonLine& line, const Fields& rule)
{
    useProperties(rule, [&line](const JsonKey& key, const auto& value) { line.add(key, value); });
}

} // namespace

Json propertiesJson(const rules::PolicyRuleFields& rule)
{
    return jsonOfProperties(rule);
}

Json propertiesJson(const rules::WatchRuleFields& rule)
{
    return jsonOfProperties(rule);
}

void addProperties(JsonLine& line, const rules::PolicyRuleFields& rule)
{
    addAll(line, rule);
}

void addProperties(JsonLine& line, const rules::WatchRuleFields& rule)
{
    addAll(line, rule);
}

Json propertiesJson(const rules::RuleValue& rule)
{
    return askValue(rule, [](const auto& fields) { return propertiesJson(fields); });
}

std::string jsonLine(const Json& object)
{
    return object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace quorvane::cli
