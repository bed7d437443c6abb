#pragma once

#include "tests/support/LaterWork.h"
#include "tests/support/SystemCalls.h"
#include "tests/workflow/DocumentSandbox.h"
#include "workflow/RuleImport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quorvane::test {

inline constexpr int manyRules = 5'100;

inline std::string lines(int from, int to)
{
    std::string text;
    for (int number = from; number < to; ++number)
        text += fileLine("/" + std::to_string(number));
    return text;
}

// Calls back while the document reports a reload.
struct ObservedDocument : DocumentAtWork {
    using DocumentAtWork::DocumentAtWork;
    void rulesWereReloaded() override
    {
        DocumentAtWork::rulesWereReloaded();
        if (const auto call = std::exchange(onReload, {}))
            call();
    }
    std::function<void()> onReload;
};

class ManyRulesDocument : public testing::Test {
protected:
    using Kind = workflow::DocumentNews::Kind;

    ManyRulesDocument()
    {
        box.writeUserRules(lines(0, manyRules));
        window.emplace(box, workflow::DocumentOwner{.background = &background});
    }

    workflow::RulesDocument& document() { return *window->document; }
    std::string file() const { return TemporaryFolder::contents(box.locations.userRulesFile()); }
    bool has(const std::string& path) const
    {
        const auto rules = window->store->userRules();
        return std::any_of(rules.begin(), rules.end(), [&](const rules::RuleRef& rule) {
            return visitRule(rule, [&](const auto& record) { return record.fields().path.view() == path; });
        });
    }
    // How often a line is in the file that a new reader sees.
    std::size_t linesInFile(const std::string& path) const
    {
        const std::string text = file();
        std::size_t count = 0;
        for (std::size_t at = 0; (at = text.find("\"" + path + "\"", at)) != std::string::npos; ++at)
            ++count;
        return count;
    }
    void addAndRestart(const std::string& path)
    {
        window->add(path);
        document().waitUntilWritten();
        window.emplace(box, workflow::DocumentOwner{.background = &background});
    }
    void putAFolderInPlaceOfTheFile() const
    {
        std::filesystem::remove(box.locations.userRulesFile());
        std::filesystem::create_directory(box.locations.userRulesFile());
    }
    // Returns why it is not written, as far as that is known at once.
    std::optional<std::string> import(const std::vector<std::string>& paths)
    {
        workflow::RuleImport import(document());
        import.begin("/tmp/team.quorv");
        for (const std::string& path : paths)
            import.importRule(policyRule({.path = path, .processName = "/bin/sh", .operations = 1}));
        return import.didFinishImportingRules().writeFailure;
    }
    // A disk that becomes full once the version is in the journal, for so many calls.
    static SystemCallHook::Answer failingForTheRules(int calls)
    {
        return failing(ENOSPC, [calls](int number) { return number > 0 && number <= calls; });
    }
    void expectFileHasTheRulesOfTheStore() const
    {
        EXPECT_EQ(rowsAsText(*box.load(), true), rowsAsText(*window->store, true));
    }

    StoreSandbox box;
    LaterWork background;
    std::optional<ObservedDocument> window;
};

} // namespace quorvane::test
