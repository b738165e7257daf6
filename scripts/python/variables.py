# @file
# Reads the variables of a variable flash: EDK II's authenticated variable store.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
import struct
from typing import NamedTuple

VOLUME_SIGNATURE, FORMATTED = b"_FVH", 0x5A  # EFI_FIRMWARE_VOLUME_HEADER, VARIABLE_STORE_HEADER.Format
STORE = 0x64  # the variables follow the headers of volume and store
HEADER = struct.Struct("<HBxI8x16x4xII16s")  # AUTHENTICATED_VARIABLE_HEADER (MdeModulePkg)
START = 0x55AA
COMPRESSED = ("PldmString", "DispString", "HelpString", "AttributesData")  # of the attribute cache
IN_USE = (0x3F, 0x3E)  # VAR_ADDED; the same while a new value is written


class Variable(NamedTuple):
    name: str
    data: bytes
    size: int  # bytes that the variable takes of the store


def read_variables(flash):
    """The variables in use, or None if the flash holds no formatted store."""
    if flash[40:44] != VOLUME_SIGNATURE or flash[STORE - 8] != FORMATTED:
        return None
    found = []
    place = STORE
    while place + HEADER.size < len(flash):
        start, state, _, name_size, data_size, _ = HEADER.unpack_from(flash, place)
        if start != START:
            break
        name_end = place + HEADER.size + name_size
        end = name_end + data_size
        following = (end + 3) & ~3
        if state in IN_USE:
            name = bytes(flash[place + HEADER.size:name_end]).decode("utf-16-le", "replace").rstrip("\0")
            found.append(Variable(name, bytes(flash[name_end:end]), following - place))
        place = following
    return found
