#include "windows/FilePanel.h"

#include "platform/PathComponents.h"
#include "windows/QtText.h"

#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QEvent>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

#include <climits>

namespace quorvane::windows {

namespace {

// Qt's panel chooses either files or folders. This one uses its folder mode, which shows files too, and
// accepts both; a double click on a folder still opens it.
class FileOrFolderPanel : public FilePanel {
    Q_DECLARE_TR_FUNCTIONS(quorvane::windows::FileOrFolderPanel)
public:
    FileOrFolderPanel(QWidget* parent, const QString& title)
        : FilePanel(parent, title)
    {
        setFileMode(QFileDialog::Directory);
        setLabelText(QFileDialog::FileName, tr("&Name:"));
        setLabelText(QFileDialog::Accept, tr("&Choose"));
        for (const char* control : {"fileTypeLabel", "fileTypeCombo"}) // there is only one type: any
            findChild<QWidget*>(QLatin1String(control))->hide();
        m_button = findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Open);
        m_button->installEventFilter(this);
        connect(
            &nameField(), &QLineEdit::textChanged, this, &FileOrFolderPanel::updateButton); // after Qt has
        resize(760, 480);
    }

    // The name in the field, else the selection, else the folder shown.
    QString chosenPath() const
    {
        const QString named = namedPath();
        return QFileInfo::exists(named) ? named : selectedFiles().value(0);
    }

    void accept() override
    {
        if (QFileInfo::exists(chosenPath()))
            QDialog::accept(); // NOLINT(bugprone-parent-virtual-call): the panel's own takes no file here
        else
            refuse(tr("There is no \u201c%1\u201d.").arg(nameField().text()));
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        // Qt disables the button for files, on many occasions.
        if (watched == m_button && event->type() == QEvent::EnabledChange && !m_button->isEnabled())
            updateButton();
        return FilePanel::eventFilter(watched, event);
    }

private:
    void updateButton() { m_button->setEnabled(QFileInfo::exists(chosenPath())); }

    QPushButton* m_button = nullptr;
};

} // namespace

FilePanel::FilePanel(QWidget* parent, const QString& title)
    : QFileDialog(parent, title)
{
    setOption(QFileDialog::DontUseNativeDialog); // a native panel has no accept() to override
    m_nameField = findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
}

QString FilePanel::namedPath() const
{
    const QString name = m_nameField->text();
    // The selection may be outside the folder shown.
    const QStringList selected = selectedFiles();
    if (selected.size() == 1 && QFileInfo(selected.first()).fileName() == name)
        return selected.first();
    if (name.startsWith(QLatin1String("~/")))
        return QDir::cleanPath(QDir::homePath() + name.mid(1));
    return name.isEmpty() ? QString() : QDir::cleanPath(directory().absoluteFilePath(name));
}

void FilePanel::enter(const QString& folder)
{
    setDirectory(folder);
    m_nameField->clear();
}

void FilePanel::refuse(const QString& reason)
{
    QMessageBox message(QMessageBox::Information, windowTitle(), reason, QMessageBox::Ok, this);
    message.setTextFormat(Qt::PlainText);
    message.exec();
}

QString folderForPanel(const std::string& startPath)
{
    // Nothing exists at a path of that length, and splitting it would take long.
    if (!startPath.starts_with('/') || startPath.size() >= PATH_MAX)
        return QDir::homePath();
    std::string folder = startPath;
    while (!QFileInfo(toQt(folder)).isDir() && folder != "/")
        folder = platform::deletingLastPathComponent(folder);
    return toQt(folder);
}

std::optional<std::string> chooseFileOrFolder(
    QWidget& parent, const QString& title, const std::string& startPath)
{
    // On the heap, since the parent may delete it.
    const QPointer<FileOrFolderPanel> panel = new FileOrFolderPanel(&parent, title);
    panel->setDirectory(folderForPanel(startPath));
    if (const QFileInfo start(toQt(startPath)); start.isAbsolute() && start.exists() && !start.isDir())
        panel->selectFile(start.absoluteFilePath());
    const bool confirmed = panel->exec() == QDialog::Accepted;
    if (panel.isNull())
        return std::nullopt;
    const QString chosen = panel->chosenPath();
    delete panel;
    if (!confirmed || chosen.isEmpty())
        return std::nullopt;
    const bool needsSlash = QFileInfo(chosen).isDir() && !chosen.endsWith(QLatin1Char('/'));
    return fromQt(needsSlash ? chosen + QLatin1Char('/') : chosen);
}

} // namespace quorvane::windows
