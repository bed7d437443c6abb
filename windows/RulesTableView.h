#pragma once

#include <QString>
#include <QTableView>

#include <cstddef>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace quorvane::windows {

// A table of rules or other rows. Notifies a model of rules of the rows in view before painting them, and
// shows a text when it is empty. User interface thread only.
class RulesTableView : public QTableView {
    Q_OBJECT
public:
    explicit RulesTableView(QWidget* parent = nullptr);

    // Shown when there are no rows.
    void setEmptyText(const QString& text);

    // Marks the primary sort column; none when `column` is negative.
    void showOrder(int column, Qt::SortOrder order);

    // Sets the column that takes the remaining width. The others shrink, the widest first, when that would be
    // too little. Call it once there is a model, and again when its columns change.
    void setPathColumn(int column);

    // Fits the columns to their contents, within limits.
    void fitColumns();
    // The same, unless the user has chosen other widths: call it when the contents have changed.
    void refitColumns();
    // Whether the user has chosen other widths than the last fitted ones.
    bool areWidthsChosen() const { return m_wishedWidths != m_fittedWidths; }

    // The preferred width of each column, if there is room.
    const QList<int>& wishedWidths() const { return m_wishedWidths; }
    void setWishedWidths(const QList<int>& widths);

    // Hidden columns keep their preferred width and leave their room to the others. The last visible one
    // cannot be hidden.
    void setColumnShown(int column, bool isShown);
    int shownColumns() const;

    // Scrolls to a visible column of the row.
    void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;

    // The selected rows from the top down.
    std::vector<std::size_t> selectedRows() const;
    // The same as ranges, each from its first row up to, not including, its second.
    std::vector<std::pair<std::size_t, std::size_t>> selectedRanges() const;
    // Selects exactly these rows, ascending, and scrolls to the first; does nothing when there are none.
    void selectRows(const std::vector<std::size_t>& rows);
    // True when `question` is true for any selected row; checks from the top down and stops at the first.
    bool anySelectedRow(const std::function<bool(std::size_t row)>& question) const;
    // The selected row if it is the only one; none otherwise.
    std::optional<std::size_t> onlySelectedRow() const;

    // Begins to edit the editable cell of the row; does nothing when there is none.
    using QTableView::edit;

    // The titles are not told what is selected: to show whether a column is, they would ask every row.
    void setSelectionModel(QItemSelectionModel* selectionModel) override;

    // Does not search the rows for typed letters, which would make the cells of a million rows; see
    // textTyped().
    void keyboardSearch(const QString& search) override;

Q_SIGNALS:
    // The user typed letters while the table had the keyboard focus.
    void textTyped(const QString& text);
    // The right mouse button over a row, or the menu key.
    void menuRequested(int row, const QPoint& globalPosition);

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;
    // Edits the row of `index`, whichever of its columns has the focus. A hidden column is shown for editing.
    bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    // Home and End go to the first and last row, not along the row.
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

private:
    void makeRoomForPath();
    QModelIndex shownCell(const QModelIndex& index) const;

    QString m_emptyText;
    int m_pathColumn = -1;
    QList<int> m_wishedWidths;
    QList<int> m_fittedWidths; // the last fitted widths
    bool m_isMakingRoom = false;
};

} // namespace quorvane::windows
