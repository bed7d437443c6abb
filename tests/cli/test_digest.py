import hashlib
import os

from quorvanectl import CommandTest


def lines_of(path, contents):
    return [f"SHA1 ({path}) = {hashlib.sha1(contents).hexdigest()}",
            f"SHA256 ({path}) = {hashlib.sha256(contents).hexdigest()}"]


class Digest(CommandTest):
    def test_each_file_has_its_two_digests_in_the_order_given(self):
        contents = {self.sandbox.path("empty"): b"", self.sandbox.path("some file"): b"contents",
                    self.sandbox.path("large"): os.urandom(3_000_001)}
        expected = []
        for path, data in contents.items():
            self.sandbox.write(path, data)
            expected += lines_of(path, data)
        self.assertEqual(self.succeed("digest", *contents).out.decode().splitlines(), expected)

    def test_the_digests_of_nothing(self):
        out = self.succeed("digest", self.sandbox.new_file("empty")).out
        self.assertIn(b"= da39a3ee5e6b4b0d3255bfef95601890afd80709\n", out)
        self.assertIn(b"= e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855\n", out)

    def test_what_cannot_be_read_is_told_while_the_others_are_printed(self):
        good = self.sandbox.new_file("good", b"x")
        for bad in (self.sandbox.path("missing"), self.sandbox.home, "/dev/zero", ""):
            with self.subTest(path=bad):
                result = self.fail_with(1, "digest", bad, good)
                self.assertEqual(result.out.decode().splitlines(), lines_of(good, b"x"))
                self.assertIn(f"cannot read '{bad}'", result.err)

    def test_wrong_arguments_are_usage_errors(self):
        for arguments in ([], ["--json", "/bin/sh"]):
            with self.subTest(arguments=arguments):
                self.assertEqual(self.fail_with(2, "digest", *arguments).out, b"")

    def test_control_characters_never_reach_the_terminal(self):
        out = self.succeed("digest", self.sandbox.new_file("a\x1b[31mb", b"x")).out
        self.assertNotIn(b"\x1b", out)
        self.assertIn(b"a\\x1b[31mb", out)
