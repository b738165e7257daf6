#!/usr/bin/env python3
# @file
# same_bytes.py TIANO_COMPRESS BEFORE AFTER: compares what the boots of two folders published and cached, byte for byte:
# the transport records, except addresses and the directory's checksum, and the cache variables, decompressed with EDK II's
# own tool. Prints a line for each difference, then how many boots were compared; exits 1 when a boot differs.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
import pathlib
import subprocess
import sys
import tempfile

from records import read_records
from variables import COMPRESSED, read_variables

DIRECTORY, DESCRIPTORS = 0, 1
DESCRIPTOR_SIZE = 28
CACHE = (*COMPRESSED, "AttributesCount", "AttCacheStatus", "BiosVersion")


def without_addresses(kind, payload):
    payload = bytearray(payload)
    if kind == DIRECTORY:
        payload[22] = 0
        for entry in range(24, len(payload) - 15, 16):
            payload[entry + 12:entry + 16] = bytes(4)
    elif kind == DESCRIPTORS:
        for descriptor in range(0, len(payload), DESCRIPTOR_SIZE):
            payload[descriptor:descriptor + 8] = bytes(8)
    return bytes(payload)


def records(path):
    return [(f"record {kind}", without_addresses(kind, payload)) for kind, payload in read_records(path.read_bytes())]


def decompressed(tool, data):
    with tempfile.TemporaryDirectory() as folder:
        source, result = pathlib.Path(folder, "in"), pathlib.Path(folder, "out")
        source.write_bytes(data)
        done = subprocess.run([tool, "-d", "--uefi", "-q", "-o", result, source], capture_output=True, check=False)
        return result.read_bytes() if done.returncode == 0 else b"damaged"


def cache(tool, path):
    return [(name, decompressed(tool, data) if name in COMPRESSED else data)
            for name, data, _ in sorted(read_variables(path.read_bytes()) or []) if name in CACHE]


def differences(tool, before, after):
    for what, read in (("records.bin", records), ("vars.fd", lambda path: cache(tool, path))):
        sides = [folder / what for folder in (before, after)]
        there = [side.exists() for side in sides]
        if there != [True, True]:
            if any(there):
                yield f"{what} in one alone"
            continue
        one, other = map(read, sides)
        if [name for name, _ in one] != [name for name, _ in other]:
            yield f"{what}: {' '.join(name for name, _ in one)} and {' '.join(name for name, _ in other)}"
            continue
        yield from (f"{name}: {len(data)} and {len(changed)} bytes"
                    for (name, data), (_, changed) in zip(one, other) if data != changed)


def main(tool, before, after):
    folders = [pathlib.Path(before), pathlib.Path(after)]
    names = sorted({one.parent.name for folder in folders for one in folder.glob("*/records.bin")})
    different = 0
    for name in names:
        found = list(differences(tool, *(folder / name for folder in folders)))
        different += bool(found)
        for line in found:
            print(f"{name}: {line}")
    print(f"{len(names)} boots, {different} differ")
    return 1 if different or not names else 0


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit("usage: same_bytes.py TIANO_COMPRESS BEFORE AFTER")
    sys.exit(main(*sys.argv[1:]))
