#include "windows/TouchingWindow.h"

#include "ui_TouchingWindow.h"
#include "windows/OperationBoxesRow.h"
#include "windows/PathField.h"
#include "windows/QtText.h"
#include "windows/RulesTable.h"
#include "windows/TouchingModel.h"
#include "windows/WindowLook.h"
#include "windows/WindowMemory.h"

#include <QCheckBox>
#include <QLineEdit>

#include <algorithm>

namespace quorvane::windows {

TouchingWindow::TouchingWindow(
    const rules::RuleManager& store, RulesTable& table, desktop::Workspace& workspace, QWidget* parent)
    : QDialog(parent, Qt::Window)
    , m_ui(std::make_unique<Ui::TouchingWindow>())
    , m_table(table)
    , m_search(store)
    , m_model(new TouchingModel(store, workspace, this))
    , m_path(new PathField(tr("Path"), this))
    , m_program(new PathField(tr("Program"), this))
    , m_operations(new OperationBoxesRow(this))
    , m_includesSystemRules(new QCheckBox(tr("S&ystem rules"), this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    m_ui->setupUi(this);
    auto* list = m_ui->touchingTableView;
    list->setModel(m_model);
    list->setPathColumn(static_cast<int>(workflow::RuleColumn::path));
    setUpQuestion();
    connect(&m_search, &TouchSearch::found, this, &TouchingWindow::showRules);
    connect(list, &QAbstractItemView::activated, this, &TouchingWindow::showSelectedRule);
    connect(list->selectionModel(), &QItemSelectionModel::selectionChanged, this,
        [this, list] { m_ui->showButton->setEnabled(list->onlySelectedRow().has_value()); });
    connect(m_ui->showButton, &QPushButton::clicked, this, &TouchingWindow::showSelectedRule);
    connect(m_ui->closeButton, &QPushButton::clicked, this, &QWidget::close);
    keepSize(*this, QStringLiteral("touchingWindow"));
    ask();
    m_path->setFocus();
}

TouchingWindow::~TouchingWindow() = default;

void TouchingWindow::setUpQuestion()
{
    m_path->setObjectName(QStringLiteral("pathField"));
    m_path->field().setPlaceholderText(tr("Type or choose a path, or drop a file on the window"));
    m_path->takeDropsOn(*this);
    m_program->setObjectName(QStringLiteral("programField"));
    m_program->field().setPlaceholderText(tr("Any; or the path of a program"));
    m_includesSystemRules->setObjectName(QStringLiteral("systemRulesCheckBox"));
    m_includesSystemRules->setChecked(true);
    m_ui->questionLayout->addRow(tr("&Path"), m_path);
    m_ui->questionLayout->addRow(tr("Pro&gram"), m_program);
    m_ui->questionLayout->addRow(tr("Operations"), m_operations);
    m_ui->questionLayout->addRow(QString(), m_includesSystemRules);
    for (const PathField* field : {m_path, m_program})
        connect(field, &PathField::pathChanged, this, &TouchingWindow::ask);
    connect(m_operations, &OperationBoxesRow::operationsChanged, this, &TouchingWindow::ask);
    connect(m_includesSystemRules, &QCheckBox::toggled, this, &TouchingWindow::ask);
}

workflow::TouchQuestion TouchingWindow::question() const
{
    workflow::TouchQuestion question{.path = m_path->path()};
    if (const std::string program = m_program->path(); !program.empty())
        question.process = program;
    if (const std::uint32_t operations = m_operations->operations(); operations != 0)
        question.operations = operations;
    return question;
}

void TouchingWindow::ask()
{
    m_search.stop();
    if (m_path->path().empty())
        return showRules({});
    m_ui->countLabel->setText(tr("Searching\u2026"));
    m_search.search(question(), m_includesSystemRules->isChecked());
}

void TouchingWindow::setPlace(const workflow::RulesPlace& place)
{
    m_model->setPlace(place);
    ask();
}

void TouchingWindow::rulesDidChange()
{
    m_search.rulesDidChange();
    ask();
}

void TouchingWindow::showRules(const std::vector<rules::RuleRef>& found)
{
    auto* list = m_ui->touchingTableView;
    const std::size_t shown = std::min(found.size(), mostRulesShown);
    m_model->show({found.begin(), found.begin() + static_cast<std::ptrdiff_t>(shown)}, question());
    list->setEmptyText(m_path->path().empty() ? tr("The rules that are about a path: name one above.")
                                              : tr("No rule is about this."));
    if (shown > 0)
        list->refitColumns();
    m_ui->showButton->setEnabled(false);
    updateCounts(found.size());
    Q_EMIT wasAnswered();
}

void TouchingWindow::updateCounts(std::size_t found)
{
    QString counts = found == 1 ? tr("1 rule.") : tr("%1 rules.").arg(inWords(found));
    if (found > mostRulesShown)
        counts
            = tr("%1 rules, of which the first %2 are shown.").arg(inWords(found), inWords(mostRulesShown));
    if (found > 1)
        counts += QLatin1Char(' ') + tr("Which of them wins is decided where rules are enforced.");
    m_ui->countLabel->setText(m_path->path().empty() ? QString() : counts);
}

void TouchingWindow::showSelectedRule()
{
    const auto row = m_ui->touchingTableView->onlySelectedRow();
    if (!row)
        return;
    m_table.revealRule(m_model->ruleAt(static_cast<int>(*row)));
    if (parentWidget() != nullptr)
        bringToFront(*parentWidget()->window());
}

} // namespace quorvane::windows
