# @file
# Checks the texts that the inspector pairs with attributes against the sources of the notebook's form sets.
#
#   texts.py FORMS LANGUAGE < ATTRIBUTES
#
# FORMS is the folder with the VFR and UNI sources, ATTRIBUTES the output of `inspect show --json`. The sources have the
# texts of each question. This script applies the driver's rules in the order of the attributes: leading blanks and
# characters with bit 7 are dropped, switches get a suffix, over-long texts are left out. A text that equals an earlier one
# gets stars, which readers do not see, and no help text.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent

import json
import pathlib
import re
import sys

SWITCHES = {1568, 1569, 1578, 1655, 1656}
LONGEST = 174
LONGEST_HELP = 4095
COMMON = "CommonStrings.uni"
OWN_ATTRIBUTES = pathlib.Path(__file__).parents[2] / "VaroFeaturesPkg/Include/Corvane/OwnAttributes.h"
OWN_VALUES = {"ProjectVariablesPreserve": "Project Variables Preserve"}

TOKEN = r"(?:STRING_TOKEN\s*\(\s*(\w+)\s*\)|(NO_HELP))"


def read_strings(path):
    """{token: {language: text}}"""
    strings = {}
    token = language = None
    words = r'//[^\n]*|#string\s+(\w+)|#language\s+([\w-]+)|"((?:[^"\\]|\\.)*)"'
    for word in re.finditer(words, path.read_text("utf-8")):
        if word[1]:
            token = word[1]
        elif word[2]:
            language = word[2]
            strings.setdefault(token, {})[language] = ""
        elif word[3] is not None and token and language:
            text = re.sub(r'\\(["\\])', r"\1", word[3].replace("\\n", "\n"))
            strings[token][language] += text
    return strings


def read_own_attributes():
    """Display texts of the driver's own attributes by name without annotations, and help texts, from the header."""
    header = OWN_ATTRIBUTES.read_text("utf-8")
    displays = dict(re.findall(r'\{ "([^"]+)"[^",]*, "([^"]+)"', header))
    (help_text,) = re.findall(r'#define OWN_CHARGE_POWER_LIMIT_HELP\s+"([^"]+)"', header)
    return displays, {"ChargePowerLimitFactoryFlag": help_text}


class FormSet:
    def __init__(self, source, common):
        text = re.sub(r"//[^\n]*|/\*.*?\*/", "", source.read_text("utf-8"), flags=re.S)
        self.strings = {**common, **read_strings(source.with_suffix(".uni"))}
        self.title = re.search(r"title\s*=\s*" + TOKEN, text)[1]
        self.questions = {}  # identifier: kind, prompt, help, options
        kinds = "CHECKBOX|NUMERIC|STEPPED_NUMERIC|TEXT|ONE_OF"
        macro = rf"\b({kinds})\s*\(\s*(\d+)\s*,\s*[^,]+,\s*{TOKEN}\s*,\s*{TOKEN}"
        plain = r"\b(oneof|checkbox|numeric|string)\b[^;]*?questionid\s*=\s*(\d+)\s*,[^;]*?"
        plain += rf"prompt\s*=\s*{TOKEN}\s*,\s*help\s*=\s*{TOKEN}"
        for found in [*re.finditer(macro, text), *re.finditer(plain, text)]:
            kind, identifier, prompt, _, help_token, _ = found.groups()
            listed = kind in ("ONE_OF", "oneof")
            rest = re.split(r"END_ONE_OF|endoneof", text[found.end() :])[0] if listed else ""
            options = re.findall(r"OPTION\s*\(\s*\w+\s*,\s*STRING_TOKEN\s*\(\s*(\w+)", rest)
            options += re.findall(r"option\s+text\s*=\s*STRING_TOKEN\s*\(\s*(\w+)", rest)
            self.questions[int(identifier)] = (kind.upper().replace("_", ""), prompt, help_token, options)

    def text(self, token, language, fallback):
        languages = self.strings.get(token, {})
        return languages.get(language, languages.get(fallback, ""))


