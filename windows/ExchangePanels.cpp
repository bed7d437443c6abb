#include "windows/ExchangePanels.h"

#include "platform/Account.h"
#include "platform/FileBytes.h"
#include "windows/FilePanel.h"
#include "windows/QtText.h"

#include <QCoreApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>

namespace quorvane::windows {

namespace {

QStringList exchangeTypes()
{
    return {QStringLiteral("quorv"), QStringLiteral("QUORV"), QStringLiteral("Quorv")};
}

bool isOfExchangeType(const QFileInfo& file)
{
    return exchangeTypes().contains(file.suffix());
}

class ExchangeFilePanel : public FilePanel {
    Q_DECLARE_TR_FUNCTIONS(quorvane::windows::ExchangeFilePanel)
public:
    ExchangeFilePanel(QWidget* parent, const QString& title)
        : FilePanel(parent, title)
    {
        setFileMode(QFileDialog::ExistingFile);
        setNameFilter(tr("Rules (*.%1)").arg(exchangeTypes().join(QStringLiteral(" *."))));
        setFilter(filter() | QDir::CaseSensitive);
    }

    void accept() override
    {
        const QFileInfo file(namedPath());
        if (file.isDir())
            enter(namedPath());
        else if (!file.exists())
            refuse(tr("There is no file \u201c%1\u201d.").arg(nameField().text()));
        else if (!isOfExchangeType(file)) // a name of any type can be typed
            refuse(tr("Please choose a file whose name ends in .%1.").arg(exchangeTypes().first()));
        else if (!platform::isTextAt(fromQt(namedPath())))
            refuse(tr("\u201c%1\u201d cannot be read, or is not UTF-8 text.").arg(file.fileName()));
        else
            QDialog::accept(); // NOLINT(bugprone-parent-virtual-call): the panel's own looks for other names
    }
};

class SavePanel : public FilePanel {
    Q_DECLARE_TR_FUNCTIONS(quorvane::windows::SavePanel)
public:
    // The chosen name gets one of the suffixes allowed for `name`.
    SavePanel(QWidget* parent, const QString& title, const QFileInfo& name)
        : FilePanel(parent, title)
        , m_endings(isOfExchangeType(name) ? exchangeTypes() : QStringList{name.suffix()})
    {
        setAcceptMode(QFileDialog::AcceptSave);
    }

    void accept() override
    {
        const QString named = namedPath();
        if (named.isEmpty())
            return;
        if (QFileInfo(named).isDir())
            return enter(named);
        if (!m_endings.contains(QFileInfo(named).suffix()))
            nameField().setText(nameField().text() + QLatin1Char('.') + m_endings.first());
        const QFileInfo destination(namedPath());
        if (destination.isDir() || !destination.dir().exists())
            refuse(tr("No file can be saved as \u201c%1\u201d.").arg(namedPath()));
        else if (!destination.exists() || mayReplace(destination.fileName()))
            QDialog::accept(); // NOLINT(bugprone-parent-virtual-call): the panel's own looks for other names
    }

private:
    bool mayReplace(const QString& name)
    {
        QMessageBox question(QMessageBox::Warning, windowTitle(),
            tr("\u201c%1\u201d already exists.\nDo you want to replace it?").arg(name),
            QMessageBox::Yes | QMessageBox::No, this);
        question.setTextFormat(Qt::PlainText);
        question.setDefaultButton(QMessageBox::No);
        return question.exec() == QMessageBox::Yes;
    }

    const QStringList m_endings;
};

} // namespace

std::optional<std::string> chooseExchangeFile(
    QWidget& parent, const QString& title, const std::string& folder)
{
    // On the heap, since the parent may delete it.
    const QPointer<ExchangeFilePanel> panel = new ExchangeFilePanel(&parent, title);
    panel->setDirectory(folderForPanel(folder));
    const bool confirmed = panel->exec() == QDialog::Accepted;
    if (panel.isNull())
        return std::nullopt;
    const std::string chosen = fromQt(panel->namedPath());
    delete panel;
    return confirmed ? std::optional(chosen) : std::nullopt;
}

void showSavePanel(QWidget& parent, const QString& title, const std::string& name,
    const std::function<void(const std::string& path)>& save)
{
    auto* panel = new SavePanel(&parent, title, QFileInfo(toQt(name)));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setDirectory(toQt(platform::homeDirectory()));
    panel->selectFile(toQt(name));
    QObject::connect(panel, &QDialog::accepted, &parent, [panel, save] { save(fromQt(panel->namedPath())); });
    panel->open();
}

} // namespace quorvane::windows
