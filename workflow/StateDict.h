#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

namespace quorvane::workflow {

// Which rules of an import review are ticked, by the decimal text of their sequence numbers. A rule without
// an entry is ticked, so that all are at first. One thread at a time.
class StateDict {
public:
    static constexpr int ticked = 1;
    static constexpr int unticked = 2;

    // The entry of a rule; none when it has none.
    std::optional<int> entry(const std::string& sequence) const;
    bool isTicked(std::int64_t sequence) const;

    void setTicked(std::int64_t sequence, bool isTicked);
    // Gives every rule the same entry, in constant memory.
    void setAllTicked(bool areTicked);

    // How many of `rules` rules are ticked. Requires that entries were made for these rules only.
    std::size_t countOfTicked(std::size_t rules) const;

private:
    std::optional<int> m_common; // for the rules without an entry
    std::unordered_map<std::string, int> m_entries;
    std::size_t m_exceptions = 0; // entries that differ from the rest
};

} // namespace quorvane::workflow
