#!/usr/bin/env python3
# @file
# published.py blocks RECORDS BLOCKS: compares the blocks of the published protocol with the payloads of the transport
#                                     records. Both carry the same bytes, apart from the attribute stream.
# published.py help RECORDS TEXTS:    compares help texts, as entries, with those of the help table. Empty texts are left
#                                     out: the access protocol does not find an empty one at the end of a table.
#
# BLOCKS and TEXTS are files of AttributeDump. Prints a line and exits 1 when the files differ.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
import pathlib
import struct
import sys

from records import read_records

ENTRY = struct.Struct("<2H")
DESCRIPTORS, HELP, STREAM = 1, 6, 7
PAD_LENGTH = 10 * 28 + 25  # of the help table, in its descriptor
LANGUAGE, CHECKSUM = 2 + 10, 4


def texts(entries):
    """The entries that are not empty: handle, bytes of text, text."""
    kept = []
    place = 0
    while place + ENTRY.size <= len(entries):
        end = place + ENTRY.size + ENTRY.unpack_from(entries, place)[1]
        if end > place + ENTRY.size:
            kept.append(entries[place:end])
        place = end
    return b"".join(kept)


def main(what, records, other):
    sent = dict(read_records(pathlib.Path(records).read_bytes()))
    if what == "blocks":
        expected = b"".join(payload for kind, payload in sorted(sent.items()) if kind != STREAM)
    else:
        expected = sent[HELP][LANGUAGE:len(sent[HELP]) - CHECKSUM - sent[DESCRIPTORS][PAD_LENGTH]]
    found = pathlib.Path(other).read_bytes()
    if what == "help":
        expected, found = texts(expected), texts(found)
    if found == expected:
        return 0
    place = next((at for at, (one, two) in enumerate(zip(found, expected)) if one != two), min(len(found), len(expected)))
    print(f"{other}: {len(found)} bytes, not {len(expected)}, or others from byte {place} on")
    return 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
