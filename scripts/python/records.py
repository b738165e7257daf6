# @file
# Reads the transport records of a capture (Corvane/TransportRecord.h).
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
import struct

HEADER = struct.Struct("<16sQB")  # GUID, length of the payload, type


def read_records(capture):
    """(type, payload) of each record."""
    while len(capture) >= HEADER.size:
        _, length, kind = HEADER.unpack_from(capture)
        end = HEADER.size + length
        yield kind, capture[HEADER.size:end]
        capture = capture[end:]
