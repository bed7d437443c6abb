import os

from desk import eventually
from review_window import PATH as REVIEWED_PATH
from review_window import ReviewWindow
from rules_window import PATH, DesktopTest
from sandbox import read

SUGGESTED = "New Rule Suggestions"
DENIED = "Unauthorized Access Attempts"


class FailSafe(DesktopTest):
    def setUp(self):
        super().setUp()
        self.fail_safe = os.path.join(self.sandbox.shared, "failsafe.rc")
        self.strict = self.fail_safe + ".strict"
        self.sandbox.write(self.fail_safe, ['allow path "/new/tool" "any" x "" "T"'])
        self.sandbox.write_user("allow path /a any r")

    def open_review(self, notice):
        """Opens the program, the review, and closes the notice beside it."""
        window = self.open(wait_until_active=False)
        review = ReviewWindow(window, self.fail_safe)
        explanation = window.program.find("dialog", notice)
        self.desk.click(*explanation.find("push button", "OK").center)
        eventually(lambda: window.program.find_now("dialog", notice) is None, "the notice to go away")
        return window, review

    def assert_files_exist(self, fail_safe, strict):
        self.assertEqual((os.path.exists(self.fail_safe), os.path.exists(self.strict)), (fail_safe, strict))

    def test_suggestions_are_reviewed_and_imported_without_a_tag(self):
        window, review = self.open_review(SUGGESTED)
        self.assertEqual(review.column(REVIEWED_PATH), ["/new/tool"])
        review.click_button("Import")
        window.program.find("dialog", "Import Successful")
        self.assertEqual(read(self.sandbox.user_file).decode().splitlines(), [
            'allow path "/a" "any" r "" "" "0"', 'allow path "/new/tool" "any" x "" "T" "0"'])
        self.assert_files_exist(False, False)

    def test_denied_accesses_are_told_as_such(self):
        self.sandbox.write(self.strict, "")
        _, review = self.open_review(DENIED)
        self.desk.click(*review.dialog.find("push button", "Cancel").center)
        review.wait_until_gone()
        self.assert_files_exist(False, False)
        self.assertEqual(read(self.sandbox.user_file), b"allow path /a any r\n")

    def test_learning_mode_leaves_them_alone(self):
        self.sandbox.write(os.path.join(self.sandbox.shared, "learning_mode"), "")
        os.utime(self.sandbox.user_file, (1_700_000_000, 1_700_000_000))
        window = self.open()
        time = 1_700_000_000

        # The watcher polls a second after the start, which is later than a review would have appeared.
        def reloaded():
            nonlocal time
            time += 1
            self.sandbox.write_user("allow path /b any r")
            os.utime(self.sandbox.user_file, (time, time))
            return window.column(PATH)
        self.assert_becomes(reloaded, ["/b"])
        self.assertNotIn("handleFileImport:", self.log())
        self.assert_files_exist(True, False)

    def test_a_program_that_ends_leaves_suggestions_under_review_for_the_next_time(self):
        window, _ = self.open_review(SUGGESTED)
        self.desk.hands("windowactivate", "--sync",
                        self.desk.hands("search", "--name", "^Quorvane Configuration - ").split()[0])
        self.assertEqual(window.close(), 0)
        self.assert_files_exist(True, False)
