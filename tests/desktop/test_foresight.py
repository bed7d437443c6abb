"""The review of an import says beforehand what it would come to, and shows the rules of one kind alone."""

from desk import eventually
from review_window import PATH, TICK, ReviewWindow
from rules_window import DesktopTest
from sandbox import read, text_of

MINE = 'allow prefix "/a" "/bin/sh" r "mine" "T" "0"'
NEW = 'allow prefix "/b/" "/bin/sh" r "t" "T" "0"'
COVERED = 'allow prefix "/b/c" "/bin/sh" r "t" "T" "0"'


class Foresight(DesktopTest):
    def test_a_kind_is_shown_and_unticked_and_the_rest_imported(self):
        window = self.open_with(MINE)
        self.desk.press("ctrl+c")
        self.desk.paste("\n".join([MINE, NEW, COVERED]))
        review = ReviewWindow(window, "Pasted Text")
        button = eventually(lambda: next((node for node in review.dialog.below()
                                          if node.name == "Redundant 1"), None), "the redundant rule to be counted")
        self.desk.click(*button.center)
        self.assert_becomes(lambda: review.column(PATH), ["/b/c"])
        review.click_header(TICK)
        self.assert_becomes(lambda: review.count().startswith("2 of 3 rules ticked (2 of them not shown"), True)
        review.click_button("Import")
        self.assert_becomes(lambda: read(self.sandbox.user_file), text_of([MINE, NEW]))
