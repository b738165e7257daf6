#!/usr/bin/env python3
# @file
# Makes the stores that the benchmarks measure: from a boot's variable flash, from a capture of transport records, or from
# the form sets in an EDK II tree.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
"""Usage: bench_stores.py boot FILE FOLDER    FILE is vars.fd or records.bin
       bench_stores.py find FOLDER         lists the boots under FOLDER: a name and a file per line
       bench_stores.py edk2 EDK2_DIR FOLDER

boot and edk2 write the cache of one store to FOLDER, one file per variable. A compressed variable has the variable's name;
uncompressed content has the suffix ".content". Exit status: 0 success, 1 unusable input, 2 wrong usage."""
import pathlib
import re
import struct
import sys

from records import read_records
from variables import COMPRESSED as LISTS, read_variables

COUNTERS = "AttributesCount"
FIRST_HANDLE = 16
STRINGS, DISPLAY, HELP, STREAM = 2, 5, 6, 7  # types of transport records
EMPTY_SLOT = 0xFF
HEAD_SIZE = 11
FORM_PACKAGES = ("MdeModulePkg", "NetworkPkg", "SecurityPkg", "OvmfPkg")
MOST_ATTRIBUTES = 250


def string_list(texts):
    """A string list of the cache: `texts` is (handle, text), None for a handle without a text."""
    content = bytearray()
    for handle, text in texts:
        data = (text + "\0").encode("utf-16-le", "surrogatepass") if text is not None else b""
        content += struct.pack("<HH", handle, len(data)) + data
    return bytes(content)


def write_store(folder, names, displays, helps, attributes, counters):
    folder.mkdir(parents=True, exist_ok=True)
    for name, content in zip(LISTS, (string_list(names), string_list(displays), string_list(helps), attributes)):
        (folder / f"{name}.content").write_bytes(content)
    (folder / COUNTERS).write_bytes(struct.pack("<4Q", *counters))


def write_flash_store(data, folder):
    found = {v.name: v.data for v in read_variables(data) or [] if v.name in (*LISTS, COUNTERS)}
    if len(found) <= len(LISTS):
        sys.exit(f"bench: {folder.name}: the variable flash has no attribute cache")
    folder.mkdir(parents=True, exist_ok=True)
    for name, value in found.items():
        (folder / name).write_bytes(value)


def table_texts(table, start, encoding):
    """Handle and text of each entry of a string table; `start` is the offset of the first one."""
    place = start
    while place + 8 <= len(table):  # after the last entry there are pad and checksum, less than 8 bytes
        handle, size = struct.unpack_from("<HH", table, place)
        yield handle, table[place + 4:place + 4 + size].decode(encoding, "replace")
        place += 4 + size


def cached_attributes(stream):
    """The attribute data of the cache, out of the published attribute stream."""
    cached, place = bytearray(), 0
    while place < len(stream):
        if stream[place] == EMPTY_SLOT:
            place += 1
            continue
        head, kind = place, stream[place + 2] & 0x7F
        place += HEAD_SIZE
        if kind == 1:  # the cache has the length of the text where the stream has its terminator
            end = stream.index(0, place + 7)
            text = stream[place + 7:end]
            cached += stream[head:place + 7] + struct.pack("<H", len(text)) + text
            place = end + 1
            continue
        if kind == 4:  # not in the cache
            place += 5 + 2 * stream[place + 4] + 23
            continue
        sizes = {0: lambda: 3 + 10 * stream[place], 2: lambda: 8, 3: lambda: 36, 5: lambda: 5 + 2 * stream[place + 4],
                 6: lambda: 2 + 2 * stream[place]}
        if kind not in sizes:
            break
        place += sizes[kind]()
        cached += stream[head:place]
    return bytes(cached)


def write_capture_store(capture, folder):
    payloads = dict(read_records(capture))
    if not {STRINGS, DISPLAY, HELP, STREAM} <= payloads.keys():
        sys.exit(f"bench: {folder.name}: the capture lacks records")
    size, *counters = struct.unpack_from("<I4Q", payloads[STREAM])
    helps = [(handle, text or None) for handle, text in table_texts(payloads[HELP], 12, "utf-16-le")]
    write_store(folder, table_texts(payloads[STRINGS], 0, "latin-1"), table_texts(payloads[DISPLAY], 12, "utf-16-le"), helps,
                cached_attributes(payloads[STREAM][36:36 + size]), counters)


def write_boot_store(path, folder):
    data = path.read_bytes()
    if path.suffix == ".bin":
        write_capture_store(data, folder)
    else:
        write_flash_store(data, folder)


def boots(folder):
    """Every boot under a folder. The variable flash is preferred to the capture, because it has the whole texts."""
    found = {}
    for pattern in ("vars.fd", "records.bin"):
        for path in sorted(folder.rglob(pattern)):
            found.setdefault(path.parent, path)
    return [("-".join(place.relative_to(folder).parts) or folder.resolve().name, path) for place, path in sorted(found.items())]


