from desk import SELECTED, SHOWING
from rules_window import PATH, DesktopTest

PATHS = [f"/{number}" for number in range(9)]


class Selection(DesktopTest):
    def setUp(self):
        super().setUp()
        self.window = self.open_with(*(f"allow path {path} any r" for path in PATHS))

    def assert_selected(self, *paths):
        self.assert_becomes(self.window.selected, list(paths))

    def test_the_arrow_keys_select_a_row_from_the_start(self):
        self.desk.press("Down")
        self.assert_becomes(lambda: len(self.window.selected()), 1)
        first = self.window.selected()[0]
        self.desk.press("Down")
        self.assert_selected(PATHS[PATHS.index(first) + 1])
        self.desk.press("Up")
        self.assert_selected(first)

    def test_shift_and_an_arrow_key_select_more(self):
        self.window.click_row(2)
        self.desk.press("shift+Down", "shift+Down")
        self.assert_selected("/2", "/3", "/4")
        self.desk.press("shift+Up")
        self.assert_selected("/2", "/3")

    def test_ctrl_a_selects_all(self):
        self.desk.press("ctrl+a")
        self.assert_selected(*PATHS)

    def test_shift_and_page_keys_select_as_far_as_the_ends(self):
        self.window.click_row(4)
        self.desk.press("shift+Next")
        self.assert_selected("/4", "/5", "/6", "/7", "/8")
        self.desk.press("shift+Prior")
        self.assert_selected("/0", "/1", "/2", "/3", "/4")

    def test_the_space_bar_selects_where_the_keyboard_is(self):
        self.window.click_row(4)
        self.desk.press("ctrl+End", "space")
        self.assert_becomes(lambda: "/8" in self.window.selected(), True)

    def test_a_click_selects_the_whole_row(self):
        self.window.click_row(3)
        self.assert_selected("/3")
        self.assertTrue(all(self.window.table.cell(3, column).has(SELECTED) for column in range(7)))

    def test_outlives_a_sort(self):
        self.window.click_row(1)
        self.desk.press("shift+Down")
        self.assert_selected("/1", "/2")
        self.window.click_header(PATH)
        self.window.click_header(PATH, from_left=25)
        self.assert_becomes(lambda: self.window.column(PATH), PATHS[::-1])
        self.assert_selected("/2", "/1")

    def test_outlives_a_search_that_finds_its_rules(self):
        self.window.click_row(3)
        self.desk.press("ctrl+f")
        self.desk.type_text("/3")
        self.assert_becomes(lambda: self.window.column(PATH), ["/3"])
        self.assert_selected("/3")
        self.desk.press("ctrl+a", "Delete")
        self.assert_becomes(lambda: self.window.column(PATH), PATHS)
        self.assert_selected("/3")

    def test_outlives_the_showing_of_system_rules(self):
        self.sandbox.write_system("quorvane.rc", "watch path /system any r")
        window = self.open()
        window.click_row(5)
        self.desk.press("ctrl+shift+h")
        self.assert_becomes(lambda: window.table.rows, len(PATHS) + 1)
        self.assert_becomes(window.selected, ["/5"])

    def test_the_keyboard_goes_on_from_the_same_rule_after_a_sort(self):
        self.window.click_row(7)
        self.window.click_header(PATH)
        self.window.click_header(PATH, from_left=25)
        self.assert_becomes(lambda: self.window.column(PATH), PATHS[::-1])
        self.desk.press("Down")
        self.assert_selected("/6")

    def test_a_long_table_scrolls_with_the_keyboard(self):
        window = self.open_with(*(f"allow path /{number} any r" for number in range(500)))
        self.assertFalse(window.table.cell(499, PATH).has(SHOWING))
        self.desk.press("ctrl+End")
        self.assert_becomes(lambda: window.table.cell(499, PATH).has(SHOWING), True)

    def test_after_a_delete_the_rule_that_follows_is_selected(self):
        self.window.click_row(2)
        self.desk.press("shift+Down", "Delete")
        self.assert_selected("/4")
        self.assert_becomes(lambda: self.window.table.rows, 7)
        self.desk.press("End", "Delete")
        self.assert_selected("/7")
