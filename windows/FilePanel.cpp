#include "windows/FilePanel.h"

#include "platform/PathComponents.h"
#include "windows/QtText.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>

#include <climits> // PATH_MAX

namespace quorvane {

namespace {

// Qt's panel chooses either files or folders. Here its mode for folders, which shows files too, takes both;
// a double click on a folder still opens it.
class FileOrFolderPanel : public QFileDialog {
public:
    FileOrFolderPanel(QWidget* parent, const QString& title)
        : QFileDialog(parent, title)
    {
        setOption(QFileDialog::DontUseNativeDialog); // a native one has no accept() to ask
        setFileMode(QFileDialog::Directory);
        setLabelText(QFileDialog::FileName, tr("&Name:"));
        setLabelText(QFileDialog::Accept, tr("&Choose"));
        for (const char* control : {"fileTypeLabel", "fileTypeCombo"}) // there is but one: any
            findChild<QWidget*>(QLatin1String(control))->hide();
        m_name = findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        m_button = findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Open);
        m_button->installEventFilter(this);
        resize(760, 480);
    }

    // What is named, else what is selected, else the folder shown.
    QString chosenPath() const
    {
        const QString named = QDir::cleanPath(directory().absoluteFilePath(m_name->text()));
        return !m_name->text().isEmpty() && QFileInfo::exists(named) ? named : selectedFiles().value(0);
    }

    void accept() override
    {
        if (QFileInfo::exists(chosenPath()))
            QDialog::accept(); // NOLINT(bugprone-parent-virtual-call): the panel's own takes no file here
        else
            QFileDialog::accept(); // which tells that there is no such thing
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        // Qt takes the button away from files, at many occasions.
        if (watched == m_button && event->type() == QEvent::EnabledChange && !m_button->isEnabled())
            m_button->setEnabled(QFileInfo::exists(chosenPath()));
        return QFileDialog::eventFilter(watched, event);
    }

private:
    QLineEdit* m_name = nullptr;
    QPushButton* m_button = nullptr;
};

} // namespace

std::string pathFromPanel(const QUrl& url)
{
    QString path = url.toString(QUrl::FullyEncoded);
    path.remove(QStringLiteral("file://"));
    path.replace(QStringLiteral("%20"), QStringLiteral(" "));
    return fromQt(path);
}

QString folderForPanel(const std::string& startPath)
{
    // Nothing exists at a path of that length, and taking it apart would take long.
    if (!startPath.starts_with('/') || startPath.size() >= PATH_MAX)
        return QDir::homePath();
    std::string folder = startPath;
    while (!QFileInfo(toQt(folder)).isDir() && folder != "/")
        folder = deletingLastPathComponent(folder);
    return toQt(folder);
}

std::optional<QUrl> chooseFileOrFolder(QWidget& parent, const QString& title, const std::string& startPath)
{
    // On the heap, since the parent takes it along when it goes.
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
    return QUrl::fromLocalFile(needsSlash ? chosen + QLatin1Char('/') : chosen);
}

} // namespace quorvane
