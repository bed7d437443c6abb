import difflib
import re
import unittest
from concurrent.futures import ThreadPoolExecutor

from kept import kept, lines_of, names, path_of, played
from sandbox import SANITIZER_REPORT


def difference(name, now):
    lines = difflib.unified_diff(lines_of(kept(name)), lines_of(now), path_of(name), "now")
    return f"\n{''.join(lines)}\nWhere this is meant: tools/renew_kept BUILD, and read the difference."


def listed_commands():
    """The commands that the kept help of the program lists."""
    _, _, listed = kept("help").partition("Subcommands:\n")
    listed, _, _ = listed.partition("\n\n")
    return re.findall(r"^\|   ([a-z-]+)  ", listed, re.MULTILINE)


class Kept(unittest.TestCase):
    def test_each_command_prints_what_is_kept(self):
        with ThreadPoolExecutor() as threads:
            for name, now in zip(names(), threads.map(played, names())):
                with self.subTest(session=name):
                    self.assertNotRegex(now, SANITIZER_REPORT)
                    if now != kept(name):
                        self.fail(difference(name, now))

    def test_each_command_is_played_and_its_help_is_kept(self):
        sessions = "".join(kept(name) for name in names() if name not in ("help", "usage"))
        self.assertIn("list", listed_commands())
        for command in listed_commands():
            self.assertIn(f"\n$ quorvanectl {command} --help\n| ", kept("help"))
            self.assertIn(f"quorvanectl {command}", sessions)
