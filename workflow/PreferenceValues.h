#pragma once

#include "platform/PropertyList.h"

#include <cstdint>
#include <optional>

namespace quorvane::workflow {

// What the preferences window shows and saves; without a property list, as the members stand here.
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

    // What is shown for `settings`. Whether users may create rules is not read from there: the permission of
    // the rules folder decides, which the caller gives as `canCreateRules`.
    static PreferenceValues shownFor(const platform::PropertyList& settings, bool canCreateRules);

    // Whether users could create rules when `settings` were saved; none when that is not in them.
    static std::optional<bool> createRulesWhenSaved(const platform::PropertyList& settings);

    // Sets all fourteen keys and leaves every other one as it is. A setting that is neither on nor off by
    // nature is written as the integer 1 for on and 2 for off, since a missing key and 0 have a meaning of
    // their own.
    void writeTo(platform::PropertyList& settings) const;
};

} // namespace quorvane::workflow
