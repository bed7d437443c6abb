"""A sandbox whose state can be saved and restored, and quorvanectl running in it."""

import hashlib
import json
import os
import shutil
import subprocess

import faults
from sandbox import Sandbox, read

CONTENTS = os.path.join(faults.BIN, "journal_contents")


class Scene:
    """The user's rules file, the journal, programs and exchange files. All commands run in it; reset() restores the
    state at the call of keep()."""

    def __init__(self, parent=None):
        """`parent`: the folder for all this, by default that of temporary files."""
        self.sandbox = Sandbox(parent=parent)
        self._kept = self.sandbox.path("kept")
        self.environment = {"PATH": os.environ["PATH"], "HOME": self.sandbox.home, "LC_ALL": "C.UTF-8",
                            "QUORVANE_ROOT": self.sandbox.root, "ASAN_OPTIONS": "allocator_may_return_null=1:exitcode=99",
                            "UBSAN_OPTIONS": "exitcode=99"}

    def end(self):
        self.sandbox.end()

    def keep(self):
        for name in ("root", "home"):
            shutil.copytree(self.sandbox.path(name), os.path.join(self._kept, name), symlinks=True)

    def reset(self):
        for name in ("root", "home"):
            shutil.rmtree(self.sandbox.path(name))
            shutil.copytree(os.path.join(self._kept, name), self.sandbox.path(name), symlinks=True)

    def run(self, *arguments, fault="", prefix=(), **more):
        """`prefix`: a program, with arguments, that starts the command."""
        return faults.run([*prefix, faults.PROGRAM, *arguments], self.environment, fault, **more)

    def rules(self):
        """The rules in force, as printed by `list`, without their rows."""
        listed = [json.loads(line) for line in self.run("list", "--json").out.splitlines()]
        return [tuple(rule[key] for key in ("kind", "policyClass", "path", "processName", "operations", "tag", "created"))
                for rule in listed]

    def settled_rules(self):
        """The rules in force after another command has changed the rules."""
        added = self.run("add", "allow", "prefix", "/the next command", "any", "r")
        return added, [rule for rule in self.rules() if rule[2] != "/the next command"]

    def content(self):
        return read(self.sandbox.user_file) if os.path.exists(self.sandbox.user_file) else None

    def tree(self):
        """Every file of the user, with its digest."""
        return {os.path.join(folder, name): hashlib.sha256(read(os.path.join(folder, name))).hexdigest()
                for top in (self.sandbox.root, self.sandbox.home) for folder, _, names in os.walk(top) for name in names}


def journal_versions(test, scene):
    """The versions in the journal, oldest first, and the folder with their contents; checks their digests, and that
    the newest is the file."""
    out = scene.sandbox.path("versions")
    os.makedirs(out, exist_ok=True)
    folder = os.path.join(scene.sandbox.home, ".local/state/quorvane")
    done = subprocess.run([CONTENTS, folder, scene.sandbox.user_file, out], stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, check=False)
    test.assertEqual((done.returncode, done.stderr), (0, b""))
    versions = [json.loads(line) for line in done.stdout.splitlines()]
    test.assertEqual(read(os.path.join(out, f"{versions[-1]['number']}.bytes")), scene.content())
    return versions, out
