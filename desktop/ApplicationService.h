#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QVariant>

#include <string>
#include <vector>

namespace quorvane::desktop {

// The program as the session bus knows it. The bus starts it when the desktop asks for it, and hands on
// whatever the desktop asks then and later: to show its window, to open files, to do an action of the desktop
// entry. This is the interface org.freedesktop.Application. User interface thread only.
class ApplicationService : public QObject {
    Q_OBJECT
public:
    // Its name on the bus, which is the desktop entry's as well.
    static constexpr const char* name = "com.vantreal.quorvane.configuration";

    // Whether the bus has started this process. To be asked once, before there are threads: the answer is
    // taken out of the environment, so that programs that this one starts do not think so of themselves.
    static bool wasStartedByBus();

    // Requests come from now on, once the event loop runs. False when there is no bus or another process has
    // the name.
    bool start(const QDBusConnection& bus);

Q_SIGNALS:
    void activated();
    // The paths of files; what is no file of this computer is left out.
    void filesWereOpened(const std::vector<std::string>& paths);
    void actionWasChosen(const QString& action);

public Q_SLOTS:
    // The names are the interface's.
    Q_SCRIPTABLE void Activate(const QVariantMap& platformData);
    Q_SCRIPTABLE void Open(const QStringList& uris, const QVariantMap& platformData);
    Q_SCRIPTABLE void ActivateAction(
        const QString& action, const QVariantList& parameter, const QVariantMap& platformData);
};

} // namespace quorvane::desktop
