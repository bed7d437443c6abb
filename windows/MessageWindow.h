#pragma once

#include <QDialog>

class QDialogButtonBox;
class QGridLayout;
class QLabel;

namespace quorvane::windows {

// A small message window: icon, header, message and buttons. The texts are shown verbatim, never as markup,
// and can be selected, except for texts with a very long word. User interface thread only.
class MessageWindow : public QDialog {
    Q_OBJECT
public:
    // `iconFile` may be missing; then a default icon is shown.
    explicit MessageWindow(const QString& iconFile);

    void setTexts(const QString& header, const QString& message);
    QDialogButtonBox& buttons() { return *m_buttons; }

protected:
    // Between message and buttons; the window owns it. Call it once at most.
    void addBelowMessage(QWidget& widget);

private:
    QGridLayout* m_layout;
    QLabel* m_header;
    QLabel* m_message;
    QDialogButtonBox* m_buttons;
};

} // namespace quorvane::windows
