"""What the application shows at its start, and what its menus show of it later."""

import os

from desk import ACTIVE, SHOWING, eventually
from rules_window import APPLICATION, PATH, PROGRAM, DesktopTest, RulesWindow
from sandbox import read

PREFERENCES = "Quorvane Preferences"
CLOSED = "-[RulesEditorTableController windowWillClose:] exiting"
SHOWN = "showing preferences window"


class Arguments(DesktopTest):
    def setUp(self):
        super().setUp()
        self.sandbox.write_user("allow path /a any r")

    def start_with(self, *arguments, name=PROGRAM):
        self.process = self.start(["python3", "-c", "import os, sys; os.execv(sys.argv[1], sys.argv[2:])", PROGRAM,
                                   name, *arguments])
        self.program = self.desk.tree_of(self.process)

    def shown(self, role):
        return [node for node in self.program.children() if node.role == role and node.has(SHOWING)]

    def lines(self, *wanted):
        return [line for line in self.log().splitlines() if line in wanted]

    def test_preferences_are_shown_alone_and_end_the_program(self):
        self.start_with("-preferences")
        window = self.program.find("dialog", PREFERENCES)
        eventually(lambda: window.has(ACTIVE), "the preferences to become active")
        self.assertEqual(self.shown("frame"), [])
        self.assertEqual(self.lines(CLOSED, SHOWN), [CLOSED, SHOWN])
        self.desk.press("Escape")
        self.assertEqual(self.process.wait(20), 0)
        self.assertEqual(self.lines(CLOSED), [CLOSED])

    def test_a_main_window_that_was_never_shown_leaves_no_settings_behind(self):
        self.start_with("-preferences")
        eventually(lambda: self.program.find("dialog", PREFERENCES).has(ACTIVE))
        self.desk.press("Escape")
        self.assertEqual(self.process.wait(20), 0)
        self.assertFalse(os.path.exists(self.sandbox.path("config")))

    def test_preferences_twice_are_shown_twice(self):
        self.start_with("-preferences", "-preferences")
        self.assert_becomes(lambda: len(self.shown("dialog")), 2)
        self.assertEqual(self.lines(CLOSED, SHOWN), [CLOSED, SHOWN, CLOSED, SHOWN])

    def test_other_arguments_show_the_main_window(self):
        for arguments in (["--preferences"], ["-Preferences"], ["preferences"], ["-preferences "], [""]):
            with self.subTest(arguments=arguments):
                self.start_with(*arguments)
                window = RulesWindow(self.desk, self.process)
                self.assertEqual(self.shown("dialog"), [])
                self.assertEqual(window.close(), 0)

    def test_arguments_of_the_toolkit_have_no_effect(self):
        for arguments in (["-platform", "bogus"], ["--platform", "offscreen"], ["-display", ":none"], ["--help"],
                          ["-stylesheet", self.sandbox.new_file("sheet", "* { color: red }")], ["-reverse"],
                          ["-platformpluginpath", "/none"], ["-qmljsdebugger", "bogus"], ["-plugin", "none"],
                          ["-geometry", "99x99+7+7"], ["-title", "Other"], ["-session", "1_2"], ["-nograb"]):
            with self.subTest(arguments=arguments):
                self.start_with(*arguments)
                window = RulesWindow(self.desk, self.process)
                self.assertEqual(window.frame.name, "Quorvane Configuration - " + self.sandbox.user_file)
                self.assertGreater(window.frame.box[2], 500)
                self.assertLess(window.header(APPLICATION).box[0], window.header(PATH).box[0])
                self.assertEqual(window.close(), 0)

    def test_preferences_are_found_among_arguments_of_the_toolkit(self):
        self.start_with("-style", "bogus", "-preferences", "-platform", "bogus")
        self.program.find("dialog", PREFERENCES)
        self.assertEqual(self.shown("frame"), [])

    def test_the_programs_name_counts_as_an_argument(self):
        """Deliberate: all arguments of the process are looked at."""
        self.start_with(name="-preferences")
        self.program.find("dialog", PREFERENCES)
        self.assertEqual(self.shown("frame"), [])
        self.assertEqual(self.lines(CLOSED, SHOWN), [CLOSED, SHOWN])

    def test_a_configuration_that_fails_to_load_is_told_beside_the_preferences(self):
        os.makedirs(self.sandbox.system_file("exec.rc"))
        self.start_with("-preferences")
        self.program.find("dialog", PREFERENCES)
        self.program.find("dialog", "Error Loading Configuration")


