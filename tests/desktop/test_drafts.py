import os
import signal

from desk import ACTIVE, FOCUSED, PATIENCE, Desk, eventually
from rules_window import PATH, DesktopTest
from sandbox import read

RULE = 'allow path "/a" "/bin/sh" r "mine" "" "0"'


class Drafts(DesktopTest):
    def open_editor_and_type(self, title, path):
        self.window.click_row(0)
        self.desk.press("Return")
        editor = self.window.program.find("dialog", title)
        eventually(lambda: editor.has(ACTIVE), "the editor to become active")
        eventually(lambda: editor.find("text", "Path").has(FOCUSED), "the keyboard to be in the path")
        self.desk.press("ctrl+a")
        self.desk.type_text(path)
        self.assert_becomes(lambda: editor.find("text", "Path").text, path)

    def close_main_window(self):
        self.desk.click(*self.window.header(PATH).center)  # brings it to the front
        eventually(lambda: self.window.frame.has(ACTIVE), "the main window to become active")
        self.assertEqual(self.window.close(), 0)

    def drafts(self):
        folder = os.path.join(self.sandbox.home, ".local/state/quorvane")
        return [os.path.join(folder, name) for name in os.listdir(folder) if name.startswith("draft-")]

    def check_offer(self):
        """The next start offers the draft, which then can be saved."""
        self.assertEqual(len(self.drafts()), 1)
        self.assertEqual(os.stat(self.drafts()[0]).st_mode & 0o777, 0o600)
        self.assertEqual(read(self.sandbox.user_file).decode(), RULE + "\n")
        self.window = self.open()
        self.window.frame.find("alert message", "1 unsaved rule was kept.")
        self.desk.click(*self.window.frame.find("push button", "Open").center)
        editor = self.window.program.find("dialog", "sh")
        self.assertEqual(editor.find("text", "Path").text, "/b/")
        eventually(lambda: editor.has(ACTIVE), "the editor to become active")
        self.desk.press("Return")
        self.assert_becomes(lambda: self.window.column(PATH), ["/b/"])
        self.assertEqual(self.drafts(), [])
        self.assertIsNone(self.window.frame.find_now("alert message", "1 unsaved rule was kept."))

    def test_what_an_editor_holds_outlives_the_close_of_the_main_window(self):
        self.window = self.open_with(RULE)
        self.open_editor_and_type("sh", "/b/")
        self.close_main_window()
        self.check_offer()

    def test_what_an_editor_holds_outlives_a_signal(self):
        self.window = self.open_with(RULE)
        self.open_editor_and_type("sh", "/b/")
        self.window.process.send_signal(signal.SIGTERM)
        self.assertEqual(self.window.process.wait(PATIENCE), 0)
        self.check_offer()

    def test_what_an_editor_holds_outlives_the_end_of_the_display(self):
        desk, self.__class__.desk = self.desk, Desk()
        self.addCleanup(setattr, self.__class__, "desk", desk)
        ended = self.desk
        self.addCleanup(ended.end)
        self.window = self.open_with(RULE)
        self.open_editor_and_type("sh", "/b/")
        ended.end_screen()
        self.assertNotEqual(self.window.process.wait(PATIENCE), 0)
        self.__class__.desk = desk
        self.check_offer()

    def test_a_draft_that_is_discarded_is_offered_no_more(self):
        self.window = self.open_with(RULE)
        self.open_editor_and_type("sh", "/b/")
        self.close_main_window()
        self.window = self.open()
        self.desk.click(*self.window.frame.find("push button", "Discard").center)
        eventually(lambda: self.window.frame.find_now("push button", "Discard") is None, "the notice to go away")
        self.assertEqual(self.drafts(), [])
