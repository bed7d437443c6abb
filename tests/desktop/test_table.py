import os
import time

from rules_window import APPLICATION, PATH, STATE, TAG, TITLES, DesktopTest
from desk import SHOWING, eventually


class Cells(DesktopTest):
    def test_a_policy_rule_shows_in_all_columns(self):
        window = self.open_with('allow prefix "/a b" "/A/Mail.app/Contents/MacOS/Mail" rwcmx "work" "" "5"',
                                'deny path "/b" "/bin/sh via /usr/sbin/cron" x', "other folder /c any -")
        self.assertEqual(window.texts(), [
            ["Any Process", "", "Err", "Err", "", "", "/c"],
            ["Mail", "", "Allow", "Prefix", "rwcmx", "work", "/a b"],
            ["sh via cron", "", "Deny", "Path", "x", "", "/b"]])

    def test_a_watch_rule_shows_no_application(self):
        window = self.open_with('watch suffix ".plist" "/usr/bin/defaults" wm "prefs"')
        self.assertEqual(window.texts(), [["", "", "Watch", "Suffix", "wm", "prefs", ".plist"]])
        self.assertEqual(window.table.cell(0, APPLICATION).description, "defaults")

    def test_a_rule_that_continues_its_group_has_a_blank_application_that_is_told_in_words(self):
        window = self.open_with("watch path /0 /bin/a r", "allow path /1 /bin/a r", "deny path /2 /bin/a r",
                                'allow path /3 /bin/a r "" C', "allow path /4 /bin/b r")
        self.assertEqual(window.column(APPLICATION), ["", "a", "", "a", "b"])
        self.assertEqual(window.descriptions(APPLICATION), [
            "a", "program not found", "a, program not found", "program not found", "program not found"])

    def test_states_are_told_in_words(self):
        self.sandbox.write_system("quorvane.rc", "allow path /system any r")
        window = self.open_with("allow path /old any r", f'allow path /new any r "" "" "{int(time.time())}"')
        self.desk.press("ctrl+shift+h")
        self.assert_becomes(lambda: list(zip(window.column(PATH), window.descriptions(STATE), window.column(STATE))),
                            [("/old", "", ""), ("/new", "new rule", ""), ("/system", "system rule", "")])

    def test_missing_files_and_redundant_rules_are_told_in_words(self):
        window = self.open_with("watch path /no/such/watched any r", "allow prefix / any r", "allow path /etc any r",
                                "allow path /no/such/file any r", "deny path /no/such/file any r",
                                "deny path /etc any r",
                                "deny path ~/none any r", "deny suffix /none any r")
        self.assertEqual(dict(zip(window.column(PATH), window.descriptions(PATH))), {
            "/no/such/watched": "file not found", "/": "", "/etc": "", "/no/such/file": "file not found",
            "~/none": "file not found", "/none": ""})
        self.assertEqual(window.descriptions(PATH), ["file not found", "", "redundant", "redundant, file not found", "file not found",
                                                     "", "file not found", ""])

    def test_a_rule_that_would_be_lost_is_told_in_words(self):
        window = self.open_with("deny suffix .é any r")
        self.assertEqual(window.descriptions(PATH), ["does not read back"])

    def test_text_beyond_ascii_is_shown_as_it_is(self):
        window = self.open_with('allow suffix "ß😀" "/bin/日本" r "Ünïcödé"')
        self.assertEqual([window.table.cell(0, column).name for column in (APPLICATION, TAG, PATH)],
                         ["日本", "Ünïcödé", "ß😀"])

    def test_cells_out_of_view_answer_too(self):
        window = self.open_with(*(f"allow path /{number} any r" for number in range(5000)))
        last = window.table.cell(4999, PATH)
        self.assertEqual((last.name, last.has(SHOWING), window.table.cell(2500, APPLICATION).description),
                         ("/4999", False, "Any Process"))


class Table(DesktopTest):
    def test_has_a_name_seven_columns_and_their_titles(self):
        window = self.open_with("allow path /a any r")
        self.assertEqual((window.table.name, window.table.columns), ("Rules", 7))
        self.assertEqual([(window.header(column).role, window.header(column).name) for column in range(7)],
                         [("column header", title) for title in TITLES])

    def test_titles_stand_above_an_empty_table_too(self):
        window = self.open_with()
        self.assertEqual([window.header(column).name for column in range(7)], TITLES)
        self.assertEqual(window.count(), "0 of 0 rules shown")

    def test_the_last_column_takes_the_rest_of_the_width(self):
        window = self.open_with("allow path /a any r")
        x, _, width, _ = window.table.box
        cell = window.table.cell(0, PATH).box
        self.assertGreaterEqual(cell[0] + cell[2], x + width - 20)

    def test_columns_are_wide_enough_for_their_titles_and_short_texts(self):
        window = self.open_with("allow prefix /a any rwcmx tag", "watch suffix .b any rwcmx tag")
        picture = self.desk.picture()
        for column in range(7):
            with self.subTest(column=TITLES[column]):
                x, y, width, height = window.header(column).box
                # An elided text reaches the end of its column; a complete one leaves some background.
                strip = picture.crop((x + width - 6, y + 2, x + width - 2, y + height - 3))
                self.assertEqual(len(set(strip.convert("L").point(lambda level: level < 128).getdata())), 1)

    def test_a_long_path_makes_its_column_no_wider_than_the_window(self):
        window = self.open_with("allow path /" + "x" * 400 + " any r")
        x, _, width, _ = window.table.box
        cell = window.table.cell(0, PATH).box
        self.assertLessEqual(cell[0] + cell[2], x + width)

    def test_a_tool_tip_tells_the_whole_path_and_the_reasons_of_its_colour(self):
        path = "/no/such/file"
        window = self.open_with("allow prefix / any r", f"allow path {path} any r")
        x, y, _, height = window.table.cell(1, PATH).box
        self.desk.hands("mousemove", x + 20, y + height // 2)
        tip = eventually(lambda: next((child for child in window.program.children() if child.role == "tool tip"),
                                      None),
                         "a tool tip").name
        for text in (path, 'covered by allow prefix "/" "any" r', "Nothing exists at this path"):
            self.assertIn(text, tip)

    def test_home_is_where_the_person_lives(self):
        os.mkdir(os.path.join(self.sandbox.home, "there"))
        window = self.open_with("allow path ~/there any r", "deny path ~/none any r")
        self.assertEqual(window.descriptions(PATH), ["", "file not found"])
