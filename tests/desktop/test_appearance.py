import os
import time
from collections import Counter

from rules_window import APPLICATION, PATH, STATE, TAG, DesktopTest

WHITE, BLACK, RED, BLUE, ORANGE = (255, 255, 255), (0, 0, 0), (204, 0, 0), (0, 0, 255), (176, 70, 0)
# Grey of level 0.8 at 20 % opacity over white.
BAND = (245, 245, 245)

PICTURES = os.environ.get("QUORVANE_PICTURES", "pictures")


def distance(one, other):
    return sum((a - b) ** 2 for a, b in zip(one, other))


class Colours(DesktopTest):
    def open_with(self, *user_rules, **environment):
        window = super().open_with(*user_rules, **environment)
        self.take_keyboard_out_of_the_table(window)
        return window

    def take_keyboard_out_of_the_table(self, window):
        """The mark of the keyboard's place has colours of its own."""
        self.desk.press("ctrl+f")
        self.assert_becomes(lambda: window.focused() == window.search, True)

    def colours(self, window, row, column):
        """Background and text colour of a cell on the screen; the text is the colour that differs most."""
        x, y, width, height = window.table.cell(row, column).box
        right = window.table.box[0] + window.table.box[2]
        box = (x + 1, y + 1, min(width, right - x) - 2, height - 2)
        counted = Counter(self.desk.picture(box).getdata())
        background = counted.most_common(1)[0][0]
        return background, max(counted, key=lambda colour: distance(colour, background))

    def text_colours(self, window, column):
        return [self.colours(window, row, column)[1] for row in range(window.table.rows)]

    def backgrounds(self, window, column):
        return [self.colours(window, row, column)[0] for row in range(window.table.rows)]

    def test_paths_are_black_red_or_orange(self):
        window = self.open_with("watch path /no/such any r", "watch path /etc any r", "allow prefix / any r",
                                "allow path /etc any r", "allow path /no/such any r", "deny path /no/such any r",
                                "deny path /dev/none any r", "deny suffix /none any r", "deny path none any r",
                                "deny path :NVRAM/none any r")
        self.assertEqual(self.text_colours(window, PATH),
                         [RED, BLACK, BLACK, ORANGE, ORANGE, RED, BLACK, BLACK, BLACK, BLACK])

    def test_a_system_rules_missing_path_is_black(self):
        self.sandbox.write_system("quorvane.rc", "allow path /no/such any r", "watch path /no/such any r")
        window = self.open_with()
        self.desk.press("ctrl+shift+h")
        self.assert_becomes(lambda: window.table.rows, 2)
        self.assertEqual(self.text_colours(window, PATH), [BLACK, BLACK])

    def test_an_application_is_red_when_its_program_is_gone(self):
        window = self.open_with("allow prefix /etc /bin/sh rw", "allow prefix /etc /no/such rw",
                                "deny prefix /etc any r")
        names = [window.table.cell(row, APPLICATION).name for row in range(window.table.rows)]
        self.assertEqual(dict(zip(names, self.text_colours(window, APPLICATION))),
                         {"sh": BLACK, "such": RED, "Any Process": BLACK})
        self.assertEqual(dict(zip(names, window.descriptions(APPLICATION))),
                         {"sh": "", "such": "program not found", "Any Process": ""})

    def test_tags_are_blue_and_the_rest_is_black(self):
        window = self.open_with("watch prefix /etc any rw Look", "allow prefix /etc /bin/sh rw Work")
        self.assertEqual([self.colours(window, 1, column)[1] for column in (APPLICATION, 2, 3, 4, TAG, PATH)],
                         [BLACK, BLACK, BLACK, BLACK, BLUE, BLACK])
        self.assertEqual(self.colours(window, 0, TAG)[1], BLUE)

    def test_a_selection_keeps_the_colours_of_the_texts(self):
        window = self.open_with("watch path /no/such any r tag", "watch path /etc any r tag")
        self.desk.click(*window.table.cell(0, STATE).center)
        self.assert_becomes(window.selected, ["/no/such"])
        self.take_keyboard_out_of_the_table(window)
        background, text = self.colours(window, 0, PATH)
        self.assertEqual((text, self.colours(window, 0, TAG)[1]), (RED, BLUE))
        self.assertNotEqual(background, self.colours(window, 1, PATH)[0])

    def test_each_application_group_has_a_band_of_its_own(self):
        window = self.open_with("watch path /0 any r", "allow path /1 /bin/a r", "allow path /2 /bin/a r",
                                "allow path /3 /bin/b r",
                                "allow path /4 /bin/c r", "allow path /5 /bin/c r", 'allow path /6 /bin/c r "" C')
        for column in (APPLICATION, STATE, PATH):
            with self.subTest(column=column):
                self.assertEqual(self.backgrounds(window, column)[:1], [WHITE])
                self.assertEqual(self.backgrounds(window, column)[1:], [BAND, BAND, WHITE, BAND, BAND, WHITE])

    def test_a_band_reaches_across_the_whole_row(self):
        window = self.open_with("allow path /1 any r")
        x, y, _, height = window.table.cell(0, APPLICATION).box
        table_x, _, width, _ = window.table.box
        line = self.desk.picture((table_x, y + height - 4, width, 1))
        self.assertEqual([line.getpixel((place, 0)) for place in (x - table_x + 1, width // 2, width - 20)],
                         [BAND] * 3)

    def test_states_have_an_image_and_ordinary_rules_have_none(self):
        self.sandbox.write_system("quorvane.rc", "allow path /system any r")
        window = self.open_with("allow path /old any r", f'allow path /new any r "" "" "{int(time.time())}"')
        self.desk.press("ctrl+shift+h")
        self.assert_becomes(lambda: window.table.rows, 3)
        old, new, system = (distance(*self.colours(window, row, STATE)) for row in range(3))
        self.assertEqual(old, 0)
        self.assertGreater(new, 1000)
        self.assertGreater(system, 1000)

    def test_an_application_has_an_icon_before_its_name_and_a_continued_one_has_none(self):
        window = self.open_with("allow path /1 /bin/a r", "allow path /2 /bin/a r")
        x, y, _, height = window.table.cell(0, APPLICATION).box
        icon = self.desk.picture((x + 3, y + 4, 16, height - 8))
        self.assertGreater(len(set(icon.getdata())), 1)
        self.assertEqual(self.colours(window, 1, APPLICATION), (BAND, BAND))

    def test_an_empty_table_says_so(self):
        window = self.open_with()
        x, y, width, height = window.table.box
        picture = self.desk.picture((x, y + 40, width, height - 40))
        self.assertGreater(len(set(picture.getdata())), 1)


class Pictures(DesktopTest):
    """The appearance of the main window, stored in the build folder for inspection."""

    screen = (2800, 1700)
    RULES = ["watch suffix .plist /usr/bin/defaults rw settings",
             "allow prefix /etc /Applications/Mail.app/Contents/MacOS/Mail rwc mail",
             "deny path /etc/hosts /usr/bin/vi w",
             "allow prefix / any r", "allow path /etc/hosts any r", "deny path /no/such/file any x careful",
             "allow path /etc/passwd /Applications/Mail.app/Contents/MacOS/Mail r"]

    def keep_picture(self, name, scale):
        window = self.open_with(*self.RULES, QT_SCALE_FACTOR=str(scale), QT_ENABLE_HIGHDPI_SCALING="1")
        picture = self.desk.picture(tuple(scale * length for length in window.frame.box))
        os.makedirs(PICTURES, exist_ok=True)
        picture.save(os.path.join(PICTURES, name))
        self.assertEqual(picture.size, self.native_size(window))
        return picture

    def native_size(self, window):
        answer = self.desk.hands("search", "--sync", "--onlyvisible", "--pid", window.process.pid, "--name",
                                 "Quorvane Configuration", "getwindowgeometry", "--shell")
        geometry = dict(line.split("=") for line in answer.splitlines() if "=" in line)
        return int(geometry["WIDTH"]), int(geometry["HEIGHT"])

    def assert_looks_right(self, picture, scale):
        self.assertEqual(picture.size, (1120 * scale, 700 * scale))
        counted = Counter(picture.getdata())
        for colour in (WHITE, BAND, BLACK, RED, ORANGE, BLUE):
            self.assertGreater(counted[colour], 5 * scale, colour)
        # Light: most of it is nearly white.
        light = sum(count for colour, count in counted.items() if min(colour) >= 0xf0)
        self.assertGreater(light, 0.9 * sum(counted.values()))

    def test_the_window_at_scale_1(self):
        self.assert_looks_right(self.keep_picture("main-window.png", 1), 1)

    def test_the_window_at_scale_2_is_twice_as_fine(self):
        picture = self.keep_picture("main-window@2x.png", 2)
        self.assert_looks_right(picture, 2)
        # Drawn at full resolution, not with doubled pixels.
        coarse = picture.resize((1120, 700), 0).resize(picture.size, 0)
        differing = sum(1 for one, other in zip(picture.getdata(), coarse.getdata()) if one != other)
        self.assertGreater(differing, 1000)
