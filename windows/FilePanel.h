#pragma once

#include <QFileDialog>

#include <optional>
#include <string>

class QLineEdit;

namespace quorvane::windows {

// A file panel whose result is the text of its name field, whatever characters it has: Qt's own result
// interprets quotation marks as several names. User interface thread only.
class FilePanel : public QFileDialog {
    Q_OBJECT
public:
    FilePanel(QWidget* parent, const QString& title);

    // Absolute; empty when the name field is empty.
    QString namedPath() const;

protected:
    QLineEdit& nameField() const { return *m_nameField; }
    // Shows a folder and keeps the panel open.
    void enter(const QString& folder);
    // Says why the name is not accepted, and keeps the panel open.
    void refuse(const QString& reason);

private:
    QLineEdit* m_nameField;
};

// The folder that a panel opens in for `startPath`: that folder, else the nearest existing one above it; the
// home folder when the path does not begin with "/".
QString folderForPanel(const std::string& startPath);

// Lets the user choose a file or folder of any kind in a panel over `parent`, titled `title`; waits in a
// local event loop. A file at `startPath` is preselected. The path of a folder ends with "/". None when it
// was cancelled, or when `parent` was deleted in the meantime.
std::optional<std::string> chooseFileOrFolder(
    QWidget& parent, const QString& title, const std::string& startPath);

} // namespace quorvane::windows
