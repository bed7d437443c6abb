#include "windows/ImportProgress.h"

#include <QCloseEvent>

namespace quorvane::windows {

namespace {

constexpr int patience = 500; // milliseconds
constexpr int betweenUpdates = 40; // milliseconds

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
    setValue(rules);
    m_sinceShown.restart();
}

void ImportProgress::closeEvent(QCloseEvent* event)
{
    event->ignore();
}

} // namespace quorvane::windows
