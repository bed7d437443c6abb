#pragma once

#include <QWidget>

#include <string>

class QLineEdit;

namespace quorvane::windows {

// A field for the path of a file or folder, which can be typed, chosen in a panel, or dropped from a file
// manager. User interface thread only.
class PathField : public QWidget {
    Q_OBJECT
public:
    // `name` names the purpose of the path, for the panel and for screen readers.
    explicit PathField(const QString& name, QWidget* parent = nullptr);

    std::string path() const;
    void setPath(const std::string& path);
    // For labels and hints.
    QLineEdit& field() const { return *m_field; }
    // Drops on `widget` count as drops here.
    void takeDropsOn(QWidget& widget);

Q_SIGNALS:
    void pathChanged();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void browse();

    const QString m_name;
    QLineEdit* m_field;
};

} // namespace quorvane::windows
