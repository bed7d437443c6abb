"""Versions are looked at, brought back and forgotten in the history window, and settings changed, with mouse and keyboard."""

import os
import subprocess

from desk import ACTIVE, CHECKED, ENABLED, FOCUSED, PATIENCE, SELECTED, eventually
from rules_window import DesktopTest
from sandbox import read, text_of

COMMAND = os.path.join(os.path.dirname(os.environ["QUORVANE_PROGRAM"]), "quorvanectl")
A, B, C = ('allow prefix "/%s/" "/bin/sh" r "" "" "0"' % name for name in "abc")
NUMBER, TIME, ACTION, WHO, RULES, ADDED, REMOVED = range(7)


class WithDialogs(DesktopTest):
    def setUp(self):
        super().setUp()
        self.window = self.open_with(A, B, C)

    def dialog(self, title):
        dialog = self.window.program.find("dialog", title)
        eventually(lambda: dialog.has(ACTIVE), f"{title} to become active")
        return dialog

    def click(self, node):
        eventually(lambda: node.has(ENABLED), f"{node.name} to be enabled")
        self.desk.click(*node.center)

    def assert_file(self, *lines):
        self.assert_becomes(lambda: read(self.sandbox.user_file), text_of(lines))


class History(WithDialogs):
    def setUp(self):
        super().setUp()
        for path, left in (("/b/", [A, C]), ("/c/", [A])):
            self.window.click_row(1)
            self.desk.press("Delete")
            self.assert_file(*left)

    def open_history(self):
        self.desk.press("ctrl+h")
        self.history = self.dialog("History")
        self.versions = self.history.find("table", "Versions")
        self.assert_becomes(lambda: self.cells(NUMBER), ["3", "2", "1"])

    def cells(self, column):
        return [self.versions.cell(row, column).name for row in range(self.versions.rows)]

    def changes(self):
        table = self.history.find("table", "Changes of the version")
        return [" ".join(table.cell(row, column).name for column in range(table.columns)) for row in range(table.rows)]

    def select(self, row):
        self.desk.click(*self.versions.cell(row, ACTION).center)
        eventually(lambda: self.versions.cell(row, ACTION).has(SELECTED), "the version to be selected")

    def test_opens_from_the_keyboard_with_every_version_and_what_it_did(self):
        self.open_history()
        self.assertEqual(self.cells(ACTION)[:2], ["Delete Rule", "Delete Rule"])
        self.assertEqual([self.cells(column) for column in (RULES, REMOVED)], [["1", "2", "3"], ["\u22121", "\u22121", ""]])
        self.assertTrue(self.versions.has(FOCUSED))
        self.assert_becomes(lambda: ["/c/" in change for change in self.changes()], [True])
        self.desk.press("Down")
        self.assert_becomes(lambda: ["/b/" in change for change in self.changes()], [True])

    def test_counts_under_the_name_of_what_is_counted(self):
        self.open_history()
        titles = [self.versions.child(column).name for column in range(self.versions.columns + 1)]
        self.assertIn("Rules", titles)
        self.assertNotIn("Size", titles)

    def test_restore_brings_the_bytes_of_a_version_back(self):
        self.open_history()
        self.select(2)
        self.click(self.history.find("push button", "Restore"))
        self.assert_file(A, B, C)
        self.assert_becomes(lambda: self.cells(ACTION)[0], "Restore Version 1")
        self.assert_becomes(lambda: self.window.table.rows, 3)

    def test_forget_keeps_the_newest_version_alone(self):
        self.open_history()
        self.click(self.history.find("push button", "Forget..."))
        question = self.window.program.find("alert message", "Forget Versions")
        eventually(lambda: question.has(ACTIVE), "the question to become active")
        self.desk.press("alt+a")
        self.assert_becomes(lambda: self.cells(NUMBER), ["3"])
        self.assert_file(A)

    def test_forget_asks_first(self):
        self.open_history()
        self.click(self.history.find("push button", "Forget..."))
        question = self.window.program.find("alert message", "Forget Versions")
        eventually(lambda: question.has(ACTIVE), "the question to become active")
        self.desk.press("Return")
        eventually(lambda: self.window.program.find_now("alert message") is None, "the question to go away")
        self.assertEqual(self.cells(NUMBER), ["3", "2", "1"])

    def test_shows_what_another_program_does_while_it_is_open(self):
        self.open_history()
        subprocess.run([COMMAND, "add", "allow", "prefix", "/d/", "any", "r"], check=True, timeout=PATIENCE,
                       env={**self.desk.environment, "HOME": self.sandbox.home, "QUORVANE_ROOT": self.sandbox.root,
                            "XDG_CONFIG_HOME": self.sandbox.path("config")})
        self.assert_becomes(lambda: self.cells(WHO)[0], "quorvanectl")


class Settings(WithDialogs):
    def test_whole_lines_are_ticked_and_every_byte_is_written(self):
        self.desk.press("alt+e", "s")
        settings = self.dialog("Settings")
        box = settings.find("check box", "Write whole lines")
        self.assertFalse(box.has(CHECKED))
        self.click(box)
        eventually(lambda: box.has(CHECKED), "the tick")
        self.click(settings.find("push button", "Save"))
        eventually(lambda: self.window.program.find_now("dialog") is None, "the window to close")
        self.assertIn("wholeLines=true", read(self.sandbox.path("config/quorvane/settings.ini")).decode())

        self.window.click_row(0)
        self.desk.press("F2", "ctrl+a")
        self.desk.paste("\u00e4\u00f6\u00fc")
        self.desk.press("Return")
        self.assert_file(A.replace('r ""', 'r "\u00e4\u00f6\u00fc"'), B, C)

    def test_without_them_a_line_is_cut(self):
        self.window.click_row(2)
        self.desk.press("F2", "ctrl+a")
        self.desk.paste("\u00e4\u00f6\u00fc")
        self.desk.press("Return")
        cut = C.replace('r ""', 'r "\u00e4\u00f6\u00fc"').encode() + b"\n"
        self.assert_becomes(lambda: read(self.sandbox.user_file), text_of([A, B]) + cut[:-3])
