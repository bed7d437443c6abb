#pragma once

#include "platform/Locations.h"
#include "rules/ChangeSet.h"
#include "rules/FilterOptions.h"
#include "rules/KnownFile.h"
#include "rules/RowsComputation.h"
#include "rules/RuleList.h"
#include "rules/RuleRef.h"
#include "rules/RuleRows.h"
#include "rules/RuleSort.h"
#include "rules/RuleStore.h"
#include "rules/RulesFile.h"
#include "rules/RulesSnapshot.h"
#include "rules/WholeRules.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

namespace quorvane::platform {
class Log;
}

namespace quorvane::rules {

class PreparedReload;
class RulesContent;

// The rule store: reads the rules of one configuration, indexes them, returns them by row, adds, deletes and
// writes them.
//
// Owns every record; records are shared so that an editor may still hold one that the store has dropped. No
// operation throws: a failure returns false, with the reason in lastErrorMessage(). Not locked: one thread
// only. A row number is valid until the next add, delete, filter, sort or reload.
class RuleManager {
public:
    // An empty store. `log` must outlive it. Reading a file waits at most `wait` for another process that is
    // writing it.
    RuleManager(platform::Locations locations, platform::Log& log,
        std::chrono::milliseconds wait = RulesFileText::usualWait);

    // The process-wide store of the current user's configuration. The first call creates it, and is the only
    // one to use the arguments; it is never released. The creation is safe from any thread.
    static RuleManager& sharedManager(const platform::Locations& locations, platform::Log& log);

    // The store of the current user's configuration: the user's file, the options of the preferences, and the
    // system files that the options select. Never null; holds whatever could be read.
    static std::unique_ptr<RuleManager> initWithCurrentUserConfiguration(platform::Locations locations,
        platform::Log& log, std::chrono::milliseconds wait = RulesFileText::usualWait);

    // A store of one file, with the options of the preferences. Never null, even if the file could not be
    // read.
    static std::unique_ptr<RuleManager> initWithContentsOfFile(const NullableText& path,
        bool shouldLabelAsSystemRules, platform::Locations locations, platform::Log& log,
        std::chrono::milliseconds wait = RulesFileText::usualWait);

    // The same for a user's file that has been read already. The text counts up to its first NUL byte; one
    // that is not UTF-8 holds no rules.
    static std::unique_ptr<RuleManager> initWithText(
        std::string_view text, const std::string& path, platform::Locations locations, platform::Log& log);

    // Discards all rules and options and reads the current user's configuration again. Keeps sort order and
    // filter, and sequence numbers keep increasing.
    void reloadCurrentUserConfiguration();
    // The same with `userText` instead of the contents of the user's file.
    void reloadCurrentUserConfiguration(std::string_view userText);

    // The same in two steps, so that another thread can read and compare while this store is in use: run what
    // prepareReload() returns, then pass it to finishReload(). Rules that are in both keep their sequence
    // numbers. False, and nothing has changed, when rules of this store have changed in the meantime or no
    // such change leads to exactly what was read. Null when memory runs out.
    static constexpr std::size_t manyReloadSteps = 20'000;
    std::unique_ptr<PreparedReload> prepareReload(std::size_t manySteps = manyReloadSteps) const;
    bool finishReload(PreparedReload& reload);

    // Appends the contents of a rules file, without duplicates; never removes anything. False only when the
    // file exists and cannot be read. The rows change with the next rebuildRulesCache().
    bool addFileContents(const NullableText& path, bool shouldLabelAsSystemRules);

    // Appends the rules of a user's file with this text, without duplicates. The text counts up to its first
    // NUL byte; one that is not UTF-8 holds no rules. Each part that is not needed any more is passed to
    // `discard`, if there is one. False when memory runs out.
    bool addUserText(std::string_view text, const std::function<void(std::string_view)>& discard = {});

    // Append options of the preferences. Without readable preferences, the first appends nothing, the others
    // an option of value 0.
    void loadOptions();
    void loadOptionAsBool(const std::string& name);
    void loadOptionAsInteger(const std::string& name);
    // The value of the first option of that name, 0 when there is none.
    std::uint32_t getOption(std::string_view name) const { return m_options.value(name); }
    const std::vector<FilterOption>& filterOptions() const { return m_options.all(); }

