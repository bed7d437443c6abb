#pragma once

#include "platform/Locations.h"
#include "rules/RuleManager.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestRules.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace quorvane::test {

// The product's folders in a temporary folder, for the user "ann".
class StoreSandbox {
public:
    StoreSandbox()
    {
        std::filesystem::create_directories(locations.sharedFolder());
        std::filesystem::create_directories(locations.systemFolder());
    }

    void writeUserRules(const std::string& text) const { writeAt(locations.userRulesFile(), text); }
    void writeSystemFile(const std::string& name, const std::string& text) const
    {
        writeAt(locations.systemFolder() + name, text);
    }
    // `entries` is the contents of the dictionary of an XML property list.
    void writePreferences(const std::string& entries) const
    {
        writeAt(locations.preferencesFile(),
            R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><dict>)" + entries
                + "</dict></plist>");
    }

    std::unique_ptr<rules::RuleManager> load(platform::Log& log = silentLog()) const
    {
        return rules::RuleManager::initWithCurrentUserConfiguration(locations, log);
    }

    // A store of one file with that text.
    std::unique_ptr<rules::RuleManager> storeOf(
        const std::string& text, bool system = false, platform::Log& log = silentLog()) const
    {
        return rules::RuleManager::initWithContentsOfFile(
            folder.write("exchange.quorv", text), system, locations, log);
    }

    // A store without rules.
    std::unique_ptr<rules::RuleManager> emptyStore() const
    {
        return std::make_unique<rules::RuleManager>(locations, silentLog());
    }

    const TemporaryFolder folder;
    const platform::Locations locations{folder.path(), "ann"};

private:
    void writeAt(const std::string& path, const std::string& text) const
    {
        folder.write(path.substr(folder.path().size() + 1), text);
    }
};

inline std::string preference(const std::string& key, int value)
{
    return "<key>" + key + "</key><integer>" + std::to_string(value) + "</integer>";
}

// A line of a rules file as it is written.
inline std::string fileLine(const std::string& path, const std::string& tag = "")
{
    return "allow prefix \"" + path + "\" \"/bin/sh\" r \"" + tag + "\" \"\" \"0\"\n";
}

// The paths of the rows, in order.
inline std::vector<std::string> rowPaths(const rules::RuleManager& store, bool includeSystemRules = true)
{
    std::vector<std::string> paths;
    for (std::size_t row = 0; row < store.totalRules(includeSystemRules); ++row) {
        paths.push_back(visitRule(store.ruleAtIndex(row, includeSystemRules),
            [](const auto& rule) { return std::string(rule.fields().path.written()); }));
    }
    return paths;
}

// The record of a row, which must be of that kind.
inline rules::PolicyRulePtr policyAt(const rules::RuleManager& store, std::size_t row)
{
    return std::get<rules::PolicyRulePtr>(store.ruleAtIndex(row, true));
}
inline rules::WatchRulePtr watchAt(const rules::RuleManager& store, std::size_t row)
{
    return std::get<rules::WatchRulePtr>(store.ruleAtIndex(row, true));
}

} // namespace quorvane::test
