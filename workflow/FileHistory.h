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

// A file whose versions are kept, as a window shows them and brings them back. For the thread of the windows,
// but for openJournal() and compare(), which any thread may call.
class FileHistory {
public:
    FileHistory() = default;
    FileHistory(const FileHistory&) = delete;
    FileHistory& operator=(const FileHistory&) = delete;
    virtual ~FileHistory() = default;

    virtual std::string name() const = 0; // "Rules"
    virtual std::string file() const = 0; // the path
    virtual std::string exportName() const = 0; // of a file to export a version to
    virtual bool canUndo() const = 0; // whether an undo takes a restore back

    virtual std::unique_ptr<history::Journal> openJournal() const = 0;

    // What differs between two contents. May give up, and answer null, when that is asked for.
    virtual DifferenceTablePtr compare(
        const std::string& before, const std::string& after, const std::stop_token& stop) const = 0;

    // Makes the file as it is a version, unless it is one; possibly a little later.
    virtual void keepPresentVersion() = 0;

    // Brings a version back, or begins to. Returns why that cannot be.
    virtual std::optional<std::string> restore(std::int64_t version) = 0;

    // Versions were forgotten: what depends on them is void.
    virtual void versionsWereForgotten() = 0;
};

} // namespace quorvane::workflow
