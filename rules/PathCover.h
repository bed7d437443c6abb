#pragma once

#include "rules/NullableText.h"
#include "rules/RuleCodes.h"

#include <string_view>

// Which paths a rule's path text matches. Compares bytes, without file access. Pure functions.

namespace quorvane::rules {

// True for the texts that match every path, whatever the rule's type: "any" and the empty one.
inline bool isEveryPath(const NullableText& path)
{
    return !path.isNull() && (path.view() == "any" || path.view().empty());
}

// True when the rule's text covers `path`: a path rule that equals it, a prefix rule that it begins with, a
// suffix rule that it ends with, and every rule whose text matches every path.
template <class Fields> bool coversPath(const Fields& rule, std::string_view path)
{
    if (rule.path.isNull())
        return false;
    const std::string_view text = rule.path.view();
    if (isEveryPath(rule.path))
        return true;
    switch (rule.policyType) {
    case PolicyType::path:
        return path == text;
    case PolicyType::prefix:
        return path.starts_with(text);
    case PolicyType::suffix:
        return path.ends_with(text);
    default:
        return false;
    }
}

} // namespace quorvane::rules
