#include "windows/ChangeWindow.h"

#include "ui_ChangeWindow.h"
#include "windows/DifferenceModel.h"
#include "windows/PlainText.h"
#include "windows/QtText.h"
#include "windows/WindowLook.h"
#include "windows/WindowMemory.h"
#include "workflow/DifferenceText.h"

#include <QLabel>
#include <QTimer>

#include <chrono>
#include <utility>

namespace quorvane::windows {

namespace {

constexpr std::chrono::milliseconds afterTheLastKey{200};

QString summaryOf(const workflow::PlannedChange& planned)
{
    if (planned.refusal)
        return ChangeWindow::tr("Nothing can be changed.");
    if (planned.change.isEmpty())
        return ChangeWindow::tr("Nothing would change.");
    return toQt(workflow::differenceSummary(planned.difference));
}

QString remarksOf(const workflow::PlannedChange& planned)
{
    QStringList remarks;
    for (const std::string& remark : planned.remarks)
        remarks.append(asSentence(remark));
    if (planned.refusal)
        remarks.append(asSentence(*planned.refusal));
    return remarks.join(QLatin1Char('\n'));
}

} // namespace

ChangeWindow::ChangeWindow(const QString& title, const QString& verb, Plan plan,
    workflow::PlannedChange first, rules::LineEnds lineEnds, QWidget* parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::ChangeWindow>())
    , m_changes(new DifferenceModel(this))
    , m_plan(std::move(plan))
    , m_lineEnds(lineEnds)
    , m_soon(new QTimer(this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::WindowModal);
    m_ui->setupUi(this);
    setWindowTitle(title);
    m_ui->changeButton->setText(verb);
    m_ui->differenceTableView->setModel(m_changes);
    connect(m_ui->changeButton, &QPushButton::clicked, this, &ChangeWindow::accept);
    connect(m_ui->wholeLinesButton, &QPushButton::clicked, this, &ChangeWindow::writeWholeLines);
    connect(m_ui->cancelButton, &QPushButton::clicked, this, &QDialog::reject);
    keepSize(*this, QStringLiteral("changeWindow"));
    m_soon->setObjectName(QStringLiteral("planTimer"));
    m_soon->setInterval(afterTheLastKey);
    connect(m_soon, &QTimer::timeout, this, &ChangeWindow::replan);
    showPlanned(std::move(first));
}

ChangeWindow::~ChangeWindow() = default;

void ChangeWindow::setControls(QWidget* controls)
{
    m_ui->controlsLayout->addWidget(controls);
    for (auto* label : controls->findChildren<QLabel*>())
        measureWithMnemonic(*label);
    controls->setFocus();
}

void ChangeWindow::planSoon()
{
    m_soon->start();
    m_ui->changeButton->setEnabled(true); // a pending plan is completed when it is pressed
}

void ChangeWindow::replan()
{
    m_soon->stop();
    showPlanned(m_plan(m_lineEnds));
}

void ChangeWindow::showPlanned(workflow::PlannedChange planned)
{
    m_planned = std::move(planned);
    auto* table = m_ui->differenceTableView;
    m_changes->setTable(workflow::differenceTable(m_planned.difference));
    table->setPathColumn(static_cast<int>(m_changes->table()->widestColumn()));
    if (m_changes->rowCount() > 0)
        table->refitColumns();
    const QString remarks = remarksOf(m_planned);
    m_ui->summaryLabel->setText(summaryOf(m_planned));
    table->setEmptyText(summaryOf(m_planned));
    m_ui->remarksLabel->setText(withBreakPoints(remarks));
    m_ui->remarksLabel->setVisible(!remarks.isEmpty());
    m_ui->changeButton->setEnabled(!m_planned.refusal && !m_planned.change.isEmpty());
    m_ui->wholeLinesButton->setVisible(m_planned.wantsWholeLines);
}

void ChangeWindow::writeWholeLines()
{
    m_lineEnds = rules::LineEnds::whole;
    Q_EMIT wholeLinesRequested();
    replan();
    m_ui->changeButton->setFocus();
}

void ChangeWindow::accept()
{
    if (m_soon->isActive())
        replan();
    if (!m_ui->changeButton->isEnabled())
        return;
    const workflow::PlannedChange confirmed = m_planned; // a copy: replaced when the rules change
    QDialog::accept();
    Q_EMIT wasConfirmed(confirmed);
}

} // namespace quorvane::windows
