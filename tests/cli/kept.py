"""Kept sessions: files of commands as a person types them, each followed by all that it printed when it was renewed.

    # Prose, or an empty line.
    $ quorvanectl list rules
    | a line of standard output
    ! a line of standard error
    = the exit status, unless that is 0

"> " continues a command. Control characters are shown by pictures or numbers, "␠" is a blank at the end of a line.
"""

import calendar
import os
import re
import shutil
import subprocess
import time

from macho import CODE, adhoc_program
from sandbox import Sandbox, read

PROGRAM = os.environ["QUORVANE_PROGRAM"]
KEPT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "kept")
PICTURES = {code: 0x2400 + code for code in range(0x20)} | {0x7F: 0x2421} \
    | {code: f"<U+{code:04X}>" for code in range(0x80, 0xA0)}


def names():
    return sorted(file.removesuffix(".txt") for file in os.listdir(KEPT) if file.endswith(".txt"))


def path_of(name):
    return os.path.join(KEPT, name + ".txt")


def kept(name):
    return read(path_of(name)).decode()


def lines_of(text):
    """The lines with their ends; other characters that str.splitlines() would split at are left in them."""
    return re.findall("[^\n]*\n", text)


def played(name):
    """The session as it is now: the kept commands with what they print."""
    sandbox = Sandbox()
    try:
        place = Place(sandbox)
        return "".join(place.played(block) for block in blocks(kept(name)))
    finally:
        sandbox.end()


def blocks(text):
    """The parts of a session without its outputs: commands, with the lines that continue them, and other lines."""
    found = []
    for line in lines_of(text):
        if line.startswith("> ") and found and found[-1].startswith("$ "):
            found[-1] += line
        elif line.startswith(("$ ", "# ")) or line == "\n":
            found.append(line)
        elif not line.startswith(("|", "!", "=", "\\")):
            raise ValueError(f"a line that is neither command, prose nor output: {line!r}")
    return found


def marked(mark, text):
    """The lines of an output, each behind its mark."""
    *lines, rest = text.split("\n")
    lines = [re.sub(" $", "␠", line.translate(PICTURES)) for line in lines + [rest] * bool(rest)]
    return "".join(f"{mark} {line}".rstrip() + "\n" for line in lines) + "\\ no line end\n" * bool(rest)


class Place:
    """Where a session is played: a sandbox with the files of kept/files in the present folder, "user.rc" as the
    user's rules ($RULES), "system.rc" as those of the system, a disk with the programs of "disk.rc", and the programs
    "adhoc" and "damaged"."""

    def __init__(self, sandbox):
        self.began = int(time.time())
        self.sandbox = sandbox
        self.folder = self.sandbox.path("here")
        shutil.copytree(os.path.join(KEPT, "files"), self.folder)
        shutil.copy(self.file("user.rc"), self.sandbox.user_file)
        shutil.copy(self.file("system.rc"), self.sandbox.system_file("quorvane.rc"))
        shutil.copy(self.file("preferences.plist"), self.sandbox.preferences_file)
        os.makedirs(self.sandbox.path("programs"))
        os.symlink(PROGRAM, self.sandbox.path("programs/quorvanectl"))
        self.make_disk()
        self.sandbox.write(self.file("adhoc"), adhoc_program(platform=13))
        self.sandbox.write(self.file("damaged"), adhoc_program()[:CODE - 1] + b"!" + adhoc_program()[CODE:])

    def file(self, name):
        return os.path.join(self.folder, name)

    def make_disk(self):
        plan = self.sandbox.path("plan")
        os.makedirs(os.path.join(plan, "system"))
        shutil.copy(self.file("disk.rc"), os.path.join(plan, "user.quorvane.rc"))
        subprocess.run([os.path.join(os.path.dirname(PROGRAM), "quorvane-sample-volume"), plan, self.file("disk")],
                       check=True)

    def environment(self):
        # A program that asked for time zone or width would print something else with these.
        return {"PATH": self.sandbox.path("programs") + ":" + os.environ["PATH"], "HOME": self.sandbox.home,
                "LC_ALL": "C.UTF-8", "TZ": "Asia/Kathmandu", "COLUMNS": "30", "QUORVANE_ROOT": self.sandbox.root,
                "RULES": self.sandbox.user_file, "ASAN_OPTIONS": "allocator_may_return_null=1"}

    def played(self, block):
        if not block.startswith("$ "):
            return block
        command = re.sub("^[$>] ", "", block, flags=re.MULTILINE)
        done = subprocess.run(["/bin/bash", "-c", command], cwd=self.folder, env=self.environment(), umask=0o022,
                              stdin=subprocess.DEVNULL, capture_output=True, timeout=120)
        return block + marked("|", self.text_of(done.stdout)) + marked("!", self.text_of(done.stderr)) \
            + f"= {done.returncode}\n" * bool(done.returncode)

    def text_of(self, output):
        """An output with a name in place of each thing that differs by run or machine. Nothing else may be replaced."""
        text = output.decode(errors="backslashreplace")
        text = text.replace(self.sandbox.folder, "<sandbox>")
        text = text.replace(os.path.basename(self.sandbox.user_file), "<user>.quorvane.rc")
        text = re.sub(r'^\d+\.\d+\.\d+$|(?<="name":"quorvanectl","version":")\d+\.\d+\.\d+(?=")', "<version>", text,
                      flags=re.MULTILINE)
        text = re.sub(r"\b\d{4}-\d\d-\d\d \d\d:\d\d:\d\d UTC\b", self.time_named, text)
        return re.sub(r'(?<="time":)\d+\b', self.time_named, text)

    def time_named(self, found):
        """"<now>" for a time since the session began; any other is a fault."""
        text = found.group()
        seconds = calendar.timegm(time.strptime(text, "%Y-%m-%d %H:%M:%S UTC")) if "UTC" in text else int(text)
        return "<now>" if self.began <= seconds <= time.time() else text
