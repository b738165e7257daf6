#!/usr/bin/env python3
# @file
# coverage.py EXPORT RESULT: reads what llvm-cov exports, prints the branches covered in each source of the driver and
# those that are not, and writes the same as JSON.
#
# A branch is one outcome of one condition. Those within EDK II's macros (DEBUG) are that library's and are not counted,
# nor are those that the compiler decides.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
import json
import sys

MODULE = "/Corvane/CorvaneDxe/"


def conditions(entry):
    """Outcomes of each condition as {(line, column): [times true, times false]}, all instances of a template together."""
    found = {}
    for line, column, _, _, true, false, file_id, expanded, *_ in entry["branches"]:
        if file_id == expanded:
            outcomes = found.setdefault((line, column), [0, 0])
            outcomes[0] += true
            outcomes[1] += false
    return found


def main(export, result):
    with open(export, encoding="utf-8") as file:
        entries = json.load(file)["data"][0]["files"]
    files = {}
    for entry in entries:
        if MODULE not in entry["filename"]:
            continue
        counts = conditions(entry)
        missed = [
            {"line": line, "column": column, "never": ["true", "false"][side]}
            for (line, column), outcomes in sorted(counts.items())
            for side in (0, 1)
            if outcomes[side] == 0
        ]
        if counts:
            name = entry["filename"].split(MODULE)[1]
            files[name] = {"branches": 2 * len(counts), "covered": 2 * len(counts) - len(missed), "missed": missed}
    total = {key: sum(file[key] for file in files.values()) for key in ("branches", "covered")}
    with open(result, "w", encoding="utf-8") as file:
        json.dump({"total": total, "files": files}, file, indent=1)

    def row(name, counts):
        print(f"{name:36} {counts['covered']:6} of {counts['branches']:4}  {100 * counts['covered'] / counts['branches']:5.1f}%")

    for name, counts in sorted(files.items()):
        row(name, counts)
        for miss in counts["missed"]:
            print(f"    {name}:{miss['line']}:{miss['column']} is never {miss['never']}")
    row("all", total)


if __name__ == "__main__":
    main(*sys.argv[1:])