    // Writes every user rule, whatever the filter, to the user's file. A file that was not read completely is
    // first renamed to a backup beside it, and is not written when that fails; see unreadRules().
    bool writeToCurrentUserConfiguration();
    // Writes every user rule, whatever the filter. Deliberate: true even when a line was truncated; only
    // lastErrorMessage() reports that.
    bool writeToFile(const std::string& path);
    // Writes exactly these rules, system rules included, in this order. Returns the same as above.
    bool writeToFile(const std::string& path, const std::vector<RuleRef>& policiesToWrite);
    // Minor failures of the last of these writes, which did write the rules.
    const std::vector<std::string>& writeWarnings() const { return m_writeWarnings; }

    // Updates the rows to the stored rules. Lazy: the work is done at the next access to the rows.
    void rebuildRulesCache();
    // Shows only rules that contain `text`; all of them when it is empty. Stays in force until changed.
    void applyFilterWithString(const std::string& text);
    // None when all are shown.
    const std::optional<std::string>& searchText() const { return m_store->searchText(); }
    // Stays in force, also after later rebuilds.
    void sortIndexUsingDescriptors(std::vector<SortDescriptor> descriptors);
    std::size_t totalRules(bool includeSystemRules) const;
    // The number of all rules, including those that the filter hides.
    std::size_t storedRules() const { return m_store->storedRules(); }
    // Requires row < totalRules(includeSystemRules).
    const RuleRef& ruleAtIndex(std::size_t row, bool includeSystemRules) const;
    // The current rows, unaffected by later changes of the store.
    std::shared_ptr<const RuleRows> rows() const;
    // The computation that the rows wait for, if it sorts or searches at least `manyRules`: for another
    // thread to run, while the rows are not accessed. None when they are up to date or are quickly made.
    std::optional<RowsComputation> longComputation(std::size_t manyRules) const;
    // Takes what such a computation has found: the rows, or, when rules or text have changed meanwhile, what
    // makes them quickly. False when nothing of it holds.
    bool adopt(RowsComputation computed) { return m_store->adopt(std::move(computed)); }
    // All stored rules in stored order, whatever filter and sort order; unaffected by later additions and
    // removals. Cheap.
    std::shared_ptr<const RuleRows> storedRows() const;
    // True when these, of an earlier storedRows(), are all stored rules, with the values that they had then.
    bool hasExactly(const RuleRows& stored) const;
    // The policy rules that pass the filter, by application group.
    std::vector<PolicyRulePtr> policyRules() const;
    // True when one of policyRules() is equal to `rule`. Neither scans them nor updates the rows.
    bool hasEqualPolicyRule(const PolicyRule& rule) const;
    const RuleList<WatchRule>& watchRules() const { return m_store->watchRules(); }
    // The application group keys, case-insensitively ordered; including those of groups that have become
    // empty.
    std::vector<std::string> sortedKeys() const;

    // Store the given object itself. Set no sequence and do not check for duplicates. False when memory runs
    // out.
    bool addWatchRule(const WatchRulePtr& rule);
    bool addPolicyRule(const PolicyRulePtr& rule);
    // The same for an import: does not update the rows.
    bool appendWatchRule(const WatchRulePtr& rule);
    // Remove the first stored rule that `rule` is equal to; false, and nothing changes, when there is none.
    bool deleteWatchRule(const WatchRule& rule);
    bool deletePolicyRule(const PolicyRule& rule);
    // Remove the record `rule` itself if it is stored, else the first equal one, which a reload has put in
    // its place. For an editor: if the record stayed stored, saving would add it a second time.
    bool takeOutWatchRule(const WatchRule& rule);
    bool takeOutPolicyRule(const PolicyRule& rule);
    // The stored rule that a delete of `rule` would remove; null when there is none.
    WatchRulePtr firstEqualRule(const WatchRule& rule) const;
    PolicyRulePtr firstEqualRule(const PolicyRule& rule) const;

    // The first stored rule that `rule` is equal to and whose address is not in `excluded`; none when there
    // is none.
    std::optional<RuleRef> firstEqualRule(
        const RuleRef& rule, const std::unordered_set<const void*>& excluded) const;
    // For each of `rules` the first stored rule that it is equal to, of those not found for one before it:
    // the rules that would go if the equal ones of all were deleted one after the other.
    std::vector<RuleRef> firstEqualRules(const std::vector<RuleRef>& rules) const;
    // True when the record itself is stored, not just an equal one.
    bool isStored(const RuleRef& rule) const;

    // Applies `changes` in its order and returns what was actually done, which inverted() reverts. A removal
    // of a record that is not stored is skipped, and so is an addition of one that is; a change of one that
    // is not stored becomes an addition at the end.
    ChangeSet apply(const ChangeSet& changes);
    ChangeSet apply(ChangeSet&& changes); // costs no copy

