#include "platform/Locations.h"
#include "platform/Log.h"
#include "rules/RuleLine.h"
#include "rules/RuleManager.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <unistd.h>

// Reads a rules file of any bytes as each kind of file, asks the store everything, and checks that rules
// which are said to read back do so when they are really written.

namespace {

using namespace quorvane;

std::string folder()
{
    static const std::string made = [] {
        const std::string name = "/tmp/quorvane-fuzz-" + std::to_string(getpid());
        std::filesystem::create_directories(name + "/Users/Shared/Quorvane");
        std::filesystem::create_directories(name + "/Library/Application Support/Quorvane");
        return name;
    }();
    return made;
}

void askEverything(RuleManager& store)
{
    store.sortIndexUsingDescriptors({{SortKey::path, false}, {SortKey::tag, true}, {SortKey::created, true}});
    store.applyFilterWithString("a");
    store.applyFilterWithString("");
    for (const PolicyRulePtr& rule : store.policyRules()) {
        const PolicyRule* covering = store.coveringRule(*rule);
        if (covering != nullptr && (covering == rule.get() || !coversRule(*covering, *rule)))
            std::abort();
    }
}

// Of a store whose rules all read back, the copy written and read again is the same.
void checkRoundTrip(RuleManager& store, const Locations& locations, Log& log)
{
    std::string written;
    for (std::size_t row = 0; row < store.totalRules(true); ++row) {
        const bool readsBack = askRule(store.ruleAtIndex(row, true), [&](const auto& rule) {
            written += ruleLine(rule.fields());
            return rule.fields().flags == 0 && readsBackAsWritten(rule.fields());
        });
        if (!readsBack)
            return;
    }
    const std::string file = folder() + "/written.rc";
    std::vector<RuleRef> rules;
    for (std::size_t row = 0; row < store.totalRules(true); ++row)
        rules.push_back(store.ruleAtIndex(row, true));
    store.writeToFile(file, rules);
    const auto copy = RuleManager::initWithContentsOfFile(file, false, locations, log);
    copy->sortIndexUsingDescriptors({{SortKey::sequence, true}});
    std::string again;
    for (std::size_t row = 0; row < copy->totalRules(true); ++row)
        again += askRule(
            copy->ruleAtIndex(row, true), [](const auto& rule) { return ruleLine(rule.fields()); });
    if (again != written)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static Log log({});
    const Locations locations(folder(), "fuzz");
    for (const std::string& file :
        {locations.userRulesFile(), locations.failSafeFile(), locations.mainSystemRulesFile()}) {
        std::ofstream(file, std::ios::binary)
            .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
        const bool system = file == locations.mainSystemRulesFile();
        const auto store = RuleManager::initWithContentsOfFile(file, system, locations, log);
        askEverything(*store);
        if (file == locations.userRulesFile()) {
            store->sortIndexUsingDescriptors({{SortKey::sequence, true}});
            checkRoundTrip(*store, locations, log);
        }
        std::filesystem::remove(file);
    }
    return 0;
}
