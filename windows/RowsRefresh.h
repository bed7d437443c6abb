#pragma once

#include "rules/RuleManager.h"
#include "windows/BackgroundThread.h"

#include <QObject>
#include <QTimer>

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
    // `store` must outlive it.
    explicit RowsRefresh(rules::RuleManager& store);
    // Waits for the present computation to stop.
    ~RowsRefresh() override;

    // True when the rows take long: done() follows. False when they are up to date or are quickly made at the
    // next access. Cancels an earlier computation, whose done() then does not follow.
    bool start();
    // While this is true, access to the store's rows would compute them a second time.
    bool isWorking() const { return m_isWorking; }
    // Whether the text that is searched for has changed since the rows were last up to date.
    bool isSearch() const { return m_isSearch; }

Q_SIGNALS:
    void done();
    // True when it has been working for so long that the user should know; false when it no longer is.
    void isSlow(bool slow);

private:
    void finish();

    rules::RuleManager& m_store;
    bool m_isWorking = false;
    bool m_isSearch = false;
    std::optional<std::string> m_searchText; // of the rows when they were last up to date
    QTimer m_untilSlow;
    std::stop_source m_stop;
    BackgroundThread m_thread; // destroyed first
};

} // namespace quorvane::windows
