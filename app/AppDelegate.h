#pragma once

#include "platform/Locations.h"
#include "rules/RuleManager.h"

#include <QObject>

namespace quorvane {

class Log;

// The root of the application: what happens at its start, and the notices by which every window tells the
// user of something. User interface thread only.
class AppDelegate : public QObject {
    Q_OBJECT
public:
    // `log` must outlive it.
    AppDelegate(Locations locations, Log& log);

    // Tells of a configuration that failed to load, and shows `mainWindow` in any case.
    void applicationDidFinishLaunching(const RuleManager& store, QWidget& mainWindow);

    // Shows a notice, without waiting for an answer. Deliberate: the texts are read as Mac OS Roman although
    // they are UTF-8, so a character beyond ASCII shows as its Mac OS Roman reading.
    void displayNotice(const std::string& header, const std::string& message);

private:
    const Locations m_locations;
    Log& m_log;
};

} // namespace quorvane
