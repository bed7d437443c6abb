#pragma once

#include "rules/RuleValue.h"
#include "rules/SlotChains.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quorvane::rules {

// Gives equal rules of several lists the same number, counting from 0, so that lists can be compared by
// number.
//
// The rules passed in must outlive this object. At most 2^32 - 2 different rules. One thread at a time.
class RuleNumbering {
public:
    // The number that an equal rule has got before, or the next one. One and the same value is equal to
    // itself even with a null text.
    std::uint32_t numberOf(const RuleValue& rule);

    std::size_t size() const { return m_rules.size(); }

private:
    std::vector<const RuleValue*> m_rules; // the first one of each number
    SlotChains m_byHash;
};

} // namespace quorvane::rules
