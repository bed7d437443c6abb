#pragma once

#include "windows/BackgroundThread.h"
#include "workflow/AccessTree.h"

#include <QDialog>
#include <QString>

#include <memory>
#include <set>
#include <stop_token>

namespace Ui {
class MapWindow;
}

namespace quorvane::rules {
class RuleManager;
}

namespace quorvane::windows {

class AccessModel;
class RulesTable;

// The places that rules apply to, as a tree with a bar for each that shows how many allow, deny and watch; or
// the programs and the places of their rules. A click, or Return, selects the rules of a place in the main
// table. Computed on another thread, and again when the rules change. Deletes itself when it is closed. User
// interface thread only.
class MapWindow : public QDialog {
    Q_OBJECT
public:
    // Rules are selected in `table`. Owns no argument; all must outlive the window.
    MapWindow(const rules::RuleManager& store, RulesTable& table, QWidget* parent = nullptr);
    ~MapWindow() override;

    // Call it when the stored rules have changed.
    void rulesDidChange() { make(); }

Q_SIGNALS:
    // The map of the current rules is shown.
    void wasMade();

protected:
    bool event(QEvent* event) override;

private:
    void paintSamples();
    void setUpTree();
    void setUpControls();
    void fitColumns();
    bool isByProgram() const;
    void make();
    void showTree(const workflow::AccessTreePtr& tree);
    void selectRulesOf(const QModelIndex& index);
    void expandAgain(const std::set<QString>& expanded, const QString& current);
    void expandTop();
    QString keyOf(const QModelIndex& index) const;
    std::set<QString> expandedKeys() const;

    std::unique_ptr<Ui::MapWindow> m_ui;
    const rules::RuleManager& m_store;
    RulesTable& m_table;
    AccessModel* m_model; // owned by this window
    std::stop_source m_making;
    BackgroundThread m_thread; // destroyed first
};

} // namespace quorvane::windows