class Menus(DesktopTest):
    def setUp(self):
        super().setUp()
        self.sandbox.write_user("allow path /a any r")
        # Records what it is asked to open; other programs that could open files are not in the path.
        os.makedirs(self.sandbox.path("bin"))
        self.opened = self.sandbox.path("opened")
        opener = self.sandbox.new_file("bin/xdg-open", f'#!/bin/sh\nprintf "%s" "$1" > "{self.opened}"\n')
        os.chmod(opener, 0o755)
        self.window = self.open(PATH=self.sandbox.path("bin"),
                                XDG_DATA_DIRS=self.sandbox.path("share") + ":" + self.data_without_programs())

    def data_without_programs(self):
        """The machine's shared data; its programs may include one that shows PDF files."""
        folder = self.sandbox.path("data")
        os.makedirs(folder)
        for name in os.listdir("/usr/share"):
            if name != "applications":
                os.symlink(os.path.join("/usr/share", name), os.path.join(folder, name))
        return folder

    def choose(self, menu, item):
        self.desk.click(*self.window.frame.find("menu item", menu).center)
        self.desk.click(*self.window.frame.find("menu item", item).center)

    def test_preferences_open_over_the_main_window_and_leave_it_when_they_are_closed(self):
        ways = (lambda: self.choose("Edit", "Preferences..."), lambda: self.desk.press("ctrl+comma"))
        for number, show in enumerate(ways):
            with self.subTest(way=number):
                show()
                preferences = self.window.program.find("dialog", PREFERENCES)
                eventually(lambda: preferences.has(ACTIVE), "the preferences to become active")
                self.desk.press("Escape")
                eventually(lambda: self.window.program.find_now("dialog") is None, "the preferences to go away")
                eventually(lambda: self.window.frame.has(ACTIVE), "the main window to become active")
        self.assertEqual(self.window.close(), 0)

    def assert_opens(self, file):
        eventually(lambda: os.path.exists(self.opened) and read(self.opened), "the guide to open")
        self.assertIn(read(self.opened).decode(), (file, "file://" + file.replace(" ", "%20")))
        os.remove(self.opened)

    def write_guide(self, kind, contents):
        return self.sandbox.write(self.sandbox.system_file("Quorvane User Guide." + kind), contents)

    def test_the_user_guide_opens_with_the_desktops_program(self):
        guide = self.write_guide("pdf", b"%PDF-")
        for show in (lambda: self.choose("Help", "User Guide"), lambda: self.desk.press("F1")):
            show()
            self.assert_opens(guide)

    def test_the_page_of_the_user_guide_opens_where_no_program_shows_pdf_files(self):
        self.write_guide("pdf", b"%PDF-")
        page = self.write_guide("html", b"<!DOCTYPE html>")
        self.desk.press("F1")
        self.assert_opens(page)

    def test_the_user_guide_and_not_its_page_opens_where_a_program_shows_pdf_files(self):
        guide = self.write_guide("pdf", b"%PDF-")
        self.write_guide("html", b"<!DOCTYPE html>")
        os.makedirs(self.sandbox.path("share/applications"))
        self.sandbox.new_file("share/applications/viewer.desktop",
                              "[Desktop Entry]\nType=Application\nName=Viewer\nExec=xdg-open %f\n")
        self.sandbox.new_file("share/applications/mimeinfo.cache",
                              "[MIME Cache]\napplication/pdf=viewer.desktop;\n")
        self.desk.press("F1")
        self.assert_opens(guide)

    def test_a_missing_user_guide_is_told_in_the_log_alone(self):
        self.desk.press("F1")
        eventually(lambda: "cannot open the user guide" in self.log(), "the line in the log")
        self.assertFalse(os.path.exists(self.opened))
        self.assertIsNone(self.window.program.find_now("dialog"))
        self.assertTrue(self.window.frame.has(ACTIVE))
