#!/usr/bin/env python3
# @file
# Makes one table of what the benchmarks counted, for people and (out/bench.json) for programs.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
"""Usage: bench.py lists VARIABLE_FLASH FOLDER
       bench.py table FOLDER JSON [--image ELF] [--boots OUT]

lists writes the driver's cache variables out of a variable flash, a file each. table reads the counts in FOLDER; without
--boots the rows that need booted firmware are left out. Exit status: 0 every bound is met, 1 one is not, 2 wrong usage or
unusable input."""
import json
import pathlib
import subprocess
import sys

from variables import read_variables

LISTS = ("PldmString", "DispString", "HelpString", "AttributesData")
STORES = ("notebook", "texts-430", "texts-900")
SMALLEST, LARGEST = "texts-225", "texts-900"  # 60 and 240 attributes


def write_lists(flash, folder):
    folder.mkdir(parents=True, exist_ok=True)
    found = {variable.name: variable.data for variable in read_variables(flash.read_bytes()) or []}
    for name in LISTS + ("AttributesCount",):
        if name not in found:
            sys.exit(f"bench: {flash}: no variable {name}")
        (folder / name).write_bytes(found[name])


class Counts:
    """What a run of the benchmarks printed, and the counter for it."""

    def __init__(self, folder, build):
        self.numbers = {}
        labels = {}
        for line in (folder / f"{build}.labels").read_text().splitlines():
            kind, *words = line.split()
            if kind == "label":
                labels[words[0]] = " ".join(words[1:])
            else:
                self.numbers[" ".join(words[:-1])] = int(words[-1])
        for line in (folder / f"{build}.counts").read_text().splitlines():
            _, label, count = line.split()
            self.numbers[labels[label]] = int(count)

    def of(self, measure, store):
        """A number of a store, or the sum over its lists."""
        whole = self.numbers.get(f"{measure} {store}")
        return whole if whole is not None else sum(self.numbers[f"{measure} {store} {name}"] for name in LISTS)

    def ratio(self, measure, reference, stores):
        return sum(self.of(measure, s) for s in stores) / sum(self.of(reference, s) for s in stores)

    def worst_list(self):
        return max(self.numbers[f"size {s} {n}"] / self.numbers[f"reference-size {s} {n}"] for s in STORES for n in LISTS)

    def growth(self, measure):
        """Instructions for four times as much, against four times the instructions."""
        return self.of(measure, LARGEST) / (4 * self.of(measure, SMALLEST))


RATIOS = (  # row, what, measure, reference, must, aim
    (1, "size of the cache's streams", "size", "reference-size", 1.00, 0.95),
    (2, "compressing, instructions", "compress", "reference-compress", 0.55, 0.40),
    (3, "decompressing, instructions", "decompress", "reference-decompress", 0.45, 0.35),
    (4, "tables, instructions a byte", "tables", "table-bytes", 7.5, 3),
    (5, "interning, instructions", "intern", "reference-intern", 0.15, 0.05),
)


def database_rows(builds):
    for number, what, measure, reference, must, aim in RATIOS:
        shown = {name: [counts.ratio(measure, reference, [s]) for s in STORES] + [counts.ratio(measure, reference, STORES)]
                 for name, counts in builds.items()}
        yield {"row": number, "what": what, "values": shown, "judged": shown["aarch64"][-1], "must": must, "aim": aim,
               "instructions": {s: [builds["aarch64"].of(measure, s), builds["aarch64"].of(reference, s)] for s in STORES}}
        if number == 1:
            worst = {name: [counts.worst_list()] for name, counts in builds.items()}
            yield {"row": 1, "what": "  the worst of them", "values": worst, "judged": worst["aarch64"][0], "must": 1.01,
                   "aim": None}
    memory = {name: [max(value for key, value in counts.numbers.items() if key.startswith("compressor-memory"))]
              for name, counts in builds.items()}
    yield {"row": 8, "what": "compressor's memory, bytes", "values": memory, "judged": memory["aarch64"][0],
           "must": 195000, "aim": 96 * 1024}
    for what, measure in (("tables", "tables"), ("interning", "intern"), ("warm work", "warm")):
        growth = {name: [counts.growth(measure)] for name, counts in builds.items()}
        yield {"row": 9, "what": f"4 x the {what}, against 4 x", "values": growth, "judged": growth["aarch64"][0],
               "must": 1.1, "aim": None}


