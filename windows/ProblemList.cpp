#include "windows/ProblemList.h"

#include "windows/SelectableText.h"
#include "windows/Shades.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QToolButton>
#include <QVBoxLayout>

namespace quorvane::windows {

namespace {

constexpr int betweenRows = 4;
constexpr int betweenButtons = 6;

QToolButton* makeButton(const QString& title, QWidget* parent)
{
    auto* button = new QToolButton(parent);
    button->setText(title);
    button->setFocusPolicy(Qt::StrongFocus);
    return button;
}

} // namespace

ProblemList::ProblemList(QWidget* parent)
    : QWidget(parent)
    , m_rows(new QVBoxLayout(this))
{
    m_rows->setContentsMargins(0, 0, 0, 0);
    m_rows->setSpacing(betweenRows);
}

void ProblemList::setProblems(const std::vector<ShownProblem>& problems)
{
    while (QLayoutItem* item = m_rows->takeAt(0)) {
        item->widget()->hide();
        item->widget()->deleteLater(); // one of its buttons may be the one being pressed
        delete item;
    }
    QStringList texts;
    for (const ShownProblem& problem : problems) {
        m_rows->addWidget(makeRow(problem));
        texts.append(problem.text);
    }
    const QString all = texts.join(QLatin1Char(' '));
    if (all == accessibleDescription())
        return;
    setAccessibleDescription(all);
    QAccessibleEvent announcement(this, QAccessible::DescriptionChanged);
    QAccessible::updateAccessibility(&announcement);
}

QWidget* ProblemList::makeRow(const ShownProblem& problem)
{
    auto* row = new QWidget(this);
    auto* text = new SelectableText(row);
    text->setText(problem.text);
    text->setShade(problem.isWrong ? shades::failureText : shades::faintText);
    auto* line = new QHBoxLayout;
    line->setSpacing(betweenButtons);
    line->addWidget(text, 1);
    for (const ShownProblem::Button& each : problem.buttons) {
        QToolButton* button = makeButton(each.title, row);
        connect(button, &QToolButton::clicked, this, [action = each.action] { action(); });
        line->addWidget(button, 0, Qt::AlignTop);
    }
    auto* whole = new QVBoxLayout(row);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->setSpacing(betweenRows);
    whole->addLayout(line);
    if (problem.help.isEmpty())
        return row;
    auto* help = new SelectableText(row);
    help->setText(problem.help);
    help->setShade(shades::faintText);
    help->hide();
    QToolButton* why = makeButton(tr("Why?"), row);
    why->setCheckable(true);
    why->setAccessibleDescription(problem.help);
    connect(why, &QToolButton::toggled, help, &QWidget::setVisible);
    line->addWidget(why, 0, Qt::AlignTop);
    whole->addWidget(help);
    return row;
}

} // namespace quorvane::windows
