#!/usr/bin/env python3
# @file
# ifr.py RECORDS.json BUILD FLASH: compares published attributes with the form sets that EDK II's VFR compiler left in a
# build, and their values with variables. This reader shares nothing with the firmware's.
#
#   RECORDS.json  of "inspect show --json", of a boot that gathered
#   BUILD         a build's folder with the modules' generated C files
#   FLASH         the variable flash after that boot
#
# An attribute whose identifier is above 0xFFFF stands for a question of a foreign form set. Type, bounds, options and
# default have to be those of a question with the same prompt. The value has to be that of the variable with the name of
# the question's storage: DriverSampleDxe keeps its buffer store in a variable of the same name. Prints what differs, and
# how many attributes agree.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
import json
import pathlib
import re
import struct
import sys

from variables import read_variables

ARRAY = re.compile(r"unsigned char \w+(?:Bin|Strings)\[\] = \{(.*?)\};", re.S)
FORMS, STRINGS = 2, 4
ONE_OF, CHECKBOX, NUMERIC, OPTION, STRING, DEFAULT, GUID, END = 5, 6, 7, 9, 0x1C, 0x5B, 0x5F, 0x29
BUFFER_STORE, VARIABLE_STORE = 0x24, 0x26
TYPES = {ONE_OF: "enumeration", CHECKBOX: "enumeration", NUMERIC: "integer", STRING: "string"}
WIDTHS = {0: 1, 1: 2, 2: 4, 3: 8, 4: 1}
BIT_STORE = bytes.fromhex("8bd6dd82639187419b2720a8fd60a71d")


def packages(module):
    """(type, content) of each HII package in a module's generated C files."""
    for source in sorted(module.glob("*.c")):
        text = re.sub(r"/\*.*?\*/|//[^\n]*", "", source.read_text(errors="replace"), flags=re.S)
        for array in ARRAY.findall(text):
            data = bytes(int(byte, 16) for byte in re.findall(r"0x([0-9A-Fa-f]{1,2})\b", array))
            place = 4
            while place + 4 <= len(data):
                head = struct.unpack_from("<I", data, place)[0]
                length = head & 0xFFFFFF
                if length < 4:
                    break
                yield head >> 24, data[place + 4:place + length]
                place += length


def english(package):
    """Texts of a string package by identifier; none for another language than English."""
    size = struct.unpack_from("<I", package)[0] - 4
    if not package[42:size].startswith(b"en-US"):
        return {}
    texts, place, number = {}, size, 1
    while place < len(package) and package[place] != 0:
        kind = package[place]
        place += 1
        if kind == 0x14:
            end = place
            while package[end:end + 2] != b"\0\0":
                end += 2
            texts[number] = package[place:end].decode("utf-16-le")
            place = end + 2
            number += 1
        elif kind == 0x20:
            texts[number] = texts.get(struct.unpack_from("<H", package, place)[0], "")
            place += 2
            number += 1
        elif kind == 0x21:
            number += struct.unpack_from("<H", package, place)[0]
            place += 2
        elif kind == 0x22:
            number += package[place]
            place += 1
        else:
            raise ValueError(f"string block {kind:#x}")
    return texts


def number(data, width):
    return int.from_bytes(data[:width], "little")


def questions(forms, texts):
    """The questions of a form package."""
    place, scopes, question, stores = 0, [], None, {}
    while place + 2 <= len(forms):
        opcode, length, opens = forms[place], forms[place + 1] & 0x7F, forms[place + 1] >> 7
        if length < 2:
            return
        data = forms[place + 2:place + length]
        place += length
        if opcode == END:
            if scopes and scopes.pop() is question:
                question = None
            continue
        bits = any(scope == BIT_STORE for scope in scopes)
        mark = None
        if opcode in TYPES:
            question = read_question(opcode, data, bits, texts)
            question["store"] = stores.get(number(data[6:], 2))
            mark = question
            yield question
        elif opcode == BUFFER_STORE:
            stores[number(data[16:], 2)] = data[20:].split(b"\0")[0].decode()
        elif opcode == VARIABLE_STORE:
            stores[number(data, 2)] = data[24:].split(b"\0")[0].decode()
        elif opcode == GUID and data[:16] == BIT_STORE:
            mark = BIT_STORE
        elif opcode == OPTION and question and question["opcode"] == ONE_OF:
            value = number(data[4:], WIDTHS.get(data[3], 0))
            question["options"].append(value)
            if data[2] & 0x10:
                question["defaults"].setdefault("option", value)
        elif opcode == DEFAULT and question and number(data, 2) == 0:
            value = number(data[3:], WIDTHS[data[2]]) if data[2] in WIDTHS else None
            question["defaults"].setdefault("statement", value)
        if opens:
            scopes.append(mark)
        elif mark is question:
            question = None


