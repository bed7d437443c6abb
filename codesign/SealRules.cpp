#include "codesign/SealRules.h"

#include <charconv>

namespace quorvane {

namespace {

constexpr std::size_t mostRules = 256;

double weightOf(const PropertyValue& rule)
{
    const PropertyValue* weight = rule.find("weight");
    double value = 1;
    if (weight != nullptr && weight->kind == PropertyValue::Kind::other)
        std::from_chars(weight->text.data(), weight->text.data() + weight->text.size(), value);
    return value;
}

bool omits(const PropertyValue& rule)
{
    if (rule.kind == PropertyValue::Kind::boolean)
        return !rule.flag;
    const PropertyValue* omit = rule.find("omit");
    return omit != nullptr && omit->kind == PropertyValue::Kind::boolean && omit->flag;
}

} // namespace

std::optional<SealRules> SealRules::parse(const PropertyValue& rules)
{
    if (rules.kind != PropertyValue::Kind::dictionary || rules.items.size() > mostRules)
        return std::nullopt;
    SealRules result;
    for (std::size_t i = 0; i < rules.items.size(); ++i) {
        const auto pattern = SealPattern::compile(rules.keys[i]);
        if (!pattern)
            return std::nullopt;
        result.m_rules.push_back({*pattern, weightOf(rules.items[i]), omits(rules.items[i])});
    }
    return result;
}

bool SealRules::mayBeUnsealed(std::string_view path) const
{
    const Rule* best = nullptr;
    for (const Rule& rule : m_rules) {
        if ((best == nullptr || rule.weight > best->weight) && rule.pattern.isFoundIn(path))
            best = &rule;
    }
    return best == nullptr || best->omit;
}

std::size_t SealRules::costOf(std::string_view path) const
{
    std::size_t cost = 0;
    for (const Rule& rule : m_rules)
        cost += rule.pattern.cost() * (path.size() + 1);
    return cost;
}

} // namespace quorvane
