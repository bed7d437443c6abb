#pragma once

#include "rules/RuleHandle.h"
#include "rules/RuleValue.h"

#include <cstdint>
#include <memory>
#include <string>

namespace quorvane::rules {

// Reports operations on paths without deciding about them. Shared, and safe on threads, like PolicyRule.
class WatchRule : public RuleHandle<WatchRuleFields> {
public:
    explicit WatchRule(WatchRuleFields fields = {});
    explicit WatchRule(WatchValue value);

    std::int32_t policyType() const { return get(&WatchRuleFields::policyType); }
    void setPolicyType(std::int32_t value) { set(&WatchRuleFields::policyType, value); }
    NullableText path() const { return get(&WatchRuleFields::path); }
    void setPath(NullableText value) { set(&WatchRuleFields::path, std::move(value)); }
    NullableText processName() const { return get(&WatchRuleFields::processName); }
    void setProcessName(NullableText value) { set(&WatchRuleFields::processName, std::move(value)); }
    NullableText tag() const { return get(&WatchRuleFields::tag); }
    void setTag(NullableText value) { set(&WatchRuleFields::tag, std::move(value)); }
    std::uint32_t operations() const { return get(&WatchRuleFields::operations); }
    void setOperations(std::uint32_t value) { set(&WatchRuleFields::operations, value); }
    std::uint32_t flags() const { return get(&WatchRuleFields::flags); }
    void setFlags(std::uint32_t value) { set(&WatchRuleFields::flags, value); }
    std::int64_t sequence() const { return get(&WatchRuleFields::sequence); }
    void setSequence(std::int64_t value) { set(&WatchRuleFields::sequence, value); }
    bool system() const { return get(&WatchRuleFields::system); }
    void setSystem(bool value) { set(&WatchRuleFields::system, value); }

    // Deliberate: always 0. The class of a watch rule is getPolicyClass().
    std::int32_t policyClass() const { return 0; }
    std::int32_t getPolicyClass() const;

    // Deliberate: always null.
    NullableText processShortName() const { return {}; }
    // Deliberate: always empty, unlike a policy rule's.
    std::string getProcessShortName() const { return {}; }

    // RuleState::system or RuleState::user; a watch rule is never recent.
    std::int32_t getRuleState() const;

    // Equal in everything but tag, sequence and system. A null text on this side equals nothing.
    bool isEqualToWatchRule(const WatchRule& other) const;
};

using WatchRulePtr = std::shared_ptr<WatchRule>;

} // namespace quorvane::rules
