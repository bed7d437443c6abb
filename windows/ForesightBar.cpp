#include "windows/ForesightBar.h"

#include "windows/QtText.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QToolButton>

namespace quorvane::windows {

namespace {

QString counted(const QString& title, std::size_t rules)
{
    return title + QLatin1Char(' ') + inWords(rules);
}

} // namespace

ForesightBar::ForesightBar(QWidget* parent)
    : QWidget(parent)
{
    auto* layout = new QHBoxLayout(this);
    constexpr int besideButtons = 8; // logical pixels, like the next
    constexpr int aboveButtons = 6;
    layout->setContentsMargins(besideButtons, aboveButtons, besideButtons, aboveButtons);
    auto* oneOf = new QButtonGroup(this);
    m_all = addButton(tr("All rules of the file"));
    m_all->setChecked(true);
    oneOf->addButton(m_all);
    for (std::size_t kind = 0; kind < workflow::foresightKinds; ++kind) {
        m_kinds[kind] = addButton(toQt(foresightHelp(static_cast<workflow::Foresight>(kind))));
        oneOf->addButton(m_kinds[kind]);
        setCount(static_cast<workflow::Foresight>(kind), std::nullopt);
    }
    layout->addStretch();
    setTotal(0);
    connect(oneOf, &QButtonGroup::buttonClicked, this, &ForesightBar::filterChanged);
}

QToolButton* ForesightBar::addButton(const QString& help)
{
    auto* button = new QToolButton(this);
    button->setCheckable(true);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::StrongFocus);
    button->setToolTip(help);
    button->setAccessibleDescription(help);
    layout()->addWidget(button);
    return button;
}

void ForesightBar::setTotal(std::size_t rules)
{
    m_all->setText(counted(tr("All"), rules));
}

void ForesightBar::setCount(workflow::Foresight kind, std::optional<std::size_t> rules)
{
    QToolButton* button = m_kinds[static_cast<std::size_t>(kind)];
    const QString title = toQt(foresightTitle(kind));
    button->setText(rules ? counted(title, *rules) : title + QStringLiteral(" \u2026"));
    button->setEnabled(button->isChecked() || (rules && *rules > 0));
}

std::optional<workflow::Foresight> ForesightBar::filter() const
{
    for (std::size_t kind = 0; kind < workflow::foresightKinds; ++kind) {
        if (m_kinds[kind]->isChecked())
            return static_cast<workflow::Foresight>(kind);
    }
    return std::nullopt;
}

void ForesightBar::showAll()
{
    m_all->setChecked(true);
}

} // namespace quorvane::windows
