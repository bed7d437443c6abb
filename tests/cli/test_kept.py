import difflib
import re
import unittest
from concurrent.futures import ThreadPoolExecutor

from kept import kept, names, path_of, played
from sandbox import SANITIZER_REPORT


def difference(name, now):
    lines = difflib.unified_diff(kept(name).splitlines(keepends=True), now.splitlines(keepends=True), path_of(name), "now")
    return f"\n{''.join(lines)}\nWhere this is meant: tools/renew_kept BUILD, and read the difference."


class Kept(unittest.TestCase):
    def test_each_command_prints_what_is_kept(self):
        with ThreadPoolExecutor() as threads:
            for name, now in zip(names(), threads.map(played, names())):
                with self.subTest(session=name):
                    self.assertNotRegex(now, SANITIZER_REPORT)
                    if now != kept(name):
                        self.fail(difference(name, now))

    def test_the_help_of_each_command_is_kept(self):
        text = kept("help")
        _, _, listed = text.partition("mmands:\n")
        listed, _, _ = listed.partition("\n\n")
        commands = re.findall(r"^\|   ([a-z-]+)  ", listed, re.MULTILINE)
        self.assertGreater(len(commands), 20)
        self.assertEqual([command for command in commands if f"\n$ quorvanectl {command} --help\n" not in text], [])
