#pragma once

#include <QElapsedTimer>
#include <QProgressDialog>

namespace quorvane::windows {

// Shows the progress of an import that takes longer than 0.3 s. Windows are painted meanwhile; input to any
// of them waits until the progress is visible and is dropped then. User interface thread only.
class ImportProgress : public QProgressDialog {
    Q_OBJECT
public:
    ImportProgress(QWidget* parent, int rules);

    // Processes pending events from time to time.
    void setImported(int rules);

    // An import cannot be cancelled: it would be incomplete.
    void reject() override { }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    QElapsedTimer m_sinceShown;
};

} // namespace quorvane::windows
