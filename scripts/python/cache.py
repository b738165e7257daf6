#!/usr/bin/env python3
# @file
# cache.py list FLASH:          prints "NAME SIZE CRC32" or "NAME Not Found" for each of the driver's variables.
# cache.py decodes FLASH TOOL:  prints the compressed variables that are missing, or that TOOL, EDK II's TianoCompress,
#                               does not decode to the announced length. Exits 1 if there are any.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
import pathlib
import struct
import sys
import zlib

from same_bytes import decompressed
from variables import COMPRESSED, read_variables

NAMES = ("BiosVersion", "AttributesData", "AttributesCount", "PldmString", "DispString", "HelpString", "AttCacheStatus",
         "PidDepList")
LENGTHS = struct.Struct("<2I")  # of the block after them, and of its decoded content


def undecoded(found, tool):
    for name in COMPRESSED:
        data = found.get(name, b"")
        size, length = LENGTHS.unpack_from(data) if len(data) > LENGTHS.size else (0, 0)
        if size != len(data) - LENGTHS.size or len(decompressed(tool, data)) != length:
            yield name


def main(what, flash, *tool):
    found = {name: data for name, data, _ in read_variables(pathlib.Path(flash).read_bytes()) or []}
    if what == "decodes":
        bad = list(undecoded(found, *tool))
        print(*bad)
        return 1 if bad else 0
    for name in NAMES:
        print(name, f"{len(found[name])} {zlib.crc32(found[name]):08x}" if name in found else "Not Found")
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
