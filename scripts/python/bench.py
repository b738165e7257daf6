#!/usr/bin/env python3
# @file
# Makes one table of what the benchmarks counted, for people and (out/bench.json) for programs.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
"""Usage: bench.py FOLDER JSON [--image ELF] [--boots OUT]

Reads the counts in FOLDER. Rows that need a booted firmware appear only with --boots, the size of the image only with
--image. Exit status: 0 every bound is met, 1 at least one bound is missed, 2 wrong usage."""
import json
import pathlib
import subprocess
import sys

from bench_stores import LISTS

GROWTHS = (  # what, measure, a store, one of four times its size
    ("tables", "tables", "texts-225", "texts-900"),
    ("form walk", "walk", "texts-225", "texts-900"),
    ("warm work", "warm", "texts-225", "texts-900"),
    ("interning, to 5,000 texts", "intern", "texts-1250", "texts-5000"),
)
SHORTEST_JUDGED_LIST = 1024  # bytes before compression; below, a block's head decides


class Counts:
    """What a run of the benchmarks printed, and the instruction counts for its labels."""

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

    def stores_with(self, measure):
        """The stores for which a measure was taken, in the order of the run."""
        return list(dict.fromkeys(key.split()[1] for key in self.numbers if key.split()[0] == measure))

    def of(self, measure, store):
        """A number of a store, or the sum over its lists."""
        whole = self.numbers.get(f"{measure} {store}")
        return whole if whole is not None else sum(self.numbers[f"{measure} {store} {name}"] for name in LISTS)

    def ratios(self, measure, reference):
        return {store: self.of(measure, store) / self.of(reference, store) for store in self.stores_with(reference)}

    def list_ratios(self):
        """Per store, the size of its worst list against the reference's; short lists are left out."""
        worst = {}
        for store in self.stores_with("size"):
            ratios = [self.numbers[f"size {store} {n}"] / self.numbers[f"reference-size {store} {n}"] for n in LISTS
                      if self.numbers[f"raw {store} {n}"] >= SHORTEST_JUDGED_LIST]
            if ratios:
                worst[store] = max(ratios)
        return worst


# The reference for interning is quadratic, and tables have a fixed cost: these two ratios depend on the size of a store,
# so that they are judged on stores of set sizes.
SIZED_STORES = ("notebook", "texts-430", "texts-900")
RATIOS = (  # row, what, measure, reference, must, aim, stores or None for all
    (1, "size of the cache's four streams", "size", "reference-size", 1.00, 0.96, None),
    (2, "instructions to compress", "compress", "reference-compress", 0.55, 0.45, None),
    (3, "instructions to decompress", "decompress", "reference-decompress", 0.34, 0.28, None),
    (4, "instructions per byte of the tables", "tables", "table-bytes", 6.4, 4.0, SIZED_STORES),
    (5, "instructions to intern", "intern", "reference-intern", 0.235, 0.20, SIZED_STORES),
)


def row(number, what, must, aim, values, judged=None):
    """A row is judged by its worst store. `values` are by build, then by store."""
    worst = max(judged or values["aarch64"], key=values["aarch64"].get)
    return {"row": number, "what": what, "values": values, "worst": worst, "judged": values["aarch64"][worst], "must": must,
            "aim": aim}


def database_rows(builds):
    for number, what, measure, reference, must, aim, judged in RATIOS:
        yield row(number, what, must, aim, {name: counts.ratios(measure, reference) for name, counts in builds.items()}, judged)
        if number == 1:
            yield row(1, "  the worst single list", 1.005, 0.99, {n: counts.list_ratios() for n, counts in builds.items()})
    yield row(8, "compressor's memory, bytes", 105000, 96000, {
        name: {s: max(counts.numbers[f"compressor-memory {s} {n}"] for n in LISTS) for s in counts.stores_with("size")}
        for name, counts in builds.items()})
    for what, measure, small, large in GROWTHS:
        yield row(9, f"4 x the {what}", 1.1, 1.05, {
            name: {large: counts.of(measure, large) / (4 * counts.of(measure, small))} for name, counts in builds.items()})


def own_work(folder, out, boot):
    """Instructions of a boot on the pages of the driver's image."""
    _, base, size = (out / "bench" / boot / "driver.txt").read_text().split()
    begin, end = int(base, 16), int(base, 16) + int(size, 16)
    pages = (line.split() for line in (folder / f"{boot}.pages").read_text().splitlines())
    return sum(int(count) for _, page, count in pages if begin <= int(page, 16) < end)


def boot_rows(folder, out):
    """The driver's own instructions in a boot, per byte of the records that it published."""
    for boot, must, aim in (("cold", 200, 174), ("warm", 35.5, 30.5)):
        published = (out / "bench" / boot / "records.bin").stat().st_size
        yield row(6, f"own instructions per byte, {boot}", must, aim,
                  {"aarch64": {"notebook": own_work(folder, out, boot) / published}})


def image_row(elf):
    sizes = subprocess.run(["aarch64-linux-gnu-size", elf], check=True, capture_output=True, text=True).stdout
    code, data, bss = (int(number) for number in sizes.splitlines()[1].split()[:3])
    return row(7, "RELEASE image, bytes", 40704, 39424, {"aarch64": {"notebook": code + data + bss}})


def verdict(judged):
    if judged["judged"] > judged["must"]:
        return "MISSED"
    return "aim" if judged["judged"] <= judged["aim"] else "must"


def shown(number):
    if number is None:
        return " " * 9
    return f"{number:9.3f}" if isinstance(number, float) else f"{number:9d}"


def print_table(rows):
    print(f"{'':38}{'must':>9}{'aim':>9}  {'AArch64, -Os':<36}  {'host, -Os'}")
    print(f"{'':38}{'':18}{'notebook':>9}{'worst':>9}  {'of':<18}{'worst':>9}")
    for r in rows:
        host = r["values"].get("host")
        print(f"{r['row']:2d} {r['what']:<35}{shown(r['must'])}{shown(r['aim'])}"
              f"{shown(r['values']['aarch64'].get('notebook'))}{shown(r['judged'])}  {r['worst']:<18}"
              f"{shown(max(host.values()) if host else None)}  {r['verdict']}")


def main(arguments):
    options = dict(zip(arguments[2::2], arguments[3::2]))
    if len(arguments) < 2 or len(arguments) % 2 != 0 or not options.keys() <= {"--image", "--boots"}:
        print(__doc__, file=sys.stderr)
        return 2
    folder = pathlib.Path(arguments[0])
    rows = list(database_rows({build: Counts(folder, build) for build in ("aarch64", "host")}))
    if "--boots" in options:
        rows += boot_rows(folder, pathlib.Path(options["--boots"]))
    if "--image" in options:
        rows.append(image_row(options["--image"]))
    rows.sort(key=lambda r: r["row"])
    for r in rows:
        r["verdict"] = verdict(r)
    pathlib.Path(arguments[1]).write_text(json.dumps(rows, indent=1) + "\n")
    print_table(rows)
    return 1 if any(r["verdict"] == "MISSED" for r in rows) else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
