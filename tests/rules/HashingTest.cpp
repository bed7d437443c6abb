#include "rules/Hashing.h"

#include "rules/RuleIdentity.h"
#include "rules/SlotChains.h"
#include "tests/rules/StoreSandbox.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>
#include <unordered_set>
#include <vector>

namespace quorvane::rules {

namespace {

// Texts that all have the same hash under the unseeded function of the standard library, which multiplies by
// this number and folds 17 bits: flipping the top bit of the contributions of two consecutive blocks changes
// nothing.
class MadeCollisions {
public:
    std::string text(unsigned number) const
    {
        std::string text;
        for (unsigned bit = 0; bit < 16; ++bit) {
            const std::string& block = (number >> bit & 1U) != 0 ? m_block : m_twin;
            text += block + block;
        }
        return text;
    }

private:
    static constexpr std::uint64_t multiplier = 0xc6a4a7935bd1e995U;

    static std::uint64_t inverse()
    {
        std::uint64_t inverse = multiplier;
        for (int step = 0; step < 6; ++step)
            inverse *= 2 - multiplier * inverse;
        return inverse;
    }
    static std::uint64_t mixed(std::uint64_t value) { return value ^ value >> 47U; }

    static std::string twinOf(const std::string& block)
    {
        std::uint64_t word = 0;
        std::memcpy(&word, block.data(), sizeof word);
        const std::uint64_t added = mixed(word * multiplier) * multiplier;
        const std::uint64_t flipped = added ^ std::uint64_t{1} << 63U;
        const std::uint64_t twin = mixed(flipped * inverse()) * inverse();
        std::string bytes(sizeof twin, '\0');
        std::memcpy(bytes.data(), &twin, sizeof twin);
        return bytes;
    }

    const std::string m_block = "/folder/";
    const std::string m_twin = twinOf(m_block);
};

// How many entries a table of that many rules inspects until it has found each of them.
std::size_t stepsToFindAll(const MadeCollisions& collisions, unsigned rules)
{
    SlotChains chains;
    std::vector<std::uint64_t> hashes;
    for (unsigned rule = 0; rule < rules; ++rule) {
        hashes.push_back(
            identityHash(PolicyRuleFields{.path = collisions.text(rule), .processName = "/bin/p"}));
        chains.insert(hashes.back(), rule);
    }
    std::size_t steps = 0;
    for (unsigned rule = 0; rule < rules; ++rule) {
        for (auto entry = chains.first(hashes[rule]);; entry = chains.next(entry)) {
            ++steps;
            if (chains.slot(entry) == rule)
                break;
        }
    }
    return steps;
}

} // namespace

TEST(Hashing, DiffersForTextsWhoseLibraryHashesWereMadeToCollide)
{
    const MadeCollisions collisions;
    std::unordered_set<std::size_t> libraryHashes;
    std::unordered_set<std::uint64_t> hashes;
    for (unsigned number = 0; number < 5000; ++number) {
        libraryHashes.insert(std::hash<std::string>{}(collisions.text(number)));
        hashes.insert(combinedHash(0, collisions.text(number)));
    }
    EXPECT_EQ(libraryHashes.size(), 1U) << "the texts are no attack on this library";
    EXPECT_EQ(hashes.size(), 5000U);
}

TEST(Hashing, MadeCollisionsCostTwiceTheStepsForTwiceTheRules)
{
    const MadeCollisions collisions;
    const std::size_t steps = stepsToFindAll(collisions, 20000);
    EXPECT_LE(stepsToFindAll(collisions, 40000), 3 * steps);
    EXPECT_LE(steps, 2 * 20000U);
}

TEST(Hashing, DependsOnEveryByteAndOnTheLength)
{
    std::unordered_set<std::uint64_t> hashes;
    const std::string text(40, '\0');
    for (std::size_t length = 0; length <= text.size(); ++length)
        hashes.insert(combinedHash(0, std::string_view(text).substr(0, length)));
    for (std::size_t place = 0; place < text.size(); ++place) {
        std::string changed = text;
        changed[place] = 1;
        hashes.insert(combinedHash(0, changed));
    }
    EXPECT_EQ(hashes.size(), 81U);
}

} // namespace quorvane::rules
