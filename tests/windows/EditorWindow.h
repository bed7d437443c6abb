#pragma once

#include "desktop/Workspace.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestDocument.h"
#include "tests/support/TestRules.h"
#include "windows/EditPolicyWindowController.h"
#include "windows/EditWatchWindowController.h"
#include "windows/QtText.h"
#include "workflow/RuleEditorDelegate.h"
#include "workflow/RuleEdits.h"
#include "workflow/RunState.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>

namespace quorvane::test {

// Counts what it is told.
class CountingDelegate : public workflow::RuleEditorDelegate {
public:
    void reloadData() override { ++reloads; }
    int reloads = 0;
};

// An editor of either kind as a person sees it. Its controls are found by their names.
class EditorWindow : public testing::Test {
protected:
    EditorWindow() { std::filesystem::create_directories(locations.sharedFolder()); }
    ~EditorWindow() override
    {
        for (const auto& opened : m_opened)
            delete opened.data();
    }

    template <class Child> static Child* in(const QWidget& window, const char* name)
    {
        auto* child = window.findChild<Child*>(QLatin1String(name));
        EXPECT_NE(child, nullptr) << name;
        return child;
    }
    QLineEdit* field(const char* name) const { return in<QLineEdit>(*editor, name); }
    QPushButton* button(const char* name) const { return in<QPushButton>(*editor, name); }
    QComboBox* popUp(const char* name) const { return in<QComboBox>(*editor, name); }
    QLabel* label(const char* name) const { return in<QLabel>(*editor, name); }
    QCheckBox* box(const char* name) const { return in<QCheckBox>(*editor, name); }
    std::string text(const char* name) const { return windows::fromQt(field(name)->text()); }
    bool canSave() const { return button("saveButton")->isEnabled(); }

    // Types over what the field holds.
    void type(const char* name, const char* text) const
    {
        field(name)->setFocus();
        field(name)->selectAll();
        if (*text == '\0')
            QTest::keyClick(field(name), Qt::Key_Delete);
        else
            QTest::keyClicks(field(name), QLatin1String(text));
    }
    void click(const char* name) const { QTest::mouseClick(button(name), Qt::LeftButton); }

    // Opens the editor of its kind and makes it the one that the other operations are about.
    void open(const rules::RuleRef& rule)
    {
        if (const auto* policy = std::get_if<rules::PolicyRulePtr>(&rule)) {
            auto* window = new windows::EditPolicyWindowController(document, workspace, log.log());
            window->setPolicyRule(*policy);
            editor = window;
        } else {
            auto* window = new windows::EditWatchWindowController(document, workspace, log.log());
            window->setWatchRule(std::get<rules::WatchRulePtr>(rule));
            editor = window;
        }
        m_opened.emplace_back(editor);
        editor->setDelegate(&delegate);
        editor->show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(editor));
    }
    // Stores the rule and opens its editor.
    void openStored(const rules::RuleRef& rule)
    {
        store.apply(workflow::additionOf(rule));
        open(rule);
    }

    // Clicks the button, and answers the panel that it opens.
    void answerPanel(const char* name, const std::function<void(QFileDialog&)>& answer)
    {
        bool answered = false;
        QTimer::singleShot(0, editor, [&] {
            auto* panel = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(panel, nullptr);
            answered = true;
            answer(*panel);
            if (panel->isVisible())
                panel->reject();
        });
        click(name);
        EXPECT_TRUE(answered);
    }
    // Clicks the button and chooses `path` in the panel.
    void choose(const char* name, const std::string& path)
    {
        answerPanel(name, [&](QFileDialog& panel) {
            in<QLineEdit>(panel, "fileNameEdit")->setText(windows::toQt(path));
            QMetaObject::invokeMethod(&panel, "accept");
        });
    }

    std::string file() const { return TemporaryFolder::contents(locations.userRulesFile()); }

    const TemporaryFolder folder;
    const platform::Locations locations{folder.path(), "ann"};
    CapturedLog log;
    rules::RuleManager store{locations, silentLog()};
    desktop::Workspace workspace;
    workflow::RunState run;
    TestDocument document{store, run, log.log()};
    CountingDelegate delegate;
    QPointer<windows::RuleEditorWindow> editor;

private:
    std::vector<QPointer<windows::RuleEditorWindow>> m_opened;
};

} // namespace quorvane::test
