#include "rules/FilterOptions.h"

#include <algorithm>
#include <array>

namespace quorvane::rules {

namespace {

constexpr std::uint32_t leavesFileOut = 2;
constexpr const char* paranoidOption = "policy.global.paranoid";

constexpr std::array boolOptions{"access.user.restrict", "access.user.create"};
constexpr std::array integerOptions{"access.user.detail", "security.hashing.enforce",
    "filter.exec.allow.signed", "policy.global.user", "policy.global.webcam", "policy.global.startup",
    "policy.global.exec", "policy.global.attach", "policy.global.paranoid", "ui.prompts.while_locked",
    "ui.prompts.oob", "ui.prompts.remote", "ui.prompts.authenticate"};

} // namespace

void FilterOptions::loadAll()
{
    if (!m_preferences)
        return;
    for (const char* name : boolOptions)
        loadAsBool(name);
    for (const char* name : integerOptions)
        loadAsInteger(name);
}

void FilterOptions::loadAsBool(const std::string& name)
{
    append({name, m_preferences && m_preferences->boolForKey(name) ? 1U : 0U});
}

void FilterOptions::loadAsInteger(const std::string& name)
{
    const std::int32_t value = m_preferences ? m_preferences->integerForKey(name) : 0;
    append({name, static_cast<std::uint32_t>(value)});
}

std::uint32_t FilterOptions::value(std::string_view name) const
{
    const auto found = std::find_if(m_options.begin(), m_options.end(),
        [&](const FilterOption& option) { return option.name.view() == name; });
    return found == m_options.end() ? 0 : found->value;
}

bool FilterOptions::areParanoid() const
{
    return m_preferences && m_preferences->integerForKey(paranoidOption) == 1;
}

bool FilterOptions::leaveOut(const OptionalSystemFile& file) const
{
    return value(file.option) == leavesFileOut;
}

} // namespace quorvane::rules
