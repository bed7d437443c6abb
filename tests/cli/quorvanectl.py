"""What the tests of quorvanectl share: a sandbox, and the program run in it."""

import json
import os
import subprocess
import unittest

from sandbox import SANITIZER_REPORT, Sandbox

PROGRAM = os.environ["QUORVANE_PROGRAM"]


class Result:
    def __init__(self, status, out, err):
        self.status, self.out, self.err = status, out, err

    def objects(self):
        """The printed JSON objects, one a line."""
        return [json.loads(line) for line in self.out.decode().splitlines()]

    def keys(self):
        """Of each printed object, its keys in the order they are printed."""
        return [json.loads(line, object_pairs_hook=lambda pairs: [key for key, _ in pairs])
                for line in self.out.decode().splitlines()]

    def values(self, key):
        return [found[key] for found in self.objects()]


class CommandTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.sandbox = Sandbox()
        self.addCleanup(self.sandbox.end)

    def environment(self):
        variables = {"PATH": os.environ["PATH"], "HOME": self.sandbox.home, "LC_ALL": "C.UTF-8",
                     "QUORVANE_ROOT": self.sandbox.root,
                     # Statuses of their own: 1 is what a failed command answers.
                     "ASAN_OPTIONS": "allocator_may_return_null=1:exitcode=99", "UBSAN_OPTIONS": "exitcode=99"}
        return variables

    def run_program(self, *arguments, program=PROGRAM, environment=None, **more):
        """Runs quorvanectl; `more` goes to subprocess.run."""
        more = {"stdout": subprocess.PIPE, "stdin": subprocess.DEVNULL, **more}
        done = subprocess.run([program, *arguments], env=environment or self.environment(), timeout=120,
                              stderr=subprocess.PIPE, **more)
        err = done.stderr.decode(errors="replace")
        self.assertNotRegex(err, SANITIZER_REPORT)
        self.assertGreaterEqual(done.returncode, 0, f"ended by a signal: {err}")
        return Result(done.returncode, done.stdout or b"", err)

    def succeed(self, *arguments, **more):
        result = self.run_program(*arguments, **more)
        self.assertEqual((result.status, result.err), (0, ""), arguments)
        return result

    def fail_with(self, status, *arguments, **more):
        """Runs a command that has to fail and to say why."""
        result = self.run_program(*arguments, **more)
        self.assertEqual(result.status, status, (arguments, result.err))
        self.assertNotEqual(result.err.strip(), "", arguments)
        return result

    def listed(self, *arguments, key="path"):
        return self.succeed("list", "--json", *arguments).values(key)
