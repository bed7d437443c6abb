#pragma once

#include "rules/ApplicationIdentity.h"
#include "rules/RuleCodes.h"
#include "rules/RuleRef.h"
#include "rules/RuleSort.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <string>
#include <vector>

namespace quorvane::test {

// A reference implementation of the store in the simplest form: every query is a scan. For ASCII texts and
// group keys that differ in more than case.
class ReferenceStore {
public:
    static std::string small(std::string_view text)
    {
        std::string letters(text);
        for (char& c : letters)
            c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        return letters;
    }

    void add(const rules::PolicyRulePtr& rule)
    {
        const std::string key = applicationGroupIdentityForRule(*rule);
        groups[{small(key), key}].push_back(rule);
        rebuild();
    }
    void add(const rules::WatchRulePtr& rule)
    {
        watchRules.push_back(rule);
        rebuild();
    }

    template <class Rule> bool remove(const Rule& rule)
    {
        auto* list = listFor(rule);
        if (list == nullptr)
            return false;
        const auto found = firstEqual(rule, *list);
        if (found == list->end())
            return false;
        list->erase(found);
        rebuild();
        return true;
    }

    // The rule that a delete would remove, or null.
    template <class Rule> const Rule* firstEqual(const Rule& rule)
    {
        auto* list = listFor(rule);
        const auto found = list == nullptr ? decltype(list->begin()){} : firstEqual(rule, *list);
        return list == nullptr || found == list->end() ? nullptr : found->get();
    }

    const rules::PolicyRule* coveringRule(const rules::PolicyRule& r)
    {
        const auto* list = listFor(r);
        if (list == nullptr)
            return nullptr;
        for (const rules::PolicyRulePtr& e : *list) {
            if (e.get() == &r)
                continue;
            const rules::PolicyRuleFields& wide = e->fields();
            const rules::PolicyRuleFields& narrow = r.fields();
            const bool rest = wide.policyClass == narrow.policyClass
                && rules::isBitwiseInclusive(wide.operations, narrow.operations) && !wide.constraint.isNull()
                && !narrow.constraint.isNull() && wide.constraint.view() == narrow.constraint.view();
            const bool hasPath = !wide.path.isNull();
            if (hasPath && (wide.path.view() == "any" || wide.path.view().empty()) && rest)
                return e.get();
            if (hasPath && !wide.path.view().empty() && narrow.path.view().starts_with(wide.path.view())
                && wide.policyType == 0 && rest)
                return e.get();
        }
        return nullptr;
    }

    void rebuild()
    {
        rows.clear();
        for (const rules::WatchRulePtr& rule : watchRules) {
            if (passes(rule->fields().path) || passes(rule->fields().processName))
                rows.emplace_back(rule);
        }
        policyRules.clear();
        for (const auto& [key, list] : groups) {
            for (const rules::PolicyRulePtr& rule : list) {
                const rules::PolicyRuleFields& fields = rule->fields();
                if (passes(fields.path) || passes(fields.processName) || passes(fields.tag)) {
                    rows.emplace_back(rule);
                    policyRules.push_back(rule);
                }
            }
        }
        sort(descriptors);
    }

    void sort(const std::vector<rules::SortDescriptor>& by)
    {
        descriptors = by;
        std::stable_sort(rows.begin(), rows.end(), [&](const rules::RuleRef& a, const rules::RuleRef& b) {
            return standsBefore(a, b, descriptors);
        });
    }

    std::vector<rules::RuleRef> userRows() const
    {
        std::vector<rules::RuleRef> user;
        for (const rules::RuleRef& row : rows) {
            if (!visitRule(row, [](const auto& rule) { return rule.fields().system; }))
                user.push_back(row);
        }
        return user;
    }

    std::vector<std::string> sortedKeys() const
    {
        std::vector<std::string> keys;
        for (const auto& [key, list] : groups)
            keys.push_back(key.second);
        return keys;
    }