class Forms:
    """Collects a store as the driver gathers it: names and display texts once each, a help text per display text."""

    def __init__(self):
        self.names, self.displays, self.helps = {}, {}, {}
        self.attributes, self.count = bytearray(), 0

    @staticmethod
    def intern(texts, text):
        clean = "".join(c for c in text.lstrip(" ") if not ord(c) & 0x80)
        return texts.setdefault(clean, FIRST_HANDLE + len(texts))

    def head(self, kind, name, width, token):
        handle = FIRST_HANDLE + self.count
        self.count += 1
        return struct.pack("<HBHHI", handle, kind, name, width, token)

    def question(self, kind, prompt, text, options, token):
        name = self.intern(self.names, prompt.replace(" ", ""))
        display = self.intern(self.displays, prompt)
        if text and display not in self.helps:
            self.helps[display] = text
        if kind in ("oneof", "checkbox"):
            options = options or ["Disabled", "Enabled"]
            handles = [self.intern(self.names, option) for option in options]
            for option in options:
                self.intern(self.displays, option)
            self.attributes += self.head(0, name, 1, token) + struct.pack(
                f"<B{len(options)}H{len(options)}Q2B", len(options), *handles, *range(len(options)), 0, 0)
        elif kind == "numeric":
            self.attributes += self.head(3, name, 2, token) + struct.pack("<QQIQQ", 0, 255, 1, 0, 0)
        else:
            self.attributes += self.head(1, name, 0, token) + struct.pack("<BHHHH", 1, 0, 40, 0, 0)

    def collection(self, title, before):
        name = self.intern(self.names, title.replace(" ", ""))
        self.intern(self.displays, title)
        members = range(FIRST_HANDLE + before, FIRST_HANDLE + self.count)
        self.attributes += self.head(0x85, name, 0, 0) + struct.pack(
            f"<HBBB{len(members)}H", name, 0xFF, 0, len(members), *members)

    def write(self, folder):
        handles = range(FIRST_HANDLE, FIRST_HANDLE + len(self.displays))
        write_store(folder, ((h, t) for t, h in self.names.items()), ((h, t) for t, h in self.displays.items()),
                    [(h, self.helps.get(h)) for h in handles], bytes(self.attributes),
                    (self.count, len(self.names), len(self.displays), len(self.helps)))


def english_texts(folder):
    """The en-US texts of a module's UNI files by their token."""
    texts = {}
    for path in sorted(folder.glob("*.[uU][nN][iI]")):
        data = path.read_bytes()
        text = data.decode("utf-16" if data[:2] in (b"\xFF\xFE", b"\xFE\xFF") else "utf-8", "replace")
        for token, body in re.findall(r"#string\s+(\w+)(.*?)(?=#string|\Z)", text, re.DOTALL):
            english = re.search(r"#language\s+en(?:-US)?\s+((?:\"(?:[^\"\\\n]|\\.)*\"\s*)+)", body)
            if english:
                parts = re.findall(r"\"((?:[^\"\\\n]|\\.)*)\"", english.group(1))
                texts[token] = "".join(parts).replace("\\n", "\n").replace("\\r", "\r").replace('\\"', '"')
    return texts


def write_edk2_store(tree, folder):
    """One boot of EDK II's own form sets, the driver sample's among them: the questions of every VFR file."""
    forms = Forms()
    paths = [path for package in FORM_PACKAGES for path in (tree / package).rglob("*") if path.suffix.lower() == ".vfr"]
    for path in sorted(paths):
        texts = english_texts(path.parent)
        source = re.sub(r"//[^\n]*|/\*.*?\*/", " ", path.read_text(errors="replace"), flags=re.DOTALL)
        before = forms.count
        for kind, body in re.findall(r"^\s*(oneof|checkbox|numeric|string)\b(.*?)\bend\1", source, re.DOTALL | re.MULTILINE):
            prompt, text = (re.search(rf"\b{word}\s*=\s*STRING_TOKEN\s*\(\s*(\w+)", body) for word in ("prompt", "help"))
            if not prompt or not texts.get(prompt.group(1), "").strip() or forms.count >= MOST_ATTRIBUTES:
                continue
            options = [texts.get(o, "") for o in re.findall(r"\boption\s+text\s*=\s*STRING_TOKEN\s*\(\s*(\w+)", body)]
            forms.question(kind, texts[prompt.group(1)], texts.get(text.group(1), "") if text else "", options,
                           0x1000 + forms.count)
        title = re.search(r"\btitle\s*=\s*STRING_TOKEN\s*\(\s*(\w+)", source)
        if title and forms.count > before:
            forms.collection(texts.get(title.group(1), path.stem), before)
    if forms.count == 0:
        sys.exit(f"bench: {tree}: no form sets in the EDK II tree")
    forms.write(folder)


def main(arguments):
    if len(arguments) == 2 and arguments[0] == "find":
        for name, path in boots(pathlib.Path(arguments[1])):
            print(name, path)
    elif len(arguments) == 3 and arguments[0] == "boot":
        write_boot_store(pathlib.Path(arguments[1]), pathlib.Path(arguments[2]))
    elif len(arguments) == 3 and arguments[0] == "edk2":
        write_edk2_store(pathlib.Path(arguments[1]), pathlib.Path(arguments[2]))
    else:
        print(__doc__, file=sys.stderr)
        return 2
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