def own_work(folder, out, boot):
    """Instructions of a boot on the pages of the driver's image."""
    _, base, size = (out / "bench" / boot / "driver.txt").read_text().split()
    begin, end = int(base, 16), int(base, 16) + int(size, 16)
    pages = (line.split() for line in (folder / f"{boot}.pages").read_text().splitlines())
    return sum(int(count) for _, page, count in pages if begin <= int(page, 16) < end)


def boot_row(folder, out):
    cold, warm = own_work(folder, out, "cold"), own_work(folder, out, "warm")
    return {"row": 6, "what": "warm boot's own work, against cold", "values": {"aarch64": [warm / cold]},
            "judged": warm / cold, "must": 0.25, "aim": 0.10, "instructions": {"notebook": [warm, cold]}}


def image_row(elf):
    sizes = subprocess.run(["aarch64-linux-gnu-size", elf], check=True, capture_output=True, text=True).stdout
    code, data, bss = (int(number) for number in sizes.splitlines()[1].split()[:3])
    total = code + data + bss
    return {"row": 7, "what": "RELEASE image, bytes", "values": {"aarch64": [total]}, "judged": total, "must": 40 * 1024,
            "aim": 32 * 1024}


def verdict(row):
    if row["judged"] > row["must"]:
        return "MISSED"
    return "aim" if row["aim"] is not None and row["judged"] <= row["aim"] else "must"


def shown(number):
    return f"{number:9.3f}" if isinstance(number, float) else f"{number:9d}"


def print_table(rows):
    head = "".join(f"{name:>9}" for name in ("notebook", "430", "900", "all"))
    print(f"{'':39}{'must':>9}{'aim':>9}  {'AArch64, -Os: texts of':<36}  {'host, -Os':<36}")
    print(f"{'':39}{'':18}  {head}  {head}")
    for row in rows:
        columns = []
        for build in ("aarch64", "host"):
            values = row["values"].get(build, [])
            columns.append("".join(shown(value) for value in values).rjust(36) if len(values) == 1 else
                           "".join(shown(value) for value in values).ljust(36))
        aim = shown(row["aim"]) if row["aim"] is not None else " " * 9
        print(f"{row['row']:2d} {row['what']:<36}{shown(row['must'])}{aim}  {columns[0]}  {columns[1]}  {verdict(row)}")


def main(arguments):
    if len(arguments) == 3 and arguments[0] == "lists":
        write_lists(pathlib.Path(arguments[1]), pathlib.Path(arguments[2]))
        return 0
    options = dict(zip(arguments[3::2], arguments[4::2]))
    if len(arguments) < 3 or arguments[0] != "table" or len(arguments) % 2 == 0 or not options.keys() <= {"--image", "--boots"}:
        print(__doc__, file=sys.stderr)
        return 2
    folder = pathlib.Path(arguments[1])
    rows = list(database_rows({build: Counts(folder, build) for build in ("aarch64", "host")}))
    if "--boots" in options:
        rows.append(boot_row(folder, pathlib.Path(options["--boots"])))
    if "--image" in options:
        rows.append(image_row(options["--image"]))
    rows.sort(key=lambda row: row["row"])
    for row in rows:
        row["verdict"] = verdict(row)
    pathlib.Path(arguments[2]).write_text(json.dumps(rows, indent=1) + "\n")
    print_table(rows)
    return 1 if any(row["verdict"] == "MISSED" for row in rows) else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
