#include "windows/ElidedLabel.h"
#include "windows/PlainText.h"
#include "windows/QtText.h"

#include <QHBoxLayout>

#include <gtest/gtest.h>

namespace quorvane::windows {

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

TEST(ElidedLabel, MakesNoWindowWiderOrHigherByItsText)
{
    QWidget window;
    auto* label = new ElidedLabel;
    (new QHBoxLayout(&window))->addWidget(label);
    label->setText(QStringLiteral("Text"));
    const QSize size = window.sizeHint();
    label->setText(QStringLiteral("<h1>A long text, of which no letter is a mark of its look</h1>"));
    EXPECT_EQ(window.sizeHint(), size);
}

} // namespace quorvane::windows
