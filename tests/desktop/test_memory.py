import os

from desk import settled
from rules_window import CLASS, PATH, TAG, DesktopTest


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
        self.assertEqual(os.listdir(self.sandbox.home), [])
        self.assertNotEqual(os.listdir(self.sandbox.path("config")), [])

    def test_unusable_settings_count_as_none(self):
        first = self.open_with("allow path /a any r tag")
        size, widths = first.frame.box[2:], self.widths(first)
        first.close()
        settings = self.settings_file()
        for contents in (b"\xff\xfe\0garbage", b"[mainWindow]\nsize=@Size(-5 0)\ncolumnWidths=1, 2, 3\n",
                         b"[mainWindow]\nsize=word\ncolumnWidths=@Invalid()\n", b""):
            with self.subTest(contents=contents):
                self.sandbox.write(settings, contents)
                window = self.open()
                self.assertEqual((window.frame.box[2:], self.widths(window)), (size, widths))
                self.desk.stop(window.process)

    def test_a_remembered_size_is_never_too_large_for_the_screen(self):
        first = self.open_with("allow path /a any r")
        first.close()
        self.sandbox.write(self.settings_file(), "[mainWindow]\nsize=@Size(90000 80000)\n")
        width, height = self.open().frame.box[2:]
        self.assertLessEqual(width, self.screen[0])
        self.assertLessEqual(height, self.screen[1])
