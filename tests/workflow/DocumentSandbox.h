#pragma once

#include "tests/rules/StoreSandbox.h"
#include "workflow/RuleEdits.h"
#include "workflow/RulesDocument.h"
#include "workflow/RunState.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace quorvane {

// One of our programs at work on the rules of a sandbox: a store, a document, and what the document reports.
struct DocumentAtWork : DocumentObserver {
    explicit DocumentAtWork(const StoreSandbox& box, DocumentOwner owner = {})
        : store(box.load())
    {
        owner.program = owner.program.empty() ? "test" : owner.program;
        owner.stateFolder = box.folder.path("state");
        document = std::make_unique<RulesDocument>(*store, run, owner, silentLog());
        document->setObserver(this);
    }

    void rulesWereMerged(const ChangeSet& change) override { changes.push_back(change); }
    void rulesWereReloaded() override { ++reloads; }
    void fileStateDidChange() override { }
    void documentHasNews(const DocumentNews& item) override { news.push_back(item); }

    // The texts of the news of one kind.
    std::vector<std::string> newsOf(DocumentNews::Kind kind) const
    {
        std::vector<std::string> texts;
        for (const DocumentNews& item : news) {
            if (item.kind == kind)
                texts.push_back(item.text);
        }
        return texts;
    }

    ChangeResult add(const std::string& path, const std::string& process = "/bin/sh")
    {
        return document->perform(
            additionOf(policyRule({.path = path, .processName = process, .operations = 1})), {"Add Rule"});
    }
    ChangeResult remove(const std::string& path)
    {
        return document->perform(deletionOf(*store, {ruleWith(path)}), {"Delete Rule"});
    }
    ChangeResult tag(const std::string& path, const std::string& tag)
    {
        return document->perform(taggingOf({ruleWith(path)}, tag), {"Edit Tag"});
    }
    // The rule with that path, which must be there.
    RuleRef ruleWith(const std::string& path) const
    {
        for (const RuleRef& rule : store->userRules()) {
            if (askRule(rule, [&](const auto& record) { return record.fields().path.view() == path; }))
                return rule;
        }
        throw std::runtime_error("no rule with the path " + path);
    }

    RunState run;
    std::unique_ptr<RuleManager> store;
    std::vector<ChangeSet> changes{};
    std::vector<DocumentNews> news{};
    int reloads = 0;
    std::unique_ptr<RulesDocument> document;
};

} // namespace quorvane
