#pragma once

#include "tests/rules/StoreSandbox.h"
#include "workflow/RuleEdits.h"
#include "workflow/RulesDocument.h"
#include "workflow/RunState.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace quorvane::test {

// One of our programs working on the rules of a sandbox: a store, a document, and its reports.
struct DocumentAtWork : workflow::DocumentObserver {
    explicit DocumentAtWork(const StoreSandbox& box, workflow::DocumentOwner owner = {})
        : store(box.load())
    {
        owner.program = owner.program.empty() ? "test" : owner.program;
        owner.stateFolder = box.folder.path("state");
        document = std::make_unique<workflow::RulesDocument>(*store, run, owner, silentLog());
        document->setObserver(this);
    }

    void rulesWereMerged(const rules::ChangeSet& change) override { changes.push_back(change); }
    void rulesWereReloaded() override { ++reloads; }
    void fileStateDidChange() override { }
    void documentHasNews(const workflow::DocumentNews& item) override { news.push_back(item); }

    // The texts of the news of one kind.
    std::vector<std::string> newsOf(workflow::DocumentNews::Kind kind) const
    {
        std::vector<std::string> texts;
        for (const workflow::DocumentNews& item : news) {
            if (item.kind == kind)
                texts.push_back(item.text);
        }
        return texts;
    }

    workflow::ChangeResult add(const std::string& path, const std::string& process = "/bin/sh")
    {
        return document->perform(
            workflow::additionOf(policyRule({.path = path, .processName = process, .operations = 1})),
            {"Add Rule"});
    }
    workflow::ChangeResult remove(const std::string& path)
    {
        return document->perform(workflow::deletionOf(*store, {ruleWith(path)}), {"Delete Rule"});
    }
    workflow::ChangeResult tag(const std::string& path, const std::string& tag)
    {
        return document->perform(workflow::taggingOf({ruleWith(path)}, tag), {"Edit Tag"});
    }
    // The rule with that path, which must exist.
    rules::RuleRef ruleWith(const std::string& path) const
    {
        for (const rules::RuleRef& rule : store->userRules()) {
            if (visitRule(rule, [&](const auto& record) { return record.fields().path.view() == path; }))
                return rule;
        }
        throw std::runtime_error("no rule with the path " + path);
    }

    workflow::RunState run;
    std::unique_ptr<rules::RuleManager> store;
    std::vector<rules::ChangeSet> changes{};
    std::vector<workflow::DocumentNews> news{};
    int reloads = 0;
    std::unique_ptr<workflow::RulesDocument> document;
};

} // namespace quorvane::test
