#include "windows/RulesEditorTableController.h"

#include "ui_RulesEditorTableController.h"
#include "windows/QtText.h"
#include "windows/RulesTableModel.h"
#include "workflow/PlannedChange.h"
#include "workflow/RulesDocument.h"

#include <utility>

// The main window's RulesTable interface: the selection, and changes of many rules at once.

namespace quorvane::windows {

namespace {

// Its notices replace each other: only the latest change is reported.
QString changeSubject()
{
    return QStringLiteral("change");
}

} // namespace

std::vector<rules::RuleRef> RulesEditorTableController::selectedRules() const
{
    std::vector<rules::RuleRef> rules;
    for (const std::size_t row : m_ui->rulesEditorTableView->selectedRows())
        rules.push_back(ruleRowAt(row).rule);
    return rules;
}

workflow::RulesSelection RulesEditorTableController::selection() const
{
    return m_model->selectionOf(m_ui->rulesEditorTableView->selectedRanges());
}

void RulesEditorTableController::selectRules(const std::vector<rules::RuleRef>& rules)
{
    whenRowsAreShown([this, rules] { m_ui->rulesEditorTableView->selectRows(m_model->rowsOf(rules)); });
}

void RulesEditorTableController::revealRule(const rules::RuleRef& rule)
{
    whenRowsAreShown([this, rule] {
        if (!m_store.isStored(rule))
            return;
        if (!m_model->rowOf(rule)) {
            m_ui->searchField->clear();
            m_ui->narrowBar->clear();
            if (isSystemRule(rule) && !showsSystemRules())
                hideSystemAction();
        }
        selectRules({rule});
    });
}

bool RulesEditorTableController::perform(
    const workflow::PlannedChange& planned, const workflow::ChangeReason& reason)
{
    m_ui->notices->remove(changeSubject());
    if (planned.refusal) {
        FootNotice notice{
            .text = tr("Nothing was changed: %1").arg(toQt(*planned.refusal)), .subject = changeSubject()};
        if (planned.wantsWholeLines)
            notice.buttons.push_back({tr("Write Whole Lines"), [this] { writeWholeLines(); }});
        addNotice(std::move(notice));
        return false;
    }
    m_document.perform(planned.change, reason);
    reloadData();
    if (planned.remarks.empty())
        return true;
    QStringList remarks;
    for (const std::string& remark : planned.remarks)
        remarks.append(asSentence(remark));
    addNotice({.text = remarks.join(QLatin1Char(' ')), .subject = changeSubject()});
    return true;
}

void RulesEditorTableController::addNotice(FootNotice notice)
{
    m_ui->notices->add(std::move(notice));
}

} // namespace quorvane::windows
