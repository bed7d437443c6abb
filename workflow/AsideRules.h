#pragma once

#include "rules/RuleValue.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quorvane::rules {
class RulesFileText;
}

namespace quorvane::workflow {

// Rules that are out of force for a while: a file of their own beside the journal of the rules file that they
// come from. Its lines are those of a rules file, always written whole, so that tags and dates come back.
//
// The file is replaced whole and durably, under a lock that all our programs honour, or stays as it was. What
// it holds is never overwritten unread. Reading reports a lack of memory; a change throws for it, before
// anything is written. For one thread at a time.
class AsideRules {
public:
    // `rulesFile` is known by its real path. A change waits at most `wait` for another program's to end.
    AsideRules(const std::string& stateFolder, const std::string& rulesFile,
        std::chrono::milliseconds wait = std::chrono::seconds(5));

    const std::string& file() const { return m_file; }

    struct Listing {
        std::vector<rules::RuleValue> rules{}; // in the order of the file
        std::optional<std::string> problem{}; // why not all that the file may hold is there
    };
    Listing read() const;

    // Each returns why it failed, in words, and then nothing has changed.

    // Adds rules. Those that are equal to one that is there take its place, with their tag and date.
    std::optional<std::string> add(const std::vector<rules::RuleValue>& rules) const;
    // Removes the rules that are equal to one of these.
    std::optional<std::string> remove(const std::vector<rules::RuleValue>& rules) const;

private:
    using Edit = std::function<void(std::vector<rules::RuleValue>& rules)>;

    static Listing rulesOf(const rules::RulesFileText& text);
    std::optional<std::string> change(const Edit& edit) const;
    std::optional<std::string> write(const std::vector<rules::RuleValue>& rules) const;

    const std::string m_stateFolder;
    const std::string m_rulesFile;
    const std::chrono::milliseconds m_wait;
    const std::string m_file; // empty when there is no state folder
};

// Those of `rules` that no rule of `present` is equal to.
std::vector<rules::RuleValue> withoutEqual(
    const std::vector<rules::RuleValue>& rules, const std::vector<rules::RuleValue>& present);

} // namespace quorvane::workflow
