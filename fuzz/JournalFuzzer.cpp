#include "fuzz/FuzzedTexts.h"
#include "history/Journal.h"
#include "platform/Locations.h"
#include "platform/Log.h"
#include "rules/PolicyRule.h"
#include "rules/RuleManager.h"
#include "workflow/RuleEdits.h"
#include "workflow/RulesDocument.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include <unistd.h>

// Damages the journal of a user's rules, reads all of it, and changes the rules: whatever the database and
// its marker contain, existing rules must stay and the change must reach the file.
//
// An input is text for the marker, a NUL byte, and the damage: offsets and values, four bytes each, in a
// journal of three versions; or, after a further NUL byte, a whole database.

namespace {

using namespace quorvane;
namespace fs = std::filesystem;

std::string contents(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void write(const std::string& path, std::string_view bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

std::string lineOf(const std::string& path)
{
    return "allow prefix \"" + path + "\" \"any\" r \"\" \"\" \"0\"\n";
}

// The rules of a user and their journal, with a version under way whose write never began.
class User {
public:
    User()
        : m_folder(fs::temp_directory_path().string() + "/quorvane-fuzz-" + std::to_string(getpid()))
        , m_locations(m_folder, "fuzz")
        , m_place(m_folder + "/state", rulesFile())
    {
        fs::create_directories(fs::path(rulesFile()).parent_path());
        write(rulesFile(), rules());
        const auto made = journal();
        history::NewVersion version{.program = "fuzz", .action = "Add Rule", .bytes = rules()};
        made->record(version);
        const std::string second = rules() + lineOf("/second");
        version.bytes = second;
        version.added = 1;
        made->record(version);
        const std::string third = second + lineOf("/third");
        version.bytes = third;
        made->begin(version);
        m_database = contents(m_place.databaseFile());
    }

    // These must always be in force.
    static const std::string& rules()
    {
        static const std::string text = lineOf("/kept/1") + lineOf("/kept/2");
        return text;
    }

    std::string rulesFile() const { return m_locations.userRulesFile(); }
    const platform::Locations& locations() const { return m_locations; }
    std::string stateFolder() const { return m_folder + "/state"; }
    const std::string& database() const { return m_database; }
    std::unique_ptr<history::Journal> journal()
    {
        return history::Journal::open(stateFolder(), rulesFile(), {}, m_log);
    }
    platform::Log& log() { return m_log; }

    void reset(std::string_view marker, std::string_view database)
    {
        fs::remove_all(stateFolder());
        fs::create_directories(stateFolder());
        write(m_place.databaseFile(), database);
        write(m_place.markerFile(), marker);
        write(rulesFile(), rules() + lineOf("/second"));
    }

private:
    const std::string m_folder;
    const platform::Locations m_locations;
    const history::JournalPlace m_place;
    platform::Log m_log{{}};
    std::string m_database;
};

std::string damaged(std::string database, std::string_view damage)
{
    constexpr std::size_t entry = 4; // bytes: the big-endian offset and the value
    for (; damage.size() >= entry; damage.remove_prefix(entry)) {
        std::size_t place = 0;
        for (const char byte : damage.substr(0, entry - 1))
            place = place << 8U | static_cast<unsigned char>(byte);
        database[place % database.size()] = damage[entry - 1];
    }
    return database;
}

void readEverything(User& user)
{
    const auto journal = user.journal();
    for (const history::JournalVersion& version : journal->versions()) {
        const auto bytes = journal->bytesOf(version.number);
        fuzz::require(!bytes || bytes->size() == version.bytes);
        journal->meantOf(version.number);
    }
    journal->newest();
    journal->underWay();
    journal->undoable();
    journal->redoable();
}

void requireRules(const User& user)
{
    const std::string text = contents(user.rulesFile());
    fuzz::require(
        text.find("\"/kept/1\"") != std::string::npos && text.find("\"/kept/2\"") != std::string::npos);
}

void changeRules(User& user)
{
    const auto store = rules::RuleManager::initWithCurrentUserConfiguration(user.locations(), user.log());
    workflow::RunState run;
    workflow::RulesDocument document(
        *store, run, {.program = "fuzz", .stateFolder = user.stateFolder()}, user.log());
    document.recover();
    requireRules(user);
    const auto rule = std::make_shared<rules::PolicyRule>(
        rules::PolicyRuleFields{.path = "/added", .processName = "any", .operations = 1});
    fuzz::require(!document.perform(workflow::additionOf(rule), {"Add Rule"}).failure);
    requireRules(user);
    fuzz::require(contents(user.rulesFile()).find("\"/added\"") != std::string::npos);
    document.undo();
    requireRules(user);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static User user;
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::string_view marker = input.substr(0, input.find('\0'));
    const std::string_view rest = input.substr(std::min(size, marker.size() + 1));
    const bool isWhole = !rest.empty() && rest.front() == '\0';
    user.reset(marker, isWhole ? std::string(rest.substr(1)) : damaged(user.database(), rest));
    readEverything(user);
    changeRules(user);
    return 0;
}
