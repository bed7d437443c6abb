#include "windows/PathField.h"

#include "platform/FileUri.h"
#include "windows/FilePanel.h"
#include "windows/OneLineText.h"
#include "windows/QtText.h"

#include <QDropEvent>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QUrl>

#include <optional>

namespace quorvane::windows {

namespace {

// The path of the first dragged file; none for other drags.
std::optional<std::string> draggedPath(const QMimeData& data)
{
    return data.urls().isEmpty() ? std::nullopt
                                 : platform::pathOfFileUri(data.urls().front().toEncoded().toStdString());
}

} // namespace

PathField::PathField(const QString& name, QWidget* parent)
    : QWidget(parent)
    , m_name(name)
    , m_field(new QLineEdit(this))
{
    auto* browseButton = new QPushButton(tr("Browse\u2026"), this);
    browseButton->setAutoDefault(false);
    browseButton->setAccessibleName(tr("Browse for: %1").arg(name));
    m_field->setAccessibleName(name);
    m_field->setClearButtonEnabled(true);
    keepToOneLine(*m_field);
    m_field->installEventFilter(this);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_field, 1);
    layout->addWidget(browseButton);
    setFocusProxy(m_field);
    connect(m_field, &QLineEdit::textChanged, this, &PathField::pathChanged);
    connect(browseButton, &QPushButton::clicked, this, &PathField::browse);
}

std::string PathField::path() const
{
    return fromQt(m_field->text());
}

void PathField::setPath(const std::string& path)
{
    m_field->setText(toQt(path));
}

void PathField::takeDropsOn(QWidget& widget)
{
    widget.setAcceptDrops(true);
    widget.installEventFilter(this);
}

void PathField::browse()
{
    if (const auto chosen = chooseFileOrFolder(*this, m_name, path()))
        setPath(*chosen);
}

// A dropped file replaces the text. By default the field would insert its URL.
bool PathField::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::DragEnter && event->type() != QEvent::DragMove
        && event->type() != QEvent::Drop)
        return QWidget::eventFilter(watched, event);
    auto& drop = static_cast<QDropEvent&>(*event);
    const auto path = draggedPath(*drop.mimeData());
    if (!path || !drop.possibleActions().testFlag(Qt::CopyAction))
        return QWidget::eventFilter(watched, event);
    drop.setDropAction(Qt::CopyAction);
    drop.accept();
    if (event->type() == QEvent::Drop)
        setPath(*path);
    return true;
}

} // namespace quorvane::windows
