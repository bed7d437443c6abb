#pragma once

#include <QDialog>

namespace quorvane {

// A notice in a small window of its own: icon, header, message and an "OK" button. Goes away by itself after
// a minute and deletes itself when it is closed.
class NoticeWindow : public QDialog {
    Q_OBJECT
public:
    // `iconFile` may be missing. The texts are shown as they are, never as markup.
    NoticeWindow(const QString& header, const QString& message, const QString& iconFile);
};

} // namespace quorvane
