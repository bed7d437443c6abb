#pragma once

#include "workflow/RuleDraft.h"

#include <QString>
#include <QStringList>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace quorvane::platform {
class Log;
}

namespace quorvane::windows {

// The unsaved contents of an editor.
struct KeptDraft {
    rules::RuleRef rule; // as it was when the editor opened; a record that is in no store
    workflow::RuleDraft draft;
};

// Drafts of rules that outlive the program, one file each, readable only for the user. At most 20 are stored,
// of all rules files together; a new one replaces the oldest. Failures are only logged. User interface thread
// only.
class KeptDrafts {
public:
    // For the rules file of this name. With an empty folder nothing is stored. `log` must outlive it.
    KeptDrafts(QString folder, std::string rulesFile, platform::Log& log);

    void keep(const KeptDraft& draft);
    // How many there are.
    std::size_t count() const;
    // Returns all of them, oldest first, and removes their files.
    std::vector<KeptDraft> take();

private:
    bool makeFolder() const;
    void makeRoom() const;
    QStringList files() const;
    std::vector<std::pair<QString, KeptDraft>> readAll() const;

    const QString m_folder;
    const QString m_rulesFile;
    platform::Log& m_log;
};

} // namespace quorvane::windows
