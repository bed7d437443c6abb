#include "rules/RuleCodes.h"
#include "tests/pictures/KeptPicture.h"
#include "tests/pictures/KeptWords.h"
#include "tests/windows/EditorWindow.h"
#include "windows/EditPolicyWindowController.h"
#include "windows/EditWatchWindowController.h"
#include "workflow/RuleCommands.h"

#include <QFile>
#include <QSettings>

namespace quorvane::test {

namespace {

// Three editors of one kind: of a new rule, of a rule of the user and of one of the system.
class EditorPictures : public EditorWindow {
protected:
    EditorPictures()
    {
        QSettings().clear();
        std::filesystem::create_directories(locations.systemFolder());
        QFile::copy(QStringLiteral(":/images/lock@3x.png"), windows::toQt(locations.noticeIconFile()));
    }

    QImage pictureOfRule(const rules::RuleRef& rule)
    {
        open(rule);
        words += wordsOf(*editor);
        return pictureOf(*editor);
    }
    QImage pictureOfPolicy(rules::PolicyRuleFields fields)
    {
        return pictureOfRule(policyRule(std::move(fields)));
    }
    QImage pictureOfWatch(rules::WatchRuleFields fields)
    {
        return pictureOfRule(watchRule(std::move(fields)));
    }

    std::string words; // of the editors whose pictures were taken
};

} // namespace

TEST_F(EditorPictures, ShowANewPolicyRuleOneThatFailsAndOneOfTheSystem)
{
    const QImage ofNewRule = pictureOfRule(workflow::RuleCommands::newPolicy());
    const QImage ofFailingRule = pictureOfPolicy({.policyClass = rules::PolicyClass::deny,
        .policyType = rules::PolicyType::path,
        .path = "/nonexistent/letter.txt",
        .processName = "/nonexistent/Photo Tools.app/Contents/MacOS/Photo Tools",
        .constraint = "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855",
        .operations = 1 | 2});
    const QImage ofSystemRule = pictureOfPolicy({.policyType = rules::PolicyType::prefix,
        .path = "/usr/",
        .processName = "any",
        .operations = 1 | 16,
        .system = true});
    EXPECT_TRUE(looksAsKept("policy-editor", stacked({ofNewRule, ofFailingRule, ofSystemRule})));
    EXPECT_TRUE(readsAsKept("policy-editor", words));
}

TEST_F(EditorPictures, ShowANewWatchRuleOneOfTheUserAndOneOfTheSystem)
{
    const QImage ofNewRule = pictureOfRule(workflow::RuleCommands::newWatch());
    const QImage ofUserRule = pictureOfWatch({.policyType = rules::PolicyType::suffix,
        .path = ".pem",
        .processName = "/bin/sh via /bin/cat",
        .operations = 1 | 2});
    const QImage ofSystemRule = pictureOfWatch(
        {.policyType = rules::PolicyType::prefix, .path = "/usr/", .processName = "any", .system = true});
    EXPECT_TRUE(looksAsKept("watch-editor", stacked({ofNewRule, ofUserRule, ofSystemRule})));
    EXPECT_TRUE(readsAsKept("watch-editor", words));
}

} // namespace quorvane::test
