#include "windows/RuleEditorControls.h"

#include "desktop/Workspace.h"
#include "platform/PathComponents.h"
#include "windows/FilePanel.h"
#include "windows/OneLineText.h"
#include "windows/PlainText.h"
#include "windows/QtText.h"
#include "windows/StateImages.h"
#include "workflow/RuleEditing.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QFontDatabase>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <utility>

namespace quorvane::windows {

namespace {

constexpr int iconSize = 96; // logical pixels

void showImage(QLabel& view, const QIcon& icon, const QString& meaning)
{
    const qreal scale = view.devicePixelRatio();
    QPixmap image = icon.pixmap(QSize(iconSize, iconSize), scale);
    const QSize pixels = QSize(iconSize, iconSize) * scale;
    if (!image.isNull() && image.width() < pixels.width() && image.height() < pixels.height()) {
        image = image.scaled(pixels, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        image.setDevicePixelRatio(scale);
    }
    view.setPixmap(image);
    view.setAccessibleDescription(image.isNull() ? QString() : meaning);
}

// No icon when the file is not an image. Regular files only: a pipe would block the window.
QIcon iconInFile(const QString& file)
{
    return QFileInfo(file).isFile() ? QIcon(file) : QIcon();
}

std::string textOf(const QLineEdit& field)
{
    return fromQt(field.text());
}

// Selects no item for an unknown code.
void choose(QComboBox& popUp, std::optional<std::int32_t> code)
{
    popUp.setCurrentIndex(code.value_or(-1));
}

std::optional<std::int32_t> selectedCode(const QComboBox& popUp)
{
    const int index = popUp.currentIndex();
    return index < 0 ? std::nullopt : std::optional<std::int32_t>(index);
}

} // namespace

void setUpRuleTextField(QLineEdit& field)
{
    constexpr int roomBesideText = 4;
    field.setTextMargins(roomBesideText, 0, roomBesideText, 0);
    field.setLayoutDirection(Qt::LeftToRight); // like paths everywhere
    keepToOneLine(field);
    field.setAccessibleDescription(field.toolTip()); // the default would be the tool tip with its markup
    QObject::connect(&field, &QLineEdit::textChanged, &field,
        [&field, help = plainToolTip(field.toolTip())](
            const QString& text) { field.setToolTip(plainToolTip(text) + help); });
}

void setUpConstraintField(QLineEdit& field)
{
    constexpr int digits = 64;
    constexpr int digitsOfRoom = 5; // margin beside them, including the frame
    setUpRuleTextField(field);
    field.setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    const int digitWidth = QFontMetrics(field.font()).horizontalAdvance(QLatin1Char('0'));
    field.setMinimumWidth((digits + digitsOfRoom) * digitWidth);
}

void makeReadOnly(QLineEdit& field)
{
    field.setReadOnly(true);
    QPalette palette = field.palette();
    palette.setColor(QPalette::Base, palette.color(QPalette::Window));
    field.setPalette(palette);
}

void showText(QLineEdit& field, const std::string& text)
{
    field.setText(toQt(text));
    field.setCursorPosition(0);
}

RuleEditorControls::RuleEditorControls(
    const RuleEditorWidgets& widgets, desktop::Workspace& workspace, std::string lockImageFile)
    : m_widgets(widgets)
    , m_workspace(workspace)
    , m_lockImageFile(std::move(lockImageFile))
{
    setUpRuleTextField(*m_widgets.pathTextField);
    setUpRuleTextField(*m_widgets.processNameTextField);
    if (m_widgets.constraintTextField != nullptr)
        setUpConstraintField(*m_widgets.constraintTextField);
}

// The texts first: changing one may set the type.
void RuleEditorControls::fill(const workflow::RuleDraft& draft) const
{
    showText(*m_widgets.pathTextField, draft.path);
    showText(*m_widgets.processNameTextField, draft.processName);
    if (m_widgets.constraintTextField != nullptr)
        showText(*m_widgets.constraintTextField, draft.constraint);
    choose(*m_widgets.typePopUp, draft.policyType);
    if (m_widgets.policyClassPopUp != nullptr)
        choose(*m_widgets.policyClassPopUp, draft.policyClass);
    const workflow::OperationBoxes boxes = workflow::boxesForOperations(draft.operations);
    for (std::size_t box = 0; box < boxes.size(); ++box)
        m_widgets.operationButtons[box]->setChecked(boxes[box]);
}

workflow::RuleDraft RuleEditorControls::draft() const
{
    workflow::OperationBoxes boxes{};
    for (std::size_t box = 0; box < boxes.size(); ++box)
        boxes[box] = m_widgets.operationButtons[box]->isChecked();
    workflow::RuleDraft draft{.policyType = selectedCode(*m_widgets.typePopUp),
        .path = textOf(*m_widgets.pathTextField),
        .processName = textOf(*m_widgets.processNameTextField),
        .operations = workflow::operationsForBoxes(boxes)};
    if (m_widgets.policyClassPopUp != nullptr)
        draft.policyClass = selectedCode(*m_widgets.policyClassPopUp);
    if (m_widgets.constraintTextField != nullptr)
        draft.constraint = textOf(*m_widgets.constraintTextField);
    return draft;
}

void RuleEditorControls::showTextsFromStart() const
{
    m_widgets.pathTextField->setCursorPosition(0);
}

void RuleEditorControls::showSystemRule() const
{
    m_widgets.saveButton->hide();
    m_widgets.cancelButton->setDefault(true);
    m_widgets.cancelButton->setFocus();
    m_widgets.typePopUp->setEnabled(false);
    m_widgets.browsePathButton->setEnabled(false);
    m_widgets.browseProcessButton->setEnabled(false);
    for (QCheckBox* button : m_widgets.operationButtons)
        button->setEnabled(false);
    makeReadOnly(*m_widgets.pathTextField);
    makeReadOnly(*m_widgets.processNameTextField);
    if (m_widgets.policyClassPopUp != nullptr)
        m_widgets.policyClassPopUp->setEnabled(false);
    if (m_widgets.constraintTextField != nullptr)
        makeReadOnly(*m_widgets.constraintTextField);
    m_widgets.systemImageView->setPixmap(systemRuleImage().pixmap(
        QSize(stateImageSize, stateImageSize), m_widgets.systemImageView->devicePixelRatio()));
    m_widgets.systemImageView->show();
    m_widgets.systemLabel->show();
}

void RuleEditorControls::showUserRule() const
{
    m_widgets.pathTextField->setFocus();
}

void RuleEditorControls::applyCompleteness() const
{
    m_widgets.saveButton->setEnabled(
        workflow::isCompleteRule(textOf(*m_widgets.pathTextField), textOf(*m_widgets.processNameTextField)));
}

void RuleEditorControls::autoSetType() const
{
    m_widgets.typePopUp->setCurrentIndex(workflow::policyTypeForPath(textOf(*m_widgets.pathTextField)));
}

void RuleEditorControls::setConstraintLabel() const
{
    if (m_widgets.constraintTextField != nullptr)
        m_widgets.constraintTypeTextField->setText(
            toQt(workflow::constraintLabel(textOf(*m_widgets.constraintTextField))));
}

void RuleEditorControls::setApplicationIcon() const
{
    const workflow::ProgramIcon icon = iconForProcess(textOf(*m_widgets.processNameTextField), m_place);
    switch (icon.kind) {
    case workflow::ProgramIcon::Kind::none:
        return showImage(*m_widgets.iconImageView, {}, {});
    case workflow::ProgramIcon::Kind::lock:
        return showImage(
            *m_widgets.iconImageView, iconInFile(toQt(m_lockImageFile)), QObject::tr("lock: any program"));
    case workflow::ProgramIcon::Kind::file:
        return showImage(*m_widgets.iconImageView, m_workspace.iconForFile(icon.file, m_place.root()),
            toQt(platform::lastPathComponent(icon.file)));
    }
}

std::string RuleEditorControls::pathPanelStart() const
{
    return workflow::panelStart(textOf(*m_widgets.pathTextField), fromQt(QDir::homePath()));
}

std::string RuleEditorControls::applicationPanelStart() const
{
    return workflow::panelStart(textOf(*m_widgets.processNameTextField), "/Applications/");
}

void RuleEditorControls::takePath(const std::string& path) const
{
    showText(*m_widgets.pathTextField, path);
    autoSetType();
}

void RuleEditorControls::takeApplication(const std::string& path) const
{
    showText(*m_widgets.processNameTextField, path);
    setApplicationIcon();
}

std::optional<std::string> choosePath(QWidget& editor, const std::string& startPath)
{
    return chooseFileOrFolder(editor, QObject::tr("Use Path"), startPath);
}

} // namespace quorvane::windows
