#include "windows/RulesEditorTableController.h"

#include "ui_RulesEditorTableController.h"
#include "windows/QtText.h"
#include "windows/RulesTableModel.h"
#include "workflow/RulesDocument.h"

#include <QTimer>

#include <chrono>
#include <memory>
#include <utility>

// The main window and the user's rules as a document: undo, redo, and what is reported of the file.

namespace quorvane {

namespace {

// The history is opened when the window has long been painted.
constexpr std::chrono::seconds untilVersionIsKept{2};

} // namespace

void RulesEditorTableController::setUpDocument()
{
    connect(m_ui->undoMenuItem, &QAction::triggered, this, &RulesEditorTableController::undo);
    connect(m_ui->redoMenuItem, &QAction::triggered, this, &RulesEditorTableController::redo);
    connect(m_ui->editMenu, &QMenu::aboutToShow, this, &RulesEditorTableController::nameUndoAndRedo);
    // Their keys work whatever the menu last said.
    connect(m_ui->editMenu, &QMenu::aboutToHide, this, [this] {
        m_ui->undoMenuItem->setEnabled(true);
        m_ui->redoMenuItem->setEnabled(true);
    });
    m_document.setObserver(this);
    m_document.recover();
    QTimer::singleShot(untilVersionIsKept, this, [this] { m_document.keepPresentVersion(); });
}

void RulesEditorTableController::nameUndoAndRedo()
{
    const auto name = [](QAction* item, const QString& verb, const std::optional<std::string>& action) {
        item->setText(action ? verb + QLatin1Char(' ') + toQt(*action) : verb);
        item->setEnabled(action.has_value());
    };
    name(m_ui->undoMenuItem, tr("&Undo"), m_document.undoName());
    name(m_ui->redoMenuItem, tr("&Redo"), m_document.redoName());
}

void RulesEditorTableController::undo()
{
    if (m_document.undo())
        reloadData();
    else
        m_ui->notices->add({.text = tr("There is nothing to undo."), .subject = QStringLiteral("undo")});
}

void RulesEditorTableController::redo()
{
    if (m_document.redo())
        reloadData();
    else
        m_ui->notices->add({.text = tr("There is nothing to redo."), .subject = QStringLiteral("undo")});
}

void RulesEditorTableController::rulesWereMerged(const ChangeSet& /*change*/)
{
    reloadData();
}

void RulesEditorTableController::fileStateDidChange()
{
    showFailure();
    const QString subject = QStringLiteral("write");
    if (!m_document.failure() || m_document.isWriting())
        return m_ui->notices->remove(subject);
    m_ui->notices->add({.text = tr("Nothing was written, the last change is not in the rules file: %1")
                                    .arg(toQt(*m_document.failure())),
        .buttons = {{tr("Write Now"), [this] { m_document.writeNow(); }}},
        .subject = subject});
}

void RulesEditorTableController::documentHasNews(const DocumentNews& news)
{
    FootNotice notice{.text = toQt(news.text)};
    if (!news.rules.empty())
        notice.buttons.push_back({tr("Show"), [this, rules = news.rules] { showFirstOf(rules); }});
    if (news.version)
        notice.buttons.push_back({tr("Restore"), [this, version = *news.version] {
                                      m_document.restore(version);
                                      reloadData();
                                  }});
    if (news.kind == DocumentNews::Kind::cutShort) {
        notice.subject = QStringLiteral("cut");
        notice.buttons.push_back({tr("Write Whole Lines"), [this] { writeWholeLines(); }});
    }
    m_ui->notices->add(std::move(notice));
}

// Selects the first of the rules that is in the table.
void RulesEditorTableController::showFirstOf(const std::vector<RuleRef>& rules)
{
    for (const RuleRef& rule : rules) {
        if (const auto row = m_model->rowOf(rule))
            return selectRule(*row);
    }
}

void RulesEditorTableController::writeWholeLines()
{
    ProgramSettings settings = m_document.settings();
    settings.wholeLines = true;
    m_document.setSettings(settings);
    if (const auto problem = writeProgramSettings(defaultSettingsFile(), settings))
        m_ui->notices->add({.text = toQt(*problem)});
    m_document.perform({}, {"Write Whole Lines"});
}

} // namespace quorvane
