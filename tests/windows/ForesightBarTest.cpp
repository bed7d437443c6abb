#include "windows/ForesightBar.h"

#include <QSignalSpy>
#include <QToolButton>

#include <gtest/gtest.h>

namespace quorvane::windows {

namespace {

using workflow::Foresight;

QToolButton* button(const ForesightBar& bar, std::size_t place)
{
    return bar.findChildren<QToolButton*>().at(static_cast<qsizetype>(place));
}

// Behind the button for all.
QToolButton* buttonOf(const ForesightBar& bar, Foresight kind)
{
    return button(bar, static_cast<std::size_t>(kind) + 1);
}

} // namespace

TEST(ForesightBar, ShowsAllUntilAKindIsChosen)
{
    ForesightBar bar;
    QSignalSpy changed(&bar, &ForesightBar::filterChanged);
    EXPECT_EQ(button(bar, 0)->text(), QStringLiteral("All 0"));
    bar.setTotal(1234);
    EXPECT_EQ(button(bar, 0)->text().section(QLatin1Char(' '), 0, 0), QStringLiteral("All"));
    EXPECT_TRUE(button(bar, 0)->isChecked());
    EXPECT_EQ(bar.filter(), std::nullopt);
    for (std::size_t kind = 0; kind < workflow::foresightKinds; ++kind) {
        const auto wanted = static_cast<Foresight>(kind);
        bar.setCount(wanted, 2);
        buttonOf(bar, wanted)->click();
        EXPECT_EQ(bar.filter(), wanted);
        EXPECT_FALSE(button(bar, 0)->isChecked());
    }
    EXPECT_EQ(changed.count(), static_cast<int>(workflow::foresightKinds));
    bar.showAll();
    EXPECT_EQ(bar.filter(), std::nullopt);
}

TEST(ForesightBar, OffersAKindThatHasRulesOrIsChosen)
{
    ForesightBar bar;
    const auto kind = static_cast<Foresight>(0);
    EXPECT_FALSE(buttonOf(bar, kind)->isEnabled()) << "nothing is known yet";
    EXPECT_TRUE(buttonOf(bar, kind)->text().endsWith(QStringLiteral(" \u2026")));
    bar.setCount(kind, 0);
    EXPECT_FALSE(buttonOf(bar, kind)->isEnabled());
    EXPECT_TRUE(buttonOf(bar, kind)->text().endsWith(QStringLiteral(" 0")));
    bar.setCount(kind, 1);
    EXPECT_TRUE(buttonOf(bar, kind)->isEnabled());
    buttonOf(bar, kind)->click();
    bar.setCount(kind, 0);
    EXPECT_TRUE(buttonOf(bar, kind)->isEnabled()) << "it is what is shown";
    bar.setCount(kind, std::nullopt);
    EXPECT_TRUE(buttonOf(bar, kind)->isEnabled());
}

TEST(ForesightBar, SaysWhatEachKindIs)
{
    const ForesightBar bar;
    for (std::size_t kind = 0; kind < workflow::foresightKinds; ++kind) {
        const QToolButton* each = buttonOf(bar, static_cast<Foresight>(kind));
        const QString help = QString::fromStdString(std::string(foresightHelp(static_cast<Foresight>(kind))));
        EXPECT_EQ(each->toolTip(), help);
        EXPECT_EQ(each->accessibleDescription(), help);
        EXPECT_EQ(each->focusPolicy(), Qt::StrongFocus);
    }
    EXPECT_EQ(button(bar, 0)->toolTip(), QStringLiteral("All rules of the file"));
}

} // namespace quorvane::windows
