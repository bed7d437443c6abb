#include "windows/ProblemList.h"

#include "windows/SelectableText.h"
#include "windows/Shades.h"

#include <QApplication>
#include <QTest>
#include <QToolButton>

#include <gtest/gtest.h>

namespace quorvane::windows {

namespace {

class ProblemListTest : public testing::Test {
protected:
    ProblemListTest() { list.show(); }

    void show(const std::vector<ShownProblem>& problems)
    {
        list.setProblems(problems);
        QApplication::processEvents(); // rows are shown when they have their places
    }
    QList<SelectableText*> texts() const
    {
        QList<SelectableText*> shown;
        for (auto* text : list.findChildren<SelectableText*>()) {
            if (text->isVisible())
                shown.append(text);
        }
        return shown;
    }
    QString shown() const
    {
        QStringList all;
        for (const SelectableText* text : texts())
            all.append(text->toPlainText());
        return all.join(QLatin1Char('|'));
    }
    QToolButton* button(const char* title) const
    {
        for (auto* each : list.findChildren<QToolButton*>()) {
            if (each->isVisible() && each->text() == QLatin1String(title))
                return each;
        }
        return nullptr;
    }

    ProblemList list;
};

} // namespace

TEST_F(ProblemListTest, ShowsEachProblemAndItsHelpWhenAsked)
{
    show({{.text = QStringLiteral("One."), .help = QStringLiteral("Because.")},
        {.text = QStringLiteral("Two.")}});
    EXPECT_EQ(shown(), QStringLiteral("One.|Two."));
    QToolButton* why = button("Why?");
    ASSERT_NE(why, nullptr);
    EXPECT_EQ(list.findChildren<QToolButton*>().size(), 1) << "only where there is help";
    EXPECT_EQ(why->accessibleDescription(), QStringLiteral("Because."));
    EXPECT_EQ(why->focusPolicy(), Qt::StrongFocus);
    why->click();
    EXPECT_EQ(shown(), QStringLiteral("One.|Because.|Two."));
    why->click();
    EXPECT_EQ(shown(), QStringLiteral("One.|Two."));
}

TEST_F(ProblemListTest, TellsWhatIsWrongFromARemarkByItsShade)
{
    show({{.text = QStringLiteral("Wrong."), .help = QStringLiteral("Because.")},
        {.text = QStringLiteral("Remark."), .isWrong = false}});
    button("Why?")->click();
    const auto shadeOf = [this](qsizetype place) { return texts()[place]->palette().color(QPalette::Text); };
    EXPECT_EQ(shadeOf(0), shades::failureText.in({}));
    EXPECT_EQ(shadeOf(1), shades::faintText.in({}));
    EXPECT_EQ(shadeOf(2), shades::faintText.in({}));
}

TEST_F(ProblemListTest, OffersWhatCanBeDone)
{
    QStringList done;
    const auto note
        = [&done](const char* what) { return [&done, what] { done.append(QLatin1String(what)); }; };
    show({{.text = QStringLiteral("One."),
        .buttons = {{QStringLiteral("Mend"), note("mended")}, {QStringLiteral("Show"), note("shown")}}}});
    button("Mend")->click();
    button("Show")->click();
    EXPECT_EQ(done, (QStringList{QStringLiteral("mended"), QStringLiteral("shown")}));
    EXPECT_EQ(button("Mend")->mapTo(&list, QPoint()).y(), button("Show")->mapTo(&list, QPoint()).y());
}

TEST_F(ProblemListTest, ReplacesItsProblemsEvenWhileAButtonOfOneIsPressed)
{
    show({{.text = QStringLiteral("One."),
        .buttons = {{QStringLiteral("Mend"), [this] { show({{.text = QStringLiteral("Two.")}}); }}}}});
    button("Mend")->click();
    EXPECT_EQ(shown(), QStringLiteral("Two."));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(list.findChildren<SelectableText*>().size(), 1) << "what is replaced does not stay";
    show({});
    EXPECT_EQ(shown(), QString());
}

TEST_F(ProblemListTest, DescribesAllProblemsToScreenReaders)
{
    show({{.text = QStringLiteral("One.")}, {.text = QStringLiteral("Two.")}});
    EXPECT_EQ(list.accessibleDescription(), QStringLiteral("One. Two."));
    show({});
    EXPECT_EQ(list.accessibleDescription(), QString());
}

} // namespace quorvane::windows
