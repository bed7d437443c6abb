#pragma once

#include "rules/RuleManager.h"
#include "workflow/AsideRules.h"
#include "workflow/RulesPlace.h"

#include <QDialog>

#include <memory>
#include <string>
#include <vector>

namespace Ui {
class AsideWindow;
}

namespace quorvane::desktop {
class Workspace;
}

namespace quorvane::windows {

class RulesTableModel;

// The rules set aside that are not in force, in a table like the main one. Deletes itself when it is closed.
// User interface thread only.
class AsideWindow : public QDialog {
    Q_OBJECT
public:
    // `inForce`: rules in this store do not count as set aside. Owns no argument; all must outlive the
    // window.
    AsideWindow(const workflow::AsideRules& aside, const rules::RuleManager& inForce,
        desktop::Workspace& workspace, platform::Log& log, QWidget* parent = nullptr);
    ~AsideWindow() override;

    // Sets where programs and paths are looked up; initially this machine.
    void setPlace(const workflow::RulesPlace& place);

    // Shows a message at the bottom.
    void showMessage(const QString& text);

public Q_SLOTS:
    // Reads the file of rules set aside again.
    void refresh();

Q_SIGNALS:
    void bringBackRequested(const std::vector<quorvane::rules::RuleValue>& rules);
    void deleteRequested(const std::vector<quorvane::rules::RuleValue>& rules);

protected:
    // Refreshes when activated: another program may have changed the file in the meantime.
    bool event(QEvent* event) override;

private:
    std::vector<rules::RuleValue> selectedRules() const;
    void showRules(const std::vector<rules::RuleValue>& rules);
    void validate();

    std::unique_ptr<Ui::AsideWindow> m_ui;
    const workflow::AsideRules& m_aside;
    const rules::RuleManager& m_inForce;
    rules::RuleManager m_store; // of the shown rules
    RulesTableModel* m_model; // owned by this window
    std::string m_shown; // the lines of the shown rules
};

} // namespace quorvane::windows
