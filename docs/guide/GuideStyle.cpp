#include "docs/guide/GuideStyle.h"

#include <QPainter>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextFrame>
#include <QTextImageFormat>
#include <QTextList>
#include <QTextTable>

#include <algorithm>
#include <array>
#include <functional>
#include <vector>

namespace quorvane::guide {

namespace {

constexpr qreal textSize = 9.5;
constexpr qreal codeSize = 8.5;
constexpr qreal indentWidth = 24;
constexpr qreal lineHeight = 125; // percent
constexpr qreal tableLineHeight = 112;
// Pictures are shown at one scale, so that the texts in them have one size, unless they are too wide.
constexpr qreal pictureScale = 0.56;

const QColor headingColor(0x2f, 0x5a, 0x8d);
const QColor lineColor(0xb8, 0xc2, 0xd0);
const QColor shade(0xee, 0xf2, 0xf7);

struct HeadingLook {
    qreal size;
    qreal above;
    qreal below;
};
// By level, from 1.
constexpr std::array<HeadingLook, 3> headingLooks{{{26, 0, 12}, {17, 30, 10}, {12, 18, 6}}};

QFont codeFont()
{
    QFont font(QStringLiteral("DejaVu Sans Mono"));
    font.setPointSizeF(codeSize);
    return font;
}

void styleHeading(QTextCursor& block, QTextBlockFormat& format)
{
    const auto level = static_cast<std::size_t>(format.headingLevel());
    const HeadingLook& look = headingLooks.at(std::min(level, headingLooks.size()) - 1);
    format.setTopMargin(look.above);
    format.setBottomMargin(look.below);
    QTextCharFormat text;
    text.setFont(textFont());
    text.setFontPointSize(look.size);
    text.setFontWeight(QFont::Bold);
    text.setForeground(headingColor);
    block.setCharFormat(text);
}

void styleCode(QTextCursor& block, QTextBlockFormat& format)
{
    const QTextBlock previous = block.block().previous();
    const QTextBlock next = block.block().next();
    constexpr qreal space = 8;
    format.setTopMargin(isCode(previous) ? 0 : space / 2);
    format.setBottomMargin(isCode(next) ? 0 : space);
    format.setIndent(1);
    format.setBackground(shade);
    QTextCharFormat text;
    text.setFont(codeFont());
    block.setCharFormat(text);
}

void styleParagraph(const QTextBlock& block, QTextBlockFormat& format)
{
    const bool isInTable = QTextCursor(block).currentTable() != nullptr;
    const bool isWithinList = block.textList() != nullptr && block.next().textList() == block.textList();
    format.setTopMargin(0);
    format.setBottomMargin(isInTable ? 0 : isWithinList ? 3 : 8);
    const bool isPicture
        = block.begin() != block.end() && block.begin().fragment().charFormat().isImageFormat();
    if (!isPicture)
        format.setLineHeight(isInTable ? tableLineHeight : lineHeight, QTextBlockFormat::ProportionalHeight);
}

// A window ends where the paper begins, and both are white.
void frame(QImage& image)
{
    QPainter painter(&image);
    painter.setPen(lineColor);
    painter.drawRect(image.rect().adjusted(0, 0, -1, -1));
}

void stylePicture(QTextCursor& piece, QTextImageFormat picture, qreal columnWidth)
{
    const QUrl place = piece.document()->baseUrl().resolved(QUrl(picture.name()));
    QImage image(place.toLocalFile());
    frame(image);
    piece.document()->addResource(QTextDocument::ImageResource, place, image);
    const qreal width = std::min(image.width() * pictureScale, columnWidth);
    picture.setWidth(width);
    picture.setHeight(width * image.height() / std::max(image.width(), 1));
    piece.setCharFormat(picture);
}

// Each piece of text with one format of its own: code and pictures between words.
void stylePieces(const QTextBlock& block, qreal columnWidth)
{
    std::vector<QTextFragment> pieces;
    for (auto piece = block.begin(); !piece.atEnd(); ++piece)
        pieces.push_back(piece.fragment());
    for (const QTextFragment& piece : pieces) {
        QTextCursor cursor(block);
        cursor.setPosition(piece.position());
        cursor.setPosition(piece.position() + piece.length(), QTextCursor::KeepAnchor);
        const QTextCharFormat format = piece.charFormat();
        if (format.isImageFormat()) {
            stylePicture(cursor, format.toImageFormat(), columnWidth);
        } else if (format.fontFixedPitch()) {
            QTextCharFormat code;
            code.setFontFamilies(codeFont().families());
            code.setFontPointSize(codeSize);
            cursor.mergeCharFormat(code);
        }
    }
}

void styleTable(QTextTable& table)
{
    QTextTableFormat format = table.format();
    format.setBorder(1);
    format.setBorderCollapse(true);
    format.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
    format.setBorderBrush(lineColor);
    format.setCellPadding(4);
    format.setCellSpacing(0);
    format.setTopMargin(4);
    format.setBottomMargin(12);
    format.setHeaderRowCount(1);
    format.setWidth(QTextLength(QTextLength::PercentageLength, 100));
    table.setFormat(format);
    for (int column = 0; column < table.columns(); ++column) {
        QTextTableCell cell = table.cellAt(0, column);
        QTextCharFormat header = cell.format();
        header.setBackground(shade);
        cell.setFormat(header);
        QTextCursor text = cell.firstCursorPosition();
        text.setPosition(cell.lastPosition(), QTextCursor::KeepAnchor);
        QTextCharFormat bold;
        bold.setFontWeight(QFont::Bold);
        text.mergeCharFormat(bold);
    }
}

} // namespace

QFont textFont()
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPointSizeF(textSize);
    // Any spacing turns ligatures off, which whoever searches the guide or copies from it would stumble over.
    font.setLetterSpacing(QFont::PercentageSpacing, 100.1);
    return font;
}

bool isCode(const QTextBlock& block)
{
    return block.blockFormat().hasProperty(QTextFormat::BlockCodeLanguage);
}

void applyStyle(QTextDocument& document, qreal columnWidth)
{
    document.setDefaultFont(textFont());
    document.setIndentWidth(indentWidth);
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        QTextCursor cursor(block);
        cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
        QTextBlockFormat format = block.blockFormat();
        if (format.headingLevel() > 0) {
            styleHeading(cursor, format);
        } else if (isCode(block)) {
            styleCode(cursor, format);
        } else {
            styleParagraph(block, format);
            stylePieces(block, columnWidth);
        }
        cursor.setBlockFormat(format);
    }
    for (QTextFrame* frame : document.rootFrame()->childFrames()) {
        if (auto* table = qobject_cast<QTextTable*>(frame))
            styleTable(*table);
    }
}

} // namespace quorvane::guide
