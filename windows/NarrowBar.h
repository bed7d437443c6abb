#pragma once

#include "workflow/Narrowing.h"
#include "workflow/RuleCriteria.h"

#include <QWidget>

class QBoxLayout;
class QComboBox;
class QLabel;
class QToolButton;

namespace quorvane::windows {

// A row of filters for the table in addition to its search: class, type, state, tag, problem and program, all
// of which must hold. Wraps to two rows when it is too narrow. User interface thread only.
class NarrowBar : public QWidget {
    Q_OBJECT
public:
    explicit NarrowBar(QWidget* parent = nullptr);

    // Empty while everything is shown.
    workflow::RuleCriteria criteria() const;
    // Shows everything.
    void clear();

    // Sets the tags and programs to choose from. A current choice that is not among them stays.
    void setNames(const workflow::NamesInUse& names);
    // Sets a status text about the choices; empty for none.
    void setStatus(const QString& status);

Q_SIGNALS:
    // By the user or by clear().
    void criteriaChanged();
    // The user has left the bar by the keyboard.
    void wasLeft();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    QComboBox* addChoice(QWidget& half, const char* name, const QString& label, const QString& whole);
    void makeHalves();
    void fillFixedChoices();
    void leave();

    QBoxLayout* m_halves;
    QComboBox* m_class;
    QComboBox* m_type;
    QComboBox* m_state;
    QComboBox* m_tag;
    QComboBox* m_problem;
    QComboBox* m_program;
    QToolButton* m_clearButton;
    QLabel* m_status;
    workflow::NamesInUse m_names; // that are offered
};

} // namespace quorvane::windows
