#include "workflow/PreferencesHistory.h"

#include "codesign/Digests.h"
#include "history/Journal.h"
#include "platform/FileBytes.h"
#include "platform/Log.h"
#include "platform/PropertyListBounds.h"
#include "workflow/ApplicationServices.h"
#include "workflow/PreferenceValues.h"
#include "workflow/PreferencesFile.h"
#include "workflow/RulesDocument.h"
#include "workflow/RulesFolder.h"
#include "workflow/RunState.h"

#include <filesystem>
#include <utility>

namespace quorvane::workflow {

namespace {

platform::PropertyList listOf(const std::string& bytes)
{
    return platform::PropertyList::parse(bytes).value_or(platform::PropertyList());
}

// A version with counts of the keys of its list.
history::NewVersion versionOf(const std::string& before, const std::string& bytes)
{
    const platform::PropertyList list = listOf(bytes);
    const DifferenceTablePtr difference = differenceTable(listOf(before), list);
    history::NewVersion version;
    version.rules = list.entries().size();
    for (std::size_t row = 0; row < difference->rows(); ++row) {
        const auto change = difference->change(row);
        ++(change == DifferenceTable::Change::added          ? version.added
                : change == DifferenceTable::Change::removed ? version.removed
                                                             : version.changed);
    }
    version.bytes = bytes;
    return version;
}

} // namespace

PreferencesHistory::PreferencesHistory(platform::Locations locations, const RulesDocument& document,
    std::string program, PreferencesServices services, platform::Log& log)
    : m_locations(std::move(locations))
    , m_document(document)
    , m_program(std::move(program))
    , m_services(services)
    , m_log(log)
{
}

std::string PreferencesHistory::name() const
{
    return "Preferences";
}

std::string PreferencesHistory::file() const
{
    return m_locations.preferencesFile();
}

std::string PreferencesHistory::exportName() const
{
    return std::filesystem::path(file()).filename().string();
}

std::unique_ptr<history::Journal> PreferencesHistory::openJournal() const
{
    return history::Journal::open(
        m_document.stateFolder(), m_locations.preferencesFile(), m_document.settings().history, m_log);
}

DifferenceTablePtr PreferencesHistory::compare(
    const std::string& before, const std::string& after, const std::stop_token& /*stop*/) const
{
    return differenceTable(listOf(before), listOf(after));
}

void PreferencesHistory::keepPresentVersion()
{
    if (const auto bytes
        = platform::readSmallFile(m_locations.preferencesFile(), platform::largestPropertyList))
        keep(*bytes, std::nullopt);
}

void PreferencesHistory::keepSaved(const std::string& action)
{
    if (const auto bytes
        = platform::readSmallFile(m_locations.preferencesFile(), platform::largestPropertyList))
        keep(*bytes, action);
}

// Without an action it was written by another program, unless it is the newest version already.
void PreferencesHistory::keep(const std::string& bytes, const std::optional<std::string>& action)
{
    const auto journal = openJournal();
    const auto newest = journal->newest();
    const bool isNewest
        = newest && newest->bytes == bytes.size() && newest->sha256 == codesign::sha256(bytes);
    if (isNewest || (!newest && bytes.empty()))
        return;
    const std::string before = newest ? journal->bytesOf(newest->number).value_or("") : std::string();
    history::NewVersion version = versionOf(before, bytes);
    version.kind = action ? history::VersionKind::action : history::VersionKind::foreign;
    if (action) {
        version.program = m_program;
        version.action = *action;
    }
    if (!journal->record(version))
        m_log.write("the preferences could not be kept: " + journal->problem().value_or("unknown"));
}

std::optional<std::string> PreferencesHistory::restore(std::int64_t version)
{
    const auto bytes = openJournal()->bytesOf(version);
    if (!bytes)
        return "Version " + std::to_string(version) + " can no longer be read.";
    const auto list = platform::PropertyList::parse(*bytes);
    if (!list)
        return "Version " + std::to_string(version) + " is no property list.";
    if (!m_services.application.isAdminUser() || !m_services.application.performAuthentication())
        return "Only an administrator who has authenticated can bring preferences back.";
    m_services.run.g_dirty = 1;
    keepPresentVersion();
    const bool mayCreateRules = canCreateRules(m_locations, m_log);
    if (const auto wanted = PreferenceValues::createRulesWhenSaved(*list);
        wanted && *wanted != mayCreateRules)
        letUsersCreateRules(m_locations, *wanted, m_services.privilegedCommand, m_log);
    if (auto failure = restorePreferences(m_locations.preferencesFile(), *bytes, m_log))
        return failure;
    keepSaved("Restore Version " + std::to_string(version));
    return std::nullopt;
}

} // namespace quorvane::workflow
