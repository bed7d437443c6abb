import os
import stat

from quorvanectl import CommandTest
from sandbox import read

A, B, C = ('allow prefix "/%s" "any" r "" "" "0"\n' % name for name in "abc")


def tagged(line, tag):
    return line.replace('r ""', 'r "%s"' % tag)


class Merge(CommandTest):
    def files(self, base, ours, theirs):
        return [self.sandbox.new_file(name, text) for name, text in
                (("base", base), ("ours", ours), ("theirs", theirs))]

    def merge(self, base, ours, theirs, *options, status=0):
        """What `ours` holds afterwards, and what was complained of."""
        files = self.files(base, ours, theirs)
        result = self.run_program("merge", *options, *files)
        self.assertEqual((result.status, result.out), (status, b""), result.err)
        self.assertEqual((read(files[0]).decode(), read(files[2]).decode()), (base, theirs))
        return read(files[1]).decode(), result.err

    def test_the_result_stands_in_ours(self):
        self.assertEqual(self.merge("; team\n" + A, "; team\n" + A + B, "; team\n" + C + A),
                         ("; team\n" + C + A + B, ""))

    def test_the_result_goes_to_out_instead(self):
        out = self.sandbox.path("out")
        self.assertEqual(self.merge(A, A + B, A + C, "-o", out), (A + B, ""))
        self.assertEqual(read(out).decode(), A + C + B)
        self.assertEqual(stat.S_IMODE(os.stat(out).st_mode), 0o640)

    def test_each_conflict_is_told(self):
        text, complaints = self.merge("; text\n" + A + B, "; ours\n" + tagged(A, "ours"),
                                      "; theirs\n" + tagged(A, "theirs") + tagged(B, "theirs"), status=1)
        self.assertEqual(text, "; ours\n" + tagged(A, "ours") + tagged(B, "theirs"))
        self.assertEqual(complaints.splitlines(), [
            'quorvanectl: conflict: both sides changed a line: "; ours" is kept, not "; theirs"',
            'quorvanectl: conflict: both sides changed the tag: "ours" is kept, not "theirs": '
            + tagged(A, "ours").rstrip("\n"),
            'quorvanectl: conflict: one side removed the rule, the other changed its tag: it is kept: '
            + tagged(B, "theirs").rstrip("\n")])

    def test_both_adding_a_rule_with_different_tags_is_a_conflict(self):
        text, complaints = self.merge("", tagged(A, "x"), tagged(A, "y"), status=1)
        self.assertEqual(text, tagged(A, "x"))
        self.assertIn("both sides added the rule", complaints)

    def test_merging_a_file_with_itself_changes_nothing(self):
        odd = "deny  path /odd any xr ; \r\n\u2028no end"
        for base in ("", odd, A):
            self.assertEqual(self.merge(base, odd, odd), (odd, ""))

    def test_an_existing_file_keeps_its_permission_bits_and_its_owner(self):
        files = self.files(A, A + B, A + C)
        os.chmod(files[1], 0o606)
        if os.getuid() == 0:
            os.chown(files[1], 1234, 2345)
        self.succeed("merge", *files)
        status = os.stat(files[1])
        self.assertEqual(stat.S_IMODE(status.st_mode), 0o606)
        if os.getuid() == 0:
            self.assertEqual((status.st_uid, status.st_gid), (1234, 2345))

    def test_a_file_with_other_names_is_written_in_place(self):
        files = self.files(A, A + B, A + C)
        os.link(files[1], self.sandbox.path("other"))
        self.succeed("merge", *files)
        self.assertEqual(read(self.sandbox.path("other")).decode(), A + C + B)

    def test_the_null_device_is_an_empty_base_and_nothing_else(self):
        _, ours, theirs = self.files("", A, B)
        for arguments in ([theirs, "/dev/null", theirs], [theirs, ours, "/dev/null"], ["/dev/zero", ours, theirs]):
            self.fail_with(3, "merge", *arguments)
        self.succeed("merge", "/dev/null", ours, theirs)
        self.assertEqual(read(ours).decode(), A + B)

    def test_inputs_may_be_pipes(self):
        base, ours, theirs = self.files(A, A + B, A + C)
        result = self.run_program("-c", '"$0" merge -o "$1" <(cat "$2") <(cat "$3") <(cat "$4")',
                                  os.environ["QUORVANE_PROGRAM"], self.sandbox.path("out"), base, ours, theirs,
                                  program="/bin/bash")
        self.assertEqual((result.status, result.err), (0, ""))
        self.assertEqual(read(self.sandbox.path("out")).decode(), A + C + B)

    def test_a_failure_changes_nothing(self):
        base, ours, theirs = self.files(A, A + B, A + C)
        link = self.sandbox.path("link")
        os.symlink(ours, link)
        latin = self.sandbox.new_file("latin", b"; \xe4\n")
        for arguments in ([self.sandbox.path("missing"), ours, theirs], [self.sandbox.folder, ours, theirs],
                          [base, ours, latin], [base, ours, self.sandbox.new_file("nul", b"; \0\n")],
                          [base, link, theirs], ["-o", link, base, ours, theirs],
                          ["-o", self.sandbox.folder, base, ours, theirs],
                          ["-o", self.sandbox.path("no/folder"), base, ours, theirs],
                          ["-o", "/dev/full", base, ours, theirs], ["-o", "", base, ours, theirs]):
            with self.subTest(arguments=arguments):
                self.assertEqual(self.fail_with(3, "merge", *arguments).out, b"")
                self.assertEqual(read(ours).decode(), A + B)
        self.assertTrue(os.path.islink(link))
        self.assertEqual(sorted(os.listdir(self.sandbox.folder)),
                         ["base", "home", "latin", "link", "nul", "ours", "root", "theirs"])

    def test_what_is_not_written_to_is_told_in_words(self):
        files = self.files(A, A + B, A + C)
        link = self.sandbox.path("link")
        os.symlink(files[1], link)
        for out, reason in [(link, "it is a symbolic link"), (self.sandbox.folder, "it is a folder"),
                            ("/dev/null", "it is no regular file")]:
            self.assertIn(f"cannot write '{out}': {reason}", self.fail_with(3, "merge", "-o", out, *files).err)

    def test_a_full_disk_leaves_ours_as_it_was(self):
        files = self.files(A, A + B, A + "; long\n" * 1000)
        result = self.run_program("-c", 'ulimit -f 1; exec "$0" merge "$@"', os.environ["QUORVANE_PROGRAM"], *files,
                                  program="/bin/bash")
        self.assertEqual(result.status, 3)
        self.assertIn("File too large", result.err)
        self.assertEqual(read(files[1]).decode(), A + B)

    def test_a_line_of_ten_megabytes_is_a_line(self):
        long_line = 'allow path "/%s" any r\n' % ("x" * 10_000_000)
        self.assertEqual(self.merge(A, A + long_line, A + B), (A + B + long_line, ""))

    def test_three_files_are_needed(self):
        for arguments in ([], ["a", "b"], ["a", "b", "c", "d"], ["-o"]):
            self.fail_with(2, "merge", *arguments)
