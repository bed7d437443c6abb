#pragma once

#include "platform/PropertyValue.h"

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include <re2/re2.h>

namespace quorvane::codesign {

// The rules of a resource seal: which files of a bundle need not be sealed. Movable, immutable; any thread.
class SealRules {
public:
    // None when a rule's pattern is not a POSIX extended expression or is longer than 1024 bytes, or there
    // are more rules than any bundle has.
    static std::optional<SealRules> parse(const platform::PropertyValue::Dictionary& rules);

    // True when the matching rule with the highest weight says so, or none matches. Takes at most a tenth of
    // a second for the longest path, whatever the patterns, and usually some microseconds.
    bool mayBeUnsealed(std::string_view path) const;

private:
    struct Rule {
        std::unique_ptr<const RE2> pattern;
        double weight = 1;
        bool omit = false;
    };
    std::vector<Rule> m_rules;
};

} // namespace quorvane::codesign
