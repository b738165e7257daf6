#!/usr/bin/env python3
# @file
# check_package.py PACKAGE: checks the package against the rules in its .ci.yaml, as EDK II's continuous integration does.
#
#   DependencyCheck   an INF file lists only packages that are allowed for it
#   DscCompleteCheck  every INF file is in the DSC; modules of an ignored folder are in a DSC of that folder
#   GuidCheck         no two modules, packages or declarations have the same GUID; the declarations are described
#   LicenseCheck      every file has the licence line
#
# Besides, every GUID and protocol of an INF file has a usage mark, such as "## CONSUMES".
#
# Prints a line for each violation; exits 1 when there is one.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
import fnmatch
import json
import pathlib
import re
import sys

LICENCE = "SPDX-License-Identifier: BSD-2-Clause-Patent"
LICENSED = (".c", ".cpp", ".h", ".hpp", ".inf", ".dec", ".dsc", ".fdf", ".inc", ".vfr", ".uni", ".yaml", ".nsh")
GUID_DECLARATION = re.compile(r"^\s*(\w+)\s*=\s*\{(.*)\}\s*$")
GUID_DEFINE = re.compile(r"^\s*(FILE_GUID|PACKAGE_GUID|PLATFORM_GUID)\s*=\s*([0-9A-Fa-f-]{36})", re.MULTILINE)


def rules_of(package):
    """The rules are JSON with comment lines."""
    lines = (package / f"{package.name}.ci.yaml").read_text("utf-8").splitlines()
    return json.loads("\n".join(line for line in lines if not line.lstrip().startswith("#")))


def section(text, name):
    """Lines of all sections of an INF or DSC file whose names begin with `name`, without comments."""
    inside = False
    for line in text.splitlines():
        line = line.split("#")[0].strip()
        if line.startswith("["):
            inside = line[1:].lower().startswith(name.lower())
        elif inside and line:
            yield line


def check_dependencies(rules, root, infs):
    for inf in infs:
        text = inf.read_text("utf-8")
        kind = re.search(r"^\s*MODULE_TYPE\s*=\s*(\w+)", text, re.MULTILINE)[1]
        allowed = rules["AcceptableDependencies"] + rules.get(f"AcceptableDependencies-{kind}", [])
        for listed in section(text, "Packages"):
            if listed not in allowed:
                yield f"{inf.relative_to(root)}: {listed} is not an allowed dependency of a {kind}"


def modules_of(dsc):
    """INF files in the components of a DSC file and of the package's files that it includes."""
    text = dsc.read_text("utf-8")
    root = next(folder.parent for folder in dsc.parents if list(folder.glob("*.ci.yaml")))
    for included in re.findall(r"^\s*!include\s+(\S+)", text, re.MULTILINE):
        if (root / included).exists():
            text += (root / included).read_text("utf-8")
    return set(re.findall(r"^\s*(\w\S*\.inf)\b", text, re.MULTILINE)) | set(re.findall(r"\|\s*(\S+\.inf)", text))


def check_completeness(rules, root, package, infs):
    platforms = set().union(*(modules_of(dsc) for dsc in package.rglob("*.dsc")))
    complete = modules_of(package / rules["DscPath"])
    for inf in infs:
        name = inf.relative_to(root).as_posix()
        if any(fnmatch.fnmatch(name, ignored) for ignored in rules["IgnoreInf"]):
            if name not in platforms:
                yield f"{name} is in no DSC"
        elif name not in complete:
            yield f"{name} is not in {rules['DscPath']}"


def declared_guids(dec):
    """(name, value, whether a sentence precedes it) for each GUID, protocol and PPI of a DEC file."""
    described = False
    for line in dec.read_text("utf-8").splitlines():
        found = GUID_DECLARATION.match(line)
        if found:
            numbers = [int(number, 16) for number in re.findall(r"0x[0-9A-Fa-f]+", found[2])]
            yield found[1], "%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X" % tuple(numbers), described
        described = line.lstrip().startswith("##") and line.rstrip().endswith(".") or \
            described and line.lstrip().startswith("#")


def check_guids(rules, root, package, infs):
    owners = {}
    for dec in sorted(package.rglob("*.dec")):
        for name, value, described in declared_guids(dec):
            owners.setdefault(value, []).append(name)
            if not described:
                yield f"{dec.relative_to(root)}: {name} has no sentence that says what it is"
    for file in [*infs, *sorted(package.rglob("*.dec")), *sorted(package.rglob("*.dsc"))]:
        for kind, value in GUID_DEFINE.findall(file.read_text("utf-8")):
            owners.setdefault(value.upper(), []).append(f"{kind} of {file.relative_to(root)}")
    for value, names in owners.items():
        names = [name for name in names if name not in rules["IgnoreGuidName"]]
        if len(names) > 1 and value not in rules["IgnoreGuidValue"]:
            yield f"{value} is the GUID of {' and of '.join(names)}"


def check_usage_marks(root, infs):
    for inf in infs:
        listed = marked = False
        for line in inf.read_text("utf-8").splitlines():
            entry = line.split("#")[0].strip()
            if entry.startswith("["):
                listed = entry.startswith(("[Guids", "[Protocols", "[Ppis"))
            elif listed and entry and not marked and "## " not in line:
                yield f"{inf.relative_to(root)}: {entry} has no usage mark"
            marked = line.lstrip().startswith("## ")


def check_licence(rules, root, package):
    for file in sorted(package.rglob("*")):
        name = file.relative_to(root).as_posix()
        if file.suffix in LICENSED and not any(fnmatch.fnmatch(name, one) for one in rules["IgnoreFiles"]):
            if LICENCE not in file.read_text("utf-8"):
                yield f"{name} has no licence line"


def main(folder):
    package = pathlib.Path(folder).resolve()
    root = package.parent
    rules = rules_of(package)
    infs = sorted(package.rglob("*.inf"))
    found = [
        *check_dependencies(rules["DependencyCheck"], root, infs),
        *check_completeness(rules["DscCompleteCheck"], root, package, infs),
        *check_guids(rules["GuidCheck"], root, package, infs),
        *check_usage_marks(root, infs),
        *check_licence(rules["LicenseCheck"], root, package),
    ]
    print("\n".join(found), end="\n" if found else "")
    return 1 if found or not infs else 0


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit("usage: check_package.py PACKAGE")
    sys.exit(main(sys.argv[1]))
