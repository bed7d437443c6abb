"""The library that makes calls fail, tested on a program that prints the result of each call."""

import errno
import os
import tempfile
import unittest

import faults

PROBE = os.path.join(faults.BIN, "fault_probe")
KINDS = {"open": "open", "openat": "open", "write": "write", "pwrite": "write", "read": "read", "pread": "read",
         "stat": "stat", "lstat": "stat", "fstat": "stat", "fstatat": "stat", "flock": "lock", "fsync": "sync",
         "fdatasync": "sync", "ftruncate": "truncate", "fchmod": "chmod", "rename": "rename", "mmap": "map",
         "malloc": "allocate", "mkdir": "mkdir", "connect": "connect", "close": "close", "unlink": "unlink"}
HAS_MEMORY = "allocate" if faults.run(["true"], dict(os.environ)).counts["allocate"] else None


class FaultyCalls(unittest.TestCase):
    maxDiff = None

    def probe(self, fault=""):
        with tempfile.TemporaryDirectory() as folder:
            result = faults.run([PROBE, folder], dict(os.environ), fault)
        lines = [line.split() for line in result.out.decode().splitlines()]
        return result, {line[0]: line[1] for line in lines}, {line[0]: int(line[2]) for line in lines if line[2:]}

    def positions(self, name):
        """The number of the call among those of its kind; for memory, which others allocate too, all of them."""
        result, answers, _ = self.probe()
        before = [call for call in list(answers)[:list(answers).index(name)] if KINDS[call] == KINDS[name]]
        all_calls = [call for call in answers if KINDS[call] == KINDS[name]]
        first = result.counts[KINDS[name]] - len(all_calls) + len(before) + 1
        return range(1, result.counts["allocate"] + 1) if name == "malloc" else [first]

    def test_without_a_fault_every_call_is_what_it_would_be(self):
        _, answers, counts = self.probe()
        self.assertEqual({name: answer for name, answer in answers.items() if answer != "ok"}, {"connect": "ENOTSOCK"})
        self.assertEqual(set(answers), set(KINDS))
        self.assertEqual(counts, {"write": 8, "pwrite": 8, "read": 8, "pread": 8})

    def test_every_call_can_be_made_to_fail_and_no_other_fails_with_it(self):
        _, whole, _ = self.probe()
        for name, kind in KINDS.items():
            if name == "malloc" and not HAS_MEMORY:
                continue
            with self.subTest(name):
                error = errno.ENOMEM if name == "malloc" else errno.EHOSTDOWN
                seen = [self.probe(f"{kind}:{number}:{error}")[1] for number in self.positions(name)]
                failed = [answers for answers in seen if answers.get(name) == errno.errorcode[error]]
                self.assertEqual(len(failed), 1)
                if name not in ("open", "openat"):  # what follows needs their files
                    self.assertEqual({**failed[0], name: whole[name]}, whole)

    def test_a_short_call_moves_half_and_says_so(self):
        for name in ("write", "pwrite", "read", "pread"):
            with self.subTest(name):
                _, answers, counts = self.probe(f"{KINDS[name]}:{self.positions(name)[0]}:short")
                self.assertEqual((answers[name], counts[name]), ("ok", 4))

    def test_a_kill_ends_the_program_in_place_of_the_call(self):
        number = self.positions("fsync")[0]
        result, answers, _ = self.probe(f"sync:{number}:kill")
        self.assertTrue(faults.was_killed(result))
        self.assertEqual(list(answers)[-1], "flock")
        self.assertEqual(result.counts["sync"], number)

    def test_a_cut_does_half_of_the_call_first(self):
        with tempfile.TemporaryDirectory() as folder:
            number = self.positions("write")[0]
            result = faults.run([PROBE, folder], dict(os.environ), f"write:{number}:cut")
            self.assertTrue(faults.was_killed(result))
            self.assertEqual(os.path.getsize(os.path.join(folder, "file")), 4)

    def test_a_fault_can_go_on(self):
        number = self.positions("write")[0]
        _, answers, _ = self.probe(f"write:{number}+:{errno.ENOSPC}")
        self.assertEqual((answers["write"], answers["pwrite"]), ("ENOSPC", "ENOSPC"))

    def test_the_clock_can_be_wrong(self):
        def clock(shift):
            with tempfile.TemporaryDirectory() as folder:
                return float(faults.run([PROBE, folder, "time"], {**os.environ, "QUORVANE_CLOCK": shift}).out)
        self.assertIn(clock("1000000") - clock("-1000000") - 2_000_000, range(-faults.PATIENCE, faults.PATIENCE))

    def test_calls_can_be_counted_whatever_their_kind(self):
        result, _, _ = self.probe()
        self.assertEqual(result.counts["any"],
                         sum(count for call, count in result.counts.items() if call not in ("any", "allocate")))
        killed, _, _ = self.probe(f"any:{result.counts['any']}:kill")
        self.assertTrue(faults.was_killed(killed))
        self.assertEqual(killed.counts["any"], result.counts["any"])
