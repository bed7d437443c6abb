#pragma once

#include <QFrame>
#include <QString>
#include <QStringList>

#include <cstddef>
#include <functional>
#include <vector>

class QHBoxLayout;
class QLabel;

namespace quorvane::windows {

class ElidedLabel;

// A message at the bottom of a window, with buttons for possible actions.
struct FootNotice {
    struct Button {
        QString title;
        std::function<void()> action;
    };

    QString text; // plain
    std::vector<Button> buttons{};
    // A notice replaces an earlier one of the same subject, unless it is empty.
    QString subject{};
};

// The notices at the bottom of a window: shows the newest, with a count of the others; hidden when there is
// none. A notice is removed when one of its buttons is pressed or it is dismissed, and the previous one shows
// again. Each is announced to screen readers when it appears. User interface thread only.
class FootNotices : public QFrame {
    Q_OBJECT
public:
    explicit FootNotices(QWidget* parent = nullptr);

    void add(FootNotice notice);
    // Removes the notice of a subject, if any.
    void remove(const QString& subject);
    std::size_t count() const { return m_notices.size(); }

private:
    void dropSubject(const QString& subject);
    void dismiss();
    void press(std::size_t button);
    void showNewest();
    void showButtons(const std::vector<FootNotice::Button>& buttons);

    std::vector<FootNotice> m_notices; // the newest last
    ElidedLabel* m_text;
    QLabel* m_more;
    QHBoxLayout* m_buttons;
    QStringList m_titles; // of the buttons
};

} // namespace quorvane::windows
