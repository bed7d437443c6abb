#include "windows/FootNotices.h"

#include "windows/ElidedLabel.h"
#include "windows/Shades.h"
#include "windows/WindowLook.h"

#include <QAccessibleWidget>
#include <QHBoxLayout>
#include <QPushButton>
#include <QToolButton>

#include <algorithm>
#include <utility>

namespace quorvane::windows {

namespace {

// Exposed to screen readers as an alert, which they read out when it appears.
class NoticeInterface : public QAccessibleWidget {
public:
    explicit NoticeInterface(QWidget* notices)
        : QAccessibleWidget(notices, QAccessible::AlertMessage)
    {
    }
};

QAccessibleInterface* makeInterface(const QString& className, QObject* object)
{
    return className == QLatin1String(FootNotices::staticMetaObject.className())
        ? new NoticeInterface(static_cast<QWidget*>(object))
        : nullptr;
}

} // namespace

FootNotices::FootNotices(QWidget* parent)
    : QFrame(parent)
    , m_text(new ElidedLabel(this))
    , m_more(new QLabel(this))
    , m_buttons(new QHBoxLayout)
{
    QAccessible::installFactory(makeInterface); // installed once, however often it is called
    setAutoFillBackground(true);
    setBackgroundShade(*this, shades::notice);
    m_text->setObjectName(QStringLiteral("noticeText"));
    m_more->setObjectName(QStringLiteral("noticeCount"));
    auto* close = new QToolButton(this);
    close->setObjectName(QStringLiteral("dismissButton"));
    close->setText(QStringLiteral("\u2715"));
    close->setAutoRaise(true);
    close->setFocusPolicy(Qt::StrongFocus);
    close->setAccessibleName(tr("Dismiss"));
    close->setToolTip(tr("Dismiss this notice"));
    connect(close, &QToolButton::clicked, this, &FootNotices::dismiss);

    constexpr int besideText = 8;
    constexpr int aboveText = 4;
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(besideText, aboveText, besideText, aboveText);
    layout->addWidget(m_text, 1);
    layout->addLayout(m_buttons);
    layout->addWidget(m_more);
    layout->addWidget(close);
    hide();
}

void FootNotices::add(FootNotice notice)
{
    dropSubject(notice.subject);
    m_notices.push_back(std::move(notice));
    showNewest();
    QAccessibleEvent announcement(this, QAccessible::ObjectShow);
    QAccessible::updateAccessibility(&announcement);
}

void FootNotices::remove(const QString& subject)
{
    dropSubject(subject);
    showNewest();
}

void FootNotices::dropSubject(const QString& subject)
{
    if (!subject.isEmpty())
        std::erase_if(m_notices, [&](const FootNotice& notice) { return notice.subject == subject; });
}

// Without a notice the buttons are hidden, but a screen reader may still press them.
void FootNotices::dismiss()
{
    if (m_notices.empty())
        return;
    m_notices.pop_back();
    showNewest();
}

// Removes the notice before its action, which may add another.
void FootNotices::press(std::size_t button)
{
    if (m_notices.empty())
        return;
    const std::function<void()> action = std::move(m_notices.back().buttons[button].action);
    dismiss();
    action();
}

void FootNotices::showNewest()
{
    setVisible(!m_notices.empty());
    if (m_notices.empty())
        return;
    m_text->setText(m_notices.back().text);
    setAccessibleName(m_notices.back().text);
    const int behind = static_cast<int>(m_notices.size()) - 1;
    m_more->setVisible(behind > 0);
    m_more->setText(tr("%1 more").arg(behind));
    showButtons(m_notices.back().buttons);
}

// Buttons that would be the same stay: Qt keeps pictures of each new one, some 10 KB, long after it is gone.
void FootNotices::showButtons(const std::vector<FootNotice::Button>& buttons)
{
    QStringList titles;
    for (const FootNotice::Button& button : buttons)
        titles.append(button.title);
    if (std::exchange(m_titles, titles) == titles)
        return;
    while (QLayoutItem* item = m_buttons->takeAt(0)) {
        item->widget()->hide();
        item->widget()->deleteLater(); // it may be the one being pressed
        delete item;
    }
    for (std::size_t number = 0; number < buttons.size(); ++number) {
        auto* button = new QPushButton(buttons[number].title, this);
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, [this, number] { press(number); });
        m_buttons->addWidget(button);
        button->show();
    }
}

} // namespace quorvane::windows
