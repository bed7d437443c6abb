#pragma once

#include "tests/support/TestRules.h"

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace quorvane::test {

// Random rules from few values, so that rules often agree in some of their properties. Deterministic for a
// seed.
class RandomRules {
public:
    explicit RandomRules(unsigned seed)
        : m_random(seed)
    {
    }

    std::size_t below(std::size_t bound) { return m_random() % bound; }

    template <class Value> Value oneOf(const std::vector<Value>& values)
    {
        return values[below(values.size())];
    }

    rules::NullableText path()
    {
        return oneOf<rules::NullableText>({"/", "/Users/", "/Users/a", "/Users/a/", "/Users/a/file",
            "/Users/ab", "/users/A", "/Users/a/file.txt", "any", "anything", "", ".txt", ":NVRAM/x", {}});
    }
    rules::NullableText process()
    {
        return oneOf<rules::NullableText>(
            {"/bin/a", "/bin/B", "any", "/bin/a via /bin/c", "any ancestor /bin/z", {}});
    }
    rules::NullableText constraint() { return oneOf<rules::NullableText>({"", "", "", "TEAM", "team", {}}); }
    rules::NullableText tag()
    {
        return oneOf<rules::NullableText>({"", "work", "Work at home", "users", {}});
    }
    std::uint32_t operations() { return oneOf<std::uint32_t>({0, 1, 2, 3, 7, 17, 31, 256, 257}); }

    rules::PolicyRuleFields policy()
    {
        return {.policyClass = oneOf<std::int32_t>({0, 0, 1, 4}),
            .policyType = oneOf<std::int32_t>({0, 0, 1, 2, 4}),
            .path = path(),
            .processName = process(),
            .tag = tag(),
            .constraint = constraint(),
            .operations = operations(),
            .flags = oneOf<std::uint32_t>({0, 0, 0, 1}),
            .created = oneOf<std::uint64_t>({0, 1, 1700000000, 0x8000000000000000U}),
            .sequence = oneOf<std::int64_t>({-1, 0, 1, 2}),
            .system = below(3) == 0};
    }
    rules::WatchRuleFields watch()
    {
        return {.policyType = oneOf<std::int32_t>({0, 1, 2}),
            .path = path(),
            .processName = process(),
            .tag = tag(),
            .operations = operations(),
            .flags = oneOf<std::uint32_t>({0, 2}),
            .sequence = oneOf<std::int64_t>({-1, 0, 1, 2}),
            .system = below(3) == 0};
    }

private:
    std::mt19937 m_random;
};

} // namespace quorvane::test
