"""The review of an import, as a user sees it."""

from desk import CHECKED, eventually, settled

APPLICATION, TICK, CLASS, TYPE, PATH, OPERATIONS = range(6)


class ReviewWindow:
    def __init__(self, window, path):
        """The review of the file at `path`, which is open or opening."""
        self.desk, self.program = window.desk, window.program
        self.title = "Import Rules - " + path
        self.dialog = self.program.find("dialog", self.title)
        settled(lambda: self.dialog.box)
        self.table = self.dialog.find("table")

    def column(self, column):
        return [self.table.cell(row, column).name for row in range(self.table.rows)]

    def ticked(self):
        """The paths of the ticked rules."""
        return [self.table.cell(row, PATH).name for row in range(self.table.rows)
                if self.table.cell(row, TICK).has(CHECKED)]

    def click_row(self, row, column=PATH):
        self.desk.click(*self.table.cell(row, column).center)

    def click_header(self, column):
        self.desk.click(*self.table.child(1 + column).center)

    def count(self):
        return next(node.name for node in self.dialog.below() if node.role == "label" and "ticked" in node.name)

    def click_button(self, name):
        self.desk.click(*self.dialog.find("push button", name).center)

    def wait_until_gone(self):
        eventually(lambda: self.program.find_now("dialog", self.title) is None, "the review to close")
