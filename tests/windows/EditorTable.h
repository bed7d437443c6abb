#pragma once

#include "tests/rules/StoreSandbox.h"
#include "tests/support/TestDocument.h"
#include "tests/windows/TableWindow.h"
#include "windows/FootNotices.h"
#include "windows/RulesEditorTableController.h"
#include "workflow/RuleCells.h"

#include <QAbstractButton>
#include <QLineEdit>

#include <memory>
#include <string>

namespace quorvane::test {

inline const std::string watchLine = "watch prefix \"/w/\" \"/bin/sh\" r \"seen\"\n";
inline const std::string firstLine = "allow prefix \"/a/\" \"/bin/sh\" r \"one\" \"\" \"7\"\n";
inline const std::string secondLine = "allow prefix \"/b/\" \"/bin/sh\" r \"two\" \"\" \"0\"\n";
inline const std::string viLine = "deny path \"/c\" \"/bin/vi\" w \"\" \"TEAM\" \"0\"\n";

// The main window on a sandbox with rules of the user, and its rules file.
class EditorTable : public TableWindow<windows::RulesEditorTableController, workflow::RuleColumn> {
protected:
    ~EditorTable() override { window.reset(); } // before the document

    // Journals are in `stateFolder`, in one of the document's own when it is empty.
    void open(const std::string& userRules, const std::string& stateFolder = {})
    {
        box.writeUserRules(userRules);
        openAgain(stateFolder);
    }
    // As the next run of the program does.
    void openAgain(const std::string& stateFolder)
    {
        window.reset();
        document.reset();
        store = box.load();
        document = std::make_unique<TestDocument>(*store, run, log.log(), stateFolder);
        window = std::make_unique<windows::RulesEditorTableController>(
            *document, application, run, workspace, log.log());
        show();
    }

    std::string file() const { return TemporaryFolder::contents(box.locations.userRulesFile()); }
    QString notice() const
    {
        const auto* shown = in<windows::FootNotices>("notices");
        return shown->count() == 0 ? QString() : shown->findChild<QLabel*>()->text();
    }
    // The first visible button of that title below `parent`; null when there is none.
    static QAbstractButton* button(const QWidget& parent, const QString& title)
    {
        for (auto* each : parent.findChildren<QAbstractButton*>()) {
            if (each->text() == title && each->isVisible())
                return each;
        }
        return nullptr;
    }

    StoreSandbox box;
    std::unique_ptr<rules::RuleManager> store;
    std::unique_ptr<TestDocument> document;
};

} // namespace quorvane::test
