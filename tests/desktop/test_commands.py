"""Rules are deleted, tagged and opened from the table, with mouse and keyboard; the file is right after each step."""

import os

from desk import ENABLED, FOCUSED, SELECTED, eventually
from rules_window import PATH, TAG, DesktopTest
from sandbox import read, text_of

WATCH = 'watch prefix "/w/" "/bin/sh" r "seen"'
SH_A = 'allow prefix "/a/" "/bin/sh" r "one" "" "0"'
SH_B = 'allow prefix "/b/" "/bin/sh" r "two" "" "0"'
VI = 'deny path "/c" "/bin/vi" w "" "TEAM" "0"'


class Commands(DesktopTest):
    def setUp(self):
        super().setUp()
        self.sandbox.write_system("quorvane.rc", 'allow prefix "/system/" "/usr/bin/zip" r')
        self.window = self.open_with(WATCH, SH_A, SH_B, VI)

    def assert_file(self, *lines):
        self.assert_becomes(lambda: read(self.sandbox.user_file), text_of(lines))

    def dialog(self, title):
        return self.window.program.find("dialog", title)

    def choose_from_context_menu(self, row, *keys):
        before = self.shown_windows()
        x, y = self.window.table.cell(row, PATH).center
        self.desk.hands("mousemove", x, y, "click", 3)
        # The menu is in no window's accessibility tree.
        eventually(lambda: self.shown_windows() > before, "the menu")
        self.assertTrue(self.window.table.cell(row, PATH).has(SELECTED))
        self.desk.press(*keys)

    def shown_windows(self):
        return set(self.desk.hands("search", "--onlyvisible", "--pid", self.window.process.pid).split())

    def edit_tag(self, row, *keys, text):
        self.window.click_row(row)
        self.desk.press("F2", "ctrl+a")
        self.desk.type_text(text)
        for key in keys:
            self.desk.press(key)

    def test_the_delete_key_deletes_what_is_selected(self):
        self.window.click_row(1)
        self.desk.press("shift+Down", "Delete")
        self.assert_file(WATCH, VI)
        self.assert_becomes(lambda: self.window.column(PATH), ["/w/", "/c"])

    def test_one_rule_after_another_can_be_deleted_from_the_keyboard(self):
        self.window.click_row(1)
        self.desk.press("Delete", "Down", "Delete")
        self.assert_becomes(lambda: self.window.table.rows, 2)

    def test_the_tool_bar_deletes(self):
        button = self.window.frame.find("push button", "Delete")
        self.assertFalse(button.has(ENABLED))
        self.window.click_row(3)
        eventually(lambda: button.has(ENABLED), "the button to be enabled")
        self.desk.click(*button.center)
        self.assert_file(WATCH, SH_A, SH_B)

    def test_the_edit_menu_deletes(self):
        self.window.click_row(0)
        self.desk.press("alt+e", "d")
        self.assert_file(SH_A, SH_B, VI)

    def test_the_context_menu_deletes_the_clicked_rule_and_no_other(self):
        self.window.click_row(1)
        self.choose_from_context_menu(2, "Up", "Return")
        self.assert_file(WATCH, SH_A, VI)

    def test_the_context_menu_edits_a_watch_rule(self):
        self.choose_from_context_menu(0, "Down", "Down", "Return")
        self.assertEqual(self.dialog("Watch Rule").name, "Watch Rule")

    def test_the_context_menu_makes_a_rule_for_the_same_program(self):
        self.choose_from_context_menu(3, "Down", "Return")
        self.dialog("vi")
        self.desk.type_text("/new")
        self.desk.press("Return")
        self.assert_file(WATCH, SH_A, SH_B, VI, 'allow path "/new" "/bin/vi" rwc "" "TEAM" "0"')
        self.assert_becomes(self.window.selected, ["/new"])

    def test_system_rules_in_a_selection_are_kept_and_told_of(self):
        self.desk.press("ctrl+shift+h")
        self.assert_becomes(lambda: self.window.table.rows, 5)
        self.desk.press("ctrl+a", "Delete")
        self.dialog("Cannot Delete System Rules")
        self.assert_file()
        self.assert_becomes(lambda: self.window.column(PATH), ["/system/"])

    def test_a_new_rule_is_made_from_the_keyboard(self):
        self.desk.press("ctrl+n")
        self.dialog("Any Process")
        self.desk.type_text("/n/")
        self.desk.press("Return")
        self.assert_file(WATCH, 'allow prefix "/n/" "any" rwc "" "" "0"', SH_A, SH_B, VI)
        self.assert_becomes(self.window.selected, ["/n/"])

    def test_a_new_watch_rule_is_made_from_the_keyboard(self):
        self.desk.press("ctrl+shift+n")
        self.dialog("Watch Rule")
        self.desk.type_text(".pem")
        self.desk.press("Return")
        self.assert_file(WATCH, 'watch suffix ".pem" "any" rwc ""', SH_A, SH_B, VI)

    def test_a_double_click_opens_a_system_rule_to_be_looked_at(self):
        self.desk.press("ctrl+shift+h")
        self.assert_becomes(lambda: self.window.table.rows, 5)
        row = self.window.column(PATH).index("/system/")
        x, y = self.window.table.cell(row, PATH).center
        self.desk.hands("mousemove", x, y, "click", "--repeat", 2, "--delay", 60, 1)
        dialog = self.dialog("zip")
        self.assertIsNone(dialog.find_now("push button", "Save"))

    def test_a_tag_is_typed_in_place(self):
        self.edit_tag(1, "Return", text="work 2")
        self.assert_file(WATCH, SH_A.replace("one", "work 2"), SH_B, VI)
        self.assertEqual(self.window.column(TAG), ["seen", "work 2", "two", ""])
        self.assertIsNone(self.window.program.find_now("dialog"))

    def test_a_tag_is_typed_on_while_somebody_else_changes_the_file(self):
        self.edit_tag(3, text="mi")
        self.sandbox.write_user(WATCH, SH_B, VI)
        seconds = 1_700_000_000  # the program compares whole seconds; the first may be its time at the start

        def rows():
            nonlocal seconds
            seconds += 1
            os.utime(self.sandbox.user_file, (seconds, seconds))
            return self.window.table.rows
        self.assert_becomes(rows, 3)
        self.desk.type_text("ne")
        self.desk.press("Return")
        self.assert_file(WATCH, SH_B, VI.replace('w ""', 'w "mine"'))

    def test_escape_leaves_a_tag_as_it_was(self):
        self.edit_tag(1, "Escape", text="gone")
        self.assert_becomes(lambda: self.window.column(TAG), ["seen", "one", "two", ""])
        self.assert_file(WATCH, SH_A, SH_B, VI)

    def test_a_tag_is_kept_when_the_keyboard_leaves_its_cell(self):
        self.edit_tag(0, text="left")
        self.window.click_row(3)
        self.assert_file(WATCH.replace("seen", "left"), SH_A, SH_B, VI)

    def test_a_tag_is_edited_by_a_second_click_on_it(self):
        self.window.click_row(2)
        self.assert_becomes(self.window.selected, ["/b/"])
        self.desk.click(*self.window.table.cell(2, TAG).center)
        # The click becomes an edit when no second one has made it a double click.
        eventually(lambda: not self.window.table.has(FOCUSED), "the field of the tag")
        self.desk.press("ctrl+a")
        self.desk.type_text("slow")
        self.desk.press("Return")
        self.assert_file(WATCH, SH_A, SH_B.replace("two", "slow"), VI)

    def test_a_file_that_cannot_be_written_is_told_of_and_no_rule_is_lost(self):
        os.remove(self.sandbox.user_file)
        os.mkdir(self.sandbox.user_file)
        self.window.click_row(1)
        self.desk.press("Delete")
        eventually(lambda: any(node.role == "label" and node.name.startswith("Failed to open file")
                               for node in self.window.frame.below()), "the message")
        os.rmdir(self.sandbox.user_file)
        self.window.click_row(0)
        self.desk.press("Delete")
        self.assert_file(SH_B, VI)
