#pragma once

#include "rules/RuleManager.h"
#include "workflow/RuleEditorDelegate.h"

#include <QMainWindow>

#include <memory>
#include <vector>

namespace Ui {
class RulesEditorTableController;
}

namespace quorvane {

class ApplicationServices;
class Log;
class RulesTableModel;
struct RunState;
class Workspace;

// The main window: the table of all rules of a store, with a search field, a switch for the system rules, and
// sorting from the column titles.
class RulesEditorTableController : public QMainWindow, public RuleEditorDelegate {
    Q_OBJECT
public:
    // Nothing given is owned; all of it must outlive the window.
    RulesEditorTableController(
        RuleManager& store, ApplicationServices& application, RunState& run, Workspace& workspace, Log& log);
    ~RulesEditorTableController() override;

    bool showsSystemRules() const;

    // Takes the store's rows afresh. Selection and scroll position stay where their rules still are.
    void reloadData() override;

public Q_SLOTS:
    // Shows only rules that contain the search field's text.
    void searchFieldAction();
    // Shows the system rules among the others, or hides them.
    void hideSystemAction();
    // Sorts by a column; once more by the same one turns the order round. The columns sorted by before break
    // ties.
    void sortByColumn(int column);
    // Puts the keyboard into the search field.
    void focusSearchField();
    // Empties the search field; when it is empty, gives the keyboard back to the table.
    void leaveSearchField();

protected:
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void setUpTable();
    void setUpActions();
    void setUpSortMenu();
    void sortDescriptorsDidChange();
    void reloadTable();
    void tellCounts();

    RuleManager& m_store;
    ApplicationServices& m_application;
    RunState& m_run;
    Log& m_log;
    std::unique_ptr<Ui::RulesEditorTableController> m_ui;
    RulesTableModel* m_model; // owned by this window
    std::vector<SortDescriptor> m_sortDescriptors;
    bool m_columnsFitted = false;
};

} // namespace quorvane
