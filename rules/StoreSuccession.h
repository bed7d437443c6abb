#pragma once

#include "rules/PolicyRule.h"
#include "rules/RuleList.h"
#include "rules/RuleRows.h"
#include "rules/RuleValue.h"
#include "rules/WatchRule.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

namespace quorvane::rules {

class RuleStore;

// Lets a store take the place of another one and go on with its records: a rule that is in both stays the
// same stored rule. The successor may have been read, and this be made, on another thread.
//
// The exchange only visits each record once, in the order of memory: 20 ms for a million, where to remove and
// add half of them took 500.
class StoreSuccession {
public:
    // What a rule of the successor takes over.
    struct Heritage {
        std::size_t row = 0; // of the former store's rules, all of them in stored order
        RuleValue value{}; // that its record gets; of the record's kind
    };

    // `heritage`: by the rules of the successor in stored order; none for those that are new. `former`: all
    // rules of the store to be replaced, which must still be those when perform() is called; no row may be
    // inherited twice. Throws std::bad_alloc.
    StoreSuccession(std::unique_ptr<RuleStore> successor, std::shared_ptr<const RuleRows> former,
        const std::vector<std::optional<Heritage>>& heritage);
    ~StoreSuccession(); // on any thread; frees the store that was replaced, or was to replace it
    StoreSuccession(const StoreSuccession&) = delete;
    StoreSuccession& operator=(const StoreSuccession&) = delete;

    // Puts the successor in place of the store `inUse`, with its search text and sort order, and keeps that
    // one. The age of inherited rules is measured against `readAt`, in seconds since 1970. For the thread
    // that owns the store `inUse`. Throws std::bad_alloc; then nothing has changed.
    void perform(std::unique_ptr<RuleStore>& inUse, std::uint64_t readAt);

private:
    // A record of the former store.
    template <class Record> struct Step {
        Record* record = nullptr;
        RuleList<Record>* list = nullptr; // of the successor, that inherits it; null when none does
    };
    using Steps = std::tuple<std::vector<Step<PolicyRule>>, std::vector<Step<WatchRule>>>;
    using Heritages = std::vector<std::optional<Heritage>>;

    void inheritRecords(const Heritages& heritage);
    void replaceNumbered(const Heritages& heritage, const std::vector<std::size_t>& places);
    template <class Record> void addStep(const std::shared_ptr<Record>& record, RuleList<Record>* list);

    std::unique_ptr<RuleStore> m_store; // the successor, afterwards the store that it has replaced
    std::shared_ptr<const RuleRows> m_former; // keeps all records of the steps
    std::vector<std::pair<RuleRef, RuleValue>> m_changed; // records that get another value
    Steps m_steps; // one for each record, by address
};

} // namespace quorvane::rules
