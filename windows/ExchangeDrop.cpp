#include "windows/ExchangeDrop.h"

#include "platform/FileUri.h"

#include <QDropEvent>
#include <QMimeData>
#include <QUrl>
#include <QWidget>

namespace quorvane::windows {

namespace {

std::vector<std::string> exchangeFilesOf(const QMimeData& data)
{
    std::vector<std::string> paths;
    for (const QUrl& url : data.urls()) {
        auto path = platform::pathOfFileUri(url.toEncoded().toStdString());
        if (path && path->ends_with(".quorv"))
            paths.push_back(std::move(*path));
    }
    return paths;
}

} // namespace

ExchangeDrop::ExchangeDrop(QWidget& window)
    : QObject(&window)
{
    window.setAcceptDrops(true);
    window.installEventFilter(this);
}

bool ExchangeDrop::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::DragEnter && event->type() != QEvent::Drop)
        return QObject::eventFilter(watched, event);
    auto& drop = static_cast<QDropEvent&>(*event);
    const auto paths = exchangeFilesOf(*drop.mimeData());
    const QString text = drop.mimeData()->hasUrls() ? QString() : drop.mimeData()->text();
    // Only copies are accepted: for a move, the source would delete its files or text.
    if ((paths.empty() && text.isEmpty()) || !drop.possibleActions().testFlag(Qt::CopyAction)) {
        drop.ignore();
        return true;
    }
    drop.setDropAction(Qt::CopyAction);
    drop.accept();
    if (event->type() == QEvent::Drop)
        QMetaObject::invokeMethod(
            this,
            [this, paths, text] {
                if (paths.empty())
                    Q_EMIT textWasDropped(text);
                else
                    Q_EMIT filesWereDropped(paths);
            },
            Qt::QueuedConnection);
    return true;
}

} // namespace quorvane::windows
