#pragma once

#include "workflow/RulesPlace.h"

#include <QObject>
#include <QString>

#include <string>

class QAction;
class QActionGroup;
class QMenu;
class QWidget;

namespace quorvane::windows {

class RulesTable;

// The menu of machines that rules can be for: this one, one whose volume is mounted here, or an inaccessible
// one. Initially this machine. User interface thread only.
class PlaceMenu : public QObject {
    Q_OBJECT
public:
    // `window` is the parent of panels; the table reports why a volume cannot be used. Owns no argument; all
    // must outlive this object.
    PlaceMenu(QMenu& menu, QWidget& window, RulesTable& table);

    const workflow::RulesPlace& place() const { return m_place; }
    bool isThisMachine() const;

    // The same as choosing this folder as the volume.
    void useVolume(const std::string& folder);

Q_SIGNALS:
    // Programs and paths are to be looked up in `place` from now on. `name` is its name; empty for this
    // machine.
    void placeChosen(const quorvane::workflow::RulesPlace& place, const QString& name);

private:
    QAction* addItem(const QString& title);
    void choose(QAction* item, const workflow::RulesPlace& place, const QString& name);
    void chooseVolume();

    QWidget& m_window;
    RulesTable& m_table;
    QActionGroup* m_items; // owned by this object
    QAction* m_thisMachine;
    QAction* m_volume;
    QAction* m_elsewhere;
    QAction* m_chosen; // one of these
    workflow::RulesPlace m_place = workflow::RulesPlace::thisMachine();
};

} // namespace quorvane::windows
