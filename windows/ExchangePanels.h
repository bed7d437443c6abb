#pragma once

#include <functional>
#include <optional>
#include <string>

class QString;
class QWidget;

namespace quorvane::windows {

// The path of an exchange file that a person chooses in a panel over `parent`, titled `title`; waits for the
// answer while windows go on being painted. The panel opens in `folder` and takes one file of UTF-8 text
// whose name ends in ".quorv", ".QUORV" or ".Quorv"; of any other it says why not. None when it was left, or
// when `parent` went away meanwhile.
std::optional<std::string> chooseExchangeFile(
    QWidget& parent, const QString& title, const std::string& folder);

// Shows a panel over `parent` that asks where to save a file, by default under `name` in the home folder, and
// returns at once. What is saved ends like `name`, or as any exchange file does when `name` is one: another
// name gets that ending. What exists is replaced only when the person says so. `save` is called with the path
// that has been chosen, and never when `parent` is gone by then.
void showSavePanel(QWidget& parent, const QString& title, const std::string& name,
    const std::function<void(const std::string& path)>& save);

} // namespace quorvane::windows
