#pragma once

#include "platform/Locations.h"
#include "workflow/FileHistory.h"

namespace quorvane::platform {
class Log;
class PrivilegedCommand;
} // namespace quorvane::platform

namespace quorvane::workflow {

class ApplicationServices;
class RulesDocument;
struct RunState;

// The services that a restore of the preferences needs.
struct PreferencesServices {
    ApplicationServices& application;
    platform::PrivilegedCommand& privilegedCommand;
    RunState& run;
};

// The versions of the preferences' property list. A failure to record one is logged and never prevents a
// save. User interface thread only, except as FileHistory says.
class PreferencesHistory : public FileHistory {
public:
    // Versions are recorded under the name `program`, in the place and within the limits of those of
    // `document`. All references must outlive this object.
    PreferencesHistory(platform::Locations locations, const RulesDocument& document, std::string program,
        PreferencesServices services, platform::Log& log);

    // Records the preferences just saved as a version; `action` in words.
    void keepSaved(const std::string& action);

    std::string name() const override;
    std::string file() const override;
    std::string exportName() const override;
    bool canUndo() const override { return false; }
    std::unique_ptr<history::Journal> openJournal() const override;
    DifferenceTablePtr compare(
        const std::string& before, const std::string& after, const std::stop_token& stop) const override;
    void keepPresentVersion() override;
    // Like a save: requires an administrator to authenticate, and sets the permission of the rules folder.
    std::optional<std::string> restore(std::int64_t version) override;
    void versionsWereForgotten() override { }

private:
    void keep(const std::string& bytes, const std::optional<std::string>& action);

    const platform::Locations m_locations;
    const RulesDocument& m_document;
    const std::string m_program;
    const PreferencesServices m_services;
    platform::Log& m_log;
};

} // namespace quorvane::workflow
