// Prints the contents of a journal, for tests in other languages: journal_contents STATE-FOLDER WATCHED-FILE
// OUT-FOLDER. One JSON object per version, oldest first; the version's bytes and its intended rules go to
// OUT-FOLDER/N.bytes and N.meant.

#include "history/Journal.h"
#include "platform/Log.h"

#include <algorithm>
#include <fstream>
#include <iostream>

#include <nlohmann/json.hpp>

namespace quorvane::test {

namespace {

bool write(const std::string& path, const std::optional<std::string>& bytes)
{
    std::ofstream file(path, std::ios::binary);
    file << bytes.value_or(std::string());
    return bytes && file.flush();
}

nlohmann::json described(const history::JournalVersion& version)
{
    return {{"number", version.number}, {"program", version.program.value_or("")},
        {"action", version.action.value_or("")}, {"state", static_cast<int>(version.state)},
        {"kind", static_cast<int>(version.kind)}, {"rules", version.rules}, {"added", version.added},
        {"removed", version.removed}, {"changed", version.changed}, {"sha256", version.sha256}};
}

int printContents(const std::string& stateFolder, const std::string& file, const std::string& out)
{
    platform::Log log({});
    const auto journal = history::Journal::open(stateFolder, file, {}, log);
    auto versions = journal->versions();
    std::reverse(versions.begin(), versions.end());
    bool isComplete = !journal->problem();
    for (const history::JournalVersion& version : versions) {
        const std::string name = out + "/" + std::to_string(version.number);
        isComplete = write(name + ".bytes", journal->bytesOf(version.number))
            && write(name + ".meant", journal->meantOf(version.number)) && isComplete;
        std::cout << described(version) << "\n";
    }
    if (journal->problem())
        std::cerr << *journal->problem() << "\n";
    return isComplete ? 0 : 1;
}

} // namespace

} // namespace quorvane::test

int main(int argumentCount, char** arguments)
{
    return argumentCount == 4 ? quorvane::test::printContents(arguments[1], arguments[2], arguments[3]) : 2;
}
