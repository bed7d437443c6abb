#include "docs/guide/GuideStyle.h"

#include <QAbstractTextDocumentLayout>
#include <QBuffer>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QHash>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextLayout>
#include <QTextTable>
#include <QUrl>

#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>
#include <set>
#include <vector>

namespace quorvane::guide {

namespace {

constexpr int resolution = 600; // dots per inch
constexpr qreal dotsPerPoint = resolution / 96.0;
constexpr qreal margin = 84; // in points of 1/96 inch, on all sides
constexpr qreal footer = 40; // below the text

struct ContentsEntry {
    QString title;
    int level = 0;
    int page = 0; // from 0, counted from the first page of the text
};

// Puts texts on the pages of a PDF document, which is written to `target`.
class Pages {
public:
    Pages(QIODevice& target, const QString& title)
        : m_writer(&target)
        , m_title(title)
    {
        m_writer.setResolution(resolution);
        m_writer.setPageSize(QPageSize(QPageSize::A4));
        m_writer.setPageMargins({});
        m_writer.setTitle(title);
        m_writer.setCreator(QStringLiteral("Vantreal"));
    }

    // Of the text on a page, in dots.
    QSizeF textSize() const
    {
        return QSizeF(m_writer.width(), m_writer.height()) - QSizeF(2, 2) * margin * dotsPerPoint;
    }

    // With a new page before each block whose number is in `breaks`. These are known before anything is laid
    // out: a document whose formats change afterwards is not drawn whole.
    std::unique_ptr<QTextDocument> newDocument(
        const QString& markdown, const QUrl& folder, const std::set<int>& breaks = {})
    {
        auto document = std::make_unique<QTextDocument>();
        document->setBaseUrl(folder);
        document->documentLayout()->setPaintDevice(&m_writer);
        document->setDocumentMargin(0);
        document->setMarkdown(markdown, QTextDocument::MarkdownDialectGitHub);
        applyStyle(*document, textSize().width() / dotsPerPoint);
        for (const int number : breaks) {
            QTextCursor cursor(document->findBlockByNumber(number));
            QTextBlockFormat format = cursor.blockFormat();
            format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
            cursor.setBlockFormat(format);
        }
        document->setPageSize(textSize());
        return document;
    }

    // Where the line of the block stands, from 0.
    int pageOf(const QTextBlock& block, int line = 0) const
    {
        const qreal top = block.document()->documentLayout()->blockBoundingRect(block).top();
        return static_cast<int>(std::floor((top + block.layout()->lineAt(line).y()) / textSize().height()));
    }

    // False when the document cannot be begun.
    bool print(QTextDocument& document)
    {
        if (m_painter.isActive())
            m_writer.newPage();
        else if (!m_painter.begin(&m_writer))
            return false;
        m_painter.setRenderHint(QPainter::LosslessImageRendering);
        for (int page = 0; page < document.pageCount(); ++page) {
            if (page > 0)
                m_writer.newPage();
            printPage(document, page);
        }
        return true;
    }

    bool finish() { return m_painter.end(); }

private:
    void printPage(QTextDocument& document, int page)
    {
        // Without its last row of dots, where the first line of the next page may begin.
        const QRectF part(QPointF(0, page * textSize().height()), textSize() - QSizeF(0, 1));
        m_painter.save();
        m_painter.translate(margin * dotsPerPoint, margin * dotsPerPoint - part.top());
        document.drawContents(&m_painter, part);
        m_painter.restore();
        ++m_printed;
        if (m_printed == 1) // the title page
            return;
        QFont font = textFont();
        font.setPointSizeF(8);
        m_painter.setFont(font);
        m_painter.setPen(Qt::darkGray);
        const QRectF line(margin * dotsPerPoint, (margin + footer / 2) * dotsPerPoint + textSize().height(),
            textSize().width(), footer / 2 * dotsPerPoint);
        m_painter.drawText(line, Qt::AlignLeft, m_title);
        m_painter.drawText(line, Qt::AlignRight, QString::number(m_printed));
    }

    QPdfWriter m_writer;
    QString m_title;
    QPainter m_painter;
    int m_printed = 0;
};

bool isInTable(const QTextBlock& block)
{
    return QTextCursor(block).currentTable() != nullptr;
}

// Headings, words that announce what follows them, and what stands right above a table stay on one page with
// it.
bool belongsToNext(const QTextBlock& block)
{
    if (block.blockFormat().headingLevel() > 0 || (isCode(block) && isCode(block.next())))
        return true;
    const bool isAboveTable = block.next().isValid() && isInTable(block.next());
    return !isInTable(block) && (block.text().endsWith(QLatin1Char(':')) || isAboveTable);
}

// The page on which what begins with `block` ends, as far as it shall not be parted: a paragraph of a few
// lines, or a table that is not too long.
int lastPageToKeep(const QTextBlock& block, const Pages& pages)
{
    constexpr int fewLines = 5;
    constexpr qreal longTable = 0.7; // of a page
    QTextTable* table = QTextCursor(block).currentTable();
    if (table == nullptr) {
        const int lines = block.layout()->lineCount();
        return pages.pageOf(block, lines <= fewLines ? lines - 1 : 0);
    }
    const QRectF place = block.document()->documentLayout()->frameBoundingRect(table);
    const bool isLong = place.height() > pages.textSize().height() * longTable;
    return pages.pageOf(isLong ? block : table->lastCursorPosition().block());
}

// The number of a block that has to begin a page, since it is parted from what it belongs to; none of
// `known`.
std::optional<int> blockToMove(const QTextDocument& document, const Pages& pages, const std::set<int>& known)
{
    QTextBlock first;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        first = first.isValid() ? first : block;
        if (belongsToNext(block))
            continue;
        if (!known.contains(first.blockNumber()) && lastPageToKeep(block, pages) != pages.pageOf(first))
            return first.blockNumber();
        first = {};
        // The other cells of a table go with its first.
        if (const QTextTable* table = QTextCursor(block).currentTable())
            block = table->lastCursorPosition().block();
    }
    return std::nullopt;
}

// The document with its pages broken where no reader minds.
std::unique_ptr<QTextDocument> wellBrokenDocument(Pages& pages, const QString& markdown, const QUrl& folder)
{
    std::set<int> breaks;
    while (true) {
        auto document = pages.newDocument(markdown, folder, breaks);
        const auto next = blockToMove(*document, pages, breaks);
        if (!next)
            return document;
        breaks.insert(*next);
    }
}

std::vector<ContentsEntry> contentsOf(const QTextDocument& document, const Pages& pages)
{
    std::vector<ContentsEntry> entries;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        const int level = block.blockFormat().headingLevel();
        if (level == chapterLevel || level == sectionLevel)
            entries.push_back({block.text(), level, pages.pageOf(block)});
    }
    return entries;
}

