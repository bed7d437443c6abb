import os
import signal
import uuid

from desk import ACTIVE, FOCUSED, PATIENCE, eventually
from file_panel import answer_panel
from review_window import ReviewWindow
from rules_window import PATH, PROGRAM, DesktopTest, RulesWindow
from sandbox import read


class FileWatch(DesktopTest):
    """Another process changes the rules file while the window is open."""

    def setUp(self):
        super().setUp()
        self.time = 1_700_000_000  # of the file; the program compares its seconds

    def open_with(self, *rules):
        self.write(self.sandbox.user_file, *rules)
        return super().open()

    def write(self, path, *rules):
        self.sandbox.write(path, rules)
        self.touch(path)

    def touch(self, path):
        self.time += 1
        os.utime(path, (self.time, self.time))

    def shown(self, window):
        """The rows of the table; each call changes the time of the file, since the first one may count as the
        time at the start."""
        self.touch(self.sandbox.user_file)
        return window.column(PATH)

    def test_a_rewritten_file_is_shown(self):
        window = self.open_with("allow path /a any r")
        self.write(self.sandbox.user_file, "allow path /b any r", "allow path /c any r")
        self.assert_becomes(lambda: self.shown(window), ["/b", "/c"])
        self.assertEqual(window.count(), "2 of 2 rules shown")
        self.assertRegex(self.log(), r"reloading data on file modification \d+ <=> \d+")

    def test_a_file_that_takes_its_place_is_shown(self):
        window = self.open_with("allow path /a any r")
        self.write(self.sandbox.user_file + ".new", "allow path /b any r")
        os.rename(self.sandbox.user_file + ".new", self.sandbox.user_file)
        self.assert_becomes(lambda: self.shown(window), ["/b"])

    def test_a_file_that_went_and_came_back_is_shown(self):
        window = self.open_with("allow path /a any r")
        os.remove(self.sandbox.user_file)
        self.assertEqual(window.column(PATH), ["/a"])
        self.write(self.sandbox.user_file, "allow path /b any r")
        self.assert_becomes(lambda: self.shown(window), ["/b"])

    def open_editor(self, window, row):
        x, y = window.table.cell(row, PATH).center
        self.desk.hands("mousemove", x, y, "click", "--repeat", "2", "--delay", "60", "1")
        editor = window.program.find("dialog", "sh")
        eventually(lambda: editor.has(ACTIVE), "the editor to become active")
        self.assert_becomes(lambda: editor.find("text", "Path").has(FOCUSED), True)
        return editor

    def save_as(self, editor, path):
        self.desk.press("ctrl+a")
        self.desk.type_text(path)
        self.assert_becomes(lambda: editor.find("text", "Path").text, path)
        self.desk.press("Return")

    def rules_of_file(self):
        return sorted(read(self.sandbox.user_file).decode().splitlines())

    def test_an_editor_keeps_its_rule_while_rows_move_under_it(self):
        rules = [f'allow path "/{name}" "/bin/sh" r "" "" "0"' for name in ("a", "b", "z")]
        window = self.open_with(*rules[:2])
        editor = self.open_editor(window, 1)
        self.write(self.sandbox.user_file, rules[2], *rules[:2])
        self.assert_becomes(lambda: self.shown(window), ["/z", "/a", "/b"])
        self.assertEqual(editor.find("text", "Path").text, "/b")
        self.save_as(editor, "/c")
        self.assert_becomes(self.rules_of_file, [rules[0], rules[1].replace("/b\"", "/c\""), rules[2]])
        self.assert_becomes(lambda: sorted(window.column(PATH)), ["/a", "/c", "/z"])

    def test_a_rule_that_is_removed_while_its_editor_is_open_comes_back_with_its_save(self):
        rules = [f'allow path "/{name}" "/bin/sh" r "" "" "0"' for name in ("a", "b")]
        window = self.open_with(*rules)
        editor = self.open_editor(window, 1)
        self.write(self.sandbox.user_file, rules[0])
        self.assert_becomes(lambda: self.shown(window), ["/a"])
        self.save_as(editor, "/c")
        self.assert_becomes(self.rules_of_file, [rules[0], rules[1].replace("/b\"", "/c\"")])
        self.assert_becomes(lambda: window.column(PATH), ["/a", "/c"])

    def test_a_review_marks_what_is_added_meanwhile_and_its_import_keeps_it(self):
        rules = [f'allow path "/{name}" "/bin/sh" r "t" "T" "0"' for name in ("a", "b", "c")]
        self.sandbox.write(os.path.join(self.sandbox.home, "team.quorv"), rules[:2])
        window = self.open_with()
        self.desk.press("ctrl+o")
        answer_panel(window, "Import Files", os.path.join(self.sandbox.home, "team.quorv"))
        review = ReviewWindow(window, os.path.join(self.sandbox.home, "team.quorv"))
        self.assert_becomes(review.count, "2 of 2 rules ticked")
        self.write(self.sandbox.user_file, rules[2], rules[1])
        self.assert_becomes(lambda: self.shown(window), ["/c", "/b"])
        self.assert_becomes(review.count, "2 of 2 rules ticked, 1 already present (in italics)")
        review.click_button("Import")
        review.wait_until_gone()
        self.assert_becomes(self.rules_of_file, rules)
        self.assert_becomes(lambda: window.column(PATH), ["/c", "/b", "/a"])

    def test_selection_and_place_survive_where_the_rules_still_exist(self):
        rules = [f"allow path /f{number:03} any r" for number in range(200)]
        window = self.open_with(*rules)
        for _ in range(4):
            self.desk.press("Next")
        selected = window.selected()
        self.assertEqual(len(selected), 1)
        top = self.first_in_view(window)
        self.assertNotEqual(top, "/f000")
        self.write(self.sandbox.user_file, "allow path /new any r", *rules[1:])
        self.assert_becomes(lambda: self.shown(window)[:2], ["/new", "/f001"])
        self.assertEqual(window.selected(), selected)
        self.assertEqual(self.first_in_view(window), top)

    def first_in_view(self, window):
        _, y, _, height = window.header(PATH).box
        cells = (window.table.cell(row, PATH) for row in range(window.table.rows))
        return next(cell.name for cell in cells if cell.box[1] >= y + height)


