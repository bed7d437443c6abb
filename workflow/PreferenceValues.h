#pragma once

#include "platform/PropertyList.h"

#include <cstdint>
#include <optional>

namespace quorvane::workflow {

// The values that the preferences window shows and saves; the initial values are those without a property
// list. A value object.
struct PreferenceValues {
    std::int32_t levelOfDetail = 0;
    bool restrictRules = false;
    bool createRules = false;
    bool allowSignedExecution = false;
    bool whitelistPreloaded = true;
    bool monitorWebcam = true;
    bool monitorStartup = true;
    bool monitorExecution = true;
    bool monitorAttach = true;
    bool promptsLocked = true;
    bool requireTouchBar = false;
    bool strictSystemRules = false;
    bool allowRemoteAdministration = false;
    bool requireAuthentication = false;

    bool operator==(const PreferenceValues&) const = default;

    // The values to show for `settings`. Whether users may create rules is not read from there: the
    // permission of the rules folder decides, which the caller passes as `canCreateRules`.
    static PreferenceValues shownFor(const platform::PropertyList& settings, bool canCreateRules);

    // Whether users could create rules when `settings` were saved; none when they do not say.
    static std::optional<bool> createRulesWhenSaved(const platform::PropertyList& settings);

    // Sets all fourteen keys and leaves others unchanged. A three-state setting is written as the integer 1
    // for on and 2 for off, since a missing key and 0 have their own meaning.
    void writeTo(platform::PropertyList& settings) const;
};

} // namespace quorvane::workflow
