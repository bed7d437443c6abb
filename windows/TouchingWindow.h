#pragma once

#include "windows/TouchSearch.h"
#include "workflow/RulesPlace.h"

#include <QDialog>

#include <memory>

class QCheckBox;

namespace Ui {
class TouchingWindow;
}

namespace quorvane::desktop {
class Workspace;
}

namespace quorvane::windows {

class OperationBoxesRow;
class PathField;
class RulesTable;
class TouchingModel;

// Which rules apply to a path, and why: by their text alone, without a verdict. Program and operations
// restrict the result, which updates as the user types and the rules change. Deletes itself when it is
// closed. User interface thread only.
class TouchingWindow : public QDialog {
    Q_OBJECT
public:
    // Rules are shown in `table`. Owns no argument; all must outlive the window.
    TouchingWindow(const rules::RuleManager& store, RulesTable& table, desktop::Workspace& workspace,
        QWidget* parent = nullptr);
    ~TouchingWindow() override;

    // Sets where programs and paths are looked up; initially this machine.
    void setPlace(const workflow::RulesPlace& place);

    // Call it when the stored rules have changed.
    void rulesDidChange();

Q_SIGNALS:
    // The result for the current input is shown.
    void wasAnswered();

private:
    // The limit of the list; further rules are only counted.
    static constexpr std::size_t mostRulesShown = 20'000;

    void setUpQuestion();
    workflow::TouchQuestion question() const;
    void ask();
    void showRules(const std::vector<rules::RuleRef>& found);
    void updateCounts(std::size_t found);
    void showSelectedRule();

    std::unique_ptr<Ui::TouchingWindow> m_ui;
    RulesTable& m_table;
    TouchSearch m_search;
    TouchingModel* m_model; // owned by this window, like all controls
    PathField* m_path;
    PathField* m_program;
    OperationBoxesRow* m_operations;
    QCheckBox* m_includesSystemRules;
};

} // namespace quorvane::windows
