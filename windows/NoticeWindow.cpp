#include "windows/NoticeWindow.h"

#include "desktop/InputLock.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QTimer>

#include <chrono>

namespace quorvane::windows {

namespace {

constexpr std::chrono::seconds timeOut{60};

} // namespace

NoticeWindow::NoticeWindow(const QString& header, const QString& message, const QString& iconFile)
    : MessageWindow(iconFile)
{
    setAttribute(Qt::WA_DeleteOnClose);
    // Another modal dialog must not block input to this window.
    setModal(QApplication::activeModalWidget() != nullptr);
    desktop::InputLock::exempt(*this);
    setTexts(header, message);
    buttons().setStandardButtons(QDialogButtonBox::Ok);
    connect(&buttons(), &QDialogButtonBox::accepted, this, &QDialog::close);
    auto* timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, &QDialog::close);
    timer->start(timeOut);
}

} // namespace quorvane::windows
