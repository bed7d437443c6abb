import os
import subprocess

from quorvanectl import PROGRAM, CommandTest
from sandbox import read

PRINTING = (["list"], ["list", "--json"], ["options"], ["options", "--json"], ["check"], ["check", "--json"])
HELP = (["--help"], ["list", "--help"], ["--version"])


class Output(CommandTest):
    def setUp(self):
        super().setUp()
        self.sandbox.write_user("allow path /no/such/file any r")
        self.sandbox.write_preferences(policy_global_exec=1)

    def test_a_full_output_is_a_failure(self):
        for arguments in PRINTING + HELP:
            with self.subTest(arguments=arguments), open("/dev/full", "wb") as full:
                self.assertIn("No space left", self.fail_with(1, *arguments, stdout=full).err)

    def test_a_change_whose_answer_cannot_be_printed_is_told_to_stand(self):
        more = self.sandbox.new_file("more.quorv", "allow path /more any r\n")
        for status, *arguments in ((3, "apply", more), (3, "set", "--set-tag", "t", "--all"), (3, "undo"),
                                   (3, "redo"), (3, "remove", "--all"), (1, "import", more)):
            with self.subTest(arguments=arguments), open("/dev/full", "wb") as full:
                before = read(self.sandbox.user_file)
                result = self.fail_with(status, *arguments, stdout=full)
                self.assertIn("the rules are written all the same", result.err)
                self.assertNotEqual(read(self.sandbox.user_file), before)
        with open("/dev/full", "wb") as full:
            for arguments in (("apply", "--dry-run", more), ("set", "--set-tag", "t", "--tag", "none")):
                self.assertNotIn("all the same", self.fail_with(3, *arguments, stdout=full).err)

    def test_a_file_that_is_rescued_is_told_to_be_there_when_the_lines_cannot_be_printed(self):
        joined = self.sandbox.new_file("joined.rc", 'allow path "/a" "any" r "tallow path "/b" "any" r "" "" "0"\n')
        for options, said in (([], False), (["-o", self.sandbox.path("out.rc")], True)):
            with open("/dev/full", "wb") as full:
                err = self.fail_with(3, "rescue", *options, joined, stdout=full).err
                self.assertEqual("out.rc' is written all the same" in err, said)

    def test_a_closed_output_is_a_failure(self):
        for arguments in PRINTING + HELP:
            with self.subTest(arguments=arguments):
                self.fail_with(1, *arguments, stdout=None, preexec_fn=lambda: os.close(1))

    def test_a_pipe_that_nobody_reads_is_a_failure(self):
        for arguments in PRINTING + HELP:
            with self.subTest(arguments=arguments):
                reader, writer = os.pipe()
                os.close(reader)
                self.fail_with(1, *arguments, stdout=writer)
                os.close(writer)

    def test_a_reader_that_goes_away_early_ends_a_long_list(self):
        self.sandbox.write(self.sandbox.user_file, "".join(f"allow prefix /{n} any r\n" for n in range(20_000)))
        with subprocess.Popen([PROGRAM, "list", "--json"], env=self.environment(), stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE) as program:
            program.stdout.readline()
            program.stdout.close()
            self.assertEqual(program.wait(60), 1)
            self.assertIn(b"Broken pipe", program.stderr.read())

    def test_a_slow_reader_gets_everything(self):
        self.sandbox.write(self.sandbox.user_file, "".join(f"allow prefix /{n} any r\n" for n in range(20_000)))
        self.assertEqual(len(self.succeed("list", "--json").out.splitlines()), 20_000)

    def test_a_command_that_prints_nothing_does_not_need_the_output(self):
        for arguments in (["add", "allow", "prefix", "/a", "any", "r"], ["export", self.sandbox.path("out")]):
            with self.subTest(arguments=arguments):
                result = self.run_program(*arguments, stdout=None, preexec_fn=lambda: os.close(1))
                self.assertEqual((result.status, result.err), (0, ""))

    def test_a_file_opened_in_place_of_a_closed_input_counts_as_unread(self):
        file = self.sandbox.new_file("rules.quorv")
        with open(file, "w", encoding="utf-8") as out:
            out.write("allow path /a any r\n")
        result = self.run_program("list", "--json", file, stdin=None, preexec_fn=lambda: os.close(0))
        self.assertEqual((result.status, result.values("path")), (1, []))
        self.assertIn(f"Failed to open file '{file}' for reading", result.err)

    def test_a_rules_file_never_takes_the_place_of_a_closed_error_output(self):
        target = self.sandbox.new_file("out.quorv")
        done = subprocess.run([PROGRAM, "export", target, "--row", "7"], env=self.environment(), timeout=60,
                              preexec_fn=lambda: [os.close(descriptor) for descriptor in (0, 1, 2)])
        self.assertEqual(done.returncode, 1)
        self.assertEqual(os.path.getsize(target), 0)
