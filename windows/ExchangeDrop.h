#pragma once

#include <QObject>

#include <string>
#include <vector>

class QWidget;

namespace quorvane::windows {

// Accepts exchange files dropped on a window from a file manager, and text with rules from anywhere. Owned by
// the window. User interface thread only.
class ExchangeDrop : public QObject {
    Q_OBJECT
public:
    explicit ExchangeDrop(QWidget& window);

Q_SIGNALS:
    // The paths of the files, at least one. Emitted after the drop has completed, so that its source does not
    // wait.
    void filesWereDropped(const std::vector<std::string>& paths);
    // Likewise.
    void textWasDropped(const QString& text);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace quorvane::windows
