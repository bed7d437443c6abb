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

// What a restore of the preferences asks of its surroundings.
struct PreferencesServices {
    ApplicationServices& application;
    platform::PrivilegedCommand& privilegedCommand;
    RunState& run;
};

// The versions of the preferences' list. What cannot be kept is logged, and never stops a save.
class PreferencesHistory : public FileHistory {
public:
    // Versions are kept under the name `program`, where and as long as those of `document` are. What is given
    // by reference must outlive it.
    PreferencesHistory(platform::Locations locations, const RulesDocument& document, std::string program,
        PreferencesServices services, platform::Log& log);

    // Makes what was just saved a version; `action` in words.
    void keepSaved(const std::string& action);

    std::string name() const override;
    std::string file() const override;
    std::string exportName() const override;
    bool canUndo() const override { return false; }
    std::unique_ptr<history::Journal> openJournal() const override;
    DifferenceTablePtr compare(
        const std::string& before, const std::string& after, const std::stop_token& stop) const override;
    void keepPresentVersion() override;
    // As a save does it: for administrators who authenticate, with the permission of the rules folder.
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
