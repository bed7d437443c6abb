import time

from rules_window import APPLICATION, CLASS, OPERATIONS, PATH, STATE, TAG, TITLES, TYPE, DesktopTest

RULES = ["watch suffix /5 /bin/b r b", f'allow path /3 /bin/B rw c "" {int(time.time())}', "deny prefix /1 any x",
         "deny path /4 /bin/a w B", "allow suffix /2 /bin/a r a"]


class Sorting(DesktopTest):
    def setUp(self):
        super().setUp()
        self.window = self.open_with(*RULES)

    def assert_order(self, *paths):
        self.assert_becomes(lambda: self.window.column(PATH), list(paths))

    def click_twice(self, column):
        self.window.click_header(column)
        self.window.click_header(column, from_left=25)

    def test_before_any_click_rules_stand_by_application(self):
        self.assert_order("/5", "/4", "/2", "/1", "/3")

    def test_a_click_sorts_upwards_and_a_second_one_downwards(self):
        self.window.click_header(PATH)
        self.assert_order("/1", "/2", "/3", "/4", "/5")
        self.window.click_header(PATH, from_left=25)
        self.assert_order("/5", "/4", "/3", "/2", "/1")
        self.window.click_header(PATH, from_left=18)
        self.assert_order("/1", "/2", "/3", "/4", "/5")

    def test_the_direction_is_told_in_words(self):
        self.assertEqual([self.window.header(column).description for column in range(7)], [""] * 7)
        self.window.click_header(PATH)
        self.assert_becomes(lambda: "ascending" in self.window.header(PATH).description, True)
        self.window.click_header(PATH, from_left=25)
        self.assert_becomes(lambda: "descending" in self.window.header(PATH).description, True)
        self.window.click_header(TAG)
        self.assert_becomes(lambda: self.window.header(PATH).description, "")

    def test_each_column_sorts_by_what_it_shows(self):
        for column, paths in [(CLASS, ["/2", "/3", "/4", "/1", "/5"]), (TYPE, ["/1", "/4", "/3", "/5", "/2"]),
                              (OPERATIONS, ["/5", "/2", "/4", "/3", "/1"]), (TAG, ["/1", "/2", "/5", "/4", "/3"]),
                              (STATE, ["/5", "/4", "/2", "/1", "/3"]), (APPLICATION, ["/5", "/4", "/2", "/1", "/3"])]:
            with self.subTest(column=TITLES[column]):
                fresh = self.open()
                fresh.click_header(column)
                self.assert_becomes(lambda: fresh.column(PATH), paths)
                self.desk.stop(fresh.process)

    def test_the_column_before_breaks_ties(self):
        self.window.click_header(PATH)
        self.window.click_header(CLASS)
        self.assert_order("/2", "/3", "/1", "/4", "/5")
        self.click_twice(PATH)
        self.window.click_header(CLASS)
        self.assert_order("/3", "/2", "/4", "/1", "/5")

    def test_the_order_outlives_search_and_system_rules(self):
        self.click_twice(PATH)
        self.assert_order("/5", "/4", "/3", "/2", "/1")
        self.desk.press("ctrl+f")
        self.desk.type_text("bin")
        self.assert_order("/5", "/4", "/3", "/2")
        self.desk.press("ctrl+shift+h")
        self.window.frame.find("push button", "Hide System Rules")
        self.assert_order("/5", "/4", "/3", "/2")

    def test_groups_are_those_of_the_new_order(self):
        self.window.click_header(PATH)
        self.assert_order("/1", "/2", "/3", "/4", "/5")
        self.assertEqual(self.window.column(APPLICATION), ["Any Process", "a", "B", "a", ""])

    def test_the_menu_sorts_by_keyboard(self):
        self.desk.press("alt+v", "o")
        self.window.frame.find("menu item", "Path")
        self.desk.press("Up", "Up", "Return")  # wraps around to the last item but one: the last is not a column
        self.assert_order("/1", "/2", "/3", "/4", "/5")

    def test_the_menu_sorts_by_mouse_like_the_headers(self):
        for order in (["/1", "/2", "/3", "/4", "/5"], ["/5", "/4", "/3", "/2", "/1"]):
            self.desk.click(*self.window.frame.find("menu item", "View").center)
            self.desk.click(*self.window.frame.find("menu item", "Sort By").center)
            self.desk.click(*self.window.frame.find("menu item", "Path").center)
            self.assert_order(*order)
