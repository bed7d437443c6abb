#pragma once

#include "rules/RuleHandle.h"
#include "rules/RuleValue.h"

#include <atomic>
#include <cstdint>
#include <ctime>
#include <memory>
#include <string>

namespace quorvane::rules {

// Allows or denies a process operations on paths.
//
// Shared by reference: the store, its rows and an editor hold the same object. Every property may be read
// from any thread; it is set by the thread that owns the store.
class PolicyRule : public RuleHandle<PolicyRuleFields> {
public:
    // `initialized` is the time, in seconds since 1970, against which the rule's age is measured.
    explicit PolicyRule(PolicyRuleFields fields = {},
        std::uint64_t initialized = static_cast<std::uint64_t>(std::time(nullptr)));
    explicit PolicyRule(
        PolicyValue value, std::uint64_t initialized = static_cast<std::uint64_t>(std::time(nullptr)));

    // Call it when the rule was read again: its age is measured against `initialized` from then on.
    void setInitialized(std::uint64_t initialized) { m_initialized = initialized; }

    std::int32_t policyClass() const { return get(&PolicyRuleFields::policyClass); }
    void setPolicyClass(std::int32_t value) { set(&PolicyRuleFields::policyClass, value); }
    std::int32_t policyType() const { return get(&PolicyRuleFields::policyType); }
    void setPolicyType(std::int32_t value) { set(&PolicyRuleFields::policyType, value); }
    NullableText path() const { return get(&PolicyRuleFields::path); }
    void setPath(NullableText value) { set(&PolicyRuleFields::path, std::move(value)); }
    NullableText processName() const { return get(&PolicyRuleFields::processName); }
    void setProcessName(NullableText value) { set(&PolicyRuleFields::processName, std::move(value)); }
    NullableText tag() const { return get(&PolicyRuleFields::tag); }
    void setTag(NullableText value) { set(&PolicyRuleFields::tag, std::move(value)); }
    NullableText constraint() const { return get(&PolicyRuleFields::constraint); }
    void setConstraint(NullableText value) { set(&PolicyRuleFields::constraint, std::move(value)); }
    std::uint32_t operations() const { return get(&PolicyRuleFields::operations); }
    void setOperations(std::uint32_t value) { set(&PolicyRuleFields::operations, value); }
    std::uint32_t flags() const { return get(&PolicyRuleFields::flags); }
    void setFlags(std::uint32_t value) { set(&PolicyRuleFields::flags, value); }
    std::uint64_t created() const { return get(&PolicyRuleFields::created); }
    void setCreated(std::uint64_t value) { set(&PolicyRuleFields::created, value); }
    std::int64_t sequence() const { return get(&PolicyRuleFields::sequence); }
    void setSequence(std::int64_t value) { set(&PolicyRuleFields::sequence, value); }
    bool system() const { return get(&PolicyRuleFields::system); }
    void setSystem(bool value) { set(&PolicyRuleFields::system, value); }

    // Deliberate: always null; the short name is computed by getProcessShortName().
    NullableText processShortName() const { return {}; }
    std::string getProcessShortName() const;

    // One of RuleState. Deliberate: the age is an unsigned difference, so a rule created in the future is
    // old.
    std::int32_t getRuleState() const;

    // Equal in everything but tag, times, sequence and system. A null text on this side equals nothing.
    bool isEqualToPolicyRule(const PolicyRule& other) const;

    // The looser comparison of fail-safe rules: as above, but of the paths only this one's existence counts.
    // Deliberate: this rule's folder is compared with itself, so the other rule's path takes no part.
    bool isEqualToPolicyRuleWithPrefix(const PolicyRule& other) const;

private:
    std::atomic<std::uint64_t> m_initialized;
};

using PolicyRulePtr = std::shared_ptr<PolicyRule>;

} // namespace quorvane::rules
