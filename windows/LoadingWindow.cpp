#include "windows/LoadingWindow.h"

#include "windows/BackgroundThread.h"
#include "windows/SlowWork.h"

#include <QDialogButtonBox>
#include <QEventLoop>
#include <QProgressBar>
#include <QPushButton>

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
    buttons().addButton(tr("Quit"), QDialogButtonBox::RejectRole);
    connect(&buttons(), &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(this, &QDialog::rejected, this, [this] { m_hasQuit = true; });
}

void LoadingWindow::run(const std::function<void()>& load)
{
    SlowWork loading;
    connect(&loading, &SlowWork::slownessDidChange, this, [&] {
        if (!m_hasQuit)
            setVisible(loading.isSlow());
    });
    QEventLoop untilLoaded;
    BackgroundThread background;
    loading.setWorking(true);
    background.run(load, [&untilLoaded] { untilLoaded.quit(); });
    untilLoaded.exec();
    loading.setWorking(false);
}

} // namespace quorvane::windows
