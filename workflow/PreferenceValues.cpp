#include "workflow/PreferenceValues.h"

namespace quorvane::workflow {

namespace {

constexpr const char* detailKey = "access.user.detail";
constexpr const char* createKey = "access.user.create";

enum class Form {
    boolean,
    folderPermission, // written as a boolean, never read
    onUnless2,
    offUnless1
};

struct Switch {
    const char* key;
    bool PreferenceValues::*value;
    Form form;
};

// In the order in which they are written, after the level of detail.
constexpr Switch switches[] = {
    {"access.user.restrict", &PreferenceValues::restrictRules, Form::boolean},
    {createKey, &PreferenceValues::createRules, Form::folderPermission},
    {"filter.exec.allow.signed", &PreferenceValues::allowSignedExecution, Form::boolean},
    {"policy.global.user", &PreferenceValues::whitelistPreloaded, Form::onUnless2},
    {"policy.global.webcam", &PreferenceValues::monitorWebcam, Form::onUnless2},
    {"policy.global.startup", &PreferenceValues::monitorStartup, Form::onUnless2},
    {"policy.global.exec", &PreferenceValues::monitorExecution, Form::onUnless2},
    {"policy.global.attach", &PreferenceValues::monitorAttach, Form::onUnless2},
    {"ui.prompts.while_locked", &PreferenceValues::promptsLocked, Form::onUnless2},
    {"ui.prompts.oob", &PreferenceValues::requireTouchBar, Form::offUnless1},
    {"policy.global.paranoid", &PreferenceValues::strictSystemRules, Form::offUnless1},
    {"ui.prompts.remote", &PreferenceValues::allowRemoteAdministration, Form::offUnless1},
    {"ui.prompts.authenticate", &PreferenceValues::requireAuthentication, Form::offUnless1},
};

constexpr std::int32_t on = 1;
constexpr std::int32_t off = 2;

} // namespace

PreferenceValues PreferenceValues::shownFor(const platform::PropertyList& settings, bool canCreateRules)
{
    PreferenceValues values;
    values.levelOfDetail = settings.integerForKey(detailKey);
    for (const Switch& each : switches) {
        bool& value = values.*each.value;
        switch (each.form) {
        case Form::boolean:
            value = settings.boolForKey(each.key);
            break;
        case Form::folderPermission:
            value = canCreateRules;
            break;
        case Form::onUnless2:
            value = settings.integerForKey(each.key) != off;
            break;
        case Form::offUnless1:
            value = settings.integerForKey(each.key) == on;
            break;
        }
    }
    return values;
}

std::optional<bool> PreferenceValues::createRulesWhenSaved(const platform::PropertyList& settings)
{
    for (const auto& [key, value] : settings.entries()) {
        if (key == createKey)
            return settings.boolForKey(key);
    }
    return std::nullopt;
}

void PreferenceValues::writeTo(platform::PropertyList& settings) const
{
    settings.setInteger(detailKey, levelOfDetail);
    for (const Switch& each : switches) {
        const bool value = this->*each.value;
        if (each.form == Form::boolean || each.form == Form::folderPermission)
            settings.setBool(each.key, value);
        else
            settings.setInteger(each.key, value ? on : off);
    }
}

} // namespace quorvane::workflow
