#pragma once

#include <QFrame>
#include <QString>

#include <cstddef>
#include <functional>
#include <vector>

class QHBoxLayout;
class QLabel;

namespace quorvane::windows {

class ElidedLabel;

// Something to be read at the foot of a window, and what can be done about it.
struct FootNotice {
    struct Button {
        QString title;
        std::function<void()> action;
    };

    QString text; // plain
    std::vector<Button> buttons{};
    // A notice takes the place of an earlier one of the same subject; no place when it is empty.
    QString subject{};
};

// The notices at the foot of a window: the newest, with a count of those behind it; nothing when there is
// none. A notice goes when one of its buttons is pressed or when it is dismissed, and the one behind it shows
// again. Each is announced to screen readers when it comes. User interface thread only.
class FootNotices : public QFrame {
    Q_OBJECT
public:
    explicit FootNotices(QWidget* parent = nullptr);

    void add(FootNotice notice);
    // Removes the notice of a subject; nothing when there is none.
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
};

} // namespace quorvane::windows
