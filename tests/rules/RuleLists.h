#pragma once

#include "rules/RuleLine.h"
#include "rules/RuleMarks.h"
#include "rules/RuleValue.h"
#include "tests/rules/RandomRules.h"

#include <algorithm>
#include <string>
#include <vector>

// Shorthand for lists of rules in tests of differences and merges.

namespace quorvane::test {

using RuleValues = std::vector<rules::RuleValue>;

// "a", "a:tag" or "a:tag@7": a policy rule on that path; "w…" is a watch rule.
inline rules::RuleValue namedRule(const std::string& text)
{
    const std::size_t at = std::min(text.find('@'), text.size());
    const std::size_t colon = std::min(text.find(':'), at);
    const std::string tag = colon < at ? text.substr(colon + 1, at - colon - 1) : "";
    const rules::NullableText path = text.substr(0, colon);
    if (text.starts_with('w'))
        return makeRuleValue(
            rules::WatchRuleFields{.path = path, .processName = "any", .tag = tag, .operations = 1});
    return makeRuleValue(rules::PolicyRuleFields{.path = path,
        .processName = "any",
        .tag = tag,
        .operations = 1,
        .created = at < text.size() ? std::stoull(text.substr(at + 1)) : 0});
}

inline RuleValues namedRules(const std::string& text)
{
    RuleValues rules;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find(' ', at), text.size());
        rules.push_back(namedRule(text.substr(at, end - at)));
        at = end + 1;
    }
    return rules;
}

inline std::string nameOf(const rules::RuleValue& rule)
{
    std::string name(askValue(rule, [](const auto& fields) { return fields.path.view(); }));
    if (!tagOf(rule).view().empty())
        name.append(":").append(tagOf(rule).view());
    return createdOf(rule) == 0 ? name : name + "@" + std::to_string(createdOf(rule));
}

inline std::string namesOf(const RuleValues& rules)
{
    std::string names;
    for (const rules::RuleValue& rule : rules)
        names += (names.empty() ? "" : " ") + nameOf(rule);
    return names;
}

// A random list from few rules, watch rules first, as in a written file.
inline RuleValues randomRuleList(RandomRules& random, std::size_t most)
{
    std::vector<std::string> names;
    for (std::size_t left = random.below(most + 1); left > 0; --left) {
        std::string name = random.oneOf<std::string>({"a", "b", "c", "d", "e", "f", "w1", "w2", "w3"});
        name += random.oneOf<std::string>({"", "", ":x", ":y"});
        names.push_back(name.starts_with('w') ? name : name + random.oneOf<std::string>({"", "@1", "@2"}));
    }
    std::stable_partition(
        names.begin(), names.end(), [](const std::string& name) { return name.starts_with('w'); });
    RuleValues rules;
    for (const std::string& name : names)
        rules.push_back(namedRule(name));
    return rules;
}

} // namespace quorvane::test
