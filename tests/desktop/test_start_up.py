import contextlib
import fcntl
import os
import shutil
import signal
import subprocess

from desk import ACTIVE, ENABLED, PATIENCE, SHOWING, eventually, settled
from rules_window import PATH, PROGRAM, DesktopTest, RulesWindow

NOTICE = "Error Loading Configuration"


class StartUp(DesktopTest):
    def test_the_title_names_the_users_rules_file(self):
        self.assertEqual(self.open_with().frame.name, "Quorvane Configuration - " + self.sandbox.user_file)

    def test_shows_the_users_rules_and_counts_them(self):
        window = self.open_with("watch path /w any r", "allow path /a any r", "not a rule")
        self.assertEqual(window.column(PATH), ["/w", "/a"])
        self.assertEqual(window.count(), "2 of 2 rules shown")

    def test_opens_no_other_window(self):
        window = self.open_with("allow path /a any r")
        self.assertEqual([node.role for node in window.program.children() if node.has(SHOWING)], ["frame"])

    def test_the_window_has_the_keyboard_at_once(self):
        window = self.open_with("allow path /a any r")
        self.assertTrue(window.frame.has(ACTIVE))
        self.assertEqual(window.focused().role, "table")

    def test_the_window_manager_is_given_the_programs_icon(self):
        self.open_with("allow path /a any r")
        main = self.desk.hands("search", "--name", "^Quorvane Configuration - ").split()[0]
        icon = subprocess.run(["xprop", "-id", main, "_NET_WM_ICON"], env=self.desk.environment, check=True,
                              stdout=subprocess.PIPE, text=True, timeout=PATIENCE).stdout
        # Not the small one that this window manager gives to windows without an icon.
        self.assertIn("Icon (128 x 128)", icon)

    def test_closed_standard_streams_are_taken_by_nothing_else(self):
        self.sandbox.write_user("allow path /a any r")
        process = self.start(("sh", "-c", 'exec "$0" >&- 2>&-', PROGRAM))
        RulesWindow(self.desk, process)
        for stream in (1, 2):
            self.assertRegex(os.readlink(f"/proc/{process.pid}/fd/{stream}"), "^/dev/")

    def test_settings_that_cannot_be_used_are_told_at_the_foot(self):
        os.makedirs(self.sandbox.path("config/quorvane"))
        self.sandbox.write(self.sandbox.path("config/quorvane/settings.ini"), "[rules]\nwholeLines=perhaps\n")
        window = self.open_with("allow path /a any r")
        self.assertEqual(window.column(PATH), ["/a"])
        self.assertTrue(window.frame.find("push button", "Settings...").has(SHOWING))
        self.assertIn("settings.ini", self.log())

    def test_starts_in_the_plain_locale_and_without_a_home(self):
        window = self.open_with("allow path /é any r", LC_ALL="C", HOME="", XDG_CONFIG_HOME="")
        self.assertEqual(window.column(PATH), ["/é"])


class SlowStart(DesktopTest):
    """Another program is writing the rules file, for which a start waits two seconds."""

    @contextlib.contextmanager
    def started_while_written(self):
        self.sandbox.write_user("allow path /a any r")
        with open(self.sandbox.user_file, encoding="ascii") as held:
            fcntl.flock(held, fcntl.LOCK_EX)
            process = self.start()
            self.desk.hands("search", "--sync", "--onlyvisible", "--name", "^Quorvane Configuration$")
            yield process

    def test_a_small_window_says_that_the_rules_are_read(self):
        with self.started_while_written() as process:
            small = self.desk.tree_of(process).find("dialog", "Quorvane Configuration")
            self.assertIsNotNone(small.find_now("label", "Reading the rules…"))
        window = RulesWindow(self.desk, process)
        self.assertEqual(window.column(PATH), ["/a"])
        self.assertEqual([node.role for node in window.program.children() if node.has(SHOWING)], ["frame"])

    def test_a_request_to_end_counts_meanwhile(self):
        with self.started_while_written() as process:
            process.send_signal(signal.SIGTERM)
            self.assertEqual(process.wait(PATIENCE), 0)
        self.assertNotIn("error on load", self.log())

    def test_the_program_ends_when_the_user_does_not_wait(self):
        with self.started_while_written() as process:
            self.desk.press("Escape")
            self.assertEqual(process.wait(PATIENCE), 0)


