#pragma once

#include "platform/PropertyList.h"
#include "rules/RulesDiff.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane::workflow {

// A difference between two versions of a file as a table, for windows: a row for each item added, removed or
// changed, in this order. Immutable; any thread.
class DifferenceTable {
public:
    enum class Change { added, removed, changed };

    DifferenceTable() = default;
    DifferenceTable(const DifferenceTable&) = delete;
    DifferenceTable& operator=(const DifferenceTable&) = delete;
    virtual ~DifferenceTable() = default;

    // The titles of the columns, at least one. They outlive the table.
    virtual const std::vector<std::string>& titles() const = 0;
    // The column that should be widest.
    virtual std::size_t widestColumn() const = 0;

    virtual std::size_t rows() const = 0;
    // Requires row < rows(), column < titles().size().
    virtual Change change(std::size_t row) const = 0;
    virtual std::string text(std::size_t row, std::size_t column) const = 0;
    // The whole row in words, without the kind of change.
    virtual std::string line(std::size_t row) const = 0;

    // "2 rules added, 1 removed"
    virtual std::string summary() const = 0;

    // True when any row contains the search key `text` (platform/Unicode).
    bool contains(std::string_view text) const;
};

using DifferenceTablePtr = std::shared_ptr<const DifferenceTable>;

DifferenceTablePtr differenceTable(rules::RulesDifference difference);

// Key by key. Nested values are compared as a whole.
DifferenceTablePtr differenceTable(const platform::PropertyList& before, const platform::PropertyList& after);

// "Added", "Removed", "Changed".
std::string_view changeName(DifferenceTable::Change change);

} // namespace quorvane::workflow
