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

// The options of a configuration: those of the preferences, and those set by rules files. One thread at a
// time.
class FilterOptions {
public:
    // Sets the preferences to load from; none when they cannot be read. Options already loaded are unchanged.
    void setPreferences(std::optional<platform::PropertyList> preferences)
    {
        m_preferences = std::move(preferences);
    }

    // Appends every option of the preferences; does nothing without preferences.
    void loadAll();
    // Appends one option of the preferences, with value 0 when it or the preferences are missing.
    void loadAsBool(const std::string& name);
    void loadAsInteger(const std::string& name);

    void append(FilterOption option) { m_options.push_back(std::move(option)); }
    void clear() { m_options.clear(); }

    // The value of the first option of that name, 0 when there is none.
    std::uint32_t value(std::string_view name) const;
    const std::vector<FilterOption>& all() const { return m_options; }

    // True when the preferences ask for the paranoid system file instead of the main one.
    bool areParanoid() const;

    // A system rules file that an option can exclude.
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
