# SPDX-License-Identifier: Apache-2.0
"""What the modules share: running quorvanectl, and rules as playbooks spell them."""

from __future__ import absolute_import, division, print_function

__metaclass__ = type

import json

CLASSES = ["allow", "deny", "watch"]
TYPES = ["prefix", "path", "suffix"]
LETTERS = "rwcmx"

CONNECTION_ARGUMENTS = {
    "executable": {"type": "path", "default": "quorvanectl"},
    "root": {"type": "path"},
}


class Quorvanectl(object):
    """The command line of the managed machine. Whatever fails there fails the task with its message."""

    def __init__(self, module, lock_timeout=None):
        self.module = module
        executable = module.params["executable"]
        self.command = [executable if "/" in executable else module.get_bin_path(executable, required=True)]
        if module.params["root"]:
            self.command += ["--root", module.params["root"]]
        if lock_timeout is not None:
            self.command += ["--lock-timeout", str(lock_timeout)]

    def objects(self, arguments, data=None):
        """The JSON objects that a command prints."""
        status, out, errors = self.module.run_command(self.command + arguments, data=data, binary_data=True,
                                                      handle_exceptions=True)
        if status != 0:
            self.module.fail_json(msg=errors.strip() or "quorvanectl ended with status %d" % status, rc=status,
                                  cmd=self.command + arguments)
        if errors.strip():
            self.module.warn(errors.strip())
        try:
            return [json.loads(line) for line in out.splitlines() if line]
        except ValueError as error:
            self.module.fail_json(msg="quorvanectl printed what is no JSON: %s" % error, stdout=out)


def as_playbooks_spell_it(rule):
    """A rule of quorvanectl's output, in the words of the `rules` option."""
    operations = rule["operations"]
    spelled = {
        "class": CLASSES[rule["policyClass"]],
        "type": TYPES[rule["policyType"]],
        "path": rule["path"],
        "process": rule["processName"],
        "operations": "".join(letter for bit, letter in enumerate(LETTERS) if operations >> bit & 1),
        "tag": rule["tag"] or "",
    }
    if rule.get("constraint"):
        spelled["constraint"] = rule["constraint"]
    return spelled


def as_quorvanectl_reads_it(rule):
    """A rule of the `rules` option as a line of JSON for `quorvanectl apply`."""
    spelled = {
        "kind": "watch" if rule["class"] == "watch" else "policy",
        "policyClass": CLASSES.index(rule["class"]),
        "policyType": TYPES.index(rule["type"]),
        "path": rule["path"],
        "processName": rule["process"],
        "operations": sum(1 << LETTERS.index(letter) for letter in set(rule["operations"])),
        "tag": rule["tag"],
        "constraint": None if rule["class"] == "watch" else rule["constraint"],
    }
    return json.dumps(spelled)


def line_of(rule):
    """One line of a difference."""
    spelled = as_playbooks_spell_it(rule)
    texts = [spelled["class"], spelled["type"], json.dumps(spelled["path"]), json.dumps(spelled["process"]),
             spelled["operations"], json.dumps(spelled["tag"])]
    if "constraint" in spelled:
        texts.append(json.dumps(spelled["constraint"]))
    return " ".join(texts) + "\n"
