import os
import subprocess

from macho import CODE, adhoc_program, unsigned_program
from quorvanectl import CommandTest

KEYS = ["state", "strictState", "identifier", "teamIdentifier", "platformIdentifier", "certInfo"]
UNSIGNED = [1, 1, None, None, 0, "Self-Signed Certificate"]
UNKNOWN = [6, 6, None, None, 0, "Self-Signed Certificate"]


class Codesign(CommandTest):
    def answers(self, path):
        """The values for one path, in the order of KEYS."""
        result = self.succeed("codesign", "--json", path)
        self.assertEqual(result.keys(), [["path"] + KEYS])
        found = result.objects()[0]
        self.assertEqual(found["path"], path)
        return [found[key] for key in KEYS]

    def program(self, contents, name="program"):
        return self.sandbox.new_file(name, contents)

    def test_an_ad_hoc_signed_program_has_an_identifier_and_no_team(self):
        valid = [2, 2, "com.example.tool", None, 0, "Self-Signed Certificate"]
        self.assertEqual(self.answers(self.program(adhoc_program())), valid)
        self.assertEqual(self.answers(self.program(adhoc_program(team="TEAM123456"))), valid)
        self.assertEqual(self.answers(self.program(adhoc_program(identifier="(null)")))[2], None)

    def test_the_platform_identifier_is_a_number(self):
        self.assertEqual(self.answers(self.program(adhoc_program(platform=13)))[4], 13)

    def test_changed_code_fails_the_strict_check_only(self):
        program = bytearray(adhoc_program())
        program[CODE - 1] ^= 1
        self.assertEqual(self.answers(self.program(bytes(program)))[:2], [2, 3])

    def test_what_nobody_signed_is_unsigned(self):
        self.assertEqual(self.answers(self.program(unsigned_program())), UNSIGNED)
        self.assertEqual(self.answers("/bin/sh"), UNSIGNED)
        self.assertEqual(self.answers(self.program(b"#!/bin/sh\n")), UNSIGNED)
        self.assertEqual(self.answers(self.program(b"")), UNSIGNED)

    def test_nothing_is_known_of_what_is_not_there(self):
        for path in (self.sandbox.path("missing"), self.sandbox.home, "/dev/zero", ""):
            with self.subTest(path=path):
                self.assertEqual(self.answers(path), UNKNOWN)

    def test_a_bundle_is_asked_by_its_folder(self):
        folder = self.sandbox.path("Tool.app/Contents/MacOS")
        os.makedirs(folder)
        self.sandbox.write(os.path.join(folder, "Tool"), adhoc_program())
        self.assertEqual(self.answers(self.sandbox.path("Tool.app"))[2], "com.example.tool")

    def test_several_paths_are_answered_in_their_order(self):
        paths = [self.program(adhoc_program()), self.sandbox.path("missing"), "/bin/sh"]
        result = self.succeed("codesign", "--json", *paths)
        self.assertEqual(result.values("path"), paths)
        self.assertEqual(result.values("state"), [2, 6, 1])

    def test_a_running_process_is_asked_by_its_number(self):
        result = self.succeed("codesign", "--json", "--pid", str(os.getpid()))
        self.assertEqual(result.keys(), [["pid", *(key for key in KEYS if key != "strictState")]])
        self.assertEqual(result.objects(), [
            {"pid": os.getpid(), "state": 1, "identifier": None, "teamIdentifier": None, "platformIdentifier": 0,
             "certInfo": "Self-Signed Certificate"}])

    def test_nothing_is_known_of_a_process_that_has_ended(self):
        ended = subprocess.Popen(["/bin/true"])
        ended.wait()
        result = self.succeed("codesign", "--json", "--pid", str(ended.pid), "--pid", str(os.getpid()), "0")
        self.assertEqual(result.values("pid"), [ended.pid, os.getpid(), 0])
        self.assertEqual(result.values("state"), [6, 1, 6])
        self.assertEqual(result.values("certInfo"), ["Self-Signed Certificate"] * 3)

    def test_wrong_arguments_are_usage_errors(self):
        for arguments in ([], ["--json"], ["--pid"], ["--pid", "x"], ["--pid", "-1"], ["--pid", "1x"],
                          ["--pid", ""], ["--pid", "2147483648"], ["--pid", "99999999999999999999"],
                          ["--pid", "1", "/bin/sh"], ["/bin/sh", "--pid", "1"], ["--strict", "/bin/sh"]):
            with self.subTest(arguments=arguments):
                self.assertEqual(self.fail_with(2, "codesign", *arguments).out, b"")

    def test_a_number_is_decimal_even_with_zeros_before_it(self):
        self.assertEqual(self.succeed("codesign", "--json", "--pid", "00010").values("pid"), [10])

    def test_without_json_each_answer_is_a_line(self):
        path = self.program(adhoc_program(identifier="a\x1b[31mb"))
        lines = self.succeed("codesign", path).out.decode().splitlines()
        self.assertEqual(lines[0], path)
        self.assertEqual([line[4:18].strip() for line in lines[1:]],
                         ["state", "strict state", "identifier", "team", "platform", "certificate"])
        self.assertEqual([line[18:] for line in lines[1:]], [
            "2 (signed and valid)", "2 (signed and valid)", "a\\x1b[31mb", "none", "0", "Self-Signed Certificate"])
        self.assertIn(b"6 (cannot tell)", self.succeed("codesign", "--pid", "0").out)

    def test_a_closed_output_is_a_failure(self):
        with open("/dev/full", "wb") as full:
            self.fail_with(1, "codesign", "--json", "/bin/sh", stdout=full)
