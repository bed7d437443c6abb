#pragma once

#include "platform/Locations.h"
#include "rules/RuleManager.h"
#include "workflow/ApplicationServices.h"

#include <QObject>

namespace quorvane {

class Log;

// The root of the application: what happens at its start, and what it does for every window.
// User interface thread only.
class AppDelegate : public QObject, public ApplicationServices {
    Q_OBJECT
public:
    // `log` must outlive it.
    AppDelegate(Locations locations, Log& log);

    // Tells of a configuration that failed to load, and shows `mainWindow` in any case.
    void applicationDidFinishLaunching(const RuleManager& store, QWidget& mainWindow);

    void displayNotice(const std::string& header, const std::string& message, bool waitForResponse) override;
    void terminate() override;

private:
    const Locations m_locations;
    Log& m_log;
};

} // namespace quorvane
