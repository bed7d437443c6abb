#pragma once

#include <QString>
#include <QTableView>

#include <cstddef>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace quorvane::windows {

// The table of rules, and of what else stands in rows. Tells a model of rules which rows are in view before
// it paints them, and says why it is empty when it is.
class RulesTableView : public QTableView {
    Q_OBJECT
public:
    explicit RulesTableView(QWidget* parent = nullptr);

    // Shown in place of rows when there are none.
    void setEmptyText(const QString& text);

    // Marks the column by which the rows are sorted first; none when `column` is negative.
    void showOrder(int column, Qt::SortOrder order);

    // The column that takes what room the others leave. They give way to it, the widest ones first, when that
    // would be too little. To be called once there is a model, and again when it has other columns.
    void setPathColumn(int column);

    // Makes the columns as wide as what they show needs, within reason.
    void fitColumns();
    // The same while nobody has chosen other widths: what the table shows is another thing now.
    void refitColumns();
    // Whether the columns are to be of other widths than they were fitted to last.
    bool areWidthsChosen() const { return m_wishedWidths != m_fittedWidths; }

    // How wide each column shall be where there is room.
    const QList<int>& wishedWidths() const { return m_wishedWidths; }
    void setWishedWidths(const QList<int>& widths);

    // Hidden columns keep their width and give their room to the others. The last one that is shown stays.
    void setColumnShown(int column, bool isShown);
    int shownColumns() const;

    // Whichever column of the row is shown is brought into view.
    void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;

    // The selected rows from the top down.
    std::vector<std::size_t> selectedRows() const;
    // The same as ranges, each from its first row up to, not including, its second.
    std::vector<std::pair<std::size_t, std::size_t>> selectedRanges() const;
    // Selects these rows, ascending, and no others, and scrolls to the first; nothing when there are none.
    void selectRows(const std::vector<std::size_t>& rows);
    // True when `question` answers so for one of them; asks from the top down and no further than it must.
    bool anySelectedRow(const std::function<bool(std::size_t row)>& question) const;
    // The row that is selected when no other is; none otherwise.
    std::optional<std::size_t> onlySelectedRow() const;

    // Begins to edit the cell of the row that can be edited; nothing when there is none.
    using QTableView::edit;

    // Letters are not looked for row by row, which would make the cells of a million rows; see textTyped().
    void keyboardSearch(const QString& search) override;

Q_SIGNALS:
    // Somebody typed letters while the table had the keyboard.
    void textTyped(const QString& text);
    // The right mouse button over a row, or the menu key.
    void menuRequested(int row, const QPoint& globalPosition);

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;
    // The row of `index` matters, wherever in it the keyboard is. A hidden column is shown to be edited.
    bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    // Home and End lead to the first and last row, not along the row.
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

private:
    void makeRoomForPath();
    QModelIndex shownCell(const QModelIndex& index) const;

    QString m_emptyText;
    int m_pathColumn = -1;
    QList<int> m_wishedWidths;
    QList<int> m_fittedWidths; // as wished by the table itself
    bool m_isMakingRoom = false;
};

} // namespace quorvane::windows
