#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT
"""Checks what an import into Zabbix would: members, identifiers, and that triggers and value maps name what exists."""

import re
import sys

import yaml

EXPRESSION_ITEM = re.compile(r"last\(/([^/]+)/([^)]+)\)")


def require(condition, problem):
    if not condition:
        sys.exit(problem)


def objects_in(node):
    """All mappings below the node."""
    if isinstance(node, dict):
        yield node
        node = list(node.values())
    if isinstance(node, list):
        for each in node:
            yield from objects_in(each)


with open(sys.argv[1], encoding="utf-8") as file:
    export = yaml.safe_load(file)["zabbix_export"]
require(export["version"] == "6.0", "another version")
(template,) = export["templates"]
everything = list(objects_in(export))

uuids = [each["uuid"] for each in everything if "uuid" in each]
require(len(uuids) == len(set(uuids)) and len(uuids) > 15, "a uuid is missing or there twice")
for uuid in uuids:
    require(re.fullmatch(r"[0-9a-f]{12}4[0-9a-f]{3}[89ab][0-9a-f]{15}", uuid), f"not a random uuid: {uuid}")

items = [each for each in everything if "snmp_oid" in each]
keys = [item["key"] for item in items]
require(len(keys) == len(set(keys)), "a key is there twice")
for item in items:
    require(item["type"] == "SNMP_AGENT" and item["name"], f"not an SNMP item: {item['key']}")
for rule in template["discovery_rules"]:
    for prototype in rule["item_prototypes"]:
        require(prototype["key"].endswith("[{#SNMPINDEX}]"), f"the same for all rows: {prototype['key']}")
        require(prototype["snmp_oid"].endswith(".{#SNMPINDEX}"), f"without a row: {prototype['key']}")

maps = {each["name"] for each in template["valuemaps"]}
for each in everything:
    if "valuemap" in each:
        require(each["valuemap"]["name"] in maps, f"no such value map: {each['valuemap']}")

triggers = [each for each in everything if "expression" in each]
require(len(triggers) == 3, "triggers are missing")
for trigger in triggers:
    named = EXPRESSION_ITEM.findall(trigger["expression"])
    require(len(named) == 2, f"not understood: {trigger['expression']}")
    for host, key in named:
        require(host == template["template"] and key in keys, f"no such item: {host} {key}")
