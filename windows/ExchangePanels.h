#pragma once

#include <functional>
#include <optional>
#include <string>

class QString;
class QWidget;

namespace quorvane::windows {

// Lets the user choose an exchange file in a panel over `parent`, titled `title`; waits in a local event
// loop. The panel opens in `folder` and accepts one file of UTF-8 text whose name ends in ".quorv", ".QUORV"
// or ".Quorv"; for any other it says why not. None when it was cancelled, or when `parent` was deleted in the
// meantime.
std::optional<std::string> chooseExchangeFile(
    QWidget& parent, const QString& title, const std::string& folder);

// Shows a panel over `parent` that asks where to save a file, by default under `name` in the home folder, and
// returns at once. The file gets the suffix of `name`, or any of an exchange file when `name` has one: it is
// appended to other names. An existing file is replaced only after confirmation. `save` is called with the
// chosen path, but not when `parent` was deleted by then.
void showSavePanel(QWidget& parent, const QString& title, const std::string& name,
    const std::function<void(const std::string& path)>& save);

} // namespace quorvane::windows
