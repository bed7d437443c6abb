import resource
import signal

from quorvanectl import CommandTest
from sandbox import read


def line(path):
    return f'allow prefix "{path}" "any" r "" "" "0"\n'


# Longer than the journal of them is, so that a limit of file sizes cuts the rules file and not the journal.
MANY = [f"/{'rules/of/a/long/file/' * 10}{number:05}" for number in range(400)]
BEFORE = "".join(map(line, MANY))


class CutShort(CommandTest):
    """What commands make of a write that was cut short."""

    def setUp(self):
        super().setUp()
        self.sandbox.write(self.sandbox.user_file, BEFORE)

        def little_room():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (len(BEFORE) + 10,) * 2)

        result = self.run_program("add", "allow", "prefix", "/added", "any", "r", preexec_fn=little_room,
                                  restore_signals=False)
        self.assertEqual((result.status, self.written()), (1, "BEFORE " + line("/added")[:10]))

    def written(self):
        return self.shortened(read(self.sandbox.user_file).decode())

    def shortened(self, text):
        """The text with what stands in all of them as one word: differences of long texts take minutes."""
        return text.replace(BEFORE, "BEFORE ").replace(BEFORE[:-10], "BEFORE, CUT ")

    def listed_without_many(self, *arguments):
        listed = self.listed(*arguments)
        self.assertTrue(listed[:len(MANY)] == MANY or len(listed) < len(MANY))
        return listed[len(MANY):] if len(listed) >= len(MANY) else listed

    def test_reading_commands_show_the_rules_as_meant_and_leave_the_file_alone(self):
        self.assertEqual(self.listed_without_many(), ["/added"])
        out = self.sandbox.path("out.quorv")
        self.succeed("export", out)
        self.assertEqual(self.shortened(read(out).decode()), "BEFORE " + line("/added"))
        self.assertEqual(self.written(), "BEFORE " + line("/added")[:10])

    def test_the_file_itself_is_shown_as_it_is_when_it_is_named(self):
        self.assertEqual(self.listed_without_many(self.sandbox.user_file), [])

    def test_a_writing_command_completes_the_write_first_and_tells(self):
        result = self.run_program("add", "allow", "prefix", "/next", "any", "r")
        self.assertEqual(result.status, 0)
        self.assertIn("was cut short at \u201cAdd Rule\u201d; it has been completed", result.err)
        self.assertEqual(self.written(), "BEFORE " + line("/added") + line("/next"))

    def test_the_history_tells_how_far_the_write_got(self):
        self.assertEqual(self.succeed("history", "--json").values("state")[0], "under way")
        self.run_program("add", "allow", "prefix", "/next", "any", "r")
        self.assertEqual(self.succeed("history", "--json").values("state")[:2], ["done", "recovered"])

    def test_an_undo_takes_back_the_write_that_was_cut_short(self):
        self.assertEqual(self.run_program("undo").status, 0)
        self.assertEqual(self.written(), "BEFORE ")

    def test_a_dry_run_sees_the_rules_as_meant_and_leaves_the_file_alone(self):
        result = self.succeed("remove", "--dry-run", "--json", "--path", "/added")
        self.assertEqual(result.objects()[-1]["removed"], 1)
        self.assertEqual(self.written(), "BEFORE " + line("/added")[:10])

    def test_a_rule_that_only_the_cut_write_had_can_be_deleted(self):
        self.assertEqual(self.run_program("delete", "allow", "prefix", "/added", "any", "r").status, 0)
        self.assertEqual(self.written(), "BEFORE ")

    def test_zeros_behind_the_cut_hide_no_rule(self):
        self.sandbox.write(self.sandbox.user_file, BEFORE[:-10] + "\0" * 20)
        self.assertEqual(self.listed_without_many(), ["/added"])
        self.assertEqual(self.run_program("add", "allow", "prefix", "/next", "any", "r").status, 0)
        self.assertEqual(self.written(), "BEFORE " + line("/added") + line("/next"))

    def test_what_another_program_has_written_since_is_shown_and_kept(self):
        self.sandbox.write_user("allow prefix /foreign any r")
        self.assertEqual(self.listed_without_many(), ["/foreign"])
        self.run_program("add", "allow", "prefix", "/next", "any", "r")
        self.assertEqual(self.listed_without_many(), ["/foreign", "/added", "/next"])
