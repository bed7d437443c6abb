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

// Reads a rules file of any bytes as each kind of file, calls every query of the store, and checks that rules
// reported to read back do so when they are actually written.

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

void askEverything(rules::RuleManager& store)
{
    store.sortIndexUsingDescriptors(
        {{rules::SortKey::path, false}, {rules::SortKey::tag, true}, {rules::SortKey::created, true}});
    store.applyFilterWithString("a");
    store.applyFilterWithString("");
    for (const rules::PolicyRulePtr& rule : store.policyRules()) {
        const rules::PolicyRule* covering = store.coveringRule(*rule);
        if (covering != nullptr && (covering == rule.get() || !coversRule(*covering, *rule)))
            std::abort();
    }
}

// If all rules of a store read back, a written copy must be the same.
void checkRoundTrip(rules::RuleManager& store, const platform::Locations& locations, platform::Log& log)
{
    std::string written;
    for (std::size_t row = 0; row < store.totalRules(true); ++row) {
        const bool readsBack = visitRule(store.ruleAtIndex(row, true), [&](const auto& rule) {
            written += ruleLine(rule.fields());
            return rule.fields().flags == 0 && readsBackAsWritten(rule.fields());
        });
        if (!readsBack)
            return;
    }
    const std::string file = folder() + "/written.rc";
    std::vector<rules::RuleRef> rules;
    for (std::size_t row = 0; row < store.totalRules(true); ++row)
        rules.push_back(store.ruleAtIndex(row, true));
    store.writeToFile(file, rules);
    const auto copy = rules::RuleManager::initWithContentsOfFile(file, false, locations, log);
    copy->sortIndexUsingDescriptors({{rules::SortKey::sequence, true}});
    std::string again;
    for (std::size_t row = 0; row < copy->totalRules(true); ++row)
        again += visitRule(
            copy->ruleAtIndex(row, true), [](const auto& rule) { return ruleLine(rule.fields()); });
    if (again != written)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static platform::Log log({});
    const platform::Locations locations(folder(), "fuzz");
    for (const std::string& file :
        {locations.userRulesFile(), locations.failSafeFile(), locations.mainSystemRulesFile()}) {
        std::ofstream(file, std::ios::binary)
            .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
        const bool system = file == locations.mainSystemRulesFile();
        const auto store = rules::RuleManager::initWithContentsOfFile(file, system, locations, log);
        askEverything(*store);
        if (file == locations.userRulesFile()) {
            store->sortIndexUsingDescriptors({{rules::SortKey::sequence, true}});
            checkRoundTrip(*store, locations, log);
        }
        std::filesystem::remove(file);
    }
    return 0;
}
