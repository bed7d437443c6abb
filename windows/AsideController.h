#pragma once

#include "workflow/AsideRules.h"
#include "workflow/RulesPlace.h"

#include <QObject>
#include <QPointer>

#include <cstddef>

class QWidget;

namespace quorvane {

class AsideWindow;
class Log;
class RulesDocument;
class RulesTable;
class Workspace;

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
    AsideController(
        QWidget& window, RulesTable& table, RulesDocument& document, Workspace& workspace, Log& log);

    // Where programs and paths of those set aside are looked up; this machine at first.
    void setPlace(const RulesPlace& place);

    // Sets the selected rules aside; not those of the system.
    void setAside();
    // Shows the rules that are aside.
    void showAside();
    // The stored rules may be others now.
    void rulesDidChange();

private:
    void bringBack(const std::vector<RuleValue>& rules);
    void deleteForGood(const std::vector<RuleValue>& rules);
    void tellSetAside(std::size_t rules);

    QWidget& m_window;
    RulesTable& m_table;
    RulesDocument& m_document;
    Workspace& m_workspace;
    Log& m_log;
    const AsideRules m_aside;
    RulesPlace m_place = RulesPlace::thisMachine();
    QPointer<AsideWindow> m_asideWindow;
};

} // namespace quorvane
