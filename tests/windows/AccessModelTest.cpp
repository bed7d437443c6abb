#include "windows/AccessModel.h"

#include "rules/RuleCodes.h"
#include "tests/support/TestRules.h"
#include "tests/windows/ModelTitles.h"

#include <QAbstractItemModelTester>
#include <QTextDocument>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace quorvane::windows {

namespace {

using Rules = std::vector<rules::RuleRef>;

// Rules that deny a program a folder.
Rules rulesOf(const std::string& folder, const std::string& process, int count)
{
    Rules rules;
    for (int each = 0; each < count; ++each)
        rules.emplace_back(test::policyRule({.policyClass = rules::PolicyClass::deny,
            .policyType = rules::PolicyType::prefix,
            .path = folder,
            .processName = process,
            .operations = 1}));
    return rules;
}

class AccessModelTest : public testing::Test {
protected:
    void show(const std::vector<Rules>& rules, bool byProgram = false)
    {
        Rules all;
        for (const auto& each : rules)
            all.insert(all.end(), each.begin(), each.end());
        model.setTree(byProgram ? workflow::AccessTree::byProgram(all) : workflow::AccessTree::byFolder(all));
    }
    std::string text(const QModelIndex& index, int column) const
    {
        return index.siblingAtColumn(column).data().toString().toStdString();
    }
    std::string toolTip(const QModelIndex& index, int column) const
    {
        QTextDocument document;
        document.setHtml(index.siblingAtColumn(column).data(Qt::ToolTipRole).toString());
        return document.toPlainText().remove(QChar(0x200b)).toStdString();
    }
    QModelIndex top(int row) const { return model.index(row, 0); }

    AccessModel model;
};

} // namespace

TEST_F(AccessModelTest, KeepsTheRulesOfQtForModels)
{
    show({rulesOf("/a/", "/bin/sh", 1), rulesOf("/a/b/", "/bin/sh", 1), rulesOf("/c/", "/bin/sh", 1)});
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    EXPECT_EQ(model.rowCount(), 2);
    EXPECT_EQ(model.rowCount(top(0)), 1);
    EXPECT_EQ(model.rowCount(model.index(0, 1)), 0) << "below another column";
    EXPECT_EQ(model.index(0, 0, top(0)).parent(), top(0));
    EXPECT_FALSE(model.index(2, 0).isValid());
    EXPECT_EQ(model.indexOf(model.branchAt(top(1))), top(1));
    model.setTree(nullptr);
    EXPECT_EQ(model.rowCount(), 0);
    EXPECT_FALSE(model.data({}, Qt::DisplayRole).isValid());
}

TEST_F(AccessModelTest, NamesItsColumnsAndAlignsTheirTitlesLikeTheirCells)
{
    EXPECT_EQ(test::titlesOf(model), "Place|Rules|Allow|Deny|Watch|Programs|");
    show({rulesOf("/a/", "/bin/sh", 1)});
    for (int column = 0; column < model.columnCount(); ++column) {
        const bool isNumber
            = column == AccessModel::allow || column == AccessModel::deny || column == AccessModel::watch;
        const int expected
            = static_cast<int>((isNumber ? Qt::AlignHCenter : Qt::AlignLeft) | Qt::AlignVCenter);
        EXPECT_EQ(model.headerData(column, Qt::Horizontal, Qt::TextAlignmentRole).toInt(), expected)
            << column;
        EXPECT_EQ(model.index(0, column).data(Qt::TextAlignmentRole).toInt(), expected) << column;
    }
    EXPECT_FALSE(model.headerData(0, Qt::Horizontal, Qt::ToolTipRole).isValid());
    EXPECT_EQ(model.headerData(0, Qt::Vertical, Qt::DisplayRole).toInt(), 1) << "as Qt numbers rows";
}

TEST_F(AccessModelTest, NamesWhatIsNoFolder)
{
    Rules onEndings = rulesOf(".pem", "/bin/sh", 1);
    std::get<rules::PolicyRulePtr>(onEndings.front())->setPolicyType(rules::PolicyType::suffix);
    show({rulesOf("any", "", 1), onEndings});
    EXPECT_EQ(text(top(0), AccessModel::place), "Every path");
    EXPECT_EQ(text(top(0), AccessModel::programs), "no program");
    EXPECT_EQ(text(top(1), AccessModel::place), "Paths by their ending");
}

TEST_F(AccessModelTest, LeavesNoughtsOut)
{
    show({rulesOf("/a/", "/bin/sh", 2)});
    EXPECT_EQ(text(top(0), AccessModel::allow), "");
    EXPECT_EQ(text(top(0), AccessModel::deny), "2");
    EXPECT_EQ(text(top(0), AccessModel::watch), "");
    EXPECT_EQ(accessText({.allow = 1, .deny = 2, .watch = 3}).toStdString(), "1 allow, 2 deny, 3 watch");
    EXPECT_EQ(accessText({}).toStdString(), "");
}

