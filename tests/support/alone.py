"""Separate processes and mounts for a test."""

import os
import subprocess
import sys


def _works(*command):
    """Whether a command succeeds as root: in a container even root may not be allowed to create mounts."""
    return os.geteuid() == 0 and subprocess.run(command, stderr=subprocess.DEVNULL).returncode == 0


def can_mount():
    """Whether a program can be run with separate mounts."""
    return _works("unshare", "--mount", "--propagation", "private", "mount", "--bind", "/etc/group", "/etc/group")


def run_alone():
    """Restarts this process in separate process and mount namespaces; nothing that it starts outlives it. Returns
    whether it runs in them: only root can do this."""
    if "QUORVANE_ALONE" in os.environ:
        return True
    command = ["unshare", "--mount", "--propagation", "private", "--pid", "--fork", "--kill-child", "--mount-proc"]
    if not _works(*command, "true"):
        return False
    os.environ["QUORVANE_ALONE"] = "yes"
    sys.stdout.flush()
    os.execvp(command[0], [*command, *sys.orig_argv])
