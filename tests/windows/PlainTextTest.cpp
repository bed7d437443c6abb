#include "windows/PlainText.h"
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

} // namespace quorvane::windows
