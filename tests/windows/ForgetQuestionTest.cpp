#include "windows/ForgetQuestion.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include <gtest/gtest.h>

namespace quorvane::windows {

namespace {

using Versions = std::vector<history::JournalVersion>;

class ForgetQuestionTest : public testing::Test {
protected:
    // Presses the button of that title.
    std::optional<std::int64_t> ask(
        const Versions& versions, std::optional<std::int64_t> selected, const char* title)
    {
        bool isAsked = false;
        QTimer::singleShot(0, &parent, [&] {
            auto* question = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            ASSERT_NE(question, nullptr);
            isAsked = true;
            text = question->text();
            titles.clear();
            QAbstractButton* pressed = nullptr;
            for (QAbstractButton* button : question->buttons()) {
                titles.append(button->text());
                if (button->text() == QLatin1String(title))
                    pressed = button;
            }
            titles.sort();
            EXPECT_EQ(question->defaultButton(), question->button(QMessageBox::Cancel));
            EXPECT_EQ(question->textFormat(), Qt::PlainText);
            EXPECT_EQ(question->icon(), QMessageBox::Warning);
            if (pressed != nullptr)
                return pressed->click();
            ADD_FAILURE() << "no button " << title;
            question->reject();
        });
        const auto answer = askWhatToForget(parent, QStringLiteral("Rules"), versions, selected);
        EXPECT_TRUE(isAsked);
        return answer;
    }

    QWidget parent;
    QString text;
    QStringList titles;
};

// Newest first, of noon on that day of January 1970.
Versions versionsTo(std::int64_t newest)
{
    Versions versions;
    for (std::int64_t number = newest; number > 0; --number)
        versions.push_back({.number = number, .time = (number - 1) * 86'400 + 43'200});
    return versions;
}

} // namespace

TEST_F(ForgetQuestionTest, NamesTheVersionsThatGo)
{
    EXPECT_EQ(ask(versionsTo(5), 3, "Cancel"), std::nullopt);
    EXPECT_EQ(text,
        QStringLiteral("Forget versions of the rules? They can then no longer be shown, exported, restored "
                       "or undone.\n\n"
                       "Older than version 3: versions 1 to 2, of 1970-01-01 12:00:00 to 1970-01-02 "
                       "12:00:00.\n\n"
                       "All: versions 1 to 4, of 1970-01-01 12:00:00 to 1970-01-04 12:00:00. Version 5, the "
                       "newest, stays."));
    EXPECT_EQ(titles.join(QLatin1Char('|')), QStringLiteral("Cancel|Forget &All 4|Forget 2 &Older"));
}

TEST_F(ForgetQuestionTest, AnswersWithTheFirstVersionThatStays)
{
    EXPECT_EQ(ask(versionsTo(5), 3, "Forget 2 &Older"), 3);
    EXPECT_EQ(ask(versionsTo(5), 3, "Forget &All 4"), 5);
    EXPECT_EQ(ask(versionsTo(5), std::nullopt, "Forget &All 4"), 5);
}

TEST_F(ForgetQuestionTest, NamesASingleVersionAsOne)
{
    ask(versionsTo(3), 2, "Cancel");
    EXPECT_TRUE(text.contains(QStringLiteral("Older than version 2: version 1, of 1970-01-01 12:00:00.")))
        << text.toStdString();
    ask(versionsTo(2), std::nullopt, "Cancel");
    EXPECT_TRUE(text.contains(QStringLiteral("All: version 1, of 1970-01-01 12:00:00. Version 2")))
        << text.toStdString();
}

TEST_F(ForgetQuestionTest, OffersOlderOnesWhereTheyAreNeitherAllNorNone)
{
    for (const std::int64_t selected : {1, 5}) {
        ask(versionsTo(5), selected, "Cancel");
        EXPECT_EQ(titles.join(QLatin1Char('|')), QStringLiteral("Cancel|Forget &All 4")) << selected;
        EXPECT_FALSE(text.contains(QStringLiteral("Older than"))) << selected;
    }
}

TEST_F(ForgetQuestionTest, IsNotAskedWhenThereIsNothingToForget)
{
    EXPECT_EQ(askWhatToForget(parent, QStringLiteral("Rules"), versionsTo(1), 1), std::nullopt);
    EXPECT_EQ(askWhatToForget(parent, QStringLiteral("Rules"), {}, std::nullopt), std::nullopt);
}

} // namespace quorvane::windows
