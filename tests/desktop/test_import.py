import os

from desk import FOCUSED, eventually
from file_panel import answer_panel
from review_window import APPLICATION, CLASS, OPERATIONS, TICK, TYPE, ReviewWindow
from review_window import PATH as REVIEWED_PATH
from rules_window import PATH, DesktopTest
from sandbox import read


class Import(DesktopTest):
    def setUp(self):
        super().setUp()
        self.extras = os.path.join(self.sandbox.root, "Users/Shared/Quorvane Extras")
        os.makedirs(self.extras)
        self.file = self.sandbox.write(os.path.join(self.extras, "Photo Tools,2.quorv"), [
            "; what Photo Tools needs",
            'allow prefix "/d" "/bin/sh" r "" "T"',
            'allow prefix "/c" "/bin/sh" rw "" "T"',
            'deny suffix ".x" "/bin/sh" r "own" "T"',
            'watch prefix "/w" "any" w',
            'allow prefix "/a" "/bin/sh" r',
        ])

    def open_review(self, *rules):
        window = self.open_with(*rules)
        self.desk.press("ctrl+o")
        answer_panel(window, "Import Files", "Photo Tools,2.quorv")
        return window, ReviewWindow(window, self.file)

    def notice(self, window, title):
        return [node.name for node in window.program.find("dialog", title).below() if node.role == "label"]

    def test_the_review_shows_the_rules_all_ticked_and_has_the_keyboard(self):
        _, review = self.open_review()
        self.assertEqual(review.column(REVIEWED_PATH), ["/w", "/a", "/d", "/c", ".x"])
        self.assertEqual(review.column(APPLICATION), ["", "sh", "sh", "", ""])
        self.assertEqual(review.column(CLASS), ["Watch", "Allow", "Allow", "Allow", "Deny"])
        self.assertEqual(review.column(TYPE), ["Prefix", "Prefix", "Prefix", "Prefix", "Suffix"])
        self.assertEqual(review.column(OPERATIONS), ["w", "r", "r", "rw", "r"])
        self.assertEqual(review.ticked(), review.column(REVIEWED_PATH))
        self.assertEqual(review.count(), "5 of 5 rules ticked")
        eventually(lambda: review.table.has(FOCUSED), "the table to have the keyboard")

    def test_what_is_ticked_is_imported_in_the_order_of_the_rows(self):
        window, review = self.open_review('allow prefix "/z" "/bin/sh" r "mine" "T"')
        review.click_row(1, TICK)  # /a
        self.desk.press("Home", "space")  # /w
        review.click_header(REVIEWED_PATH)
        self.assert_becomes(lambda: review.column(REVIEWED_PATH), [".x", "/a", "/c", "/d", "/w"])
        self.assertEqual(review.ticked(), [".x", "/c", "/d"])
        self.assertEqual(review.count(), "3 of 5 rules ticked")
        self.desk.press("Return")
        self.assertIn("Successfully imported 3 rules", self.notice(window, "Import Successful"))
        review.wait_until_gone()
        self.assertEqual(read(self.sandbox.user_file).decode().splitlines(), [
            'allow prefix "/z" "/bin/sh" r "mine" "T" "0"',
            'deny suffix ".x" "/bin/sh" r "own" "T" "0"',
            'allow prefix "/c" "/bin/sh" rw "Photo Tools" "T" "0"',
            'allow prefix "/d" "/bin/sh" r "Photo Tools" "T" "0"'])
        self.assertEqual(window.column(PATH), ["/z", ".x", "/c", "/d"])

    def test_rules_that_are_present_are_marked_and_not_added_again(self):
        window, review = self.open_review('allow prefix "/d" "/bin/sh" r "mine" "T"')
        self.assert_becomes(review.count, "5 of 5 rules ticked, 1 already present (in italics)")
        self.assertEqual(review.table.cell(2, TICK).description, "already present")
        self.assertEqual(review.table.cell(3, TICK).description, "")
        review.click_header(TICK)
        review.click_row(2, TICK)
        self.assert_becomes(review.ticked, ["/d"])
        review.click_button("Import")
        self.assertIn("Successfully imported 1 rules", self.notice(window, "Import Successful"))
        self.assertEqual(read(self.sandbox.user_file), b'allow prefix "/d" "/bin/sh" r "mine" "T" "0"\n')

    def test_a_double_click_on_a_check_box_is_two_clicks(self):
        _, review = self.open_review()
        self.desk.hands("mousemove", *review.table.cell(2, TICK).center, "click", "--repeat", 2, "--delay", 20, 1)
        self.desk.press("Down", "space")  # by then previous clicks have been handled
        self.assert_becomes(review.ticked, ["/w", "/a", "/d", ".x"])

    def test_nothing_ticked_is_an_import_that_failed(self):
        window, review = self.open_review()
        review.click_header(TICK)
        self.assert_becomes(review.count, "0 of 5 rules ticked")
        review.click_button("Import")
        self.assertIn("Found no rules to import", self.notice(window, "Import Failed"))
        self.assertEqual(window.column(PATH), [])

    def test_escape_and_cancel_import_nothing(self):
        for leave in (lambda review: self.desk.press("Escape"), lambda review: review.click_button("Cancel")):
            with self.subTest(leave=leave):
                window, review = self.open_review("allow path /b any r")
                leave(review)
                review.wait_until_gone()
                self.assertEqual(window.column(PATH), ["/b"])
                self.assertEqual(read(self.sandbox.user_file), b"allow path /b any r\n")
                self.assertIn("-[ImportWindowController windowWillClose:] closing", self.log())
                self.desk.stop(window.process)

    def test_the_order_can_be_chosen_by_keyboard(self):
        window, review = self.open_review()

        def shown_windows():
            return set(self.desk.hands("search", "--onlyvisible", "--pid", window.process.pid).split())
        self.desk.press("Home")
        for keys in (["Menu"], ["o"]):
            before = shown_windows()
            self.desk.press(*keys)
            eventually(lambda: shown_windows() > before, "a menu")
        self.desk.press("Down", "Down", "Down", "Return")  # from the first column, the application
        self.assert_becomes(lambda: review.column(REVIEWED_PATH), [".x", "/a", "/c", "/d", "/w"])

    def test_another_import_replaces_the_review(self):
        window, _ = self.open_review()
        other = self.sandbox.write(os.path.join(self.extras, "Other.quorv"), ["allow path /o any r"])
        self.desk.hands("windowactivate", "--sync",
                        self.desk.hands("search", "--name", "^Quorvane Configuration - ").split()[0])
        self.desk.press("ctrl+o")
        answer_panel(window, "Import Files", "Other.quorv")
        self.assertEqual(ReviewWindow(window, other).column(REVIEWED_PATH), ["/o"])
        self.assertIsNone(window.program.find_now("dialog", "Import Rules - " + self.file))
