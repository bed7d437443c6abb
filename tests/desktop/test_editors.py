import os

from desk import ACTIVE, CHECKED, ENABLED, FOCUSED, eventually, settled
from rules_window import PATH, DesktopTest
from sandbox import read

RULE = 'allow path "/a" "/bin/sh" r "mine" "" "0"'
WATCH = 'watch prefix "/w/" "any" r "seen"'


class Editors(DesktopTest):
    def open_editor(self, row, title):
        """Double clicks a row; returns the window that opens for it."""
        x, y = self.window.table.cell(row, PATH).center
        self.desk.hands("mousemove", x, y, "click", "--repeat", "2", "--delay", "60", "1")
        return self.dialog(title)

    def dialog(self, title):
        editor = self.window.program.find("dialog", title)
        eventually(lambda: editor.has(ACTIVE), "the window to become active")
        settled(lambda: editor.box)
        return editor

    def focus(self, editor, name):
        """Focuses a text field by a click at the start of its text."""
        x, y, _, height = editor.find("text", name).box
        self.desk.click(x + 8, y + height // 2)
        eventually(lambda: editor.find("text", name).has(FOCUSED), f"the keyboard to be in {name}")

    def retype(self, editor, name, text):
        self.focus(editor, name)
        self.desk.press("ctrl+a")
        self.desk.type_text(text)
        self.assert_becomes(lambda: editor.find("text", name).text, text)

    def type_of(self, editor):
        return next(node.name for node in editor.below() if node.role == "combo box" and node.labels() == ["Type"])

    def assert_gone(self, title):
        eventually(lambda: self.window.program.find_now("dialog", title) is None, f"{title} to go away")

    def assert_file(self, *lines):
        self.assert_becomes(lambda: read(self.sandbox.user_file).decode(), "".join(line + "\n" for line in lines))

    def test_return_saves_what_the_keyboard_has_changed(self):
        self.window = self.open_with(RULE, WATCH)
        editor = self.open_editor(1, "sh")
        self.retype(editor, "Path", "/b/")
        self.assert_becomes(lambda: self.type_of(editor).split(":")[0], "Prefix")
        self.desk.press("alt+o")
        self.assert_becomes(lambda: editor.find("text", "Program").has(FOCUSED), True)
        self.desk.press("ctrl+a")
        self.desk.type_text("any")
        self.desk.press("alt+w")
        self.assert_becomes(lambda: editor.find("check box", "Write").has(CHECKED), True)
        self.desk.press("alt+c", "Down")
        self.desk.press("alt+p", "Return")
        self.assert_gone("sh")
        self.assert_file(WATCH, 'deny prefix "/b/" "any" rw "mine" "" "0"')
        self.assert_becomes(lambda: self.window.column(PATH), ["/w/", "/b/"])
        self.assertIn("-[EditPolicyWindowController saveClicked:]", self.log())

    def test_a_watch_rule_opens_in_an_editor_of_its_own(self):
        self.window = self.open_with(RULE, WATCH)
        editor = self.open_editor(0, "Watch Rule")
        self.retype(editor, "Path", ".jpg")
        self.desk.press("Return")
        self.assert_gone("Watch Rule")
        self.assert_file('watch suffix ".jpg" "any" r "seen"', RULE)

    def test_escape_changes_nothing(self):
        self.window = self.open_with(RULE)
        editor = self.open_editor(0, "sh")
        self.retype(editor, "Path", "/typed")
        self.desk.press("Escape")
        self.assert_gone("sh")
        self.assert_file(RULE)
        self.assertEqual(self.window.column(PATH), ["/a"])
        self.assertIn("-[EditPolicyWindowController cancelClicked:]", self.log())

    def test_the_keyboard_is_in_the_path_and_an_incomplete_rule_is_not_saved(self):
        self.window = self.open_with(RULE)
        editor = self.open_editor(0, "sh")
        self.assert_becomes(lambda: editor.find("text", "Path").has(FOCUSED), True)
        self.desk.press("ctrl+a", "Delete", "Return")
        self.assert_becomes(lambda: editor.find("push button", "Save").has(ENABLED), False)
        self.desk.type_text("/c")
        self.assert_becomes(lambda: editor.find("push button", "Save").has(ENABLED), True)
        self.desk.press("Return")
        self.assert_file(RULE.replace("/a", "/c"))

    def test_the_constraint_goes_by_the_name_of_its_kind(self):
        self.window = self.open_with(RULE)
        editor = self.open_editor(0, "sh")
        self.retype(editor, "Team ID", "a" * 39)
        self.desk.type_text("a")
        self.assertEqual(editor.find("text", "SHA1").text, "a" * 40)

    def test_a_system_rule_can_be_looked_at_only(self):
        self.sandbox.write_system("quorvane.rc", "watch path /system any r")
        self.window = self.open()
        self.desk.press("ctrl+shift+h")
        self.assert_becomes(lambda: self.window.table.rows, 1)
        editor = self.open_editor(0, "Watch Rule")
        self.assertIsNone(editor.find_now("push button", "Save"))
        self.assertFalse(editor.find("check box", "Read").has(ENABLED))
        self.assertFalse(editor.find("push button", "Browse for the path").has(ENABLED))
        self.focus(editor, "Path")
        self.desk.type_text("typed")
        self.desk.press("Return")
        self.assert_gone("Watch Rule")
        self.assertFalse(os.path.exists(self.sandbox.user_file))

    def test_a_folder_with_a_space_is_picked_as_it_is_called(self):
        folder = self.sandbox.path("two words")
        os.makedirs(os.path.join(folder, "inner"))
        self.window = self.open_with(RULE.replace("/a", self.sandbox.path("two words")))
        editor = self.open_editor(0, "sh")
        self.desk.press("alt+b")
        panel = self.dialog("Use Path")
        self.desk.click(*panel.find("tree item", "inner").center)
        self.desk.click(*panel.find("push button", "Choose").center)
        self.assert_gone("Use Path")
        self.assert_becomes(lambda: editor.find("text", "Path").text, folder + "/inner/")
        self.assertEqual(self.type_of(editor).split(":")[0], "Prefix")

    def test_two_editors_of_one_rule_leave_one_rule_and_the_last_save_wins(self):
        self.window = self.open_with(RULE)
        first = self.open_editor(0, "sh")
        self.retype(first, "Path", "/first")
        x, y = self.window.table.cell(0, PATH).center
        self.desk.hands("mousemove", x, y, "click", "--repeat", "2", "--delay", "60", "1")
        second = eventually(lambda: next((node for node in self.window.program.children() if node.role == "dialog"
                                          and node != first and node.has(ACTIVE)), None), "the second editor")
        settled(lambda: second.box)
        self.retype(second, "Path", "/second")
        self.desk.press("Return")
        self.assert_file(RULE.replace("/a", "/second"))
        self.focus(first, "Path")
        self.desk.press("Return")
        self.assert_file(RULE.replace("/a", "/first"))
        self.assert_becomes(lambda: self.window.column(PATH), ["/first"])
