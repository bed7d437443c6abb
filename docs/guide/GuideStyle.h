#pragma once

#include <QTextBlock>
#include <QTextDocument>

// How the pages of the user guide look. Lengths are points of 1/96 inch, as in all of QTextDocument.

namespace quorvane::guide {

constexpr int chapterLevel = 2; // of headings; the guide's title is the only one above
constexpr int sectionLevel = 3;

QFont textFont();

// True for a line of a block of code.
bool isCode(const QTextBlock& block);

// Gives each heading, paragraph, table and picture of a document read from Markdown its look. Pictures are
// made no wider than `columnWidth`.
void applyStyle(QTextDocument& document, qreal columnWidth);

} // namespace quorvane::guide
