#pragma once

#include "workflow/DifferenceTable.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>

namespace quorvane::history {
class Journal;
}

namespace quorvane::workflow {

// A file with a history of versions, for a window that shows and restores them. User interface thread, except
// for openJournal() and compare(), which any thread may call.
class FileHistory {
public:
    FileHistory() = default;
    FileHistory(const FileHistory&) = delete;
    FileHistory& operator=(const FileHistory&) = delete;
    virtual ~FileHistory() = default;

    virtual std::string name() const = 0; // "Rules"
    virtual std::string file() const = 0; // the path
    virtual std::string exportName() const = 0; // suggested name for an exported version
    virtual bool canUndo() const = 0; // whether a restore can be undone

    virtual std::unique_ptr<history::Journal> openJournal() const = 0;

    // The difference between two contents. Null when it was stopped.
    virtual DifferenceTablePtr compare(
        const std::string& before, const std::string& after, const std::stop_token& stop) const = 0;

    // Records the current file as a version unless it is one already; possibly a little later.
    virtual void keepPresentVersion() = 0;

    // Restores a version, or begins to. Returns why that is impossible; none when it is not.
    virtual std::optional<std::string> restore(std::int64_t version) = 0;

    // Call it after versions were forgotten, which invalidates whatever depends on them.
    virtual void versionsWereForgotten() = 0;
};

} // namespace quorvane::workflow
