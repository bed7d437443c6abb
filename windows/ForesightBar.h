#pragma once

#include "workflow/ImportForesight.h"

#include <QWidget>

#include <array>
#include <cstddef>
#include <optional>

class QToolButton;

namespace quorvane::windows {

// The kinds of rules in a review, each with how many there are: a press shows those alone.
class ForesightBar : public QWidget {
    Q_OBJECT
public:
    explicit ForesightBar(QWidget* parent = nullptr);

    // How many rules there are in all.
    void setTotal(std::size_t rules);
    // None while that is being found out. A kind without rules cannot be chosen.
    void setCount(workflow::Foresight kind, std::optional<std::size_t> rules);

    // None for all rules.
    std::optional<workflow::Foresight> filter() const;
    void showAll();

Q_SIGNALS:
    void filterChanged();

private:
    QToolButton* addButton(const QString& help);

    QToolButton* m_all;
    std::array<QToolButton*, workflow::foresightKinds> m_kinds;
};

} // namespace quorvane::windows
