"""Processes and mounts of a test's own."""

import os
import subprocess
import sys


def _works(*command):
    """Whether a command of root's succeeds: in a container even root may have no right to mounts of its own."""
    return os.geteuid() == 0 and subprocess.run(command, stderr=subprocess.DEVNULL).returncode == 0


def can_mount():
    """Whether a program can be given mounts of its own."""
    return _works("unshare", "--mount", "--propagation", "private", "mount", "--bind", "/etc/group", "/etc/group")


def run_alone():
    """Starts this very process again where it sees no process but its own and where its mounts are its own; nothing that
    it starts outlives it. Answers whether that is so: only root can do this."""
    if "QUORVANE_ALONE" in os.environ:
        return True
    command = ["unshare", "--mount", "--propagation", "private", "--pid", "--fork", "--kill-child", "--mount-proc"]
    if not _works(*command, "true"):
        return False
    os.environ["QUORVANE_ALONE"] = "yes"
    sys.stdout.flush()
    os.execvp(command[0], [*command, *sys.orig_argv])
