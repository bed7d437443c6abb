"""The selected rule is told in words below the table, and what is wrong with it is mended there; the file is right after
each step."""

import hashlib
import os

from desk import FOCUSED, eventually
from rules_window import DesktopTest
from sandbox import read, text_of

WIDE = 'allow prefix "/etc/" "any" rw "" "" "0"'
NARROW = 'allow path "/etc/hosts" "any" r "" "" "0"'


class RuleInWords(DesktopTest):
    def assert_file(self, *lines):
        self.assert_becomes(lambda: read(self.sandbox.user_file), text_of(lines))

    def text(self, name):
        node = self.window.frame.find_now("text", name)
        return node and node.text

    def assert_says(self, name, text):
        self.assert_becomes(lambda: self.text(name), text)

    def press(self, title):
        self.desk.click(*self.window.frame.find("push button", title).center)

    def test_a_rule_is_told_in_words_and_a_covered_one_deleted(self):
        self.window = self.open_with(WIDE, NARROW)
        self.window.click_row(1)
        self.assert_says("What the rule says", "Any program may read /etc/hosts.")
        self.assert_says("Details of the rule", "bound to nothing but its path")
        problems = self.window.frame.find("filler", "Problems of the rule")
        self.assert_becomes(lambda: problems.description,
                            "Covered by: Any program may read and write anything in /etc/.")
        self.press("Show")
        self.assert_becomes(self.window.selected, ["/etc/"])
        self.window.click_row(1)
        self.press("Delete This One")
        self.assert_file(WIDE)
        self.window.click_row(0)
        self.desk.press("ctrl+z")
        self.assert_file(WIDE, NARROW)

    def test_a_program_that_has_moved_takes_its_rules_along(self):
        program = self.sandbox.path("moved")
        with open(program, "w") as file:
            file.write("program")
        old = 'allow prefix "any" "/nonexistent/old" r "tag" "" "7"'
        self.window = self.open_with(WIDE, old)
        self.window.click_row(1)
        self.press("Choose...")
        preview = self.window.program.find("dialog", "Program Moved")
        field = preview.find("text", "Present path of the program")
        eventually(lambda: field.has(FOCUSED), "the path to have the keyboard")
        self.desk.press("ctrl+a")
        self.desk.type_text(program)
        self.assert_becomes(lambda: field.text, program)
        self.assert_file(WIDE, old)
        self.desk.press("Return")
        self.assert_file(WIDE, old.replace("/nonexistent/old", program))
        self.desk.press("ctrl+z")
        self.assert_file(WIDE, old)

    def test_a_rule_is_bound_anew_from_the_keyboard(self):
        program = self.sandbox.path("program")
        with open(program, "w") as file:
            file.write("program")
        digest = hashlib.sha256(b"program").hexdigest()
        rule = f'allow prefix "any" "{program}" r "" "%s" "0"'
        self.window = self.open_with(rule % ("a" * 64))
        self.window.click_row(0)
        bind = self.window.frame.find("push button", "Bind Anew")

        def reaches():
            self.desk.press("Tab")
            return bind.has(FOCUSED)
        eventually(reaches, "the button to be reached by Tab")
        self.desk.press("space")
        self.assert_file(rule % digest)

    def test_it_stays_hidden_once_it_is_hidden(self):
        self.window = self.open_with(WIDE)
        self.window.click_row(0)
        self.assert_says("What the rule says", "Any program may read and write anything in /etc/.")
        self.desk.press("alt+v", "w")
        self.assert_says("What the rule says", None)
        self.assertEqual(self.window.close(), 0)
        self.window = self.open()
        self.assertEqual(self.text("What the rule says"), None)
        self.assertTrue(os.path.exists(self.sandbox.user_file))
