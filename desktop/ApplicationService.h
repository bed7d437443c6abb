#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QVariant>

#include <string>
#include <vector>

namespace quorvane::desktop {

// The program's D-Bus service, the interface org.freedesktop.Application. The session bus starts the program
// when the desktop asks for it, and forwards the desktop's requests: to show the window, to open files, to
// run an action of the desktop entry. User interface thread only.
class ApplicationService : public QObject {
    Q_OBJECT
public:
    // The bus name, which is also the name of the desktop entry.
    static constexpr const char* name = "com.vantreal.quorvane.configuration";

    // Whether the bus has started this process. Call it once, before there are threads: it removes the
    // variable from the environment, so that programs started by this one do not inherit it.
    static bool wasStartedByBus();

    // Accepts requests from now on; they arrive through the event loop. False when there is no bus or another
    // process owns the name.
    bool start(const QDBusConnection& bus);

Q_SIGNALS:
    void activated();
    // The paths of files; URIs that name no file of this computer are skipped.
    void filesWereOpened(const std::vector<std::string>& paths);
    void actionWasChosen(const QString& action);

public Q_SLOTS:
    // Named as the interface demands.
    Q_SCRIPTABLE void Activate(const QVariantMap& platformData);
    Q_SCRIPTABLE void Open(const QStringList& uris, const QVariantMap& platformData);
    Q_SCRIPTABLE void ActivateAction(
        const QString& action, const QVariantList& parameter, const QVariantMap& platformData);
};

} // namespace quorvane::desktop
