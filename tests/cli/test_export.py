import os
import resource

from alone import can_mount
from quorvanectl import PROGRAM, CommandTest
from sandbox import read


class Export(CommandTest):
    def setUp(self):
        super().setUp()
        self.out = self.sandbox.path("out.quorv")
        self.sandbox.write_user("; a comment", "set a 1", "allow prefix /b /bin/b r tag C 12",
                                "watch path /w any rw look",
                                "deny suffix .a /bin/a xm")
        self.sandbox.write_system("quorvane.rc", "allow prefix /s /bin/s c us C 7", "watch prefix /ws any m s")

    def exported(self, *arguments):
        self.succeed("export", self.out, *arguments)
        return read(self.out).decode()

    def test_writes_every_user_rule_byte_for_byte(self):
        self.assertEqual(self.exported(), 'watch path "/w" "any" rw "look"\n'
                                          'deny suffix ".a" "/bin/a" mx "" "" "0"\n'
                                          'allow prefix "/b" "/bin/b" r "tag" "C" "12"\n')

    def test_without_rows_neither_filter_nor_sort_nor_system_rules_change_the_file(self):
        everything = self.exported()
        self.assertEqual(self.exported("--filter", "nothing", "--sort", "path:desc", "--system"), everything)

    def test_prints_nothing(self):
        self.assertEqual(self.succeed("export", self.out).out, b"")

    def test_says_first_how_many_of_the_rules_do_not_read_back(self):
        self.sandbox.write_user("allow path /\u00e9 any r", "allow path /plain any r", "deny path /\u00fc any w")
        result = self.run_program("export", self.out)
        self.assertEqual(result.status, 0)
        self.assertIn("warning: 2 of the rules exported do not read back as written: they hold text other than ASCII",
                      result.err)
        self.assertEqual(self.exported("--path", "/plain"), 'allow path "/plain" "any" r "" "" "0"\n')
        settings = os.path.join(self.sandbox.home, ".config/quorvane/settings.ini")
        os.makedirs(os.path.dirname(settings))
        self.sandbox.write(settings, ["[rules]", "wholeLines=true"])
        result = self.run_program("export", self.out, "--row", "0")
        self.assertIn("warning: 1 of the rules exported does not read back as written", result.err)
        self.assertNotIn(b"\n", read(self.out))
        result = self.fail_with(1, "export", self.sandbox.path("no/folder"))
        self.assertIn("warning: 2 of the rules exported", result.err.splitlines()[0])

    def test_writes_rows_in_the_order_given_and_as_often_as_given(self):
        self.assertEqual(self.exported("--row", "2", "--row", "0", "--row", "2"),
                         'allow prefix "/b" "/bin/b" r "tag" "C" "12"\n'
                         'watch path "/w" "any" rw "look"\n'
                         'allow prefix "/b" "/bin/b" r "tag" "C" "12"\n')

    def test_rows_are_those_of_the_same_list(self):
        arguments = ["--system", "--filter", "/s", "--sort", "path"]
        self.assertEqual(self.listed(*arguments), ["/s"])
        self.assertEqual(self.exported("--row", "0", *arguments), 'allow prefix "/s" "/bin/s" c "" "C" "7"\n')

    def test_system_rules_become_user_rules_without_flags(self):
        self.exported("--system", "--row", "1", "--row", "4")
        rules = self.succeed("list", "--json", self.out).objects()
        self.assertEqual([(rule["path"], rule["system"], rule["flags"], rule["tag"]) for rule in rules],
                         [("/ws", False, 0, ""), ("/s", False, 0, "")])

    def test_a_row_beyond_the_end_writes_nothing(self):
        self.sandbox.write(self.out, "precious\n")
        for row in ("3", "18446744073709551615"):
            with self.subTest(row=row):
                result = self.fail_with(2, "export", self.out, "--row", "0", "--row", row)
                self.assertIn("there is no row " + row, result.err)
                self.assertEqual(read(self.out), b"precious\n")

    def test_a_row_that_is_no_number_is_a_usage_error(self):
        for row in ("-1", "x", "", "1.5", "+1", "0x1", "18446744073709551616", "1" * 400):
            with self.subTest(row=row):
                self.fail_with(2, "export", self.out, "--row=" + row)
                self.assertFalse(os.path.exists(self.out))

    def test_a_file_given_is_exported_instead(self):
        file = self.sandbox.new_file("other", ["allow prefix /1 any r", "allow prefix /2 any r us C -5"])
        self.assertEqual(self.exported(file), 'allow prefix "/1" "any" r "" "" "0"\n'
                                              'allow prefix "/2" "any" r "us" "C" "-5"\n')
        self.assertEqual(self.exported("--row", "0", file), 'allow prefix "/1" "any" r "" "" "0"\n')

    def test_what_is_exported_reads_back_the_same(self):
        self.exported()
        compared = ("kind", "policyClass", "policyType", "path", "processName", "tag", "constraint", "operations",
                    "created")
        rules = [[[rule[key] for key in compared] for rule in self.succeed("list", "--json", *file).objects()]
                 for file in ([], [self.out])]
        self.assertEqual(rules[0], rules[1])

    def test_the_file_is_readable_by_owner_and_group_only(self):
        self.exported()
        self.assertEqual(os.stat(self.out).st_mode & 0o7777, 0o640)
        os.chmod(self.out, 0o777)
        self.exported()
        self.assertEqual(os.stat(self.out).st_mode & 0o7777, 0o640)

    def test_an_existing_file_is_replaced_by_a_whole_one(self):
        self.sandbox.write(self.out, "x" * 10_000)
        self.assertNotIn("x" * 10, self.exported())
        before = read(self.out)
        limit = len(before) - 1
        result = self.fail_with(1, "export", self.out,
                                preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)))
        self.assertIn(f"Failed write() operation on file '{self.out}' File too large (27)", result.err)
        self.assertEqual(read(self.out), before)
        self.assertEqual([name for name in os.listdir(os.path.dirname(self.out)) if name.startswith(".quorvane")], [])

    def test_a_full_disk_leaves_an_older_export_alone(self):
        if not can_mount():
            self.skipTest("only root can mount a small file system, and not everywhere")
        self.sandbox.write_user(*[f"allow prefix /{number} any r" for number in range(1000)])
        small = self.sandbox.path("small")
        os.mkdir(small)
        script = ('mount -t tmpfs -o size=16k none "$1" && echo precious > "$1/out" || exit 99\n'
                  '"$2" export "$1/out"; echo "status $?"; cat "$1/out"; ls -A "$1"')
        result = self.run_program("--mount", "--propagation", "private", "sh", "-c", script, "sh", small, PROGRAM,
                                  program="unshare")
        self.assertEqual(result.out.decode().split(), ["status", "1", "precious", "out"])
        self.assertIn(f"Failed write() operation on file '{small}/out' No space left on device (28)", result.err)

    def test_what_is_no_regular_file_is_refused_at_once_and_keeps_its_bits(self):
        pipe = self.sandbox.path("pipe")
        os.mkfifo(pipe, 0o604)
        for out in (pipe, "/dev/full"):
            with self.subTest(out=out):
                before = os.stat(out).st_mode
                result = self.fail_with(1, "export", out)
                self.assertIn(f"Failed to open file '{out}' for writing: Operation not supported (95)", result.err)
                self.assertEqual(os.stat(out).st_mode, before)

    def test_standard_output_is_a_link_and_refused(self):
        result = self.fail_with(1, "export", "/dev/stdout")
        self.assertEqual(result.out, b"")
        self.assertIn("Failed to open file '/dev/stdout' for writing: Too many levels of symbolic links (40)",
                      result.err)

    def test_a_symbolic_link_is_not_written_through(self):
        target = self.sandbox.new_file("target", "precious\n")
        os.symlink(target, self.out)
        result = self.fail_with(1, "export", self.out)
        self.assertIn(f"Failed to open file '{self.out}' for writing: Too many levels of symbolic links (40)",
                      result.err)
        self.assertEqual(read(target), b"precious\n")

    def test_a_missing_folder_is_a_failure(self):
        out = self.sandbox.path("none/out")
        result = self.fail_with(1, "export", out)
        self.assertIn(f"Failed to open file '{out}' for writing: No such file or directory (2)", result.err)

    def test_a_failure_to_read_leaves_an_older_export_alone(self):
        self.sandbox.write(self.out, "precious\n")
        for bad in (self.sandbox.home, self.sandbox.path("missing")):
            with self.subTest(bad=bad):
                self.assertIn("nothing was written", self.fail_with(1, "export", self.out, bad).err)
                self.assertEqual(read(self.out), b"precious\n")

    def test_an_unreadable_configuration_leaves_an_older_export_alone(self):
        self.sandbox.write(self.out, "precious\n")
        os.remove(self.sandbox.user_file)
        os.mkdir(self.sandbox.user_file)
        self.assertIn("nothing was written", self.fail_with(1, "export", self.out).err)
        self.assertEqual(read(self.out), b"precious\n")

    def test_a_line_beyond_ascii_loses_its_end_and_that_is_told(self):
        self.sandbox.write_user("allow prefix /é /bin/a r", "allow prefix /next /bin/b r")
        result = self.run_program("export", self.out)
        self.assertEqual(result.status, 0)
        self.assertIn("warning: 1 of the rules exported does not read back as written", result.err)
        self.assertEqual(read(self.out).decode(), 'allow prefix "/é" "/bin/a" r "" "" "0"'
                                                  'allow prefix "/next" "/bin/b" r "" "" "0"\n')
