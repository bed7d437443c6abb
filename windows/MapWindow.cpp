#include "windows/MapWindow.h"

#include "rules/RuleManager.h"
#include "ui_MapWindow.h"
#include "windows/AccessBars.h"
#include "windows/AccessModel.h"
#include "windows/QtText.h"
#include "windows/RulesTable.h"
#include "windows/TallRows.h"
#include "windows/WindowLook.h"
#include "windows/WindowMemory.h"
#include "workflow/DocumentTexts.h"

#include <QHeaderView>

#include <algorithm>
#include <utility>
#include <vector>

namespace quorvane::windows {

namespace {

std::vector<rules::RuleRef> userRulesOf(std::vector<rules::RuleRef> rules)
{
    std::erase_if(rules, [](const rules::RuleRef& rule) {
        return askValue(valueOf(rule), [](const auto& fields) { return fields.system; });
    });
    return rules;
}

} // namespace

MapWindow::MapWindow(const rules::RuleManager& store, RulesTable& table, QWidget* parent)
    : QDialog(parent, Qt::Window)
    , m_ui(std::make_unique<Ui::MapWindow>())
    , m_store(store)
    , m_table(table)
    , m_model(new AccessModel(this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    m_ui->setupUi(this);
    setUpTree();
    setUpControls();
    keepSize(*this, QStringLiteral("mapWindow"));
    make();
    m_ui->mapTreeView->setFocus();
}

MapWindow::~MapWindow()
{
    m_making.request_stop();
}

void MapWindow::setUpTree()
{
    constexpr int barWidth = 160;
    constexpr int numberWidth = 60;
    constexpr int placeWidth = 250;
    auto* tree = m_ui->mapTreeView;
    tree->setModel(m_model);
    tree->setItemDelegate(new TallRows(tree));
    tree->setItemDelegateForColumn(AccessModel::bar, new AccessBarDelegate(tree));
    tree->setUniformRowHeights(true); // avoids measuring a million rows
    tree->setTextElideMode(Qt::ElideMiddle);
    tree->setAllColumnsShowFocus(true);
    tree->setColumnWidth(AccessModel::place, placeWidth);
    tree->setColumnWidth(AccessModel::bar, barWidth);
    for (const int column : {AccessModel::allow, AccessModel::deny, AccessModel::watch})
        tree->setColumnWidth(column, std::max(numberWidth, tree->header()->sectionSizeHint(column)));
    connect(tree, &QTreeView::clicked, this, &MapWindow::selectRulesOf);
    connect(tree, &QTreeView::activated, this, [this](const QModelIndex& index) {
        selectRulesOf(index);
        if (parentWidget() != nullptr)
            bringToFront(*parentWidget()->window());
    });
}

void MapWindow::setUpControls()
{
    paintSamples();
    connect(m_ui->orderPopUpButton, &QComboBox::currentIndexChanged, this, &MapWindow::make);
    connect(m_ui->systemRulesCheckBox, &QCheckBox::toggled, this, &MapWindow::make);
    connect(m_ui->closeButton, &QPushButton::clicked, this, &QWidget::close);
}

void MapWindow::paintSamples()
{
    const auto sample = [this](QLabel* label, const AccessShares& shares) {
        constexpr QSize size(22, 12);
        label->setPixmap(accessBarSample(shares, size, devicePixelRatioF()));
    };
    sample(m_ui->allowSample, {.allow = 1});
    sample(m_ui->denySample, {.deny = 1});
    sample(m_ui->watchSample, {.watch = 1});
}

bool MapWindow::event(QEvent* event)
{
    if (event->type() == QEvent::PaletteChange)
        paintSamples();
    return QDialog::event(event);
}

// The last column, or that of the programs when they are the tree, takes the remaining width.
void MapWindow::fitColumns()
{
    QHeaderView* header = m_ui->mapTreeView->header();
    m_ui->mapTreeView->setColumnHidden(AccessModel::programs, isByProgram());
    header->setStretchLastSection(!isByProgram());
    header->setSectionResizeMode(
        AccessModel::place, isByProgram() ? QHeaderView::Stretch : QHeaderView::Interactive);
}

bool MapWindow::isByProgram() const
{
    return m_ui->orderPopUpButton->currentIndex() == 1;
}

void MapWindow::make()
{
    m_making.request_stop();
    m_making = {};
    m_ui->countLabel->setText(tr("Looking at the rules\u2026"));
    auto tree = std::make_shared<workflow::AccessTreePtr>();
    m_thread.run(
        [tree, rules = m_store.allRules(), includesSystemRules = m_ui->systemRulesCheckBox->isChecked(),
            byProgram = isByProgram(), stop = m_making.get_token()] {
            if (stop.stop_requested())
                return;
            auto shown = includesSystemRules ? rules : userRulesOf(rules);
            *tree = byProgram ? workflow::AccessTree::byProgram(std::move(shown), stop)
                              : workflow::AccessTree::byFolder(std::move(shown), stop);
        },
        [this, tree, stop = m_making.get_token()] {
            if (!stop.stop_requested() && *tree)
                showTree(*tree);
        });
}

// Expanded branches stay expanded, if they still exist.
void MapWindow::showTree(const workflow::AccessTreePtr& tree)
{
    const bool isFirst = m_model->tree() == nullptr;
    const std::set<QString> expanded = expandedKeys();
    const QString current = keyOf(m_ui->mapTreeView->currentIndex());
    m_model->setTree(tree);
    fitColumns();
    if (isFirst)
        expandTop();
    else
        expandAgain(expanded, current);
    if (!m_ui->mapTreeView->currentIndex().isValid())
        m_ui->mapTreeView->setCurrentIndex(m_model->index(0, 0));
    const workflow::AccessCounts& counts = tree->counts();
    m_ui->countLabel->setText(
        m_model->rowCount() == 0 ? tr("There are no rules.") : tr("On the map: %1.").arg(accessText(counts)));
    Q_EMIT wasMade();
}

// Expands the top levels, up to a readable number of rows.
void MapWindow::expandTop()
{
    constexpr int mostRows = 200;
    if (m_model->rowCount() <= mostRows)
        m_ui->mapTreeView->expandToDepth(0);
}

QString MapWindow::keyOf(const QModelIndex& index) const
{
    if (!index.isValid())
        return {};
    const workflow::AccessBranch& branch = m_model->tree()->branches()[m_model->branchAt(index)];
    return keyOf(index.parent()) + QString::number(static_cast<int>(branch.kind)) + toQt(branch.text)
        + QChar(0);
}

std::set<QString> MapWindow::expandedKeys() const
{
    std::set<QString> keys;
    for (QModelIndex index = m_model->index(0, 0); index.isValid();
         index = m_ui->mapTreeView->indexBelow(index)) {
        if (m_ui->mapTreeView->isExpanded(index))
            keys.insert(keyOf(index));
    }
    return keys;
}

void MapWindow::expandAgain(const std::set<QString>& expanded, const QString& current)
{
    std::vector<QModelIndex> due{QModelIndex()};
    while (!due.empty()) {
        const QModelIndex parent = due.back();
        due.pop_back();
        for (int row = 0; row < m_model->rowCount(parent); ++row) {
            const QModelIndex index = m_model->index(row, 0, parent);
            const QString key = keyOf(index);
            if (key == current)
                m_ui->mapTreeView->setCurrentIndex(index);
            if (!expanded.contains(key))
                continue;
            m_ui->mapTreeView->expand(index);
            due.push_back(index);
        }
    }
}

void MapWindow::selectRulesOf(const QModelIndex& index)
{
    if (!index.isValid())
        return;
    const std::vector<rules::RuleRef> rules = m_model->tree()->rulesOf(m_model->branchAt(index));
    const auto user = std::find_if_not(rules.begin(), rules.end(), rules::isSystemRule);
    m_table.revealRule(user == rules.end() ? rules.front() : *user);
    m_table.selectRules(rules);
    const std::size_t selected = m_table.selection().count();
    m_ui->countLabel->setText(tr("Selected in the table: %1.").arg(toQt(workflow::countedRules(selected))));
}

} // namespace quorvane::windows
