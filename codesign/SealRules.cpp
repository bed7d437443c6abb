#include "codesign/SealRules.h"

#include <string>
#include <utility>

namespace quorvane::codesign {

namespace {

constexpr std::size_t mostRules = 64;
constexpr std::size_t longestPattern = 1024;

// Matching takes time proportional to the path times the compiled pattern; this bounds the latter.
constexpr std::int64_t mostPatternMemory = 128 << 10; // bytes

// Null for a pattern that is rejected. Paths are bytes, in any encoding.
std::unique_ptr<const RE2> compiled(std::string_view pattern)
{
    RE2::Options options(RE2::Latin1);
    options.set_posix_syntax(true);
    options.set_one_line(true);
    options.set_dot_nl(true);
    options.set_never_capture(true);
    options.set_log_errors(false);
    options.set_max_mem(mostPatternMemory);
    auto expression = std::make_unique<const RE2>(re2::StringPiece(pattern.data(), pattern.size()), options);
    return expression->ok() ? std::move(expression) : nullptr;
}

double weightOf(const platform::PropertyValue& rule)
{
    if (const auto* weight = rule.find<double>("weight"))
        return *weight;
    const auto* weight = rule.find<std::int64_t>("weight");
    return weight == nullptr ? 1 : static_cast<double>(*weight);
}

bool omits(const platform::PropertyValue& rule)
{
    if (const auto* include = rule.as<bool>())
        return !*include;
    const auto* omit = rule.find<bool>("omit");
    return omit != nullptr && *omit;
}

} // namespace

std::optional<SealRules> SealRules::parse(const platform::PropertyValue::Dictionary& rules)
{
    if (rules.size() > mostRules)
        return std::nullopt;
    SealRules result;
    for (const auto& [text, rule] : rules) {
        auto pattern = text.size() <= longestPattern ? compiled(text) : nullptr;
        if (!pattern)
            return std::nullopt;
        result.m_rules.push_back({std::move(pattern), weightOf(rule), omits(rule)});
    }
    return result;
}

bool SealRules::mayBeUnsealed(std::string_view path) const
{
    const re2::StringPiece text(path.data(), path.size());
    const Rule* best = nullptr;
    for (const Rule& rule : m_rules) {
        if ((best == nullptr || rule.weight > best->weight) && RE2::PartialMatch(text, *rule.pattern))
            best = &rule;
    }
    return best == nullptr || best->omit;
}

} // namespace quorvane::codesign
