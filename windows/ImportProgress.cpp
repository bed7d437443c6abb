#include "windows/ImportProgress.h"

#include <QCloseEvent>
#include <QCoreApplication>

namespace quorvane::windows {

namespace {

constexpr int patience = 300; // milliseconds
constexpr int betweenUpdates = 20; // milliseconds

} // namespace

ImportProgress::ImportProgress(QWidget* parent, int rules)
    : QProgressDialog(tr("Importing rules\u2026"), QString(), 0, rules, parent)
{
    setWindowTitle(tr("Import"));
    setWindowModality(Qt::ApplicationModal);
    setMinimumDuration(patience);
    setValue(0);
    m_sinceShown.start();
}

void ImportProgress::setImported(int rules)
{
    if (m_sinceShown.elapsed() < betweenUpdates)
        return;
    setValue(rules); // processes events if it is visible
    if (!isVisible())
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    m_sinceShown.restart();
}

void ImportProgress::closeEvent(QCloseEvent* event)
{
    event->ignore();
}

} // namespace quorvane::windows
