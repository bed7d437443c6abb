#include "windows/RuleFixes.h"

#include "windows/RulesTable.h"
#include "windows/SelectionController.h"
#include "workflow/PlannedChange.h"
#include "workflow/ProgramBinding.h"
#include "workflow/RuleEdits.h"
#include "workflow/RulesDocument.h"

namespace quorvane::windows {

RuleFixes::RuleFixes(RulesTable& table, workflow::RulesDocument& document, SelectionController& selection)
    : m_table(table)
    , m_document(document)
    , m_selection(selection)
{
}

void RuleFixes::show(const rules::RuleRef& rule)
{
    m_table.revealRule(rule);
}

void RuleFixes::remove(const rules::RuleRef& rule)
{
    m_table.perform(workflow::removalOf(m_document.store(), {rule}, m_document.settings().lineEnds()),
        {.action = workflow::actionName("Delete", 1), .refusesCuts = true});
}

void RuleFixes::moveProgram(const std::string& path)
{
    m_selection.moveProgram(path);
}

void RuleFixes::rebind(const rules::RuleRef& rule)
{
    // Reads the facts into their cache, from which the change then takes them.
    m_thread.run(
        [place = m_place, value = valueOf(rule)] {
            const auto process = askValue(value, [](const auto& fields) { return fields.processName; });
            bindingOf(workflow::decidingProgram(process), place.facts());
        },
        [this, rule, place = m_place] {
            if (m_document.store().isStored(rule))
                m_table.perform(patchingOf(m_document.store(), {rule}, {.isBoundToProgram = true},
                                    place.facts(), m_document.settings().lineEnds()),
                    {.action = workflow::actionName("Bind", 1) + " Anew", .refusesCuts = true});
        });
}

} // namespace quorvane::windows