// Appends the list of contents; the text begins on the page with the number `firstPage`.
void appendContents(
    QTextDocument& front, const std::vector<ContentsEntry>& entries, int firstPage, qreal columnWidth)
{
    QTextCursor cursor(&front);
    cursor.movePosition(QTextCursor::End);
    for (const ContentsEntry& entry : entries) {
        const bool isChapter = entry.level == chapterLevel;
        QTextBlockFormat format;
        format.setTopMargin(isChapter ? 9 : 2);
        format.setIndent(isChapter ? 0 : 1);
        const qreal rightEdge = columnWidth - format.indent() * front.indentWidth();
        format.setTabPositions({QTextOption::Tab(rightEdge, QTextOption::RightTab)});
        QTextCharFormat text;
        text.setFont(textFont());
        text.setFontWeight(isChapter ? QFont::Bold : QFont::Normal);
        cursor.insertBlock(format, text);
        cursor.insertText(entry.title + QLatin1Char('\t') + QString::number(entry.page + firstPage));
    }
}

// A package gives the time of its source: so a guide made of it anew is the same, byte for byte. The toolkit
// writes the present time, which is as long.
void setCreationTime(QByteArray& document)
{
    bool isGiven = false;
    const qint64 seconds = qEnvironmentVariable("SOURCE_DATE_EPOCH").toLongLong(&isGiven);
    const QByteArray key = "/CreationDate (D:";
    const qsizetype at = document.indexOf(key);
    if (!isGiven || at < 0)
        return;
    const QByteArray time = QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC)
                                .toString(QStringLiteral("yyyyMMddHHmmss"))
                                .toLatin1();
    document.replace(at + key.size(), time.size(), time);
}

bool save(const QByteArray& document, const QString& target)
{
    QSaveFile file(target);
    return file.open(QIODevice::WriteOnly) && file.write(document) == document.size() && file.commit();
}

bool makeGuide(const QString& source, const QString& target, const QString& version)
{
    QFile file(source);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QString markdown = QString::fromUtf8(file.readAll());
    const QUrl folder = QUrl::fromLocalFile(QFileInfo(source).absolutePath() + QLatin1Char('/'));
    const qsizetype firstChapter = markdown.indexOf(QStringLiteral("\n## "));
    const QString title = markdown.section(QLatin1Char('\n'), 0, 0).mid(2);

    QBuffer document;
    document.open(QIODevice::WriteOnly);
    Pages pages(document, title);
    const auto text = wellBrokenDocument(pages, markdown.mid(firstChapter), folder);
    const auto entries = contentsOf(*text, pages);
    const QString frontText = markdown.left(firstChapter) + QStringLiteral("\n\nVersion ") + version
        + QStringLiteral("\n\n## Contents");
    const auto newFront = [&](int firstPage) {
        auto front = pages.newDocument(frontText, folder);
        appendContents(*front, entries, firstPage, pages.textSize().width() / dotsPerPoint);
        return front;
    };
    const int firstPage = newFront(0)->pageCount() + 1;
    if (!pages.print(*newFront(firstPage)) || !pages.print(*text) || !pages.finish())
        return false;
    setCreationTime(document.buffer());
    return save(document.data(), target);
}

} // namespace

} // namespace quorvane::guide

// quorvane-make-guide GUIDE.md GUIDE.pdf VERSION: sets the user guide in pages, with a list of contents.
int main(int argumentCount, char** arguments)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("TZ", "UTC"); // of the time in the document
    QHashSeed::setDeterministicGlobalSeed(); // the order in which fonts are written
    const QGuiApplication application(argumentCount, arguments);
    if (argumentCount != 4) {
        std::fputs("usage: quorvane-make-guide GUIDE.md GUIDE.pdf VERSION\n", stderr);
        return 2;
    }
    if (quorvane::guide::makeGuide(QString::fromLocal8Bit(arguments[1]), QString::fromLocal8Bit(arguments[2]),
            QString::fromLocal8Bit(arguments[3])))
        return 0;
    std::fprintf(stderr, "quorvane-make-guide: cannot make '%s' of '%s'\n", arguments[2], arguments[1]);
    return 1;
}
