#!/usr/bin/python
# SPDX-License-Identifier: Apache-2.0

from __future__ import absolute_import, division, print_function

__metaclass__ = type

DOCUMENTATION = r"""
module: rules
short_description: Makes Quorvane rules present, absent, or exactly those of a tag
description:
  - Makes the rules of the user that the task runs as hold what is given, in one write, by C(quorvanectl apply).
  - Doing it again changes nothing. What other programs change meanwhile is merged and kept.
options:
  state:
    description:
      - V(present) adds the rules that are missing and sets tag, constraint and creation time of those that are there.
      - V(absent) removes them, whatever their tag.
      - V(exact) is V(present), and also removes the user's other rules that bear one of O(tags).
    type: str
    choices: [present, absent, exact]
    default: present
  rules:
    description: The rules, one by one.
    type: list
    elements: dict
    suboptions:
      class:
        description: What the rule does.
        type: str
        choices: [allow, deny, watch]
        required: true
      type:
        description: How the path is compared.
        type: str
        choices: [prefix, path, suffix]
        required: true
      path:
        description: The path that the rule is about.
        type: str
        required: true
      process:
        description: The process that the rule is about, its parents included; C(any) for every process.
        type: str
        required: true
      operations:
        description: Letters out of C(rwcmx) for read, write, create, mount and execute.
        type: str
        required: true
      tag:
        description: The rule's tag.
        type: str
      constraint:
        description: What the program's code must carry. Not for watch rules.
        type: str
  content:
    description: The text of a rules file, or JSON lines as C(quorvanectl list --json) prints them.
    type: str
  src:
    description: A rules file on the managed machine.
    type: path
  tags:
    description: The tags whose rules state V(exact) owns.
    type: list
    elements: str
  allow_empty:
    description: With state V(exact), take no rules at all for an answer and remove every rule of O(tags).
    type: bool
    default: false
  lock_timeout:
    description: How many seconds to wait for another program's write to end.
    type: float
extends_documentation_fragment:
  - vantreal.quorvane.connection
attributes:
  check_mode:
    support: full
    description: Tells what would change and writes nothing.
  diff_mode:
    support: full
    description: Shows the rules that come, go and change.
author:
  - The developers of Quorvane Configuration
"""

EXAMPLES = r"""
- name: Let the backup read home folders, and nothing else of the team's
  vantreal.quorvane.rules:
    state: exact
    tags: [backup]
    rules:
      - {class: allow, type: prefix, path: /home/, process: /usr/bin/restic, operations: r, tag: backup}
      - {class: deny, type: prefix, path: /home/, process: any, operations: wc, tag: backup}

- name: Bring the rules of the repository
  vantreal.quorvane.rules:
    content: "{{ lookup('ansible.builtin.file', 'desktop.quorv') }}"

- name: Remove rules that are no longer wanted
  vantreal.quorvane.rules:
    state: absent
    src: /srv/rules/retired.quorv
"""

RETURN = r"""
added:
  description: How many rules came.
  type: int
  returned: success
removed:
  description: How many rules went.
  type: int
  returned: success
altered:
  description: How many rules got another tag or creation time.
  type: int
  returned: success
unchanged:
  description: How many of the given rules needed nothing.
  type: int
  returned: success
"""

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.vantreal.quorvane.plugins.module_utils.quorvanectl import (
    CLASSES,
    CONNECTION_ARGUMENTS,
    LETTERS,
    TYPES,
    Quorvanectl,
    as_quorvanectl_reads_it,
    line_of,
)

RULE_ARGUMENTS = {
    "class": {"type": "str", "required": True, "choices": CLASSES},
    "type": {"type": "str", "required": True, "choices": TYPES},
    "path": {"type": "str", "required": True},
    "process": {"type": "str", "required": True},
    "operations": {"type": "str", "required": True},
    "tag": {"type": "str"},
    "constraint": {"type": "str"},
}


def check_rules(module):
    for rule in module.params["rules"] or []:
        if not rule["operations"] or set(rule["operations"]) - set(LETTERS):
            module.fail_json(msg="operations must be letters out of %s, not %r" % (LETTERS, rule["operations"]))
        if rule["class"] == "watch" and rule["constraint"]:
            module.fail_json(msg="a watch rule has no constraint: %s" % rule["path"])


def data_of(module):
    """What `apply` reads from its standard input; none when it reads a file."""
    if module.params["rules"] is not None:
        return "".join(as_quorvanectl_reads_it(rule) + "\n" for rule in module.params["rules"])
    return module.params["content"]


def arguments_of(module):
    arguments = ["apply", "--json"]
    if module.check_mode:
        arguments.append("--dry-run")
    if module.params["state"] == "absent":
        arguments.append("--absent")
    if module.params["state"] == "exact":
        for tag in module.params["tags"]:
            arguments += ["--prune-tag", tag]
        if module.params["allow_empty"]:
            arguments.append("--allow-empty")
    return arguments + [module.params["src"] or "-"]


def difference_of(changes):
    """Changed rules stand on both sides."""
    before = [dict(each, **(each["before"] or {})) for each in changes if each["change"] != "added"]
    after = [each for each in changes if each["change"] != "removed"]
    return {"before": "".join(map(line_of, before)), "after": "".join(map(line_of, after)),
            "before_header": "rules", "after_header": "rules"}


def main():
    module = AnsibleModule(
        argument_spec=dict(
            CONNECTION_ARGUMENTS,
            state={"type": "str", "choices": ["present", "absent", "exact"], "default": "present"},
            rules={"type": "list", "elements": "dict", "options": RULE_ARGUMENTS},
            content={"type": "str"},
            src={"type": "path"},
            tags={"type": "list", "elements": "str"},
            allow_empty={"type": "bool", "default": False},
            lock_timeout={"type": "float"},
        ),
        mutually_exclusive=[("rules", "content", "src")],
        required_one_of=[("rules", "content", "src")],
        required_if=[("state", "exact", ["tags"])],
        supports_check_mode=True,
    )
    if module.params["tags"] and module.params["state"] != "exact":
        module.fail_json(msg="tags say what state exact owns, and the state is %s" % module.params["state"])
    check_rules(module)
    quorvanectl = Quorvanectl(module, module.params["lock_timeout"])
    data = data_of(module)
    printed = quorvanectl.objects(arguments_of(module), data=None if data is None else data.encode("utf-8"))
    changes, totals = printed[:-1], printed[-1]
    result = {"changed": bool(changes), "added": totals["added"], "removed": totals["removed"],
              "altered": totals["changed"], "unchanged": totals["unchanged"]}
    if module._diff:
        result["diff"] = difference_of(changes)
    module.exit_json(**result)


if __name__ == "__main__":
    main()
