#pragma once

#include <QObject>

#include <string>
#include <vector>

class QWidget;

namespace quorvane::windows {

// Lets exchange files be dropped on a window, from a file manager, and text that holds rules, from wherever.
// Belongs to the window.
class ExchangeDrop : public QObject {
    Q_OBJECT
public:
    explicit ExchangeDrop(QWidget& window);

Q_SIGNALS:
    // The paths of the files, of which there is at least one. Emitted after the drop, whose source does not
    // wait.
    void filesWereDropped(const std::vector<std::string>& paths);
    // Likewise.
    void textWasDropped(const QString& text);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace quorvane::windows