class UnopenableFile(DesktopTest):
    """A rules file that is a link: the program says so, ends, and starts again."""

    NOTICE = "Failed to Open Rules File"

    def setUp(self):
        super().setUp()
        self.mark = uuid.uuid4().hex
        self.addCleanup(lambda: [os.kill(pid, signal.SIGKILL) for pid in self.marked()])

    def marked(self):
        """The processes started by the program, found by a mark in their environment."""
        found = []
        for pid in filter(str.isdigit, os.listdir("/proc")):
            try:
                if f"QUORVANE_TEST={self.mark}".encode() in read(f"/proc/{pid}/environ").split(b"\0"):
                    found.append(int(pid))
            except OSError:  # ended in the meantime
                pass
        return found

    def relaunched(self):
        """The process id of the restarted program."""
        for pid in self.marked():
            try:
                if pid != self.process.pid and os.readlink(f"/proc/{pid}/exe") == os.path.realpath(PROGRAM):
                    return pid
            except OSError:
                pass
        return None

    def test_is_told_and_the_program_starts_again(self):
        elsewhere = self.sandbox.new_file("elsewhere", ["allow path /a any r"])
        os.symlink(elsewhere, self.sandbox.user_file)
        self.process = self.start(QUORVANE_TEST=self.mark)
        notice = self.desk.tree_of(self.process).find("dialog", self.NOTICE)
        self.assertIn("Quorvane Configuration could not access your rules file. Please click OK to relaunch and try "
                      "again.", [node.name for node in notice.below() if node.role == "label"])
        os.remove(self.sandbox.user_file)
        self.sandbox.write_user("allow path /b any r")
        self.desk.click(*notice.find("push button", "OK").center)
        self.assertEqual(self.process.wait(PATIENCE), 0)
        # The waiting process is the shell, or the sleep that it has started.
        waiting = b" ".join(read(f"/proc/{pid}/cmdline").replace(b"\0", b" ") for pid in self.marked())
        self.assertIn(b"sleep 3.000000", waiting)

        again = eventually(self.relaunched, "the program to start again")
        window = RulesWindow(self.desk, Running(again))
        self.assertEqual(window.column(PATH), ["/b"])
        self.assertEqual(read(elsewhere), b"allow path /a any r\n")

    def test_does_not_start_the_program_again_after_a_signal_to_end(self):
        os.symlink(self.sandbox.new_file("elsewhere"), self.sandbox.user_file)
        self.process = self.start(QUORVANE_TEST=self.mark)
        self.desk.tree_of(self.process).find("dialog", self.NOTICE)
        self.process.send_signal(signal.SIGTERM)
        self.assertEqual(self.process.wait(PATIENCE), 0)
        self.assertEqual(self.marked(), [])


class Running:
    """A process that is not our child."""

    def __init__(self, pid):
        self.pid, self.returncode = pid, None

    def poll(self):
        return None
