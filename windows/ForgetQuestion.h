#pragma once

#include "history/JournalVersion.h"

#include <cstdint>
#include <optional>
#include <vector>

class QString;
class QWidget;

namespace quorvane::windows {

// Asks which versions to forget: those older than the selected one, or all but the newest. Waits for the
// answer. Returns the first version to keep; none when nothing is to be forgotten.
std::optional<std::int64_t> askWhatToForget(QWidget& parent, const QString& historyName,
    const std::vector<history::JournalVersion>& versions, std::optional<std::int64_t> selected);

} // namespace quorvane::windows
