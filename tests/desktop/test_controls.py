from desk import ENABLED, FOCUSABLE, FOCUSED, SHOWING, eventually
from rules_window import DesktopTest

# Interactive controls.
CONTROLS = ("push button", "check box", "combo box", "text", "menu item", "table", "column header")


class Controls(DesktopTest):
    """Everything can be told by its name and reached by keyboard."""

    def setUp(self):
        super().setUp()
        self.sandbox.write_system("quorvane.rc", "allow path /system any r")
        self.window = self.open_with("allow path /a any r", "allow path /b any r")

    def nameless(self):
        return [node.role for node in self.window.frame.below()
                if node.role in CONTROLS and node.has(SHOWING) and not node.name]

    def test_every_control_has_a_name(self):
        self.assertEqual(self.nameless(), [])

    def test_the_search_fields_own_button_has_a_name_as_well(self):
        self.desk.press("ctrl+f")
        self.desk.type_text("a")
        self.window.search.find("push button")
        self.assertEqual(self.nameless(), [])

    def test_the_search_field_has_a_label_of_its_own(self):
        self.assertEqual(self.window.search.labels(), ["Search"])

    def test_every_menu_item_has_a_text(self):
        items = [node.name for node in self.window.frame.below() if node.role == "menu item"]
        self.assertGreater(len(items), 5)
        self.assertNotIn("", items)

    def test_all_of_the_tool_bar_fits_into_the_windows_first_size(self):
        bar = self.window.frame.find("tool bar")
        x, _, width, _ = bar.box
        for node in (bar.find("push button", "Show System Rules"), bar.find("text", "Search")):
            self.assertLessEqual(node.box[0] + node.box[2], x + width)

    def test_the_tab_key_leads_round_all_controls_that_take_the_keyboard(self):
        # Qt reports items of closed or hidden lists as showing.
        expected = sum(node.role != "list item" and all(map(node.has, (FOCUSABLE, SHOWING, ENABLED)))
                       for node in self.window.frame.below())
        met = []
        while self.window.focused() not in met:
            met.append(self.window.focused())
            self.desk.press("Tab")
            eventually(lambda: self.window.focused() not in (None, met[-1]), "the keyboard to move on")
        self.assertEqual(len(met), expected)
        self.assertIn(self.window.search, met)

    def test_shift_tab_leads_back(self):
        self.assertEqual(self.window.focused().role, "table")
        self.desk.press("Tab")
        self.assert_becomes(lambda: self.window.search.has(FOCUSED), True)
        self.desk.press("shift+Tab")
        self.assert_becomes(lambda: self.window.table.has(FOCUSED), True)

    def test_every_menu_opens_by_its_letter_and_closes_by_escape(self):
        for letter, item in (("f", "Quit"), ("e", "Find"), ("v", "Sort By")):
            with self.subTest(letter=letter):
                self.desk.press("alt+" + letter)
                self.window.frame.find("menu item", item)
                self.desk.press("Escape")
                eventually(lambda: self.window.frame.find_now("menu item", item) is None, "the menu to close")
                self.desk.press("Escape")  # the menu bar still has the focus

    def test_the_find_item_leads_to_the_search_field(self):
        self.desk.click(*self.window.frame.find("menu item", "Edit").center)
        self.desk.click(*self.window.frame.find("menu item", "Find").center)
        self.assert_becomes(lambda: self.window.search.has(FOCUSED), True)
