#pragma once

#include "cli/JsonLine.h"
#include "cli/JsonText.h"
#include "rules/RuleValue.h"

#include <string>

namespace quorvane {

// The properties of a rule under the names that every command gives them, from "kind" to "created".
Json propertiesJson(const PolicyRuleFields& rule);
Json propertiesJson(const WatchRuleFields& rule);
Json propertiesJson(const RuleValue& rule);

// The same, of a line that is printed as it grows.
void addProperties(JsonLine& line, const PolicyRuleFields& rule);
void addProperties(JsonLine& line, const WatchRuleFields& rule);

// The object on a line of its own. Bytes that are no UTF-8 are replaced.
std::string jsonLine(const Json& object);

} // namespace quorvane
