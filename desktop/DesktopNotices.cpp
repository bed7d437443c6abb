#include "desktop/DesktopNotices.h"

#include "desktop/InputLock.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QEventLoop>
#include <QFileInfo>
#include <QUrl>

namespace quorvane::desktop {

namespace {

constexpr std::chrono::milliseconds shownFor = std::chrono::seconds(60);

QString service()
{
    return QStringLiteral("org.freedesktop.Notifications");
}

// The text escaped so that markup shows it verbatim.
QString escaped(QString text)
{
    return text.replace(QLatin1Char('&'), QStringLiteral("&amp;"))
        .replace(QLatin1Char('<'), QStringLiteral("&lt;"))
        .replace(QLatin1Char('>'), QStringLiteral("&gt;"));
}

QString iconOf(const platform::DesktopNotice& notice)
{
    const QString file = QString::fromStdString(notice.iconFile);
    return QFileInfo::exists(file) ? QUrl::fromLocalFile(file).toString(QUrl::FullyEncoded)
                                   : QStringLiteral("system-lock-screen"); // an icon of the desktop's theme
}

} // namespace

DesktopNotices::DesktopNotices(QDBusConnection bus, std::chrono::milliseconds patience)
    : m_bus(std::move(bus))
    , m_patience(patience)
    , m_services(service(), m_bus)
{
    const QString path = QStringLiteral("/org/freedesktop/Notifications");
    for (const QString& signal : {QStringLiteral("ActionInvoked"), QStringLiteral("NotificationClosed")})
        m_bus.connect(QString(), path, service(), signal, this, SLOT(answered(QDBusMessage)));
    connect(&m_services, &QDBusServiceWatcher::serviceOwnerChanged, this, &DesktopNotices::serviceChanged);
}

void DesktopNotices::show(const platform::DesktopNotice& notice, Ended ended)
{
    call(QStringLiteral("GetCapabilities"), {}, [this, notice, ended = std::move(ended)](const auto& answer) {
        if (answer.type() == QDBusMessage::ReplyMessage && answer.signature() == QStringLiteral("as"))
            notify(notice, answer.arguments().at(0).toStringList().contains(QStringLiteral("body-markup")),
                ended);
        else
            ended(platform::NoticeEnd::undeliverable);
    });
}

void DesktopNotices::notify(const platform::DesktopNotice& notice, bool readsMarkup, const Ended& ended)
{
    const QString message = QString::fromStdString(notice.message);
    const QVariantList arguments{
        QStringLiteral("Quorvane Configuration"),
        0U, // replaces no other notice
        iconOf(notice),
        QString::fromStdString(notice.header),
        readsMarkup ? escaped(message) : message,
        QStringList{QStringLiteral("default"), QStringLiteral("OK")},
        QVariantMap(),
        static_cast<int>(shownFor.count()),
    };
    call(QStringLiteral("Notify"), arguments, [this, ended](const auto& answer) {
        if (answer.type() != QDBusMessage::ReplyMessage || answer.signature() != QStringLiteral("u")) {
            ended(platform::NoticeEnd::undeliverable);
            return;
        }
        m_shown[{answer.service(), answer.arguments().at(0).toUInt()}] = ended;
    });
}

void DesktopNotices::call(const QString& method, const QVariantList& arguments,
    const std::function<void(const QDBusMessage&)>& answer)
{
    QDBusMessage message = QDBusMessage::createMethodCall(
        service(), QStringLiteral("/org/freedesktop/Notifications"), service(), method);
    message.setArguments(arguments);
    // Without a bus, a pending call would never report its end.
    const QDBusPendingCall pending = m_bus.isConnected()
        ? m_bus.asyncCall(message, static_cast<int>(m_patience.count()))
        : QDBusPendingCall::fromError(QDBusError(QDBusError::Disconnected, QString()));
    auto* watcher = new QDBusPendingCallWatcher(pending, this);
    ++m_calls;
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, answer] {
        watcher->deleteLater();
        answer(watcher->reply()); // may start another call
        if (--m_calls == 0)
            Q_EMIT handedOver();
    });
}

void DesktopNotices::answered(const QDBusMessage& message)
{
    if (message.signature().startsWith(QLatin1Char('u')))
        end({message.service(), message.arguments().at(0).toUInt()});
}

void DesktopNotices::end(const NoticeKey& key)
{
    if (const auto notice = m_shown.extract(key))
        notice.mapped()(platform::NoticeEnd::closed);
}

void DesktopNotices::serviceChanged(const QString& /*name*/, const QString& oldOwner)
{
    // A service that vanishes takes its notices with it. They are adjacent in the map; the search starts over
    // each time, since ending one may show another.
    for (;;) {
        const auto notice = m_shown.lower_bound({oldOwner, 0});
        if (notice == m_shown.end() || notice->first.first != oldOwner)
            return;
        end(notice->first);
    }
}

void DesktopNotices::finish()
{
    if (m_calls == 0)
        return;
    QEventLoop wait; // ends, since each call does
    connect(this, &DesktopNotices::handedOver, &wait, &QEventLoop::quit);
    const InputLock lock;
    wait.exec();
}

} // namespace quorvane::desktop
