#pragma once

#include "workflow/AsideRules.h"
#include "workflow/RulesPlace.h"

#include <QObject>
#include <QPointer>

#include <cstddef>

class QWidget;

namespace quorvane::desktop {
class Workspace;
}

namespace quorvane::platform {
class Log;
} // namespace quorvane::platform

namespace quorvane::workflow {
class RulesDocument;
}

namespace quorvane::windows {

class AsideWindow;
class RulesTable;

// Takes rules out of force without losing them, and brings them back. User interface thread only.
//
// The rules are in the file of those set aside, durably, before they leave the rules file; bringing them back
// leaves them there, where they do not count as long as an equal rule is in force. So no failed write and no
// undo, of either action, loses a rule.
class AsideController : public QObject {
    Q_OBJECT
public:
    // The window of those set aside stands over `window`. Nothing given is owned; all of it must outlive
    // this.
    AsideController(QWidget& window, RulesTable& table, workflow::RulesDocument& document,
        desktop::Workspace& workspace, platform::Log& log);

    // Where programs and paths of those set aside are looked up; this machine at first.
    void setPlace(const workflow::RulesPlace& place);

    // Sets the selected rules aside; not those of the system.
    void setAside();
    // Shows the rules that are aside.
    void showAside();
    // The stored rules may be others now.
    void rulesDidChange();

private:
    void bringBack(const std::vector<rules::RuleValue>& rules);
    void deleteForGood(const std::vector<rules::RuleValue>& rules);
    void reportSetAside(std::size_t rules);

    QWidget& m_window;
    RulesTable& m_table;
    workflow::RulesDocument& m_document;
    desktop::Workspace& m_workspace;
    platform::Log& m_log;
    const workflow::AsideRules m_aside;
    workflow::RulesPlace m_place = workflow::RulesPlace::thisMachine();
    QPointer<AsideWindow> m_asideWindow;
};

} // namespace quorvane::windows