def read_question(opcode, data, bits, texts):
    question = {"opcode": opcode, "type": TYPES[opcode], "prompt": texts.get(number(data, 2), ""), "options": [],
                "id": number(data[4:], 2), "defaults": {}}
    flags, rest = data[11], data[12:]
    place = number(data[8:], 2) * (1 if bits else 8)
    question["bits"] = (place, 16 * data[12] if opcode == STRING else 1 if bits else 8)
    if opcode in (ONE_OF, NUMERIC):
        width = 4 if bits else 1 << (flags & 3)
        question["bits"] = (place, flags & 0x3F if bits else 8 * width)
        question["bounds"] = tuple(number(rest[index * width:], width) for index in range(3))
    elif opcode == CHECKBOX:
        question["options"] = [0, 1]
        question["defaults"]["flag"] = flags & 1
    else:
        question["bounds"] = (data[11], data[12])
    return question


def default_of(question):
    """The standard default; None when an expression computes it."""
    for kind in ("statement", "option", "flag"):
        if kind in question["defaults"]:
            return question["defaults"][kind]
    return 0


def agrees(attribute, question):
    if attribute["type"] != question["type"]:
        return False
    default = default_of(question)
    if question["type"] == "integer":
        found = (attribute["lower"], attribute["upper"], attribute["step"])
        return found == question["bounds"] and default in (None, attribute["default"])
    if question["type"] == "string":
        return (attribute["minLength"], attribute["maxLength"]) == question["bounds"]
    values = [value["value"] for value in attribute["possible"]]
    rest = iter(question["options"])
    if not all(value in rest for value in values):  # in this order; conditions may hide some
        return False
    chosen = [values[index] for index in attribute["defaultIndices"]]
    # One byte is asked for; a value that is no option leaves the first one.
    return default is None or chosen == [default if default in values and default < 256 else values[0]]


def kept(question, variables):
    """The value in the variable of the question's storage; None without such a variable."""
    if question["store"] not in variables:
        return None
    place, count = question["bits"]
    if question["type"] == "string":
        data = variables[question["store"]][place // 8:(place + count) // 8]
        return data.decode("utf-16-le").split("\0")[0]
    return int.from_bytes(variables[question["store"]], "little") >> place & (1 << count) - 1


def current(attribute):
    if attribute["type"] == "enumeration":
        return attribute["possible"][attribute["current"]["indices"][0]]["value"]
    return attribute["current"]["text" if attribute["type"] == "string" else "value"]


def plain(text):
    return re.sub(r"\W", "", text).lower()


def main(records, build, flash):
    known = {}
    variables = {variable.name: variable.data for variable in read_variables(pathlib.Path(flash).read_bytes())}
    for module in pathlib.Path(build).glob("**/DEBUG"):
        found = list(packages(module))
        texts = {}
        for kind, content in found:
            if kind == STRINGS:
                texts.update(english(content))
        for kind, content in found:
            if kind == FORMS:
                for question in questions(content, texts):
                    known.setdefault(plain(question["prompt"]), []).append(question)
    with open(records, encoding="utf-8") as file:
        attributes = [entry for entry in json.load(file)["attributes"] if entry["token"] > 0xFFFF]
    wrong = elsewhere = 0
    for attribute in attributes:
        candidates = known.get(plain(attribute["display"] or attribute["name"]), [])
        values = [kept(question, variables) for question in candidates if agrees(attribute, question)]
        if not values:
            wrong += 1
            print(f"{attribute['name']}: not as compiled: {json.dumps(attribute)}; compiled: {candidates}")
        elif values == [None]:
            elsewhere += 1
        elif current(attribute) not in values:
            wrong += 1
            print(f"{attribute['name']}: published {current(attribute)!r}, in variables {values}")
    print(f"{len(attributes) - wrong} of {len(attributes)} attributes of foreign form sets are as compiled, "
          f"{elsewhere} without a variable")
    return 1 if wrong or not attributes else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
