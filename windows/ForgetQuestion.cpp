#include "windows/ForgetQuestion.h"

#include "windows/VersionsModel.h"

#include <QLocale>
#include <QMessageBox>
#include <QPushButton>

#include <algorithm>

namespace quorvane::windows {

namespace {

using Versions = std::vector<history::JournalVersion>;

QString countText(const Versions& versions, Versions::const_iterator first)
{
    return QLocale().toString(static_cast<qlonglong>(versions.end() - first));
}

// "versions 3 to 17, of 2026-11-01 10:00:00 to 2026-11-20 09:12:44": those from `first` on, newest first.
QString rangeText(const Versions& versions, Versions::const_iterator first)
{
    const history::JournalVersion& oldest = versions.back();
    if (first->number == oldest.number)
        return VersionsModel::tr("version %1, of %2").arg(oldest.number).arg(versionTime(oldest));
    return VersionsModel::tr("versions %1 to %2, of %3 to %4")
        .arg(oldest.number)
        .arg(first->number)
        .arg(versionTime(oldest), versionTime(*first));
}

} // namespace

std::optional<std::int64_t> askWhatToForget(QWidget& parent, const QString& historyName,
    const Versions& versions, std::optional<std::int64_t> selected)
{
    if (versions.size() < 2)
        return std::nullopt;
    const std::int64_t newest = versions.front().number;
    const auto secondNewest = versions.begin() + 1;
    const auto older = std::find_if(versions.begin(), versions.end(),
        [selected](const history::JournalVersion& version) { return version.number < selected; });

    QMessageBox question(
        QMessageBox::Warning, QMessageBox::tr("Forget Versions"), {}, QMessageBox::Cancel, &parent);
    QString text = QMessageBox::tr("Forget versions of the %1? They can then no longer be shown, exported, "
                                   "restored or undone.")
                       .arg(historyName.toLower());
    const QAbstractButton* forgetOlder = nullptr;
    if (older > secondNewest && older != versions.end()) {
        forgetOlder = question.addButton(QMessageBox::tr("Forget %1 &Older").arg(countText(versions, older)),
            QMessageBox::DestructiveRole);
        text += QMessageBox::tr("\n\nOlder than version %1: %2.")
                    .arg(*selected)
                    .arg(rangeText(versions, older));
    }
    const QAbstractButton* forgetAll
        = question.addButton(QMessageBox::tr("Forget &All %1").arg(countText(versions, secondNewest)),
            QMessageBox::DestructiveRole);
    text += QMessageBox::tr("\n\nAll: %1. Version %2, the newest, stays.")
                .arg(rangeText(versions, secondNewest))
                .arg(newest);
    question.setTextFormat(Qt::PlainText);
    question.setText(text);
    question.setDefaultButton(QMessageBox::Cancel);
    question.exec();
    if (question.clickedButton() == forgetAll)
        return newest;
    return forgetOlder != nullptr && question.clickedButton() == forgetOlder ? selected : std::nullopt;
}

} // namespace quorvane::windows
