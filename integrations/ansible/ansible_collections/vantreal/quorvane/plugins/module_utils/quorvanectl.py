# Copyright: Vantreal
# SPDX-License-Identifier: Apache-2.0
"""Running quorvanectl for a module."""

from __future__ import absolute_import, division, print_function

__metaclass__ = type

import json

COMMON_ARGUMENTS = {
    "executable": {"type": "path", "default": "quorvanectl"},
    "root": {"type": "path"},
    "lock_timeout": {"type": "float", "default": 5.0},
}


def run(module, arguments, **more):
    """Runs quorvanectl; returns the objects that it prints, and what it complains of. Its failure is the module's."""
    program = module.params["executable"]
    if "/" not in program:
        program = module.get_bin_path(program, required=True)
    command = [program, "--lock-timeout", repr(module.params["lock_timeout"])]
    if module.params["root"]:
        command += ["--root", module.params["root"]]
    status, out, err = module.run_command(command + arguments, **more)
    complaints = [line.strip() for line in err.splitlines() if line.strip()]
    if status != 0:
        module.fail_json(msg=err.strip() or "quorvanectl ended with %d" % status, rc=status, stderr=err)
    return [json.loads(line) for line in out.splitlines()], complaints
