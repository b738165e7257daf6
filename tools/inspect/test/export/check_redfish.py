#!/usr/bin/env python3
# @file
# Checks what `inspect export --redfish` wrote: AttributeRegistry.json and Bios.json against each other and the capture,
# and the registry against the DMTF's JSON schemas, of which the folder REDFISH_SCHEMA_DIR has a copy.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
"""Usage: check_redfish.py INSPECT CAPTURE...; exits 1 with one line for each error, 77 when only the schemas are missing."""

import json
import os
import pathlib
import re
import subprocess
import sys
import warnings

SKIPPED = 77


def run(inspect, *arguments):
    """What a subcommand prints as JSON; captures with findings are good enough."""
    result = subprocess.run([inspect, *arguments], capture_output=True, check=False)
    if result.returncode > 1:
        sys.exit(result.stderr.decode())
    return json.loads(result.stdout)


def value_errors(entry, value):
    """What a value of the Bios resource has against its registry entry."""
    kind = entry["Type"]
    if kind == "Password":
        return [] if value is None else ["is a password and not null"]
    if kind == "Enumeration":
        return [] if value in [one["ValueName"] for one in entry["Value"]] else [f"{value!r} is not among its values"]
    if kind == "Integer":
        step = entry["ScalarIncrement"]
        in_range = entry["LowerBound"] <= value <= entry["UpperBound"]
        return [] if in_range and (step == 0 or (value - entry["LowerBound"]) % step == 0) else [f"{value} is not in range"]
    in_range = entry["MinLength"] <= len(value) <= entry["MaxLength"]
    matches = re.search(entry.get("ValueExpression", ""), value)
    return [] if in_range and matches else [f"{value!r} has a wrong length or form"]


def dependency_errors(dependency, entries):
    """Attributes and values that a dependency names and that are not there."""
    body = dependency["Dependency"]
    named = [(body["MapToAttribute"], body["MapToValue"] if body["MapToProperty"] == "CurrentValue" else None)]
    named += [(term["MapFromAttribute"], term["MapFromValue"]) for term in body["MapFrom"]]
    errors = []
    if dependency["DependencyFor"] not in [name for name, _ in named[1:]]:
        errors.append("is for an attribute that it does not ask")
    for name, value in named:
        entry = entries.get(name)
        if entry is None:
            errors.append(f"names {name}, which is not exported")
        elif value is not None and entry["Type"] == "Enumeration":
            errors += value_errors(entry, value)
    return errors


def capture_errors(inspect, capture, export):
    """What the documents lack of the capture, and what they have against each other."""
    registry, bios = export["registry"]["RegistryEntries"], export["bios"]["Attributes"]
    entries = {one["AttributeName"]: one for one in registry["Attributes"]}
    keywords = {one.get("UefiKeywordName", one["AttributeName"]) for one in registry["Attributes"]}
    menus = {one["MenuName"] for one in registry["Menus"]}
    left = {one["handle"] for one in export["leftOut"] if one["what"] in ("attribute", "menu")}
    unchecked = {one["attribute"] for one in export["leftOut"] if one["what"] == "current"}
    for one in run(inspect, "show", "--json", capture)["attributes"]:
        name = (one["name"] or "").split("[")[0]
        place = menus if one["type"] == "collection" else keywords
        if one["handle"] not in left and name.replace("/", "") not in place and name not in place:
            yield f"attribute {one['handle']} {name} is neither exported nor listed"
    if list(entries) != list(bios) or len(entries) != len(registry["Attributes"]):
        yield "registry and values do not have the same attributes"
    for name, value in bios.items():
        keyword = entries[name].get("UefiKeywordName", name)
        for error in value_errors(entries[name], value) if keyword not in unchecked else []:
            yield f"{name} {error}"
    for dependency in registry["Dependencies"]:
        for error in dependency_errors(dependency, entries):
            yield f"a dependency for {dependency['DependencyFor']} {error}"


def schema_errors(folder, registry):
    """Errors against each version of the registry's schema in the folder. References end there: nothing is fetched."""
    warnings.simplefilter("ignore", DeprecationWarning)  # newer versions of the library have another resolver besides
    import jsonschema  # pylint: disable=import-outside-toplevel

    schemas = {path.name: json.loads(path.read_text(encoding="utf-8")) for path in sorted(folder.glob("*.json"))}
    registries = [schema for name, schema in schemas.items() if name.startswith("AttributeRegistry.v")]
    if not registries:
        yield f"{folder} has no schema of an AttributeRegistry"
    for schema in registries:
        base, name = schema["$id"].rsplit("/", 1)

        def missing(uri):
            raise FileNotFoundError(f"{uri} is not in {folder}")

        resolver = jsonschema.RefResolver(
            schema["$id"],
            schema,
            store={f"{base}/{name}": schema for name, schema in schemas.items()},
            handlers={"http": missing, "https": missing},
        )
        for error in jsonschema.Draft7Validator(schema, resolver=resolver).iter_errors(registry):
            place = "/".join(str(part) for part in error.absolute_path)
            yield f"{name}: {place}: {error.message}"


def main():
    """Checks every capture; what the schema complains of is not looked into further."""
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    inspect, captures = sys.argv[1], sys.argv[2:]
    folder = os.environ.get("REDFISH_SCHEMA_DIR", "")
    failed = False
    for capture in captures:
        export = run(inspect, "export", "--redfish", capture)
        errors = list(schema_errors(pathlib.Path(folder), export["registry"])) if folder else []
        for error in errors or (errors := list(capture_errors(inspect, capture, export))):
            print(f"{capture}: {error}")
        failed = failed or bool(errors)
    if not folder and not failed:
        print("REDFISH_SCHEMA_DIR is not set; it names a folder with the JSON schemas of DSP8010, which the DMTF publishes"
              " at https://redfish.dmtf.org/schemas/")
        sys.exit(SKIPPED)
    sys.exit(1 if failed else 0)


main()
