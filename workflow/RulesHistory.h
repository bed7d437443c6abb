#pragma once

#include "workflow/FileHistory.h"

namespace quorvane::workflow {

class RulesDocument;

// The versions of the user's rules. Threads as FileHistory says.
class RulesHistory : public FileHistory {
public:
    // Must outlive it.
    explicit RulesHistory(RulesDocument& document);

    std::string name() const override;
    std::string file() const override;
    std::string exportName() const override;
    bool canUndo() const override { return true; }
    std::unique_ptr<history::Journal> openJournal() const override;
    DifferenceTablePtr compare(
        const std::string& before, const std::string& after, const std::stop_token& stop) const override;
    void keepPresentVersion() override;
    std::optional<std::string> restore(std::int64_t version) override;
    void versionsWereForgotten() override;

private:
    RulesDocument& m_document;
};

} // namespace quorvane::workflow
