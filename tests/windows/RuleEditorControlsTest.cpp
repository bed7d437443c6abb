#include "windows/RuleEditorControls.h"
#include "desktop/Workspace.h"
#include "windows/QtText.h"

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QLineEdit>

#include <gtest/gtest.h>

namespace quorvane::windows {

TEST(RuleTextField, KeepsWhatIsPastedOnOneLine)
{
    QLineEdit field;
    setUpRuleTextField(field);
    QApplication::clipboard()->setText(
        QString::fromUtf8("/a\r\n/b\v\f\xC2\x85\xE2\x80\xA8\xE2\x80\xA9 \t/c\n"));
    field.paste();
    EXPECT_EQ(fromQt(field.text()), "/a/b \t/c");
    EXPECT_EQ(field.cursorPosition(), 8);
}

TEST(RuleTextField, TellsAllOfItsTextAsAToolTipBesideItsHelp)
{
    QLineEdit field;
    field.setToolTip(QStringLiteral("Help"));
    setUpRuleTextField(field);
    EXPECT_EQ(field.toolTip(), QStringLiteral("Help"));
    field.setText(QStringLiteral("/a  <b>"));
    EXPECT_TRUE(field.toolTip().contains(QStringLiteral("/a  &lt;b&gt;"))) << "as it is, not as markup";
    EXPECT_TRUE(field.toolTip().contains(QStringLiteral("Help")));
    field.setText(QString(100000, QLatin1Char('x')));
    EXPECT_LT(field.toolTip().size(), 3000);
    EXPECT_EQ(field.accessibleDescription(), QStringLiteral("Help"));
}

TEST(RuleTextField, ShowsTheStartOfItsText)
{
    QLineEdit field;
    showText(field, "/path");
    EXPECT_EQ(fromQt(field.text()), "/path");
    EXPECT_EQ(field.cursorPosition(), 0);
}

TEST(RuleTextField, RunsFromLeftToRightInAnyLayout)
{
    QWidget window;
    window.setLayoutDirection(Qt::RightToLeft);
    QLineEdit field(&window);
    ASSERT_EQ(field.layoutDirection(), Qt::RightToLeft);
    setUpRuleTextField(field);
    EXPECT_EQ(field.layoutDirection(), Qt::LeftToRight);
}

TEST(RuleTextField, GivesBackEveryTextUnchanged)
{
    QLineEdit field;
    for (const char* text :
        {"", " a ", "\xEF\xBB\xBFmark", "\xEF\xBB\xBF", "\xF0\x9F\x94\x92", "e\xCC\x81"}) {
        showText(field, text);
        EXPECT_EQ(fromQt(field.text()), text);
    }
}

TEST(RuleEditorControls, ThePanelForAProgramStartsAtTheApplicationsUnlessAPathIsNamed)
{
    QLineEdit path;
    QLineEdit program;
    desktop::Workspace workspace;
    RuleEditorWidgets widgets{};
    widgets.pathTextField = &path;
    widgets.processNameTextField = &program;
    const RuleEditorControls controls(widgets, workspace, "");
    EXPECT_EQ(controls.applicationPanelStart(), "/Applications/");
    program.setText(QStringLiteral("any"));
    EXPECT_EQ(controls.applicationPanelStart(), "/Applications/");
    EXPECT_EQ(controls.pathPanelStart(), fromQt(QDir::homePath()));
    program.setText(QStringLiteral("/bin/sh"));
    EXPECT_EQ(controls.applicationPanelStart(), "/bin/sh");
}

} // namespace quorvane::windows
