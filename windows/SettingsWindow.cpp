#include "windows/SettingsWindow.h"

#include "ui_SettingsWindow.h"
#include "windows/PlainText.h"
#include "windows/QtText.h"
#include "windows/Shades.h"
#include "windows/WindowLook.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace quorvane::windows {

namespace {

constexpr std::uint64_t bytesInMebibyte = std::uint64_t{1} << 20U;

// Clamped to the range of a spin box.
int mebibytes(std::uint64_t bytes)
{
    constexpr std::uint64_t most = std::numeric_limits<int>::max();
    return static_cast<int>(std::min(bytes / bytesInMebibyte, most));
}

// Describes a control, below it and for screen readers.
void explain(QLabel& help, QWidget& control)
{
    constexpr int helpWidth = 380;
    setTextShade(help, shades::faintText);
    help.setWordWrap(true);
    help.setFixedWidth(helpWidth);
    help.setMinimumHeight(help.heightForWidth(helpWidth));
    control.setAccessibleDescription(help.text());
}

} // namespace

SettingsWindow::SettingsWindow(std::string file, QWidget* parent)
    : QDialog(parent)
    , m_file(std::move(file))
    , m_ui(std::make_unique<Ui::SettingsWindow>())
{
    setAttribute(Qt::WA_DeleteOnClose);
    m_ui->setupUi(this);
    explain(*m_ui->wholeLinesHelp, *m_ui->wholeLinesCheckBox);
    explain(*m_ui->historyHelp, *m_ui->daysSpinBox);
    m_ui->sizeSpinBox->setAccessibleDescription(m_ui->historyHelp->text());
    setTextShade(*m_ui->problemLabel, shades::failureText);
    const workflow::ReadProgramSettings read = workflow::readProgramSettings(m_file);
    m_settings = read.settings;
    showProblem(toQt(read.problem.value_or(std::string())));
    m_ui->wholeLinesCheckBox->setChecked(m_settings.wholeLines);
    m_ui->daysSpinBox->setValue(static_cast<int>(m_settings.history.days));
    m_ui->sizeSpinBox->setValue(mebibytes(m_settings.history.bytes));
    connect(m_ui->saveButton, &QPushButton::clicked, this, &SettingsWindow::save);
    connect(m_ui->cancelButton, &QPushButton::clicked, this, &QWidget::close);
}

SettingsWindow::~SettingsWindow() = default;

void SettingsWindow::showProblem(const QString& problem)
{
    m_ui->problemLabel->setText(withBreakPoints(problem));
    m_ui->problemLabel->setVisible(!problem.isEmpty());
}

workflow::ProgramSettings SettingsWindow::shownSettings() const
{
    workflow::ProgramSettings settings = m_settings;
    settings.wholeLines = m_ui->wholeLinesCheckBox->isChecked();
    settings.history.days = static_cast<std::uint32_t>(m_ui->daysSpinBox->value());
    // A size that was not edited keeps its exact bytes.
    if (m_ui->sizeSpinBox->value() != mebibytes(m_settings.history.bytes))
        settings.history.bytes = static_cast<std::uint64_t>(m_ui->sizeSpinBox->value()) * bytesInMebibyte;
    return settings;
}

void SettingsWindow::save()
{
    const workflow::ProgramSettings settings = shownSettings();
    if (const auto problem = writeProgramSettings(m_file, settings))
        return showProblem(tr("The settings could not be saved: %1").arg(toQt(*problem)));
    Q_EMIT saved(settings);
    close();
}

} // namespace quorvane::windows