    static bool standsBefore(
        const rules::RuleRef& a, const rules::RuleRef& b, const std::vector<rules::SortDescriptor>& by)
    {
        for (const rules::SortDescriptor& descriptor : by) {
            const Value left = valueOf(a, descriptor.key);
            const Value right = valueOf(b, descriptor.key);
            if (left < right)
                return descriptor.ascending;
            if (right < left)
                return !descriptor.ascending;
        }
        return false;
    }

    std::vector<rules::WatchRulePtr> watchRules;
    std::map<std::pair<std::string, std::string>, std::vector<rules::PolicyRulePtr>>
        groups; // by small key and key
    std::string searchText;
    std::vector<rules::SortDescriptor> descriptors;
    std::vector<rules::RuleRef> rows;
    std::vector<rules::PolicyRulePtr> policyRules;

private:
    // Compares as a sort key must: absent first, then by number, then by text.
    struct Value {
        bool present = false;
        __extension__ using Wide = __int128;
        Wide number = 0;
        std::string text{};
        bool operator<(const Value& other) const
        {
            return std::tie(present, number, text) < std::tie(other.present, other.number, other.text);
        }
    };
    static Value numberValue(Value::Wide number) { return {true, number, {}}; }
    static Value textValue(const rules::NullableText& text)
    {
        return text.isNull() ? Value() : Value{true, 0, small(text.view())};
    }

    static Value valueOf(const rules::RuleRef& row, rules::SortKey key)
    {
        if (const rules::PolicyRule* policy = policyRuleIn(row)) {
            if (key == rules::SortKey::policyClass || key == rules::SortKey::shownClass)
                return numberValue(policy->policyClass());
            if (key == rules::SortKey::constraint)
                return textValue(policy->constraint());
            if (key == rules::SortKey::created)
                return numberValue(policy->created());
        } else {
            if (key == rules::SortKey::policyClass || key == rules::SortKey::shownClass)
                return numberValue(key == rules::SortKey::shownClass ? 2 : 0);
            if (key == rules::SortKey::constraint || key == rules::SortKey::created)
                return {};
        }
        return visitRule(row, [key](const auto& rule) { return commonValue(rule, key); });
    }

    template <class Rule> static Value commonValue(const Rule& rule, rules::SortKey key)
    {
        switch (key) {
        case rules::SortKey::policyType:
            return numberValue(rule.policyType());
        case rules::SortKey::path:
            return textValue(rule.path());
        case rules::SortKey::processName:
            return textValue(rule.processName());
        case rules::SortKey::tag:
            return textValue(rule.tag());
        case rules::SortKey::operations:
            return numberValue(rule.operations());
        case rules::SortKey::flags:
            return numberValue(rule.flags());
        case rules::SortKey::sequence:
            return numberValue(rule.sequence());
        case rules::SortKey::system:
            return numberValue(rule.system() ? 1 : 0);
        case rules::SortKey::processShortName:
            return textValue(rule.getProcessShortName());
        default:
            return numberValue(rule.getRuleState());
        }
    }

    std::vector<rules::WatchRulePtr>* listFor(const rules::WatchRule&) { return &watchRules; }
    std::vector<rules::PolicyRulePtr>* listFor(const rules::PolicyRule& rule)
    {
        const std::string key = applicationGroupIdentityForRule(rule);
        const auto found = groups.find({small(key), key});
        return found == groups.end() ? nullptr : &found->second;
    }

    static auto firstEqual(const rules::PolicyRule& rule, std::vector<rules::PolicyRulePtr>& list)
    {
        return std::find_if(
            list.begin(), list.end(), [&](const auto& other) { return rule.isEqualToPolicyRule(*other); });
    }
    static auto firstEqual(const rules::WatchRule& rule, std::vector<rules::WatchRulePtr>& list)
    {
        return std::find_if(
            list.begin(), list.end(), [&](const auto& other) { return rule.isEqualToWatchRule(*other); });
    }

    bool passes(const rules::NullableText& text) const
    {
        return searchText.empty()
            || (!text.isNull() && small(text.view()).find(small(searchText)) != std::string::npos);
    }
};

} // namespace quorvane::test
