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

// Disables rules without losing them, and enables them again. User interface thread only.
//
// The rules are durably in the file of those set aside before they leave the rules file; bringing them back
// leaves them there, where they are ignored as long as an equal rule is in force. So neither a failed write
// nor an undo of either action loses a rule.
class AsideController : public QObject {
    Q_OBJECT
public:
    // `window` is the parent of the window of those set aside. Owns no argument; all must outlive this
    // object.
    AsideController(QWidget& window, RulesTable& table, workflow::RulesDocument& document,
        desktop::Workspace& workspace, platform::Log& log);

    // Sets where programs and paths of those set aside are looked up; initially this machine.
    void setPlace(const workflow::RulesPlace& place);

    // Sets the selected rules aside, except for system rules.
    void setAside();
    // Shows the rules set aside.
    void showAside();
    // Call it when the stored rules may have changed.
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
