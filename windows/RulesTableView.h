#pragma once

#include <QString>
#include <QTableView>

namespace quorvane {

// The table of rules. Tells its model which rows are in view before it paints them, and says why it is empty
// when it is.
class RulesTableView : public QTableView {
    Q_OBJECT
public:
    explicit RulesTableView(QWidget* parent = nullptr);

    // Shown in place of rows when there are none.
    void setEmptyText(const QString& text);

    // Marks the column by which the rows are sorted first; none when `column` is negative.
    void showOrder(int column, Qt::SortOrder order);

    // Makes the columns as wide as what they show needs, within reason; the path takes the rest.
    void fitColumns();

    // Gives the path what room the other columns leave.
    void stretchPath();

    // Letters are not looked for row by row, which would make the cells of a million rows; see textTyped().
    void keyboardSearch(const QString& search) override;

Q_SIGNALS:
    // Somebody typed letters while the table had the keyboard.
    void textTyped(const QString& text);

protected:
    void paintEvent(QPaintEvent* event) override;
    // Home and End lead to the first and last row, not along the row.
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

private:
    QString m_emptyText;
};

} // namespace quorvane
