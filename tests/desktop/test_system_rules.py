from rules_window import PATH, DesktopTest

SHOW, HIDE = "Show System Rules", "Hide System Rules"


class SystemRules(DesktopTest):
    def setUp(self):
        super().setUp()
        self.sandbox.write_system("quorvane.rc", "allow path /system any r us", "watch path /seen any r")
        self.sandbox.write_system("exec.rc", "allow path /exec any x")
        self.window = self.open_with("allow path /user any r tag")

    def assert_toggled(self, toggle):
        self.assertEqual((self.window.column(PATH), self.window.count()), (["/user"], "1 of 4 rules shown, 3 system rules hidden"))
        toggle(SHOW)
        self.assert_becomes(lambda: self.window.column(PATH), ["/seen", "/user", "/system", "/exec"])
        self.assert_becomes(self.window.count, "4 of 4 rules shown")
        toggle(HIDE)
        self.assert_becomes(lambda: self.window.column(PATH), ["/user"])
        self.window.frame.find("push button", SHOW)

    def test_the_tool_bars_button_shows_and_hides_them(self):
        self.assert_toggled(lambda title: self.desk.click(*self.window.frame.find("push button", title).center))

    def test_the_menu_item_shows_and_hides_them(self):
        def choose(title):
            self.desk.click(*self.window.frame.find("menu item", "View").center)
            self.desk.click(*self.window.frame.find("menu item", title).center)
        self.assert_toggled(choose)

    def test_a_key_shows_and_hides_them(self):
        def press(title):
            self.window.frame.find("push button", title)
            self.desk.press("ctrl+shift+h")
        self.assert_toggled(press)

    def test_the_menu_is_reached_by_keyboard(self):
        def choose(title):
            self.window.frame.find("push button", title)
            self.desk.press("alt+v")
            self.window.frame.find("menu item", title)
            self.desk.press("Return")
        # A menu opened by its mnemonic has its first item selected already.
        self.assert_toggled(choose)

    def test_a_system_rule_shows_neither_tag_nor_a_missing_file(self):
        self.desk.press("ctrl+shift+h")
        self.assert_becomes(lambda: self.window.table.rows, 4)
        self.assertEqual(self.window.texts()[2], ["", "", "Allow", "Path", "r", "", "/system"])
        self.assertEqual(self.window.descriptions(PATH), ["", "file not found", "", ""])
