#include "windows/AsideWindow.h"

#include "ui_AsideWindow.h"
#include "windows/QtText.h"
#include "windows/RulesTableModel.h"
#include "windows/WindowMemory.h"
#include "workflow/DifferenceText.h"
#include "workflow/DocumentTexts.h"

#include <QEvent>
#include <QHeaderView>

#include <utility>

namespace quorvane::windows {

namespace {

QString newsSubject()
{
    return QStringLiteral("tell");
}

} // namespace

AsideWindow::AsideWindow(const workflow::AsideRules& aside, const rules::RuleManager& inForce,
    desktop::Workspace& workspace, platform::Log& log, QWidget* parent)
    : QDialog(parent, Qt::Window)
    , m_ui(std::make_unique<Ui::AsideWindow>())
    , m_aside(aside)
    , m_inForce(inForce)
    , m_store(inForce.locations(), log)
    , m_model(new RulesTableModel(m_store, workspace, this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    m_ui->setupUi(this);
    auto* table = m_ui->asideTableView;
    table->setModel(m_model);
    table->setPathColumn(static_cast<int>(workflow::RuleColumn::path));
    table->horizontalHeader()->setSectionsClickable(false);
    connect(table->selectionModel(), &QItemSelectionModel::selectionChanged, this, &AsideWindow::validate);
    connect(m_ui->bringBackButton, &QPushButton::clicked, this,
        [this] { Q_EMIT bringBackRequested(selectedRules()); });
    connect(
        m_ui->deleteButton, &QPushButton::clicked, this, [this] { Q_EMIT deleteRequested(selectedRules()); });
    connect(m_ui->closeButton, &QPushButton::clicked, this, &QWidget::close);
    keepSize(*this, QStringLiteral("asideWindow"));
    refresh();
    if (m_model->rowCount() > 0)
        table->fitColumns();
    table->setFocus();
}

AsideWindow::~AsideWindow() = default;

void AsideWindow::setPlace(const workflow::RulesPlace& place)
{
    m_model->setPlace(place);
    m_model->reload();
}

void AsideWindow::refresh()
{
    const workflow::AsideRules::Listing listing = m_aside.read();
    std::vector<rules::RuleValue> inForce;
    for (const rules::RuleRef& rule :
        listing.rules.empty() ? std::vector<rules::RuleRef>() : m_inForce.userRules())
        inForce.push_back(valueOf(rule));
    const std::vector<rules::RuleValue> rules = workflow::withoutEqual(listing.rules, inForce);
    std::string lines;
    for (const rules::RuleValue& rule : rules)
        lines += workflow::ruleText(rule) + '\n';
    if (std::exchange(m_shown, lines) != lines)
        showRules(rules);
    m_ui->asideTableView->setEmptyText(
        listing.problem ? toQt(*listing.problem) : tr("No rule is set aside."));
    m_ui->countLabel->setText(toQt(workflow::countedRules(rules.size())));
    validate();
}

void AsideWindow::showRules(const std::vector<rules::RuleValue>& rules)
{
    rules::ChangeSet change;
    for (const rules::RuleRef& rule : m_store.allRules())
        change.removed.push_back({rule});
    for (const rules::RuleValue& rule : rules)
        change.added.push_back({recordOf(rule), rule});
    m_store.apply(change);
    m_model->reload();
}

std::vector<rules::RuleValue> AsideWindow::selectedRules() const
{
    std::vector<rules::RuleValue> rules;
    for (const std::size_t row : m_ui->asideTableView->selectedRows())
        rules.push_back(valueOf(m_model->ruleAt(static_cast<int>(row))));
    return rules;
}

void AsideWindow::validate()
{
    const bool anySelected = m_ui->asideTableView->selectionModel()->hasSelection();
    m_ui->bringBackButton->setEnabled(anySelected);
    m_ui->deleteButton->setEnabled(anySelected);
}

void AsideWindow::showMessage(const QString& text)
{
    m_ui->notices->add({.text = text, .subject = newsSubject()});
}

bool AsideWindow::event(QEvent* event)
{
    if (event->type() == QEvent::WindowActivate)
        refresh();
    return QDialog::event(event);
}

} // namespace quorvane::windows
