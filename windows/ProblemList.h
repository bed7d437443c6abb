#pragma once

#include <QString>
#include <QWidget>

#include <functional>
#include <vector>

class QVBoxLayout;

namespace quorvane::windows {

// Something that is wrong, why it matters, and what can be done about it.
struct ShownProblem {
    struct Button {
        QString title;
        std::function<void()> action;
    };

    QString text; // plain, as is the help
    QString help{}; // shown on request; none when empty
    std::vector<Button> buttons{};
    bool isWrong = true; // else it is only something to be said
};

// Problems below each other, each with its buttons and a line of help behind "Why?". What they say is
// announced to screen readers when it changes. User interface thread only.
class ProblemList : public QWidget {
    Q_OBJECT
public:
    explicit ProblemList(QWidget* parent = nullptr);

    // In place of what was shown.
    void setProblems(const std::vector<ShownProblem>& problems);

private:
    QWidget* makeRow(const ShownProblem& problem);

    QVBoxLayout* m_rows;
};

} // namespace quorvane::windows
