#!/usr/bin/env python3
# @file
# flash.py COMMAND: reads a variable flash, and the log of what was written to it while the notebook ran.
#
#   used FLASH                 prints how many variables there are, and the bytes that they take
#   cuts FLASH LOG FROM COUNT  prints "WRITES STAGE" for COUNT moments at which the power may fail, from the write of the
#                              variable FROM on, or from the first write for "-". Half of them are beginnings of stages,
#                              the others are spread evenly
#   cut FLASH LOG WRITES OUT   makes the flash as it was after that many writes
#
# A stage has the names of the variables in the flash, of the driver and the attribute service. It is "erased" without a
# store, and "rewritten" while variables are missing that were there before and come back, or "rewritten up to BiosVersion"
# if "BiosVersion" is there again. EDK II's flash driver erases and rewrites the whole block for a write of more than 256
# bytes.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
import struct
import sys

from variables import read_variables

FLASH_SIZE = 768 << 10
SECTOR = 512

REWRITING = ("erased", "rewritten", "rewritten up to BiosVersion")
SHOWN = ("PldmString", "DispString", "HelpString", "AttributesData", "AttributesCount", "AttCacheStatus", "BiosVersion",
         "PendingValues")


def writes(log):
    """(offset, bytes) of each write that QEMU's blklogwrites logged."""
    place = SECTOR  # after the head: a log that was not closed has no number of entries
    while place + SECTOR <= len(log):
        first, count = struct.unpack_from("<2Q", log, place)
        place += SECTOR
        if count:
            yield first * SECTOR, log[place:place + count * SECTOR]
            place += count * SECTOR


def replay(flash, log):
    """The flash before the first write and after each."""
    flash = bytearray(flash[:FLASH_SIZE])
    yield flash
    for offset, data in writes(log):
        if offset < FLASH_SIZE:
            flash[offset:offset + len(data)] = data
        yield flash


def stages(flash, log):
    """A stage for each number of writes, and what the shown variables hold."""
    known = []
    for state in replay(flash, log):
        known.append(read_variables(state))
    last = {variable.name for variable in known[-1]}
    seen = set()
    for now in known:
        if now is None:
            yield "erased", None
            continue
        names = {variable.name for variable in now}
        missing = (seen & last) - names
        seen |= names
        shown = {variable.name: variable.data for variable in now if variable.name in SHOWN}
        present = [f"{name}={shown[name][0]}" if name == "AttCacheStatus" else name for name in SHOWN if name in shown]
        if missing:
            yield "rewritten up to BiosVersion" if "BiosVersion" in shown else "rewritten", shown
        else:
            yield "+".join(present) or "nothing", shown


def spread(numbers, count):
    """`count` of the numbers, evenly spread."""
    return {numbers[index * len(numbers) // count] for index in range(count)} if count < len(numbers) else set(numbers)


def begin_of(variable, moments):
    """The number of writes before the first one of the variable."""
    begin = next(at for at, (stage, shown) in enumerate(moments)
                 if stage not in REWRITING and shown.get(variable) != moments[0][1].get(variable))
    # The write that makes a variable valid comes after those of its content.
    large = len(moments[begin][1][variable]) > 256
    begin -= 2
    while large and begin > 0 and moments[begin][0] != "erased":
        begin -= 1
    return begin


def cuts(flash, log, first, count):
    moments = list(stages(flash, log))
    begin = 0 if first == "-" else begin_of(first, moments)
    end = len(moments) - 1
    beginnings = [at for at in range(begin + 1, end + 1) if moments[at][0] != moments[at - 1][0]]
    chosen = spread(beginnings, count // 2) | {begin, end}
    chosen |= spread(sorted(set(range(begin, end + 1)) - chosen), count - len(chosen))
    for at in sorted(chosen):
        print(at, moments[at][0])


def read(path):
    with open(path, "rb") as file:
        return file.read()


def main(command, flash, *rest):
    if command == "used":
        found = read_variables(read(flash))
        print(len(found), sum(variable.size for variable in found))
    elif command == "cuts":
        cuts(read(flash), read(rest[0]), rest[1], int(rest[2]))
    elif command == "cut":
        for at, state in enumerate(replay(read(flash), read(rest[0]))):
            if at == int(rest[1]):
                with open(rest[2], "wb") as file:
                    file.write(state)
                return 0
        return 1
    else:
        return 2
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
