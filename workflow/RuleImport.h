#pragma once

#include "rules/ChangeSet.h"
#include "rules/NullableText.h"
#include "rules/RuleManager.h"
#include "rules/RuleRef.h"
#include "workflow/Notice.h"
#include "workflow/RulesPlace.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

namespace quorvane::workflow {

class RulesDocument;

// The result of an import.
struct ImportResult {
    Notice notice{}; // for the user
    bool hasImported = false; // rules were passed to importRule(): tables must reload
    std::optional<std::string> writeFailure{}; // why the user's file does not contain all rules
};

// Imports rules of an exchange file into the current user's store: begin(), importRule() once for each
// accepted rule, didFinishImportingRules(). Without the last nothing is written. For the thread that owns the
// store.
class RuleImport {
public:
    // The document must outlive it.
    explicit RuleImport(RulesDocument& document, RulesPlace place = RulesPlace::thisMachine());

    // Sets where programs are looked up. Not during an import.
    void setPlace(const RulesPlace& place) { m_place = place; }

    // Starts an import of the file at `path`. Untagged rules get the file's name as their tag, without any
    // ".quorv" and cut at the first ","; those of the fail-safe file, and of joined lines of the user's own
    // file, stay untagged.
    void begin(const std::string& path);
    // The same for pasted text. Untagged rules stay untagged.
    void beginPaste();

    // Adds the rule, tagged and bound to its program, unless an equal one exists: for a watch rule among all,
    // for a policy rule among those that pass the store's filter. Deliberate: an equal rule that a search
    // hides is added again. Stores a copy and returns it, even if it was not added; `rule` is unchanged. May
    // read a whole program file.
    rules::RuleRef importRule(const rules::RuleRef& rule);

    // Writes the user's file, reads it again and deletes the fail-safe file, even if there was no rule. When
    // writing fails, the store keeps its rules, including the imported ones, and the fail-safe file stays. If
    // memory does not suffice for all rules, none is written. With a background, and no fail-safe file, more
    // than 5,000 rules are written and read later: a failure is the document's then.
    ImportResult didFinishImportingRules();

    // The changes to the store since begin(), not yet written.
    const rules::ChangeSet& pendingChange() const { return m_done; }

    const std::string& currentImportTag() const { return m_currentImportTag; }
    // The rules passed to importRule(), including duplicates, and those of them that were added.
    std::int32_t importedRules() const { return m_importedRules; }
    std::int32_t addedRules() const { return m_addedRules; }

private:
    void begin(std::string action, std::string tag);
    void noteAdded(const rules::RuleRef& rule, bool hadRoom);
    rules::WatchRulePtr importWatchRule(const rules::WatchRule& rule);
    rules::PolicyRulePtr importPolicyRule(const rules::PolicyRule& rule);
    const rules::NullableText& constraintOfProgram(const std::string& path);

    RulesDocument& m_document;
    rules::RuleManager& m_store;
    RulesPlace m_place;
    rules::ChangeSet m_done; // since begin()
    bool m_hadRoom = true; // memory sufficed for all rules
    std::string m_action; // as the history names it
    std::string m_currentImportTag;
    rules::NullableText m_tag = ""; // the same, shared by the rules
    std::int32_t m_importedRules = 0;
    std::int32_t m_addedRules = 0;
    // Cache by program, for one import: most files name the same few repeatedly.
    std::unordered_map<std::string, rules::NullableText> m_constraints;
};

} // namespace quorvane::workflow
