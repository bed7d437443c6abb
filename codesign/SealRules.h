#pragma once

#include "codesign/SealPattern.h"
#include "codesign/XmlPropertyList.h"

#include <optional>
#include <string_view>
#include <vector>

namespace quorvane {

// The rules of a resource seal: which files of a bundle need not be sealed.
class SealRules {
public:
    // None when a rule is malformed or there are more than any bundle has.
    static std::optional<SealRules> parse(const PropertyValue& rules);

    // True when the rule with the most weight among those that match says so, or none matches.
    bool mayBeUnsealed(std::string_view path) const;

    // What asking about a path costs at most, in steps.
    std::size_t costOf(std::string_view path) const;

private:
    struct Rule {
        SealPattern pattern;
        double weight = 1;
        bool omit = false;
    };
    std::vector<Rule> m_rules;
};

} // namespace quorvane
