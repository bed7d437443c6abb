#pragma once

#include "cli/JsonLine.h"
#include "cli/JsonText.h"
#include "rules/RuleValue.h"

#include <string>

namespace quorvane::cli {

// The properties of a rule under the names that every command gives them, from "kind" to "created".
Json propertiesJson(const rules::PolicyRuleFields& rule);
Json propertiesJson(const rules::WatchRuleFields& rule);
Json propertiesJson(const rules::RuleValue& rule);

// The same, of a line that is printed as it grows.
void addProperties(JsonLine& line, const rules::PolicyRuleFields& rule);
void addProperties(JsonLine& line, const rules::WatchRuleFields& rule);

// The object on a line of its own. Bytes that are no UTF-8 are replaced.
std::string jsonLine(const Json& object);

} // namespace quorvane::cli
