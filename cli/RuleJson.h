#pragma once

#include "cli/JsonLine.h"
#include "cli/JsonText.h"
#include "rules/RuleValue.h"

#include <string>

namespace quorvane::cli {

// The properties of a rule under the names used by all commands, from "kind" to "created".
Json propertiesJson(const rules::PolicyRuleFields& rule);
Json propertiesJson(const rules::WatchRuleFields& rule);
Json propertiesJson(const rules::RuleValue& rule);

// The same, added to a line that is written key by key.
void addProperties(JsonLine& line, const rules::PolicyRuleFields& rule);
void addProperties(JsonLine& line, const rules::WatchRuleFields& rule);

// The object as one line. Bytes that are not UTF-8 are replaced.
std::string jsonLine(const Json& object);

} // namespace quorvane::cli
