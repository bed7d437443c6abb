#include "windows/LoadingWindow.h"

#include "windows/SlowWork.h"

#include <QDialogButtonBox>
#include <QEventLoop>
#include <QProgressBar>
#include <QPushButton>
#include <QThread>

namespace quorvane::windows {

LoadingWindow::LoadingWindow(const QString& iconFile, const QString& header, const QString& message)
    : MessageWindow(iconFile)
{
    setTexts(header, message);
    auto* busy = new QProgressBar;
    busy->setRange(0, 0); // how long it takes is not known
    busy->setTextVisible(false);
    busy->setAccessibleName(message);
    addBelowMessage(*busy);
    // Appears unasked: a return key that was meant for another window must not quit.
    buttons().addButton(tr("Quit"), QDialogButtonBox::RejectRole)->setAutoDefault(false);
    connect(&buttons(), &QDialogButtonBox::rejected, this, &QDialog::reject);
}

bool LoadingWindow::run(const std::function<void()>& load)
{
    bool isLoaded = false;
    QEventLoop wait;
    auto* thread = QThread::create(load); // deletes itself, since it may outlive this
    connect(thread, &QThread::finished, thread, &QObject::deleteLater);
    connect(thread, &QThread::finished, &wait, [&] {
        isLoaded = true;
        wait.quit();
    });
    connect(this, &QDialog::rejected, &wait, &QEventLoop::quit);
    SlowWork loading;
    connect(&loading, &SlowWork::slownessDidChange, this, [&] { setVisible(loading.isSlow()); });
    loading.setWorking(true);
    thread->start();
    if (!thread->isRunning() && !thread->isFinished()) { // none could be created
        load();
        delete thread;
        return true;
    }
    wait.exec();
    loading.setWorking(false);
    return isLoaded;
}

} // namespace quorvane::windows
