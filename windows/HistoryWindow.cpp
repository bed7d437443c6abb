#include "windows/HistoryWindow.h"

#include "rules/RulesContent.h"
#include "ui_HistoryWindow.h"
#include "windows/DifferenceModel.h"
#include "windows/ExchangePanels.h"
#include "windows/ForgetQuestion.h"
#include "windows/OneLineText.h"
#include "windows/QtText.h"
#include "windows/VersionsModel.h"
#include "windows/WindowMemory.h"
#include "workflow/RulesExport.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QPointer>
#include <QPushButton>
#include <QShortcut>

#include <algorithm>
#include <chrono>
#include <utility>

namespace quorvane::windows {

namespace {

constexpr std::chrono::seconds betweenLooks{1};
constexpr QLatin1String newsOfVersion("tell"); // subject of notices that replace each other

QString headingOf(const ComparedVersion& difference)
{
    const QString version = HistoryWindow::tr("Version %1").arg(difference.version);
    if (!difference.table)
        return version;
    const QString summary = toQt(difference.table->summary());
    return difference.since ? HistoryWindow::tr("%1 compared with version %2: %3")
                                  .arg(version)
                                  .arg(*difference.since)
                                  .arg(summary)
                            : HistoryWindow::tr("%1, the first: %2").arg(version, summary);
}

} // namespace

HistoryWindow::HistoryWindow(std::vector<workflow::FileHistory*> histories, QWidget* parent)
    : QDialog(parent, Qt::Window)
    , m_ui(std::make_unique<Ui::HistoryWindow>())
    , m_histories(std::move(histories))
    , m_versions(new VersionsModel(this))
    , m_changes(new DifferenceModel(this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    m_ui->setupUi(this);
    setUpTables();
    setUpControls();
    keepSize(*this, QStringLiteral("historyWindow"));
    openHistory();
    connect(&m_refreshing, &QTimer::timeout, this, &HistoryWindow::refresh);
    m_refreshing.start(betweenLooks);
    m_ui->versionsTableView->setFocus();
}

HistoryWindow::~HistoryWindow() = default;

void HistoryWindow::setUpTables()
{
    auto* versions = m_ui->versionsTableView;
    versions->setModel(m_versions);
    versions->setPathColumn(static_cast<int>(VersionsModel::Column::action));
    connect(versions->selectionModel(), &QItemSelectionModel::selectionChanged, this,
        &HistoryWindow::selectionDidChange);
    connect(versions, &RulesTableView::textTyped, this, [this](const QString& text) {
        m_ui->searchField->setFocus(Qt::OtherFocusReason);
        m_ui->searchField->setText(text);
    });
    auto* changes = m_ui->differenceTableView;
    changes->setModel(m_changes);
    auto* copy = new QAction(tr("&Copy"), changes);
    copy->setShortcut(QKeySequence::Copy);
    copy->setShortcutContext(Qt::WidgetShortcut);
    connect(copy, &QAction::triggered, this, &HistoryWindow::copyChanges);
    changes->addAction(copy);
    changes->setContextMenuPolicy(Qt::ActionsContextMenu);
    constexpr int partOfVersions = 3;
    constexpr int partOfChanges = 2;
    m_ui->splitter->setStretchFactor(0, partOfVersions);
    m_ui->splitter->setStretchFactor(1, partOfChanges);
}

void HistoryWindow::setUpControls()
{
    for (const workflow::FileHistory* each : m_histories)
        m_ui->subjectPopUpButton->addItem(toQt(each->name()));
    connect(m_ui->subjectPopUpButton, &QComboBox::currentIndexChanged, this, &HistoryWindow::openHistory);
    keepToOneLine(*m_ui->searchField);
    connect(m_ui->searchField, &QLineEdit::textChanged, this, &HistoryWindow::searchDidChange);
    connect(m_ui->searchField, &QLineEdit::returnPressed, m_ui->versionsTableView,
        qOverload<>(&QWidget::setFocus));
    const auto onClick = [this](const QPushButton* button, auto slot) {
        connect(button, &QPushButton::clicked, this, slot);
    };
    onClick(m_ui->restoreButton, &HistoryWindow::restoreVersion);
    onClick(m_ui->exportButton, &HistoryWindow::exportVersion);
    onClick(m_ui->forgetButton, &HistoryWindow::forgetVersions);
    onClick(m_ui->closeButton, &QWidget::close);
    connect(new QShortcut(QKeySequence::Find, this), &QShortcut::activated, this, [this] {
        m_ui->searchField->setFocus(Qt::ShortcutFocusReason);
        m_ui->searchField->selectAll();
    });
    auto* escape = new QShortcut(Qt::Key_Escape, m_ui->searchField, nullptr, nullptr, Qt::WidgetShortcut);
    connect(escape, &QShortcut::activated, this, [this] {
        if (m_ui->searchField->text().isEmpty())
            m_ui->versionsTableView->setFocus();
        else
            m_ui->searchField->clear();
    });
}

workflow::FileHistory& HistoryWindow::history() const
{
    return *m_histories[static_cast<std::size_t>(std::max(m_ui->subjectPopUpButton->currentIndex(), 0))];
}

void HistoryWindow::openHistory()
{
    m_versions->setCounted(toQt(history().name()));
    m_reader = std::make_unique<HistoryReader>(history());
    connect(m_reader.get(), &HistoryReader::versionsRead, this, &HistoryWindow::versionsDidChange);
    connect(m_reader.get(), &HistoryReader::compared, this, &HistoryWindow::showDifference);
    connect(m_reader.get(), &HistoryReader::found, this, [this](qint64 version) {
        m_versions->addFound(version);
        if (!m_selected)
            selectVersion(version);
    });
    connect(m_reader.get(), &HistoryReader::searched, this, [this](qsizetype count) {
        m_searched = static_cast<std::size_t>(count);
        updateCounts();
    });
    connect(m_reader.get(), &HistoryReader::forgotten, this, [this](const QString& problem) {
        history().versionsWereForgotten();
        showMessage(problem.isEmpty() ? tr("The versions are forgotten.") : problem);
    });
    m_ui->notices->remove(newsOfVersion);
    m_isRead = false;
    m_versions->setVersions({});
    selectionDidChange();
    history().keepPresentVersion();
    refresh();
}

void HistoryWindow::refresh()
{
    m_reader->refresh();
}

void HistoryWindow::showVersionFrom(std::int64_t number)
{
    m_wanted = number;
    m_ui->searchField->clear();
    m_ui->subjectPopUpButton->setCurrentIndex(0);
    if (m_isRead && wantedVersion())
        selectVersion(wantedVersion());
}

std::optional<std::int64_t> HistoryWindow::wantedVersion() const
{
    std::optional<std::int64_t> first;
    for (const history::JournalVersion& version : m_versions->versions()) {
        if (m_wanted && version.number >= *m_wanted)
            first = version.number;
    }
    return first;
}

void HistoryWindow::versionsDidChange(
    const std::vector<history::JournalVersion>& versions, const QString& problem)
{
    const auto selected = m_selected; // which a reset of the model clears
    m_versions->setVersions(versions);
    if (!std::exchange(m_isRead, true))
        m_ui->versionsTableView->fitColumns();
    if (const auto wanted = wantedVersion())
        selectVersion(wanted);
    else if (selected && m_versions->rowOf(*selected))
        selectVersion(selected);
    else if (m_versions->rowCount() > 0)
        selectVersion(m_versions->versionAt(0).number);
    m_ui->versionsTableView->setEmptyText(problem.isEmpty() ? tr("Nothing has been changed yet.") : problem);
    if (!m_ui->searchField->text().isEmpty())
        searchAgain();
    selectionDidChange();
    updateCounts();
    if (versions.empty())
        Q_EMIT wasFilled();
}

const history::JournalVersion* HistoryWindow::selectedVersion() const
{
    const auto row = m_selected ? m_versions->rowOf(*m_selected) : std::nullopt;
    return row ? &m_versions->versionAt(*row) : nullptr;
}

void HistoryWindow::selectVersion(std::optional<std::int64_t> number)
{
    const auto row = number ? m_versions->rowOf(*number) : std::nullopt;
    if (!row)
        return;
    m_ui->versionsTableView->selectRow(*row);
}

void HistoryWindow::selectionDidChange()
{
    const auto row = m_ui->versionsTableView->onlySelectedRow();
    const auto selected
        = row ? std::optional(m_versions->versionAt(static_cast<int>(*row)).number) : std::nullopt;
    const bool isOther = std::exchange(m_selected, selected) != selected;
    const history::JournalVersion* version = selectedVersion();
    const bool isNewest = version != nullptr && version->number == m_versions->versions().front().number;
    m_ui->restoreButton->setEnabled(version != nullptr && !isNewest && version->isReadable);
    m_ui->exportButton->setEnabled(version != nullptr && version->isReadable);
    m_ui->forgetButton->setEnabled(m_versions->versions().size() > 1);
    if (!isOther)
        return;
    if (m_wanted && selected && selected != wantedVersion())
        m_wanted.reset(); // the user has chosen another
    m_changes->setTable(nullptr);
    m_ui->differenceLabel->setText(version == nullptr ? QString() : tr("Comparing\u2026"));
    m_ui->differenceTableView->setEmptyText({});
    if (version != nullptr)
        m_reader->compare(*version);
}

void HistoryWindow::showDifference(const ComparedVersion& difference)
{
    m_changes->setTable(difference.table);
    if (difference.table) {
        m_ui->differenceTableView->setEmptyText(tr("Nothing differs but the order, or how it is written."));
        m_ui->differenceTableView->setPathColumn(static_cast<int>(difference.table->widestColumn()));
        if (m_changes->rowCount() > 0)
            m_ui->differenceTableView->refitColumns();
    } else {
        m_ui->differenceTableView->setEmptyText(difference.problem);
    }
    m_ui->differenceLabel->setText(headingOf(difference));
    Q_EMIT wasFilled();
}

void HistoryWindow::searchDidChange()
{
    const auto selected = m_selected;
    m_versions->setSearch(m_ui->searchField->text());
    selectVersion(selected && m_versions->rowOf(*selected) ? selected
            : m_versions->rowCount() > 0                   ? std::optional(m_versions->versionAt(0).number)
                                                           : std::nullopt);
    selectionDidChange();
    searchAgain();
}

void HistoryWindow::searchAgain()
{
    m_searched = 0;
    m_reader->search(m_ui->searchField->text(), m_versions->versions());
    updateCounts();
}

void HistoryWindow::updateCounts()
{
    const std::size_t all = m_versions->versions().size();
    QString counts = all == 1 ? tr("1 version") : tr("%1 versions").arg(inWords(all));
    if (!m_ui->searchField->text().isEmpty()) {
        counts = tr("%1 of %2").arg(inWords(static_cast<std::size_t>(m_versions->rowCount())), counts);
        if (m_searched < all)
            counts += tr(", searched %1\u2026").arg(inWords(m_searched));
        m_ui->versionsTableView->setEmptyText(
            m_searched < all ? tr("Searching\u2026") : tr("No version matches."));
    }
    m_ui->countLabel->setText(m_isRead ? counts : QString());
}

void HistoryWindow::copyChanges() const
{
    QString lines;
    for (const std::size_t row : m_ui->differenceTableView->selectedRows())
        lines += toQt(std::string(changeName(m_changes->table()->change(row))) + ": "
                     + m_changes->table()->line(row))
            + QLatin1Char('\n');
    if (!lines.isEmpty())
        QGuiApplication::clipboard()->setText(lines);
}

void HistoryWindow::restoreVersion()
{
    const history::JournalVersion* version = selectedVersion();
    if (version == nullptr)
        return;
    const std::int64_t number = version->number;
    const QPointer<HistoryWindow> self(this); // a restore may wait for the user
    const auto problem = history().restore(number);
    if (self.isNull())
        return;
    if (problem)
        return showMessage(toQt(*problem));
    FootNotice notice{.text = tr("Version %1 is in force again.").arg(number), .subject = newsOfVersion};
    if (history().canUndo())
        notice.buttons.push_back({tr("Undo"), [this] { Q_EMIT undoRequested(); }});
    m_ui->notices->add(std::move(notice));
    Q_EMIT wasRestored();
    refresh();
}

void HistoryWindow::exportVersion()
{
    const history::JournalVersion* version = selectedVersion();
    if (version == nullptr)
        return;
    showSavePanel(*this, tr("Export Version %1").arg(version->number), history().exportName(),
        [this, number = version->number](const std::string& path) { save(path, number); });
}

void HistoryWindow::save(const std::string& path, std::int64_t version)
{
    if (workflow::isSameFile(path, history().file()))
        return showMessage(
            tr("This file is the one whose versions these are. \u201cRestore\u201d brings a version back."));
    m_reader->readBytes(version, [this, path, version](const std::optional<std::string>& bytes) {
        if (!bytes)
            return showMessage(tr("Version %1 can no longer be read.").arg(version));
        const rules::WriteResult result = workflow::exportRules(path, rules::RulesContent::ofText(*bytes));
        showMessage(result.message
                ? toQt(*result.message)
                : tr("Version %1 was exported to \u201c%2\u201d.").arg(version).arg(toQt(path)));
    });
}

void HistoryWindow::forgetVersions()
{
    const QPointer<HistoryWindow> self(this);
    const auto firstKept = askWhatToForget(*this, toQt(history().name()), m_versions->versions(), m_selected);
    if (!self.isNull() && firstKept)
        m_reader->forgetBefore(*firstKept);
}

void HistoryWindow::showMessage(const QString& text)
{
    m_ui->notices->add({.text = text, .subject = newsOfVersion});
}

} // namespace quorvane::windows
