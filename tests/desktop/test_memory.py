import os

from desk import settled
from rules_window import CLASS, PATH, STATE, TAG, TITLES, DesktopTest


class Memory(DesktopTest):
    def widths(self, window):
        return [window.header(column).box[2] for column in range(PATH)]

    def close_and_open(self, window):
        self.assertEqual(window.close(), 0)
        return self.open()

    def settings_file(self):
        return next(os.path.join(folder, names[0]) for folder, _, names in os.walk(self.sandbox.path("config")) if names)

    def resize(self, window, width, height):
        self.desk.hands("search", "--sync", "--onlyvisible", "--pid", window.process.pid, "--name",
                        "Quorvane Configuration",
                        "windowsize", width, height)
        self.assert_becomes(lambda: settled(lambda: window.frame.box)[2:], (width, height))

    def drag_border(self, window, column, by):
        x, y, width, height = window.header(column).box
        border = (x + width - 1, y + height // 2)
        self.desk.drag(border, (border[0] + by, border[1]))
        self.assert_becomes(lambda: window.header(column).box[2], width + by)

    def test_the_size_of_the_window_is_remembered(self):
        window = self.open_with("allow path /a any r")
        self.resize(window, 900, 500)
        self.assertEqual(self.close_and_open(window).frame.box[2:], (900, 500))

    def test_the_widths_of_the_columns_are_remembered(self):
        window = self.open_with("allow path /a any r tag")
        self.drag_border(window, CLASS, 40)
        self.drag_border(window, TAG, 77)
        widths = self.widths(window)
        self.assertEqual(self.widths(self.close_and_open(window)), widths)

    def titles(self, window):
        """Of the columns that are shown, from left to right."""
        boxes = [(window.header(column).box, title) for column, title in enumerate(TITLES)]
        return [title for box, title in sorted(boxes) if box[2] > 0 and box[3] > 0]

    def test_hidden_and_moved_columns_are_remembered(self):
        window = self.open_with("allow path /a any r tag")
        self.desk.press("alt+v", "c")
        for _ in range(2):  # State, Class
            self.desk.press("Down")
        self.desk.press("Return")
        arranged = ["Application", "State", "Type", "Operations", "Tag", "Path"]
        self.assert_becomes(lambda: self.titles(window), arranged)
        tag, state = window.header(TAG).center, window.header(STATE).center
        self.desk.drag(tag, (state[0] - 5, state[1]))
        arranged = ["Application", "Tag", "State", "Type", "Operations", "Path"]
        self.assert_becomes(lambda: self.titles(window), arranged)
        window = self.close_and_open(window)
        self.assertEqual(self.titles(window), arranged)
        self.desk.hands("mousemove", *window.header(STATE).center, "click", 3)
        self.desk.press("u")
        self.assert_becomes(lambda: self.titles(window), TITLES)
        self.assertEqual(self.titles(self.close_and_open(window)), TITLES)

    def test_the_usual_columns_have_the_usual_widths_again(self):
        window = self.open_with("allow path /a any r tag")
        widths = self.widths(window)
        self.drag_border(window, TAG, 50)
        window = self.close_and_open(window)
        self.desk.press("alt+v", "c", "u")
        self.assert_becomes(lambda: self.widths(window), widths)
        self.assertEqual(self.widths(self.close_and_open(window)), widths)

    def test_other_rules_do_not_change_remembered_widths(self):
        window = self.open_with("allow path /a any r tag")
        self.drag_border(window, TAG, 50)
        widths = self.widths(window)
        self.sandbox.write_user('allow path /a any r "a much longer tag than before"')
        self.assertEqual(self.widths(self.close_and_open(window)), widths)

    def test_quitting_by_keyboard_remembers_as_well(self):
        window = self.open_with("allow path /a any r")
        self.resize(window, 901, 501)
        self.desk.press("ctrl+q")
        self.assertEqual(window.process.wait(20), 0)
        self.assertEqual(self.open().frame.box[2:], (901, 501))

    def test_nothing_is_remembered_outside_the_settings_folder(self):
        window = self.open_with("allow path /a any r")
        window.close()
        home = self.sandbox.home
        left = [os.path.relpath(os.path.join(folder, name), home) for folder, _, names in os.walk(home) for name in names]
        # On a slow machine the window was open long enough to begin the history.
        self.assertEqual([name for name in left if not name.startswith(".local/state/quorvane/")], [])
        self.assertNotEqual(os.listdir(self.sandbox.path("config")), [])

    def test_unusable_settings_count_as_none(self):
        first = self.open_with("allow path /a any r tag")
        size, widths = first.frame.box[2:], self.widths(first)
        first.close()
        settings = self.settings_file()
        for contents in (b"\xff\xfe\0garbage", b"[mainWindow]\nsize=@Size(-5 0)\ncolumnWidths=1, 2, 3\n",
                         b"[mainWindow]\nsize=word\ncolumnWidths=@Invalid()\n", b"",
                         b"[mainWindow]\ncolumnOrder=6, 6, 5, 4, 3, 2, 1\nhiddenColumns=0, 1\n"):
            with self.subTest(contents=contents):
                self.sandbox.write(settings, contents)
                window = self.open()
                self.assertEqual((window.frame.box[2:], self.widths(window), self.titles(window)), (size, widths, TITLES))
                self.desk.stop(window.process)

    def test_a_remembered_size_is_never_too_large_for_the_screen(self):
        first = self.open_with("allow path /a any r")
        first.close()
        self.sandbox.write(self.settings_file(), "[mainWindow]\nsize=@Size(90000 80000)\n")
        width, height = self.open().frame.box[2:]
        self.assertLessEqual(width, self.screen[0])
        self.assertLessEqual(height, self.screen[1])
