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

// What an editor held that was not saved.
struct KeptDraft {
    rules::RuleRef rule; // as it was when the editor opened; a record that no store holds
    workflow::RuleDraft draft;
};

// Drafts of rules that outlive the program, a file for each, readable for the user alone. At most 20 are
// kept, of all rules files together; the oldest goes for a new one. Failures are only logged. User interface
// thread only.
class KeptDrafts {
public:
    // Those of the rules file of this name. With an empty folder none are kept. `log` must outlive it.
    KeptDrafts(QString folder, std::string rulesFile, platform::Log& log);

    void keep(const KeptDraft& draft);
    // How many there are.
    std::size_t count() const;
    // All of them, the oldest first. They are kept no longer.
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
