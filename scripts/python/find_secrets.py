#!/usr/bin/env python3
# @file
# find_secrets.py FOLDER START PASSWORD OLDER...: looks for passwords that were typed, and for the keys that the
# attribute service gave for them, in what a boot left: its memory, saved in the middle of it, and all other files.
#
# Passwords are searched as ASCII, UCS-2 and key strokes. In memory, the terminal driver may keep one in its rings of typed
# characters, and the attribute service keeps the key for comparison. Any other copy is a leak. Both must be found there,
# except older passwords: this proves that they were typed and that the search works.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
import pathlib
import re
import struct
import sys

# TERMINAL_DEV (MdeModulePkg/Universal/Console/TerminalDxe/Terminal.h): its signature, its four pointers to rings, and
# the sizes of those.
TERMINAL = struct.pack("<Q", int.from_bytes(b"tmnl", "little"))
RINGS_OFFSET = 184
RING_SIZES = (2 + 256, 2 + 2 * 129, 2 + 4 * 129, 2 + 4 * 129)

# mPasswords (AttributeServiceDxe/ServicePasswords.c): class, kind, number of the setting, and key of the system password,
# then of the administrator's.
KEYS = re.compile(rb"\x09\0..\0{4}\x57\x06\0\0(.{4})\x0a\0..\x01\0{3}\x55\x06\0\0(.{4})", re.DOTALL)


def places(data, wanted, step=1):
    place = data.find(wanted)
    while place >= 0:
        if place % step == 0:
            yield place
        place = data.find(wanted, place + 1)


def rings(memory, start):
    """Where the rings of the terminals are, as (owner, first, end)."""
    for terminal in places(memory, TERMINAL, 8):
        pointers = struct.unpack_from("<4Q", memory, terminal + RINGS_OFFSET)
        if all(start <= pointer < start + len(memory) for pointer in pointers):
            for pointer, size in zip(pointers, RING_SIZES):
                yield "terminal driver", pointer - start, pointer - start + size


def main(folder, start, *passwords):
    start = int(start, 0)
    memory = (pathlib.Path(folder) / "memory.bin").read_bytes()
    owned = list(rings(memory, start))
    secrets = [(f"{password!r} as {form}", password.encode(form), 1)
               for password in passwords for form in ("ascii", "utf-16-le", "utf-32-le")]
    keys = [found.span(group) for found in KEYS.finditer(memory) for group in (1, 2) if any(found[group])]
    owned += [("attribute service", *span) for span in keys]
    secrets += [(f"key {memory[first:end].hex()}", memory[first:end], 4) for first, end in keys]

    older = tuple(repr(password) for password in passwords[1:])
    left = 0
    seen = set()
    for path in pathlib.Path(folder).iterdir():
        data = path.read_bytes()
        for name, secret, step in secrets:
            for place in places(data, secret, step):
                owner = [owner for owner, first, end in owned
                         if path.name == "memory.bin" and first <= place and place + len(secret) <= end]
                left += not owner
                seen.update((name, each) for each in owner)
                print(f"{path.name}+{place:x} {name}: {owner or data[max(0, place - 32):place + 64]}")
    unseen = [name for name, *_ in secrets if name not in dict(seen) and not name.startswith(older)]
    unseen += [] if keys else ["any key"]
    print(f"{left} copies left; not seen where they may be:", ", ".join(unseen) or "none")
    return 1 if left or unseen else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
