#pragma once

#include <QUrl>

#include <functional>
#include <optional>
#include <string>

class QString;
class QWidget;

namespace quorvane {

// Lets a person choose an exchange file in a panel over `parent`, titled `title`, and waits for the answer
// while windows go on being painted. The panel opens in `folder` and takes one file whose name ends in
// ".quorv", ".QUORV" or ".Quorv". None when it was left, or when `parent` went away meanwhile.
std::optional<QUrl> chooseExchangeFile(QWidget& parent, const QString& title, const std::string& folder);

// Shows a panel over `parent` that asks where to save a file, by default under `name` in the home folder, and
// returns at once. `save` is called when the person has chosen, and never when `parent` is gone by then.
void showSavePanel(QWidget& parent, const QString& title, const std::string& name,
    const std::function<void(const QUrl& destination)>& save);

// The path of the file with this address, in which only spaces of the path are escaped.
std::string pathOfAddress(const std::string& address);

} // namespace quorvane
