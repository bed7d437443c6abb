#pragma once

#include "windows/BackgroundThread.h"
#include "workflow/RuleLikeness.h"

#include <QObject>

#include <stop_token>

class QMenu;

namespace quorvane {

class RulesTable;

// The items of a menu that select all shown rules which have something in common with those selected. Rules
// are compared beside the user interface thread, on which all of this is used.
class LikeSelection : public QObject {
    Q_OBJECT
public:
    // Neither is owned; both must outlive this.
    LikeSelection(RulesTable& table, QMenu& menu);
    ~LikeSelection() override;

    void select(RuleTrait trait);

private:
    RulesTable& m_table;
    std::stop_source m_stop;
    BackgroundThread m_thread;
};

} // namespace quorvane
