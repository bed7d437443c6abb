from rules_window import PATH, DesktopTest

RULES = ["watch path /watched /bin/looker r WatchTag",
         "allow path /Allowed /Applications/Safari.app/Contents/MacOS/Safari r Work",
         "deny suffix .ärger any r"]
ALL = ["/watched", ".ärger", "/Allowed"]


class Search(DesktopTest):
    def setUp(self):
        super().setUp()
        self.sandbox.write_system("quorvane.rc", "allow path /systemwide any r")
        self.window = self.open_with(*RULES)
        self.desk.press("ctrl+f")
        self.assert_becomes(lambda: self.window.focused() == self.window.search, True)

    def assert_shown(self, paths):
        self.assert_becomes(lambda: self.window.column(PATH), paths)

    def replace_by(self, text):
        self.desk.press("ctrl+a", "Delete")
        self.assert_shown(ALL)
        self.desk.type_text(text)
        self.assert_becomes(lambda: self.window.search.text, text)

    def test_ctrl_f_puts_the_keyboard_into_the_field(self):
        self.desk.type_text("abc")
        self.assert_becomes(lambda: self.window.search.text, "abc")

    def test_rows_shrink_with_every_letter_and_come_back(self):
        self.assert_shown(ALL)
        self.desk.type_text("/")
        self.assert_shown(["/watched", "/Allowed"])
        self.desk.type_text("al")
        self.assert_shown(["/Allowed"])
        self.desk.press("BackSpace", "BackSpace")
        self.assert_shown(["/watched", "/Allowed"])
        self.desk.press("BackSpace")
        self.assert_shown(ALL)

    def test_capitals_and_small_letters_find_the_same(self):
        for text in ("SAFARI", "safari", "wOrK"):
            with self.subTest(text=text):
                self.replace_by(text)
                self.assert_shown(["/Allowed"])

    def test_a_watch_rules_tag_finds_nothing(self):
        self.desk.type_text("WatchTag")
        self.assert_shown([])

    def test_letters_beyond_ascii_are_found(self):
        self.desk.paste("ÄRGER")
        self.assert_shown([".ärger"])

    def test_the_count_follows(self):
        self.desk.type_text("looker")
        self.assert_becomes(self.window.count, "1 of 4 rules shown")
        self.desk.type_text("x")
        self.assert_becomes(self.window.count, "0 of 4 rules shown")

    def test_the_keyboard_stays_in_the_field(self):
        self.desk.type_text("nothing like this")
        self.assert_shown([])
        self.assertEqual(self.window.focused(), self.window.search)

    def test_escape_clears_the_field_and_shows_all(self):
        self.desk.type_text("looker")
        self.assert_shown(["/watched"])
        self.desk.press("Escape")
        self.assert_becomes(lambda: self.window.search.text, "")
        self.assert_shown(ALL)

    def test_the_clear_button_shows_all(self):
        self.desk.type_text("looker")
        self.assert_shown(["/watched"])
        self.desk.click(*self.window.search.find("push button").center)
        self.assert_shown(ALL)

    def test_system_rules_are_searched_when_they_are_shown(self):
        self.desk.type_text("systemwide")
        self.assert_shown([])
        self.desk.press("ctrl+shift+h")
        self.assert_shown(["/systemwide"])
        self.assertEqual(self.window.count(), "1 of 4 rules shown")

    def test_ctrl_f_selects_what_was_searched_for(self):
        self.desk.type_text("looker")
        self.assert_shown(["/watched"])
        self.desk.press("Tab", "ctrl+f")
        self.desk.type_text("safari")
        self.assert_shown(["/Allowed"])

    def test_the_underlined_letter_of_its_label_leads_to_the_field(self):
        self.window.click_row(0)
        self.assert_becomes(lambda: self.window.focused() == self.window.search, False)
        self.desk.press("alt+s")
        self.assert_becomes(lambda: self.window.focused() == self.window.search, True)
