#!/usr/bin/python
# SPDX-License-Identifier: Apache-2.0

from __future__ import absolute_import, division, print_function

__metaclass__ = type

DOCUMENTATION = r"""
module: rules_facts
short_description: The Quorvane rules of a machine, as facts
description:
  - Reads the rules of the user that the task runs as, by C(quorvanectl list), into the fact C(quorvane_rules).
  - Each is a dictionary as the option O(vantreal.quorvane.rules#module:rules) takes it.
options:
  filter:
    description: Only rules that contain this text.
    type: str
  tags:
    description: Only rules with one of these tags.
    type: list
    elements: str
  system:
    description: Include the rules of the system.
    type: bool
    default: false
extends_documentation_fragment:
  - vantreal.quorvane.connection
attributes:
  check_mode:
    support: full
    description: Changes nothing in any mode.
author:
  - The developers of Quorvane Configuration
"""

EXAMPLES = r"""
- name: Read the rules of the backup
  vantreal.quorvane.rules_facts:
    tags: [backup]

- name: Every program that they name
  ansible.builtin.debug:
    msg: "{{ quorvane_rules | map(attribute='process') | unique }}"
"""

RETURN = r"""
ansible_facts:
  description: The fact.
  type: dict
  returned: success
  contains:
    quorvane_rules:
      description: The rules, in the order in which C(quorvanectl list) prints them.
      type: list
      elements: dict
"""

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.vantreal.quorvane.plugins.module_utils.quorvanectl import (
    CONNECTION_ARGUMENTS,
    Quorvanectl,
    as_playbooks_spell_it,
)


def main():
    module = AnsibleModule(
        argument_spec=dict(
            CONNECTION_ARGUMENTS,
            filter={"type": "str"},
            tags={"type": "list", "elements": "str"},
            system={"type": "bool", "default": False},
        ),
        supports_check_mode=True,
    )
    arguments = ["list", "--json"]
    if module.params["filter"]:
        arguments += ["--filter", module.params["filter"]]
    for tag in module.params["tags"] or []:
        arguments += ["--tag", tag]
    if module.params["system"]:
        arguments.append("--system")
    rules = Quorvanectl(module).objects(arguments)
    module.exit_json(changed=False, ansible_facts={"quorvane_rules": [as_playbooks_spell_it(rule) for rule in rules]})


if __name__ == "__main__":
    main()
