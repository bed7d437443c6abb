#pragma once

#include <QString>
#include <QWidget>

#include <functional>
#include <vector>

class QVBoxLayout;

namespace quorvane::windows {

// A problem, why it matters, and possible actions.
struct ShownProblem {
    struct Button {
        QString title;
        std::function<void()> action;
    };

    QString text; // plain, like the help
    QString help{}; // shown on request; none when empty
    std::vector<Button> buttons{};
    bool isWrong = true; // else it is only a remark
};

// A vertical list of problems, each with its buttons and help shown by "Why?". Changes are announced to
// screen readers. User interface thread only.
class ProblemList : public QWidget {
    Q_OBJECT
public:
    explicit ProblemList(QWidget* parent = nullptr);

    // Replaces the problems shown.
    void setProblems(const std::vector<ShownProblem>& problems);

private:
    QWidget* makeRow(const ShownProblem& problem);

    QVBoxLayout* m_rows;
};

} // namespace quorvane::windows
