#pragma once

#include <QFileDialog>

#include <optional>
#include <string>

class QLineEdit;

namespace quorvane::windows {

// A file panel whose answer is what its name field names, whatever characters that holds: Qt's own answer
// takes quotation marks for several names.
class FilePanel : public QFileDialog {
    Q_OBJECT
public:
    FilePanel(QWidget* parent, const QString& title);

    // Absolute; empty when nothing is named.
    QString namedPath() const;

protected:
    QLineEdit& nameField() const { return *m_nameField; }
    // Shows a folder and goes on asking.
    void enter(const QString& folder);
    // Says why what is named will not do, and goes on asking.
    void refuse(const QString& reason);

private:
    QLineEdit* m_nameField;
};

// The folder that a panel opens in for `startPath`: that folder, else the nearest one above it that exists;
// the home folder when the path does not begin with "/".
QString folderForPanel(const std::string& startPath);

// Lets a person choose one file or folder of any kind in a panel over `parent`, which is told its title, and
// waits for the answer while windows go on being painted. A file at `startPath` is chosen beforehand. The
// path of a folder ends with "/". None when the panel was left, or when `parent` went away meanwhile.
std::optional<std::string> chooseFileOrFolder(
    QWidget& parent, const QString& title, const std::string& startPath);

} // namespace quorvane::windows
