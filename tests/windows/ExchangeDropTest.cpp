#include "windows/ExchangeDrop.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QSignalSpy>
#include <QUrl>
#include <QWidget>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quorvane::windows {

namespace {

class ExchangeDropTest : public testing::Test {
protected:
    ExchangeDropTest()
    {
        QObject::connect(&drop, &ExchangeDrop::filesWereDropped,
            [this](const std::vector<std::string>& paths) { files = paths; });
        QObject::connect(
            &drop, &ExchangeDrop::textWasDropped, [this](const QString& dropped) { text = dropped; });
    }
    // Whether the data may be dropped.
    bool enters(const QMimeData& data, Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction)
    {
        QDragEnterEvent event(QPoint(1, 1), actions, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&window, &event);
        return event.isAccepted();
    }
    Qt::DropAction dropped(const QMimeData& data, Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction)
    {
        QDropEvent event(QPointF(1, 1), actions, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&window, &event);
        const bool isLater = files.empty() && text.isEmpty();
        EXPECT_TRUE(isLater) << "the source waits for the end of the drop";
        QApplication::processEvents();
        return event.isAccepted() ? event.dropAction() : Qt::IgnoreAction;
    }
    static void putUrls(QMimeData& data, const QStringList& urls)
    {
        QList<QUrl> all;
        for (const QString& url : urls)
            all.append(QUrl(url));
        data.setUrls(all);
    }

    QWidget window;
    ExchangeDrop& drop = *new ExchangeDrop(window);
    std::vector<std::string> files;
    QString text;
};

} // namespace

TEST_F(ExchangeDropTest, TakesExchangeFilesAndLeavesOthers)
{
    QMimeData data;
    putUrls(data,
        {QStringLiteral("file:///a/b%20c.quorv"), QStringLiteral("file:///a/b.txt"),
            QStringLiteral("https://example.com/x.quorv"), QStringLiteral("file:///d.quorv")});
    EXPECT_TRUE(enters(data));
    EXPECT_TRUE(files.empty()) << "only a drop is one";
    EXPECT_EQ(dropped(data), Qt::CopyAction);
    EXPECT_EQ(files, (std::vector<std::string>{"/a/b c.quorv", "/d.quorv"}));
    EXPECT_EQ(text, QString());
}

TEST_F(ExchangeDropTest, TakesTextUnlessItNamesFiles)
{
    QMimeData data;
    data.setText(QStringLiteral("allow path ..."));
    EXPECT_TRUE(enters(data));
    EXPECT_EQ(dropped(data), Qt::CopyAction);
    EXPECT_EQ(text, QStringLiteral("allow path ..."));

    QMimeData others;
    putUrls(others, {QStringLiteral("file:///a/b.txt")});
    others.setText(QStringLiteral("/a/b.txt"));
    text.clear();
    EXPECT_FALSE(enters(others));
    EXPECT_EQ(dropped(others), Qt::IgnoreAction);
    EXPECT_EQ(text, QString());
    EXPECT_FALSE(enters(QMimeData()));
}

TEST_F(ExchangeDropTest, NeverTakesAwayWhatItIsGiven)
{
    QMimeData data;
    data.setText(QStringLiteral("text"));
    EXPECT_FALSE(enters(data, Qt::MoveAction));
    EXPECT_EQ(dropped(data, Qt::MoveAction), Qt::IgnoreAction);
    EXPECT_EQ(text, QString());
}

} // namespace quorvane::windows