class UnusableConfiguration(DesktopTest):
    """Nothing that is wrong with files keeps the window from opening."""

    def assert_opens_with(self, paths):
        window = self.open()
        self.assertEqual(window.column(PATH), paths)
        self.assertIsNone(window.program.find_now("dialog"))
        self.assertEqual(window.close(), 0)

    def test_missing_folders(self):
        shutil.rmtree(self.sandbox.root)
        self.assert_opens_with([])

    def test_a_broken_property_list(self):
        self.sandbox.write_user("allow path /a any r")
        self.sandbox.write(self.sandbox.preferences_file, b"<plist><dict><key>access")
        self.assert_opens_with(["/a"])

    def test_a_property_list_that_is_a_folder(self):
        self.sandbox.write_user("allow path /a any r")
        os.mkdir(self.sandbox.preferences_file)
        self.assert_opens_with(["/a"])

    def test_a_users_file_that_is_a_folder(self):
        os.mkdir(self.sandbox.user_file)
        self.assert_opens_with([])

    def test_a_users_file_that_is_not_utf_8(self):
        self.sandbox.write(self.sandbox.user_file, b"allow path /\xff any r\n")
        self.assert_opens_with([])

    def test_a_users_file_with_a_nul_byte(self):
        self.sandbox.write(self.sandbox.user_file, b"allow path /a any r\n\0allow path /b any r\n")
        self.assert_opens_with(["/a"])

    def test_a_system_file_that_is_a_folder_but_not_the_last_one(self):
        self.sandbox.write_user("allow path /a any r")
        os.mkdir(self.sandbox.system_file("quorvane.rc"))
        self.assert_opens_with(["/a"])

    def test_settings_that_are_broken_or_cannot_be_written(self):
        self.sandbox.write_user("allow path /a any r")
        self.sandbox.write(self.sandbox.path("config"), "not a folder")
        self.assert_opens_with(["/a"])


class LoadFailure(DesktopTest):
    def open_with_failure(self):
        self.sandbox.write_user("allow path /a any r")
        os.makedirs(self.sandbox.system_file("exec.rc"), exist_ok=True)
        window = self.open(wait_until_active=False)  # the notice may have the focus
        return window, window.program.find("dialog", NOTICE)

    def test_of_the_last_file_is_told_in_a_notice_with_its_reason(self):
        window, notice = self.open_with_failure()
        message = f"Failed to read() file '{self.sandbox.system_file('exec.rc')}': Is a directory (21)"
        self.assertIn(message, [node.name for node in notice.below() if node.role == "label"])
        self.assertIn("error on load: " + message, self.log())
        self.assertEqual(window.column(PATH), ["/a"])

    def test_the_picture_of_the_notice_is_told_in_words(self):
        _, notice = self.open_with_failure()
        pictures = [node for node in notice.below() if node.role in ("graphic", "image", "icon")]
        self.assertEqual(len(pictures), 1)
        self.assertNotEqual(pictures[0].name + pictures[0].description, "")

    def test_the_ok_button_closes_the_notice_and_leaves_the_main_window(self):
        window, notice = self.open_with_failure()
        button = notice.find("push button", "OK")
        self.assertTrue(button.has(ENABLED))
        self.desk.click(*button.center)
        eventually(lambda: window.program.find_now("dialog") is None, "the notice to go away")
        eventually(lambda: window.frame.has(ACTIVE), "the main window to become active")
        self.assertEqual(window.close(), 0)

    def test_the_notice_has_the_keyboard_and_closes_by_it(self):
        for key in ("Return", "Escape"):
            with self.subTest(key=key):
                window, notice = self.open_with_failure()
                eventually(lambda: notice.has(ACTIVE), "the notice to become active")
                self.desk.press(key)
                eventually(lambda: window.program.find_now("dialog") is None, "the notice to go away")
                eventually(lambda: window.frame.has(ACTIVE), "the main window to become active")
                self.desk.stop(window.process)

    def test_the_notice_is_not_hidden_by_the_main_window(self):
        _, notice = self.open_with_failure()
        _, _, width, height = settled(lambda: notice.box)
        picture = self.desk.picture(notice.box)
        corners = {picture.getpixel((x, y)) for x in (3, width - 4) for y in (3, height - 4)}
        self.assertEqual(len(corners), 1)
        self.assertNotEqual(corners, {(255, 255, 255)})  # the table behind is white

    def test_a_configuration_that_loads_has_no_notice(self):
        window = self.open_with("allow path /a any r")
        self.assertIsNone(window.program.find_now("dialog"))
        self.assertNotIn("error on load", self.log())


class End(DesktopTest):
    def test_closing_the_window_ends_the_program_with_status_0(self):
        self.assertEqual(self.open_with("allow path /a any r").close(), 0)

    def test_ctrl_q_ends_the_program_with_status_0(self):
        window = self.open_with("allow path /a any r")
        self.desk.press("ctrl+q")
        self.assertEqual(window.process.wait(PATIENCE), 0)

    def test_the_quit_item_of_the_file_menu_ends_the_program(self):
        window = self.open_with("allow path /a any r")
        self.desk.click(*window.frame.find("menu item", "File").center)
        self.desk.click(*window.frame.find("menu item", "Quit").center)
        self.assertEqual(window.process.wait(PATIENCE), 0)

    def test_the_users_file_is_left_as_it_was(self):
        window = self.open_with("; comment", "allow path /a any r")
        before = os.stat(self.sandbox.user_file).st_mtime_ns
        window.close()
        self.assertEqual(os.stat(self.sandbox.user_file).st_mtime_ns, before)
