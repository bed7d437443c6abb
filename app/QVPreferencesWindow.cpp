#include "app/QVPreferencesWindow.h"

#include "platform/Log.h"
#include "ui_QVPreferencesWindow.h"
#include "windows/QtText.h"
#include "windows/WindowLook.h"
#include "workflow/ApplicationServices.h"
#include "workflow/PreferencesFile.h"
#include "workflow/PreferencesHistory.h"
#include "workflow/RulesFolder.h"
#include "workflow/RunState.h"

#include <QIcon>
#include <QStyle>

#include <utility>

namespace quorvane::app {

namespace {

constexpr int lockSize = 20;
const QColor helpColor(0x5c, 0x5c, 0x64);

// The indent of a check box's text.
int textIndent(const QCheckBox& box)
{
    const QStyle& style = *box.style();
    return style.pixelMetric(QStyle::PM_IndicatorWidth, nullptr, &box)
        + style.pixelMetric(QStyle::PM_CheckBoxLabelSpacing, nullptr, &box);
}

// Describes a control in small print below it, and for screen readers.
void explain(QLabel& help, QWidget& control, int indent)
{
    constexpr int helpWidth = 400;
    constexpr double smaller = 0.92;
    QFont font = help.font();
    font.setPointSizeF(font.pointSizeF() * smaller);
    help.setFont(font);
    QPalette palette = help.palette();
    palette.setColor(QPalette::WindowText, helpColor);
    help.setPalette(palette);
    help.setWordWrap(true);
    help.setContentsMargins(indent, 0, 0, 0);
    help.setFixedWidth(helpWidth);
    help.setMinimumHeight(help.heightForWidth(helpWidth));
    control.setAccessibleDescription(help.text());
}

} // namespace

QVPreferencesWindow::QVPreferencesWindow(platform::Locations locations,
    workflow::ApplicationServices& application, workflow::RunState& run,
    platform::PrivilegedCommand& privilegedCommand, workflow::PreferencesHistory& history, platform::Log& log)
    : m_locations(std::move(locations))
    , m_application(application)
    , m_run(run)
    , m_privilegedCommand(privilegedCommand)
    , m_history(history)
    , m_log(log)
    , m_ui(std::make_unique<Ui::QVPreferencesWindow>())
{
    setAttribute(Qt::WA_DeleteOnClose);
    m_ui->setupUi(this);
    setUpSwitches();
    explain(*m_ui->levelOfDetailHelp, *m_ui->levelOfDetailPopUpButton, 0);
    for (int tag = 0; tag < m_ui->levelOfDetailPopUpButton->count(); ++tag)
        m_ui->levelOfDetailPopUpButton->setItemData(tag, tag);
    const QIcon lock(QStringLiteral(":/images/lock.png"));
    m_ui->lockImage->setPixmap(lock.pixmap(QSize(lockSize, lockSize), devicePixelRatio()));
    m_ui->lockImage->hide();
    m_ui->readOnlyLabel->hide();
    m_ui->warningLabel->hide();
    connect(m_ui->createRulesCheckBox, &QCheckBox::clicked, this, &QVPreferencesWindow::clickedCreateRules);
    connect(m_ui->saveButton, &QPushButton::clicked, this, &QVPreferencesWindow::clickedOK);
    connect(m_ui->cancelButton, &QPushButton::clicked, this, &QVPreferencesWindow::reject);
}

QVPreferencesWindow::~QVPreferencesWindow() = default;

void QVPreferencesWindow::setUpSwitches()
{
    using Values = workflow::PreferenceValues;
    m_switches = {
        {m_ui->restrictRulesCheckBox, m_ui->restrictRulesHelp, &Values::restrictRules},
        {m_ui->createRulesCheckBox, m_ui->createRulesHelp, &Values::createRules},
        {m_ui->allowSignedExecutionCheckBox, m_ui->allowSignedExecutionHelp, &Values::allowSignedExecution},
        {m_ui->whitelistPreloadedCheckBox, m_ui->whitelistPreloadedHelp, &Values::whitelistPreloaded},
        {m_ui->monitorWebcamCheckbox, m_ui->monitorWebcamHelp, &Values::monitorWebcam},
        {m_ui->monitorStartupCheckBox, m_ui->monitorStartupHelp, &Values::monitorStartup},
        {m_ui->monitorExecutionCheckBox, m_ui->monitorExecutionHelp, &Values::monitorExecution},
        {m_ui->monitorAttachCheckBox, m_ui->monitorAttachHelp, &Values::monitorAttach},
        {m_ui->promptsLockedCheckBox, m_ui->promptsLockedHelp, &Values::promptsLocked},
        {m_ui->requireTouchBarCheckBox, m_ui->requireTouchBarHelp, &Values::requireTouchBar},
        {m_ui->strictSystemRulesCheckBox, m_ui->strictSystemRulesHelp, &Values::strictSystemRules},
        {m_ui->allowRemoteAdministrationCheckBox, m_ui->allowRemoteAdministrationHelp,
            &Values::allowRemoteAdministration},
        {m_ui->requireAuthenticationCheckBox, m_ui->requireAuthenticationHelp,
            &Values::requireAuthentication},
    };
    for (const Switch& each : m_switches)
        explain(*each.help, *each.box, textIndent(*each.box));
}

void QVPreferencesWindow::windowDidLoad()
{
    m_initialPermissions = canCreateRules(m_locations, m_log);
    m_settings = workflow::readPreferences(m_locations.preferencesFile());
    m_history.keepPresentVersion();
    showValues(workflow::PreferenceValues::shownFor(m_settings, m_initialPermissions));
    const bool isAdmin = m_application.isAdminUser();
    m_authenticated = isAdmin && m_application.performAuthentication();
    if (m_authenticated)
        warnOfFile();
    else
        makeReadOnly();
    setTheme();
}

void QVPreferencesWindow::showValues(const workflow::PreferenceValues& values)
{
    for (const Switch& each : m_switches)
        each.box->setChecked(values.*each.value);
    m_ui->restrictRulesCheckBox->setEnabled(values.createRules);
    QComboBox& detail = *m_ui->levelOfDetailPopUpButton;
    // An unknown level gets a separate item, so that saving preserves it.
    if (detail.findData(values.levelOfDetail) < 0)
        detail.addItem(tr("Other (%1)").arg(values.levelOfDetail), values.levelOfDetail);
    detail.setCurrentIndex(detail.findData(values.levelOfDetail));
}

workflow::PreferenceValues QVPreferencesWindow::shownValues() const
{
    workflow::PreferenceValues values;
    for (const Switch& each : m_switches)
        values.*each.value = each.box->isChecked();
    values.levelOfDetail = m_ui->levelOfDetailPopUpButton->currentData().toInt();
    return values;
}

void QVPreferencesWindow::makeReadOnly()
{
    for (const Switch& each : m_switches) {
        // Deliberate: the strict system rules can still be clicked; nothing is saved.
        if (each.box != m_ui->strictSystemRulesCheckBox)
            each.box->setEnabled(false);
    }
    m_ui->levelOfDetailPopUpButton->setEnabled(false);
    m_ui->saveButton->setText(QStringLiteral("  OK  "));
    m_ui->cancelButton->hide();
    m_ui->lockImage->show();
    m_ui->readOnlyLabel->show();
    m_ui->saveButton->setFocus();
}

// Otherwise an administrator would edit in vain when another one owns the file, and would mistake the
// defaults for the settings when it could not be read.
void QVPreferencesWindow::warnOfFile()
{
    const std::string file = m_locations.preferencesFile();
    if (const auto reason = workflow::whyPreferencesCannotBeSaved(file))
        warn(tr("These settings cannot be saved: %1.").arg(windows::toQt(*reason)));
    else if (const auto unread = workflow::whyPreferencesAreUnread(file))
        warn(tr("The file of the settings cannot be read: %1. Shown are the defaults; saving keeps the file "
                "under "
                "another name.")
                 .arg(windows::toQt(*unread)));
}

void QVPreferencesWindow::warn(const QString& text)
{
    m_ui->warningLabel->setText(text);
    m_ui->warningLabel->setToolTip(windows::toQt(m_locations.preferencesFile()));
    m_ui->warningLabel->show();
}

void QVPreferencesWindow::setTheme()
{
    windows::applySheetLook(*this);
}

void QVPreferencesWindow::clickedCreateRules()
{
    m_ui->restrictRulesCheckBox->setEnabled(m_ui->createRulesCheckBox->isChecked());
}

void QVPreferencesWindow::clickedOK()
{
    if (m_application.isAdminUser() && m_authenticated) {
        m_run.g_dirty = 1;
        setFolderPermissions();
        // Read again, so that changes by others since then are kept.
        m_settings = workflow::readPreferences(m_locations.preferencesFile());
        shownValues().writeTo(m_settings);
        m_history.keepPresentVersion();
        const std::string file = m_locations.preferencesFile();
        const auto failure = workflow::writePreferences(file, m_settings, m_log);
        if (!failure)
            m_history.keepSaved("Save Preferences");
        Q_EMIT saved(failure ? tr("Failed to save the preferences to '%1': %2")
                                   .arg(windows::toQt(file), windows::toQt(*failure))
                             : QString());
    }
    close();
}

void QVPreferencesWindow::setFolderPermissions()
{
    const bool mayCreateRules = m_ui->createRulesCheckBox->isChecked();
    if (mayCreateRules == m_initialPermissions)
        return;
    workflow::letUsersCreateRules(m_locations, mayCreateRules, m_privilegedCommand, m_log);
}

bool QVPreferencesWindow::canCreateRules(const platform::Locations& locations, platform::Log& log)
{
    return workflow::canCreateRules(locations, log);
}

void QVPreferencesWindow::reject()
{
    close();
}

void QVPreferencesWindow::closeEvent(QCloseEvent* /*event*/)
{
    windowWillClose();
}

void QVPreferencesWindow::windowWillClose()
{
    m_log.write("-[QVPreferencesWindow windowWillClose:] exiting");
    if (m_application.showPreferences())
        m_application.terminate();
}

} // namespace quorvane::app