TEST_F(AccessModelTest, NamesThreeProgramsAndCountsTheOthers)
{
    show({rulesOf("/a/", "/bin/one", 4), rulesOf("/a/", "/bin/two", 3), rulesOf("/a/", "/bin/three", 2),
        rulesOf("/a/", "/bin/four", 1), rulesOf("/b/", "/bin/one", 1), rulesOf("/b/", "/bin/two", 1),
        rulesOf("/b/", "/bin/three", 1)});
    EXPECT_EQ(text(top(0), AccessModel::programs), "one (4), two (3), three (2), 1 more");
    EXPECT_EQ(text(top(1), AccessModel::programs).find("more"), std::string::npos) << "there are three";
    EXPECT_EQ(
        toolTip(top(0), AccessModel::programs), "/bin/one (4), /bin/two (3), /bin/three (2), /bin/four");
}

TEST_F(AccessModelTest, NamesFortyProgramsInAToolTip)
{
    std::vector<Rules> rules;
    for (int program = 0; program < 41; ++program) {
        const std::string process = "/bin/" + std::to_string(program);
        rules.push_back(rulesOf("/a/", process, 1));
        if (program < 40)
            rules.push_back(rulesOf("/b/", process, 1));
    }
    show(rules);
    const std::string ofAll = toolTip(top(0), AccessModel::programs);
    EXPECT_EQ(std::count(ofAll.begin(), ofAll.end(), ','), 40);
    EXPECT_TRUE(ofAll.ends_with(", 1 more")) << ofAll;
    const std::string ofForty = toolTip(top(1), AccessModel::programs);
    EXPECT_EQ(std::count(ofForty.begin(), ofForty.end(), ','), 39);
    EXPECT_EQ(ofForty.find("more"), std::string::npos);
}

TEST_F(AccessModelTest, NamesTheProgramThatStartedAnother)
{
    show({rulesOf("/a/", "/bin/sh via /usr/bin/vi", 1), rulesOf("/b/", "", 1)});
    EXPECT_EQ(text(top(0), AccessModel::programs), "sh via vi");
    EXPECT_EQ(text(top(1), AccessModel::programs), "no program");
}

TEST_F(AccessModelTest, CallsPlacesThatAreNoFoldersByWhatTheyAre)
{
    show({rulesOf("/", "/bin/sh", 1), rulesOf("/b/", "", 1)}, true);
    EXPECT_EQ(text(top(0), AccessModel::place).empty(), false);
    std::string titles;
    for (int row = 0; row < model.rowCount(); ++row)
        titles += text(top(row), AccessModel::place) + "|";
    EXPECT_NE(titles.find("no program|"), std::string::npos) << titles;
    EXPECT_NE(titles.find("/bin/sh|"), std::string::npos) << titles;
}

TEST_F(AccessModelTest, CutsTextsBeyondFourThousandBytes)
{
    const std::string longest = "/" + std::string(3998, 'x') + "/";
    show({rulesOf(longest, "/bin/sh", 1)});
    EXPECT_EQ(text(top(0), AccessModel::place), longest);
    show({rulesOf("/" + longest, "/bin/sh", 1)});
    EXPECT_EQ(text(top(0), AccessModel::place), ("/" + longest).substr(0, 4000) + "\u2026");
}

TEST_F(AccessModelTest, SaysInAToolTipWhichFolderItIsAndWhatRulesItHas)
{
    show({rulesOf("/a/", "/bin/sh", 1), rulesOf("/a/b/", "/bin/sh", 2)});
    EXPECT_EQ(toolTip(model.index(0, 0, top(0)), AccessModel::place), "/a/b/\n2 deny");
    EXPECT_EQ(toolTip(top(0), AccessModel::bar), "/a/\n3 deny");
}

TEST_F(AccessModelTest, MeasuresBarsByTheLongestAmongSiblings)
{
    show({rulesOf("/a/", "/bin/sh", 4), rulesOf("/b/", "/bin/sh", 1), rulesOf("/b/c/", "/bin/sh", 1)});
    const auto deny = [](const QModelIndex& index) {
        return index.siblingAtColumn(AccessModel::bar)
            .data(AccessModel::sharesRole)
            .value<AccessShares>()
            .deny;
    };
    EXPECT_DOUBLE_EQ(deny(top(0)), 1);
    EXPECT_DOUBLE_EQ(deny(top(1)), 0.5);
    EXPECT_DOUBLE_EQ(deny(model.index(0, 0, top(1))), 1) << "it has no siblings";
    EXPECT_FALSE(top(0).data(AccessModel::sharesRole).isValid()) << "another column has no bar";
}

} // namespace quorvane::windows
