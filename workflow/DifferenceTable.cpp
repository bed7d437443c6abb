#include "workflow/DifferenceTable.h"

#include "platform/PropertyListText.h"
#include "platform/Unicode.h"
#include "rules/RuleCodes.h"
#include "rules/RuleMarks.h"
#include "workflow/DifferenceText.h"

#include <optional>
#include <type_traits>
#include <unordered_map>
#include <utility>

namespace quorvane::workflow {

namespace {

std::string classText(const rules::RuleValue& rule)
{
    return askValue(rule, [](const auto& fields) -> std::string {
        if constexpr (requires { fields.policyClass; })
            return std::string(rules::policyClassDescription(fields.policyClass));
        else
            return std::string(rules::policyClassDescription(rules::PolicyClass::watch));
    });
}

class RulesDifferenceTable : public DifferenceTable {
public:
    explicit RulesDifferenceTable(rules::RulesDifference difference)
        : m_difference(std::move(difference))
    {
    }

    const std::vector<std::string>& titles() const override
    {
        static const std::vector<std::string> all{
            "Change", "Class", "Type", "Operations", "Process", "Path", "Tag", "Details"};
        return all;
    }
    std::size_t widestColumn() const override { return path; }

    std::size_t rows() const override
    {
        return m_difference.added.size() + m_difference.removed.size() + m_difference.changed.size();
    }
    Change change(std::size_t row) const override
    {
        if (row < m_difference.added.size())
            return Change::added;
        return row < m_difference.added.size() + m_difference.removed.size() ? Change::removed
                                                                             : Change::changed;
    }
    std::string text(std::size_t row, std::size_t column) const override
    {
        const rules::RuleValue& rule = ruleAt(row);
        switch (column) {
        case changeColumn:
            return std::string(changeName(change(row)));
        case ruleClass:
            return classText(rule);
        case tag:
            return std::string(tagOf(rule).view());
        case details:
            return detailsOf(row);
        default:
            return askValue(rule, [column](const auto& fields) { return fieldText(fields, column); });
        }
    }
    std::string line(std::size_t row) const override
    {
        const std::string more = detailsOf(row);
        return ruleText(ruleAt(row)) + (more.empty() ? "" : ": " + more);
    }
    std::string summary() const override { return differenceSummary(m_difference); }

private:
    enum Column : std::size_t { changeColumn, ruleClass, type, operations, process, path, tag, details };

    const rules::RuleValue& ruleAt(std::size_t row) const
    {
        if (row < m_difference.added.size())
            return m_difference.added[row];
        row -= m_difference.added.size();
        if (row < m_difference.removed.size())
            return m_difference.removed[row];
        return m_difference.changed[row - m_difference.removed.size()].second;
    }
    std::string detailsOf(std::size_t row) const
    {
        if (change(row) != Change::changed)
            return {};
        const auto& [before, after]
            = m_difference.changed[row - m_difference.added.size() - m_difference.removed.size()];
        return changeText(before, after);
    }
    template <class Fields> static std::string fieldText(const Fields& fields, std::size_t column)
    {
        if (column == type)
            return std::string(rules::policyTypeDescription(fields.policyType));
        if (column == operations)
            return rules::operationsDescription(static_cast<std::int32_t>(fields.operations));
        return std::string((column == process ? fields.processName : fields.path).view());
    }

    const rules::RulesDifference m_difference;
};

class PreferencesDifferenceTable : public DifferenceTable {
public:
    PreferencesDifferenceTable(const platform::PropertyList& before, const platform::PropertyList& after)
    {
        std::unordered_map<std::string, std::string> earlier;
        for (const auto& [key, value] : before.entries())
            earlier.emplace(key, propertyListText(value));
        std::vector<Entry> changed;
        for (const auto& [key, value] : after.entries()) {
            const auto found = earlier.find(key);
            const std::string text = propertyListText(value);
            if (found == earlier.end())
                m_entries.push_back({Change::added, key, {}, text});
            else if (found->second != text)
                changed.push_back({Change::changed, key, found->second, text});
            if (found != earlier.end())
                earlier.erase(found);
        }
        for (const auto& [key, value] : before.entries()) {
            if (const auto left = earlier.find(key); left != earlier.end())
                m_entries.push_back({Change::removed, key, left->second, {}});
        }
        m_entries.insert(m_entries.end(), changed.begin(), changed.end());
    }

    const std::vector<std::string>& titles() const override
    {
        static const std::vector<std::string> all{"Change", "Setting", "Before", "After"};
        return all;
    }
    std::size_t widestColumn() const override { return 1; }

    std::size_t rows() const override { return m_entries.size(); }
    Change change(std::size_t row) const override { return m_entries[row].change; }
    std::string text(std::size_t row, std::size_t column) const override
    {
        const Entry& entry = m_entries[row];
        return column == 0 ? std::string(changeName(entry.change))
            : column == 1  ? entry.key
            : column == 2  ? entry.before
                           : entry.after;
    }
    std::string line(std::size_t row) const override
    {
        const Entry& entry = m_entries[row];
        if (entry.change == Change::changed)
            return entry.key + " = " + entry.after + ", before: " + entry.before;
        return entry.key + " = " + (entry.change == Change::added ? entry.after : entry.before);
    }
    std::string summary() const override
    {
        std::size_t counts[3] = {};
        for (const Entry& entry : m_entries)
            ++counts[static_cast<std::size_t>(entry.change)];
        return countsText("setting", counts[0], counts[1], counts[2]);
    }

private:
    struct Entry {
        Change change;
        std::string key;
        std::string before;
        std::string after;
    };
    std::vector<Entry> m_entries;
};

} // namespace

bool DifferenceTable::contains(std::string_view text) const
{
    std::string key;
    for (std::size_t row = 0; row < rows(); ++row) {
        key.clear();
        platform::appendSearchKey(key, line(row));
        if (key.find(text) != std::string::npos)
            return true;
    }
    return false;
}

DifferenceTablePtr differenceTable(rules::RulesDifference difference)
{
    return std::make_shared<RulesDifferenceTable>(std::move(difference));
}

DifferenceTablePtr differenceTable(const platform::PropertyList& before, const platform::PropertyList& after)
{
    return std::make_shared<PreferencesDifferenceTable>(before, after);
}

std::string_view changeName(DifferenceTable::Change change)
{
    switch (change) {
    case DifferenceTable::Change::added:
        return "Added";
    case DifferenceTable::Change::removed:
        return "Removed";
    case DifferenceTable::Change::changed:
        break;
    }
    return "Changed";
}

} // namespace quorvane::workflow
