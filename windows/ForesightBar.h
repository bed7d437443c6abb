#pragma once

#include "workflow/ImportForesight.h"

#include <QWidget>

#include <array>
#include <cstddef>
#include <optional>

class QToolButton;

namespace quorvane::windows {

// The kinds of rules in a review, each with its count: pressing one shows only those. User interface thread
// only.
class ForesightBar : public QWidget {
    Q_OBJECT
public:
    explicit ForesightBar(QWidget* parent = nullptr);

    // Sets the total number of rules.
    void setTotal(std::size_t rules);
    // None while it is being computed. A kind without rules cannot be chosen.
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
