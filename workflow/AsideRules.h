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

// Temporarily disabled rules: a separate file beside the journal of the rules file that they come from. Its
// lines are those of a rules file, always written completely, so that tags and dates are preserved.
//
// The file is replaced atomically and durably, under a lock that all our programs take, or stays unchanged.
// It is never overwritten without having been read. When memory runs out, reading reports it; a change throws
// std::bad_alloc before anything is written. One thread at a time.
class AsideRules {
public:
    // `rulesFile` is identified by its real path. A change waits at most `wait` for that of another process.
    AsideRules(const std::string& stateFolder, const std::string& rulesFile,
        std::chrono::milliseconds wait = std::chrono::seconds(5));

    const std::string& file() const { return m_file; }

    struct Listing {
        std::vector<rules::RuleValue> rules{}; // in the order of the file
        std::optional<std::string> problem{}; // why `rules` may be incomplete
    };
    Listing read() const;

    // Each returns why it failed, in words, and then nothing has changed; none on success.

    // Adds rules. One that is equal to a rule in the file replaces it, with its own tag and date.
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

// The rules of `rules` that are not equal to any of `present`.
std::vector<rules::RuleValue> withoutEqual(
    const std::vector<rules::RuleValue>& rules, const std::vector<rules::RuleValue>& present);

} // namespace quorvane::workflow
