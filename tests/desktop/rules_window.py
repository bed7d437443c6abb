"""Common code of the desktop tests: a desk, a sandbox, and the main window opened on it."""

import os
import subprocess
import unittest

from alone import run_alone
from desk import ACTIVE, FOCUSED, PATIENCE, SELECTED, Desk, eventually, settled
from gi.repository import GLib
from sandbox import SANITIZER_REPORT, Sandbox

# When the program ends after a change, it signals every agent that it finds, including those of this machine's user and of
# other tests.
ALONE = run_alone()
PROGRAM = os.environ["QUORVANE_PROGRAM"]

APPLICATION, STATE, CLASS, TYPE, OPERATIONS, TAG, PATH = range(7)
TITLES = ["Application", "State", "Class", "Type", "Operations", "Tag", "Path"]


class RulesWindow:
    """The main window, as a user sees it."""

    def __init__(self, desk, process, wait_until_active=True):
        self.desk, self.process = desk, process
        self.program = desk.tree_of(process)
        self.frame = self.program.find("frame")
        if wait_until_active:
            eventually(lambda: self.frame.has(ACTIVE), "the main window to become active")
        settled(lambda: self.frame.box)
        self.table = self.frame.find("table")

    @property
    def search(self):
        return self.frame.find("text", "Search")

    def column(self, column):
        return [self.table.cell(row, column).name for row in range(self.table.rows)]

    def texts(self):
        return [[self.table.cell(row, column).name for column in range(7)] for row in range(self.table.rows)]

    def descriptions(self, column):
        return [self.table.cell(row, column).description for row in range(self.table.rows)]

    def selected(self):
        """The paths of the selected rows."""
        cells = [self.table.cell(row, PATH) for row in range(self.table.rows)]
        return [cell.name for cell in cells if cell.has(SELECTED)]

    def focused(self):
        """The object with the keyboard focus."""
        return next((node for node in self.frame.below() if node.has(FOCUSED)), None)

    def header(self, column):
        return self.table.child(1 + column)

    def click_header(self, column, from_left=10):
        """Different positions keep two clicks from becoming a double click."""
        x, y, _, height = self.header(column).box
        self.desk.click(x + from_left, y + height // 2)

    def click_row(self, row):
        self.desk.click(*self.table.cell(row, PATH).center)

    def count(self):
        return next(node.name for node in self.frame.below() if node.role == "label" and "rules shown" in node.name)

    def close(self):
        """Closes the program like a user; returns its exit status."""
        self.desk.press("alt+F4")
        return self.process.wait(PATIENCE)


class DesktopTest(unittest.TestCase):
    maxDiff = None
    screen = (1400, 900)

    @classmethod
    def setUpClass(cls):
        cls.desk = Desk(*cls.screen)
        cls.addClassCleanup(cls.desk.end)

    def setUp(self):
        self.sandbox = Sandbox()
        self.addCleanup(self.sandbox.end)

    def start(self, command=(PROGRAM,), **environment):
        """Starts the application, or a command that becomes it, without searching for its window."""
        complaints = open(self.sandbox.path("stderr"), "w+", errors="replace")
        self.addCleanup(complaints.close)
        process = self.desk.start(*command, stderr=complaints, stdout=subprocess.DEVNULL, environment={
            "HOME": self.sandbox.home, "XDG_CONFIG_HOME": self.sandbox.path("config"),
            "QUORVANE_ROOT": self.sandbox.root, "QUORVANE_LOG": "stderr",
            # Qt itself occasionally leaks a few bytes.
            "ASAN_OPTIONS": "detect_leaks=0:allocator_may_return_null=1:exitcode=99", "UBSAN_OPTIONS": "exitcode=99",
            **environment})

        def check_end():
            if process in self.desk.processes:
                self.desk.stop(process)
            complaints.seek(0)
            self.assertNotRegex(complaints.read(), SANITIZER_REPORT)
        self.addCleanup(check_end)
        return process

    def open(self, wait_until_active=True, **environment):
        return RulesWindow(self.desk, self.start(**environment), wait_until_active)

    def open_with(self, *user_rules, **environment):
        self.sandbox.write_user(*user_rules)
        return self.open(**environment)

    def log(self):
        with open(self.sandbox.path("stderr"), errors="replace") as file:
            return file.read()

    def assert_becomes(self, question, expected):
        """Waits until `question` returns `expected`, and shows the difference when it never does."""
        answer = None

        def same():
            nonlocal answer
            try:
                answer = question()
            except (GLib.Error, FileNotFoundError) as error:  # a row may vanish during the query, a file may not exist yet
                answer = error
            return answer == expected
        try:
            eventually(same)
        except AssertionError:
            self.assertEqual(answer, expected)
