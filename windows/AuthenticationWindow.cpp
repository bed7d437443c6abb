#include "windows/AuthenticationWindow.h"

#include "desktop/InputLock.h"
#include "windows/QtText.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QTimer>

#include <chrono>
#include <utility>

namespace quorvane::windows {

namespace {

// By then most dialogs have appeared, and an answer without user interaction has arrived.
constexpr std::chrono::seconds beforePasswordHint{1};

QString request(platform::Awaited what)
{
    switch (what) {
    case platform::Awaited::finger:
        return AuthenticationWindow::tr("Touch the fingerprint reader, or use your password.");
    case platform::Awaited::fingerAgain:
        return AuthenticationWindow::tr("The finger could not be read. Touch the fingerprint reader again.");
    case platform::Awaited::password:
        return AuthenticationWindow::tr("Waiting for the password of an administrator.");
    }
    return {};
}

} // namespace

AuthenticationWindow::AuthenticationWindow(const QString& iconFile)
    : MessageWindow(iconFile)
    , m_giveUpButton(buttons().addButton(QDialogButtonBox::Cancel))
    , m_appearance(new QTimer(this))
{
    desktop::InputLock::exempt(*this);
    connect(&buttons(), &QDialogButtonBox::rejected, this, &QDialog::reject);
    m_appearance->setSingleShot(true);
    connect(m_appearance, &QTimer::timeout, this, &QWidget::show);
}

void AuthenticationWindow::ask(
    platform::Awaited what, const std::string& reason, std::function<void()> giveUp)
{
    m_giveUp = std::move(giveUp);
    setTexts(tr("%1 is trying to %2.").arg(QApplication::applicationName(), toQt(reason)), request(what));
    setWindowTitle(tr("Authentication"));
    m_giveUpButton->setText(what == platform::Awaited::password ? tr("Cancel") : tr("Use Password"));
    setAttribute(Qt::WA_ShowWithoutActivating, what == platform::Awaited::password);
    setModal(QApplication::activeModalWidget() != nullptr);
    if (what == platform::Awaited::password) {
        m_appearance->start(beforePasswordHint);
    } else {
        show();
        activateWindow();
    }
}

void AuthenticationWindow::withdraw()
{
    m_giveUp = nullptr;
    m_appearance->stop();
    hide();
}

void AuthenticationWindow::reject()
{
    if (const auto giveUp = std::exchange(m_giveUp, nullptr))
        giveUp();
}

} // namespace quorvane::windows
