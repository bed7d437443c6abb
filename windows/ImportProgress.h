#pragma once

#include <QElapsedTimer>
#include <QProgressDialog>

namespace quorvane::windows {

// Tells how far an import is once it takes longer than half a second. Windows are painted meanwhile; input to
// any of them is dropped.
class ImportProgress : public QProgressDialog {
    Q_OBJECT
public:
    ImportProgress(QWidget* parent, int rules);

    // Handles events that have come in, now and then.
    void setImported(int rules);

    // An import is not called off: it would be half done.
    void reject() override { }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    QElapsedTimer m_sinceShown;
};

} // namespace quorvane::windows
