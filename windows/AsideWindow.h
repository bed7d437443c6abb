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

// The rules that are set aside and not in force, in a table like the main one. Deletes itself when it is
// closed.
class AsideWindow : public QDialog {
    Q_OBJECT
public:
    // `inForce`: rules that are there do not count as set aside. Nothing given is owned; all of it must
    // outlive the window.
    AsideWindow(const workflow::AsideRules& aside, const rules::RuleManager& inForce,
        desktop::Workspace& workspace, platform::Log& log, QWidget* parent = nullptr);
    ~AsideWindow() override;

    // Where programs and paths are looked up; this machine at first.
    void setPlace(const workflow::RulesPlace& place);

    // Says something at the foot.
    void tell(const QString& text);

public Q_SLOTS:
    // Reads the file of rules set aside again.
    void refresh();

Q_SIGNALS:
    void bringBackRequested(const std::vector<quorvane::rules::RuleValue>& rules);
    void deleteRequested(const std::vector<quorvane::rules::RuleValue>& rules);

protected:
    // Others may have changed the file while the window was behind theirs.
    void changeEvent(QEvent* event) override;

private:
    std::vector<rules::RuleValue> selectedRules() const;
    void showRules(const std::vector<rules::RuleValue>& rules);
    void validate();

    std::unique_ptr<Ui::AsideWindow> m_ui;
    const workflow::AsideRules& m_aside;
    const rules::RuleManager& m_inForce;
    rules::RuleManager m_store; // of the rules that are shown
    RulesTableModel* m_model; // owned by this window
    std::string m_shown; // the lines of the rules that are shown
};

} // namespace quorvane::windows
