#include "windows/PlainText.h"
#include "windows/ElidedLabel.h"
#include "windows/QtText.h"

#include <QTextDocument>
#include <QWidget>
#include <QWindow>

#include <gtest/gtest.h>

namespace quorvane::windows {

namespace {

QString withoutBreakPoints(QString text)
{
    return text.remove(QChar(0x200b));
}

} // namespace

TEST(PlainText, AToolTipShowsItAsItIs)
{
    for (const char* text : {"/tmp/<b>x</b>&amp;", "<html>", "a  b", "a\nb", "%1 & %2", "\"'"}) {
        QTextDocument document;
        document.setHtml(plainToolTip(toQt(text)));
        EXPECT_EQ(fromQt(withoutBreakPoints(document.toPlainText())), text);
    }
    EXPECT_EQ(plainToolTip({}), QString());
}

TEST(PlainText, AToolTipWrapsTextWithoutBreakPoints)
{
    constexpr int width = 400;
    QTextDocument document;
    document.setHtml(plainToolTip(QString(1000, QLatin1Char('x'))));
    document.setTextWidth(width);
    EXPECT_LE(document.idealWidth(), width);
}

TEST(PlainText, ATitleShowsItAsItIs)
{
    for (const char* text : {"[*]", "/a[*]b", "[*][*]", "%1", "&"}) {
        QWidget window;
        window.setWindowTitle(plainTitle(toQt(text)));
        window.show();
        EXPECT_EQ(fromQt(window.windowHandle()->title()), text);
    }
}

TEST(PlainText, OrdinaryTextIsNotBroken)
{
    const QString text
        = QStringLiteral("/Applications/Photo Tools.app/Contents/MacOS/Photo Tools via /bin/sh");
    EXPECT_EQ(withBreakPoints(text), text);
}

TEST(ElidedLabel, CutsOffWhatDoesNotFitAndTellsItWholeInItsToolTip)
{
    const QString message = QStringLiteral("The file <b>/tmp/x</b> cannot be opened for writing");
    ElidedLabel label;
    label.setText(message);
    label.resize(100, 20);
    EXPECT_TRUE(label.shownText().endsWith(QChar(0x2026))) << fromQt(label.shownText());
    EXPECT_LE(label.fontMetrics().horizontalAdvance(label.shownText()), 100);
    EXPECT_EQ(label.text(), message) << "whole for a screen reader";
    EXPECT_EQ(label.toolTip(), plainToolTip(message));
    label.resize(2000, 20);
    EXPECT_EQ(label.shownText(), message);
    EXPECT_LT(label.minimumSizeHint().width(), 20);
}

} // namespace quorvane::windows
