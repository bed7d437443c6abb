#pragma once

#include <QDialog>

class QDialogButtonBox;
class QLabel;

namespace quorvane::windows {

// A small window that says something: icon, header, message and buttons. The texts are shown as they are,
// never as markup, and can be selected but for those that hold a very long word.
class MessageWindow : public QDialog {
    Q_OBJECT
public:
    // `iconFile` may be missing; there is an icon in any case.
    explicit MessageWindow(const QString& iconFile);

    void setTexts(const QString& header, const QString& message);
    QDialogButtonBox& buttons() { return *m_buttons; }

private:
    QLabel* m_header;
    QLabel* m_message;
    QDialogButtonBox* m_buttons;
};

} // namespace quorvane::windows
