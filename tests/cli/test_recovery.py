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

        result = self.run_without_room("add", "allow", "prefix", "/added", "any", "r")
        self.assertEqual((result.status, self.written()), (1, "BEFORE " + line("/added")[:10]))

    def run_without_room(self, *arguments):
        def little_room():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (len(BEFORE) + 10,) * 2)

        return self.run_program(*arguments, preexec_fn=little_room, restore_signals=False)

    def versions(self):
        """What the history tells, the newest last."""
        versions = self.succeed("history", "--json").objects()
        return [(version["action"], version["added"] + version["removed"], version["state"])
                for version in reversed(versions)][1:]

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

    def test_a_command_that_cannot_complete_the_write_either_fails_also_where_it_changes_nothing(self):
        added = self.sandbox.new_file("added.quorv", line("/added"))
        for command in (["apply", added], ["set", "--set-tag", "", "--path", "/added"],
                        ["remove", "--path", "/none"]):
            result = self.run_without_room(*command)
            self.assertEqual((result.status, result.out), (3, b""), command)
            self.assertIn("Failed write()", result.err)

    def test_commands_that_cannot_complete_the_write_leave_the_history_as_it_is(self):
        versions = self.versions()
        self.assertEqual(versions, [("Add Rule", 1, "under way")])
        for _ in range(3):
            self.run_without_room("remove", "--path", "/none")
        self.assertEqual(self.versions(), versions)
        self.assertEqual(self.run_program("remove", "--path", "/none").status, 0)
        self.assertEqual((self.written(), self.versions()),
                         ("BEFORE " + line("/added"), [("Add Rule", 1, "recovered")]))

    def test_an_action_that_fails_as_well_keeps_its_name(self):
        self.assertEqual(self.run_without_room("add", "allow", "prefix", "/next", "any", "r").status, 1)
        self.assertEqual(self.versions(), [("Add Rule", 1, "under way")] * 2)
        self.assertEqual(self.listed_without_many(), ["/added", "/next"])

    def test_an_undo_takes_back_the_write_also_where_it_cannot_be_completed(self):
        self.run_without_room("remove", "--path", "/none")
        result = self.run_without_room("undo")
        self.assertEqual((result.status, result.out), (0, b"Undone: Add Rule\n"))
        self.assertEqual((self.written(), self.versions()),
                         ("BEFORE ", [("Add Rule", 1, "recovered"), ("Undo Add Rule", 1, "done")]))
        self.assertEqual(self.run_program("undo").status, 3)
