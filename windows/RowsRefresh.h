#pragma once

#include "rules/RuleManager.h"
#include "windows/SlowWork.h"
#include "workflow/Background.h"

#include <QObject>

#include <optional>
#include <stop_token>
#include <string>

namespace quorvane::windows {

// Brings the rows of a store up to date on another thread when that takes long: a search or a sort of very
// many rules. Meanwhile the window takes input, and its table keeps the former rows. For use by the user
// interface thread.
class RowsRefresh : public QObject {
    Q_OBJECT
public:
    // Both must outlive it; `thread` must call nothing back once this is destroyed.
    RowsRefresh(rules::RuleManager& store, workflow::Background& thread);
    ~RowsRefresh() override;

    // True when the rows take long: done() follows. False when they are up to date or are quickly made at the
    // next access. Cancels an earlier computation, whose done() then does not follow.
    bool start();
    // While this is true, access to the store's rows would compute them a second time.
    bool isWorking() const { return m_isWorking; }
    // Whether the text that is searched for has changed since the rows were last up to date.
    bool isSearch() const { return m_isSearch; }
    // Whether it has been working for so long that the user should know.
    bool isSlow() const { return m_slowness.isSlow(); }

Q_SIGNALS:
    void done();
    void slownessDidChange();

private:
    void finish();

    rules::RuleManager& m_store;
    workflow::Background& m_thread;
    bool m_isWorking = false;
    bool m_isSearch = false;
    std::optional<std::string> m_searchText; // of the rows when they were last up to date
    SlowWork m_slowness;
    std::stop_source m_stop;
};

} // namespace quorvane::windows