    // The removal of all rules of the user at once; empty when there are none. None when removing each equal
    // rule in turn would leave some, or when memory runs out.
    std::optional<ChangeSet> removalOfAllUserRules() const;

    // All stored rules, whatever the filter, in stored order.
    std::vector<RuleRef> allRules() const;
    // The user's rules in the order in which writeToFile() writes them. Throws std::bad_alloc, as does
    // userRulesSnapshot(): missing rules would look like removed ones.
    std::vector<RuleRef> userRules() const;
    // The same as an immutable copy, for any thread.
    RulesSnapshot userRulesSnapshot() const;

    // True when another stored rule of the same application group covers `rule`.
    bool isRedundant(const PolicyRule& rule) const { return coveringRule(rule) != nullptr; }
    // The first such rule; null when there is none. Valid as long as it is stored.
    const PolicyRule* coveringRule(const PolicyRule& rule) const;
    // Makes coveringRule() quick in application groups of many rules from the first question on. For the
    // thread that reads the rules, so that no paint waits for it. Throws std::bad_alloc.
    void indexLargeGroups() const { m_store->indexLargeGroups(); }

    // Why the last read or write failed; none when it did not.
    const std::optional<std::string>& lastErrorMessage() const { return m_lastErrorMessage; }
    void setLastErrorMessage(std::optional<std::string> message) { m_lastErrorMessage = std::move(message); }

    // Why files of the configuration, or the single file of the store, could not be read: its own, the
    // preferences, the system's. Each message once, in the order of reading.
    const std::vector<std::string>& readFailures() const { return m_readFailures; }

    // Why rules of the store's own file (the user's, or the one it was made from) are not in the store, so
    // that writing it back would lose them. None when all are, or when there is no file. Unlike
    // lastErrorMessage() it is not reset by reading other files.
    struct UnreadRules {
        std::string reason;
        bool isFailure = false; // a read error; false for a file that is not UTF-8 or holds a NUL byte
    };
    const std::optional<UnreadRules>& unreadRules() const { return m_unreadRules; }
    // Call it when that file has been saved under another name.
    void forgetUnreadRules() { m_unreadRules.reset(); }

    // The state of the store's own file when it was read.
    const KnownFile& ownFile() const { return m_ownFile; }
    // How often it was read. The store consists of the file's contents at the last change of this count, plus
    // the changes made since.
    std::uint64_t ownFileReadings() const { return m_ownFileReadings; }

    const platform::Locations& locations() const { return m_locations; }

private:
    friend class PreparedReload;

    void reloadAs(const std::function<void()>& readUserRules);
    void readOwnFile(const NullableText& path, bool shouldLabelAsSystemRules);
    bool addText(std::string_view text, const std::string& file, bool shouldLabelAsSystemRules,
        const std::function<void(std::string_view)>& discard = {});
    void readSelectedSystemFiles();
    std::unique_ptr<RuleStore> takeRules();
    ChangeSet applied(ChangeSet changes);
    bool writeContent(const std::string& path, const std::function<void(RulesContent&)>& make);
    void readPreferences();
    void noteReadFailure(const std::string& message);
    const RuleRows& presentRows() const;
    // False when `work` has run out of memory, which lastErrorMessage() then reports.
    template <class Work> bool attempt(const Work& work) const
    {
        try {
            work();
            return true;
        } catch (const std::bad_alloc&) {
            m_lastErrorMessage.emplace("Out of memory"); // short enough to need no allocation
            return false;
        }
    }

    const platform::Locations m_locations;
    platform::Log& m_log;
    const std::chrono::milliseconds m_wait; // for another process to finish writing
    std::unique_ptr<RuleStore> m_store; // never null
    std::unique_ptr<RuleStore> m_former; // the rules before a reload, while it reads
    StoreExchange m_exchange;
    FilterOptions m_options;
    std::int64_t m_ruleSequence = 0;
    mutable std::optional<std::string> m_lastErrorMessage;
    std::vector<std::string> m_readFailures;
    std::vector<std::string> m_writeWarnings;
    std::optional<std::string> m_lastUnreadReason; // of the file read last
    std::optional<UnreadRules> m_unreadRules;
    KnownFile m_lastFile; // read last
    KnownFile m_ownFile;
    std::uint64_t m_ownFileReadings = 0;
};

} // namespace quorvane::rules
