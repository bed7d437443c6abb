#include "windows/AsideController.h"

#include "rules/RuleRef.h"
#include "windows/AsideWindow.h"
#include "windows/QtText.h"
#include "windows/RulesTable.h"
#include "windows/WindowLook.h"
#include "workflow/DocumentTexts.h"
#include "workflow/PlannedChange.h"
#include "workflow/RuleEdits.h"
#include "workflow/RulesDocument.h"

#include <QMessageBox>
#include <QPushButton>

#include <chrono>

namespace quorvane::windows {

namespace {

QString asideSubject()
{
    return QStringLiteral("aside");
}

// The window must not block for long.
constexpr std::chrono::milliseconds lockTimeout{100};

} // namespace

AsideController::AsideController(QWidget& window, RulesTable& table, workflow::RulesDocument& document,
    desktop::Workspace& workspace, platform::Log& log)
    : m_window(window)
    , m_table(table)
    , m_document(document)
    , m_workspace(workspace)
    , m_log(log)
    , m_aside(document.stateFolder(), document.store().locations().userRulesFile(), lockTimeout)
{
}

void AsideController::setAside()
{
    std::vector<rules::RuleRef> rules = m_table.selectedRules();
    std::erase_if(rules, rules::isSystemRule);
    if (rules.empty())
        return;
    const workflow::PlannedChange planned
        = workflow::removalOf(m_document.store(), rules, m_document.settings().lineEnds());
    if (!planned.refusal) {
        if (const auto problem = m_aside.add(planned.difference.removed))
            return m_table.addNotice(
                {.text = tr("Nothing was set aside: %1").arg(toQt(*problem)), .subject = asideSubject()});
    }
    if (m_table.perform(
            planned, {.action = workflow::actionName("Set Aside", rules.size()), .refusesCuts = true}))
        reportSetAside(rules.size());
}

void AsideController::reportSetAside(std::size_t rules)
{
    m_table.addNotice(
        {.text = rules == 1 ? tr("1 rule is set aside.") : tr("%1 rules are set aside.").arg(inWords(rules)),
            .buttons = {{tr("Show"), [this] { showAside(); }}},
            .subject = asideSubject()});
}

void AsideController::showAside()
{
    if (m_asideWindow.isNull()) {
        m_asideWindow = new AsideWindow(m_aside, m_document.store(), m_workspace, m_log, &m_window);
        m_asideWindow->setPlace(m_place);
        connect(m_asideWindow.data(), &AsideWindow::bringBackRequested, this, &AsideController::bringBack);
        connect(m_asideWindow.data(), &AsideWindow::deleteRequested, this, &AsideController::deleteForGood);
    }
    bringToFront(*m_asideWindow);
}

void AsideController::setPlace(const workflow::RulesPlace& place)
{
    m_place = place;
    if (m_asideWindow)
        m_asideWindow->setPlace(place);
}

void AsideController::rulesDidChange()
{
    if (m_asideWindow)
        m_asideWindow->refresh();
}

void AsideController::bringBack(const std::vector<rules::RuleValue>& rules)
{
    const workflow::PlannedChange planned
        = workflow::addingOf(m_document.store(), rules, m_document.settings().lineEnds());
    std::vector<rules::RuleRef> added;
    for (const rules::ChangeSet::Addition& addition : planned.change.added)
        added.push_back(addition.rule);
    if (!m_table.perform(
            planned, {.action = workflow::actionName("Bring Back", rules.size()), .refusesCuts = true}))
        return m_asideWindow->showMessage(asSentence(*planned.refusal));
    if (!added.empty())
        m_table.revealRule(added.front());
    m_table.selectRules(added);
}

void AsideController::deleteForGood(const std::vector<rules::RuleValue>& rules)
{
    QMessageBox question(QMessageBox::Warning, tr("Delete Rules"),
        tr("Delete %1 for good? Nothing brings back what is deleted here.")
            .arg(toQt(workflow::countedRules(rules.size()))),
        QMessageBox::Cancel, m_asideWindow);
    const QAbstractButton* confirm = question.addButton(tr("&Delete"), QMessageBox::DestructiveRole);
    question.setDefaultButton(QMessageBox::Cancel);
    question.exec();
    if (question.clickedButton() != confirm || m_asideWindow.isNull())
        return;
    if (const auto problem = m_aside.remove(rules))
        m_asideWindow->showMessage(toQt(*problem));
    m_asideWindow->refresh();
}

} // namespace quorvane::windows
