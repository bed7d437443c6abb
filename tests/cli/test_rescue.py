import os
import stat

from quorvanectl import CommandTest
from sandbox import read

KEYS = ["line", "cut", "kind", "policyClass", "policyType", "path", "processName", "tag", "constraint", "operations",
        "flags", "created"]
# As the format's writer leaves it: the first rule has letters beyond ASCII and lost the end of its line.
CUT = 'allow prefix "/\u00e4\u00f6" "any" r "tag" "" "allow path "/b" "any" w "" "" "0"\n'


class Rescue(CommandTest):
    def test_a_file_without_joined_lines_needs_no_rescue(self):
        file = self.sandbox.new_file("rules", ["allow prefix /a any r", "; comment"])
        self.assertEqual(self.succeed("rescue", file).out, b"")
        self.succeed("rescue", "-o", self.sandbox.path("out"), file)
        self.assertEqual(read(self.sandbox.path("out")), read(file))

    def test_the_rules_of_a_joined_line_are_told_the_first_included(self):
        file = self.sandbox.new_file("rules", "; first\r\nwatch path /w any r\n" + CUT)
        result = self.run_program("rescue", "--json", file)
        self.assertEqual((result.status, result.err), (1, ""))
        self.assertEqual(result.keys(), [KEYS] * 2)
        self.assertEqual([list(found.values()) for found in result.objects()], [
            [3, ["created"], "policy", 0, 0, "/\u00e4\u00f6", "any", "tag", "", 1, 0, 0],
            [3, [], "policy", 0, 1, "/b", "any", "", "", 2, 0, 0]])
        text = self.run_program("rescue", file).out.decode()
        self.assertEqual(text.splitlines(), [
            "line 3 holds 2 rules:",
            '    allow prefix "/\u00e4\u00f6" "any" r "tag" "" "0"    (cut: created)',
            '    allow path "/b" "any" w "" "" "0"'])

    def test_the_file_is_written_with_the_rules_apart_and_every_other_line_as_it_was(self):
        odd = 'deny  path /odd any xr ; \n\xff\n'.encode("latin-1")
        file = self.sandbox.new_file("rules", odd + CUT.encode() + b"no end")
        out = self.sandbox.path("out")
        self.assertEqual(self.run_program("rescue", "-o", out, file).status, 1)
        self.assertEqual(read(out), odd + ('allow prefix "/\u00e4\u00f6" "any" r "tag" "" "0"\n'
                                           'allow path "/b" "any" w "" "" "0"\n').encode() + b"no end")
        self.assertEqual(stat.S_IMODE(os.stat(out).st_mode), 0o640)
        self.assertEqual(read(file), odd + CUT.encode() + b"no end")
        self.succeed("rescue", out)

    def test_a_letter_cut_at_a_join_is_dropped(self):
        file = self.sandbox.new_file("rules", 'allow prefix "/a" "any" r "\u00e4'.encode()[:-1] + CUT.encode())
        result = self.run_program("rescue", "--json", file)
        self.assertEqual(result.objects()[0]["tag"], "")
        self.assertEqual(result.objects()[0]["cut"], ["tag", "constraint", "created"])
        out = self.sandbox.path("out")
        self.run_program("rescue", "-o", out, file)
        read(out).decode()

    def test_a_file_may_be_rescued_in_its_place(self):
        file = self.sandbox.new_file("rules", CUT)
        os.chmod(file, 0o604)
        self.assertEqual(self.run_program("rescue", "-o", file, file).status, 1)
        self.succeed("rescue", file)
        self.assertEqual(stat.S_IMODE(os.stat(file).st_mode), 0o604)

    def test_what_cannot_be_read_or_written_is_a_failure(self):
        file = self.sandbox.new_file("rules", CUT)
        os.symlink(file, self.sandbox.path("link"))
        for arguments in ([self.sandbox.path("missing")], [self.sandbox.folder], ["/dev/null"],
                          ["-o", self.sandbox.path("link"), file], ["-o", self.sandbox.folder, file],
                          ["-o", self.sandbox.path("no/folder"), file], ["-o", "/dev/full", file], ["-o", "", file]):
            with self.subTest(arguments=arguments):
                self.assertEqual(self.fail_with(3, "rescue", *arguments).out, b"")
        self.assertEqual(read(file).decode(), CUT)

    def test_an_output_that_cannot_be_written_is_a_failure(self):
        with open("/dev/full", "wb") as full:
            self.fail_with(3, "rescue", self.sandbox.new_file("rules", CUT), stdout=full)
