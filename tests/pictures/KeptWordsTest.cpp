#include "tests/pictures/KeptWords.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>

namespace quorvane::test {

TEST(KeptWords, AreAllThatAPersonReadsOrHears)
{
    QWidget window;
    window.setWindowTitle(QStringLiteral("Window"));
    auto* field = new QLineEdit(&window);
    field->setPlaceholderText(QStringLiteral("Path"));
    field->setToolTip(QStringLiteral("of two\nlines"));
    field->setAccessibleName(QStringLiteral("Path of the rule"));
    field->setAccessibleDescription(QStringLiteral("a path"));
    auto* popUp = new QComboBox(field);
    popUp->addItems({QStringLiteral("One"), QStringLiteral("Two")});
    auto* menu = new QMenu(QStringLiteral("&File"), &window);
    menu->addAction(QStringLiteral("&Open..."))->setShortcut(Qt::CTRL | Qt::Key_O);
    menu->addSeparator();
    new QLabel(&window); // says nothing
    EXPECT_EQ(wordsOf(window),
        "title \"Window\"\n"
        "  hint \"Path\", tip \"of two\\nlines\", name \"Path of the rule\", description \"a path\"\n"
        "    item \"One\", item \"Two\"\n"
        "  title \"&File\"\n"
        "    item \"&Open...\", keys \"Ctrl+O\"\n");
}

TEST(KeptWords, DifferByALetterOrALine)
{
    EXPECT_EQ(differenceOfWords("one\ntwo\n", "one\ntwo\n"), std::nullopt);
    EXPECT_EQ(differenceOfWords("one\ntwo\n", "one\ntow\n"), "kept: two\nseen: tow");
    EXPECT_EQ(differenceOfWords("one\ntwo\n", "one\n"), "kept: two\nseen: ");
    EXPECT_EQ(differenceOfWords("one\n", "one\ntwo\n"), "kept: \nseen: two");
}

} // namespace quorvane::test
