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

// Which rules are about a path, and why: by their text alone, without a verdict. Program and operations
// narrow that down. Follows what is typed, and what becomes of the rules. Deletes itself when it is closed.
class TouchingWindow : public QDialog {
    Q_OBJECT
public:
    // Rules are shown in `table`. Nothing given is owned; all of it must outlive the window.
    TouchingWindow(const rules::RuleManager& store, RulesTable& table, desktop::Workspace& workspace,
        QWidget* parent = nullptr);
    ~TouchingWindow() override;

    // Where programs and paths are looked up; this machine at first.
    void setPlace(const workflow::RulesPlace& place);

    // The stored rules are others now.
    void rulesDidChange();

Q_SIGNALS:
    // The answer to the present question is shown.
    void wasAnswered();

private:
    // In one list; more are only counted.
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
    TouchingModel* m_model; // owned by this window, as are all controls
    PathField* m_path;
    PathField* m_program;
    OperationBoxesRow* m_operations;
    QCheckBox* m_includesSystemRules;
};

} // namespace quorvane::windows
