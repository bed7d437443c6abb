#include "windows/ExchangePanels.h"

#include "platform/Account.h"
#include "windows/FilePanel.h"
#include "windows/QtText.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPointer>

namespace quorvane {

namespace {

QStringList exchangeTypes()
{
    return {QStringLiteral("quorv"), QStringLiteral("QUORV"), QStringLiteral("Quorv")};
}

class ExchangeFilePanel : public QFileDialog {
public:
    ExchangeFilePanel(QWidget* parent, const QString& title)
        : QFileDialog(parent, title)
    {
        setOption(QFileDialog::DontUseNativeDialog); // a native one has no accept() to ask
        setFileMode(QFileDialog::ExistingFile);
        setNameFilter(tr("Rules (*.%1)").arg(exchangeTypes().join(QStringLiteral(" *."))));
        setFilter(filter() | QDir::CaseSensitive);
    }

    void accept() override
    {
        // A name of any type can be typed.
        const QFileInfo file(selectedFiles().value(0));
        if (!file.isFile() || exchangeTypes().contains(file.suffix()))
            QFileDialog::accept();
        else
            QMessageBox::information(this, windowTitle(),
                tr("Please choose a file whose name ends in .%1.").arg(exchangeTypes().first()));
    }
};

} // namespace

std::optional<QUrl> chooseExchangeFile(QWidget& parent, const QString& title, const std::string& folder)
{
    // On the heap, since the parent takes it along when it goes.
    const QPointer<ExchangeFilePanel> panel = new ExchangeFilePanel(&parent, title);
    panel->setDirectory(folderForPanel(folder));
    const bool confirmed = panel->exec() == QDialog::Accepted;
    if (panel.isNull())
        return std::nullopt;
    const QUrl chosen = panel->selectedUrls().value(0);
    delete panel;
    return confirmed && !chosen.isEmpty() ? std::optional(chosen) : std::nullopt;
}

void showSavePanel(QWidget& parent, const QString& title, const std::string& name,
    const std::function<void(const QUrl& destination)>& save)
{
    auto* panel = new QFileDialog(&parent, title, toQt(homeDirectory()));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setOption(QFileDialog::DontUseNativeDialog); // the same everywhere
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setFileMode(QFileDialog::AnyFile);
    panel->selectFile(toQt(name));
    QObject::connect(panel, &QFileDialog::fileSelected, &parent,
        [save](const QString& file) { save(QUrl::fromLocalFile(file)); });
    panel->open();
}

std::string pathOfAddress(const std::string& address)
{
    return fromQt(QUrl(toQt(address)).toLocalFile());
}

} // namespace quorvane
