#pragma once

#include "platform/PropertyList.h"
#include "rules/FilterOption.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorvane::rules {

// The options of a configuration: those of the preferences, and those that rules files set. One thread.
class FilterOptions {
public:
    // What the preferences hold; none when they cannot be read. Options that were loaded stay as they are.
    void setPreferences(std::optional<platform::PropertyList> preferences)
    {
        m_preferences = std::move(preferences);
    }

    // Appends every option of the preferences; nothing without them.
    void loadAll();
    // Appends one of them; 0 without them, and where they lack it.
    void loadAsBool(const std::string& name);
    void loadAsInteger(const std::string& name);

    void append(FilterOption option) { m_options.push_back(std::move(option)); }
    void clear() { m_options.clear(); }

    // The value of the first option of that name, 0 when there is none.
    std::uint32_t value(std::string_view name) const;
    const std::vector<FilterOption>& all() const { return m_options; }

    // True when the preferences ask for the paranoid system file in place of the main one.
    bool areParanoid() const;

    // A rules file of the system that an option may leave out.
    struct OptionalSystemFile {
        const char* option;
        const char* name;
    };
    // In the order of reading.
    static constexpr std::array<OptionalSystemFile, 4> optionalSystemFiles{{
        {"policy.global.user", "user.rc"},
        {"policy.global.webcam", "webcam.rc"},
        {"policy.global.startup", "startup.rc"},
        {"policy.global.exec", "exec.rc"},
    }};
    bool leaveOut(const OptionalSystemFile& file) const;

private:
    std::optional<platform::PropertyList> m_preferences;
    std::vector<FilterOption> m_options;
};

} // namespace quorvane::rules
