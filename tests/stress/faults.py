"""Programs with failing calls: common code of the tests in this folder."""

import errno
import os
import random
import signal
import struct
import subprocess
import tempfile

from sandbox import SANITIZER_REPORT

PROGRAM = os.environ["QUORVANE_PROGRAM"]
BIN = os.path.dirname(PROGRAM)
LIBRARY = os.path.join(BIN, "libfaulty_calls.so")
PATIENCE = 60  # seconds; the machine may be busy
IS_LONG = os.environ.get("QUORVANE_STRESS") == "long"

CALLS = ("any", "open", "read", "write", "stat", "close", "sync", "truncate", "chmod", "rename", "unlink", "mkdir",
         "lock", "map", "connect", "allocate")

# The errors that each call is made to fail with.
ERRORS = {"open": (errno.EIO, errno.EACCES, errno.EMFILE, errno.EINTR), "read": (errno.EIO, errno.EINTR, "short"),
          "write": (errno.ENOSPC, errno.EIO, errno.EINTR, "short"), "stat": (errno.EIO, errno.EACCES),
          "close": (errno.EIO, errno.EINTR), "sync": (errno.EIO, errno.EDQUOT), "truncate": (errno.EIO,),
          "chmod": (errno.EPERM,), "rename": (errno.EIO, errno.EACCES), "unlink": (errno.EACCES,),
          "mkdir": (errno.ENOSPC,), "lock": (errno.ENOLCK, errno.EINTR), "map": (errno.ENOMEM,),
          "connect": (errno.ECONNREFUSED,), "allocate": (errno.ENOMEM,)}


class Result:
    def __init__(self, status, out, err, counts):
        self.status, self.out, self.err, self.counts = status, out, err, counts

    def __repr__(self):
        return f"status {self.status}, {self.out!r}, {self.err!r}"


def run(command, environment, fault="", timeout=PATIENCE, **more):
    """Runs a command with `fault`, "CALL:NUMBER:FAULT", in the library's syntax."""
    with tempfile.NamedTemporaryFile() as file:
        file.write(bytes(8 * len(CALLS)))
        file.flush()
        variables = {**environment, "LD_PRELOAD": LIBRARY, "QUORVANE_FAULT": fault, "QUORVANE_CALL_COUNTS": file.name}
        variables["ASAN_OPTIONS"] = variables.get("ASAN_OPTIONS", "") + ":verify_asan_link_order=0:detect_leaks=0"
        done = subprocess.run(command, env=variables, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, timeout=timeout, **more)
        file.seek(0)
        counts = dict(zip(CALLS, struct.unpack(f"{len(CALLS)}Q", file.read())))
    return Result(done.returncode, done.stdout, done.stderr.decode(errors="replace"), counts)


def was_killed(result):
    return result.status == -signal.SIGKILL


def sample(positions, size):
    """The last position and some before it, always the same ones; all of them in a long run."""
    positions = list(positions)
    if IS_LONG or len(positions) <= size:
        return positions
    between = random.Random(len(positions)).sample(positions[1:-1], size - 1)
    return sorted({*between, positions[-1]})


def is_sanitizer_report(result):
    return SANITIZER_REPORT.search(result.err) is not None
