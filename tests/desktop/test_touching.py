"""A path is asked about with the keyboard, and the rules about it are found and shown in the main table."""

from rules_window import PATH, DesktopTest

WHY = 7


class Touching(DesktopTest):
    def setUp(self):
        super().setUp()
        self.window = self.open_with('watch suffix ".conf" "/bin/vi" r ""',
                                     'allow prefix "/etc/" "/bin/sh" r "" "" "0"',
                                     'deny path "/etc/hosts" "/bin/sh" w "" "" "0"',
                                     'allow prefix "/home/" "/bin/vi" r "" "" "0"')
        self.desk.press("ctrl+shift+f")
        self.dialog = self.window.program.find("dialog", "What Touches")
        self.table = self.dialog.find("table")

    def column(self, column):
        return [self.table.cell(row, column).name for row in range(self.table.rows)]

    def test_a_path_is_typed_and_a_rule_shown(self):
        self.desk.type_text("/etc/hosts")
        self.assert_becomes(lambda: self.column(PATH), ["/etc/", "/etc/hosts"])
        self.assertEqual(self.column(WHY), ["begins with it", "the path itself"])
        self.desk.click(*self.table.cell(1, PATH).center)
        self.desk.press("Return")
        self.assert_becomes(self.window.selected, ["/etc/hosts"])

    def test_a_program_and_operations_are_asked_for_with_the_mouse(self):
        self.desk.type_text("/etc/x.conf")
        self.assert_becomes(lambda: self.column(PATH), [".conf", "/etc/"])
        self.desk.click(*self.dialog.find("text", "Program").center)
        self.desk.type_text("/bin/vi")
        self.assert_becomes(lambda: self.column(PATH), [".conf"])
        self.desk.click(*self.dialog.find("check box", "Write").center)
        self.assert_becomes(lambda: self.table.rows, 0)