def clean(text):
    return "".join(c for c in text.lstrip(" ") if not ord(c) & 0x80)


def shown(text):
    return clean(text.lstrip("*")) if text.startswith("*") else text


class Store:
    """The display texts so far, by the driver's rules."""

    def __init__(self):
        self.display = set()
        self.names = {}

    def enter(self, text, distinct):
        """The text as stored, or None, and whether an equal one was there before."""
        first = True
        while len(text) <= LONGEST:
            cleaned = clean(text)
            if cleaned not in self.display:
                self.display.add(cleaned)
                return cleaned, not first
            if not distinct:
                return cleaned, True
            text, first = "*" + text, False
        return None, not first


def expected_of_question(store, form_set, question, attribute, language):
    kind, prompt, help_token, options = question
    text = form_set.text(prompt, language, language)
    store.names.setdefault(attribute["name"], None)
    stored, collided = store.enter(text + (" Switch" if attribute["token"] in SWITCHES else ""), True)
    help_text = form_set.text(help_token, language, language) if help_token else ""
    has_help = stored is not None and not collided and 0 < len(help_text) <= LONGEST_HELP
    values = []
    if kind == "CHECKBOX":
        for value in attribute["possible"]:
            store.enter(value["name"], False)
            store.names.setdefault(value["name"], value["name"])
            values.append(value["name"])
    published = {value["name"] for value in attribute.get("possible", [])}
    for option in options:
        name = clean(form_set.text(option, "x-UEFI", language))
        if name not in published:
            continue  # suppressed in this boot
        if name not in store.names:
            entered, _ = store.enter(form_set.text(option, language, language), True)
            store.names[name] = None if entered is None else shown(entered)
        values.append(store.names[name])
    return None if stored is None else shown(stored), help_text if has_help else None, values


def main(folder, language):
    folder = pathlib.Path(folder)
    common = read_strings(folder / COMMON)
    form_sets = [FormSet(source, common) for source in sorted(folder.glob("*.vfr"))]
    titles = {}
    for form_set in form_sets:
        title = form_set.text(form_set.title, language, language)
        titles[clean(title.replace(" ", ""))] = form_set
    attributes = json.load(sys.stdin)["attributes"]
    collections = [attribute for attribute in attributes if attribute["type"] == "collection"]
    members = {handle: titles[a["name"]] for a in collections for handle in a["current"]["members"]}

    own_displays, own_helps = read_own_attributes()
    store = Store()
    wrong = helped = starred = 0
    for attribute in attributes:
        bare = attribute["name"].split("[")[0]
        handle = attribute["handle"]
        if handle in members:
            form_set = members[handle]
            question = form_set.questions[attribute["token"]]
            expected = expected_of_question(store, form_set, question, attribute, language)
        elif attribute["type"] == "collection":
            title = titles[attribute["name"]]
            stored, _ = store.enter(title.text(title.title, language, language), False)
            expected = shown(stored), None, []
        else:
            if handle >= 16:
                store.enter(own_displays[bare], False)
            values = [OWN_VALUES.get(v["name"], v["name"]) for v in attribute.get("possible", []) if handle >= 16]
            expected = own_displays[bare], own_helps.get(bare), values
        values = [v.get("display") for v in attribute.get("possible", []) if handle >= 16]
        # A list of the same two names as a checkbox looks the same, so a text of a value may be unknown.
        same = len(values) == len(expected[2]) and all(v in (None, e) for v, e in zip(values, expected[2]))
        helped += expected[1] is not None
        starred += sum(1 for other in attributes if other["display"] == attribute["display"]) > 1
        if (attribute["display"], attribute["help"]) != expected[:2] or not same:
            wrong += 1
            print(f"{handle} {attribute['name']}: {attribute['display']!r} {attribute['help']!r} {values},")
            print(f"    not {expected}")
    print(f"{len(attributes)} attributes, {helped} with help, {starred} sharing a text; {wrong} wrong")
    return 0 if wrong == 0 and attributes else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
