#!/usr/bin/python3
# @file
# Reads what `inspect export` wrote, and compares every attribute with the capture: the PLDM tables with a reader of
# DSP0247 of its own, the firmware-attributes tree with fwupd, the Redfish documents with sushy.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
"""Usage: check_exports.py pldm|fwupd|sushy INSPECT CAPTURE...; exits 1 with one line for each error, 77 when fwupd or sushy
is missing. FWUPDTOOL names fwupdtool where it is not installed."""

import http.server
import json
import os
import pathlib
import shutil
import struct
import subprocess
import sys
import tempfile
import threading
import zlib

SKIPPED = 77
COMMON = ("enumeration", "string", "integer")

# What follows the head of an entry, by type: the names of `inspect show --json` and formats of `struct`. A star is a count
# and as many fields, a dollar sign a length of two bytes and as many characters.
BOUNDS = ["possible=*H defaultIndices=*B", *["subtype=B minLength=H maxLength=H defaultLength=$"] * 2,
          "lower=Q upper=Q step=I default=Q", "bootConfigType=B supportedModes=B minSources=B maxSources=B possible=*H",
          "collectionInfo=BBBB", "possible=*H"]  # fmt: skip
VALUES = ["indices=*B", "text=$", "length=$", "value=Q", "bootConfigType=B mode=B order=*B", "members=*H", "index=B"]


def run(*command, **options):
    """What a program prints as JSON; captures with findings are good enough."""
    result = subprocess.run(command, capture_output=True, check=False, **options)
    if result.returncode > 1:
        sys.exit(result.stderr.decode())
    return json.loads(result.stdout)


def skip(reason):
    """Ends the check, which is counted as skipped."""
    print(reason)
    sys.exit(SKIPPED)


def bare(name):
    """A name without its annotations."""
    return name.split("[")[0]


def pldm_entries(path, forms, head):
    """The entries of a table: the fields of the head, and those of the entry's type as a dictionary."""
    content = path.read_bytes()
    rest = content[:-4]
    if len(content) % 4 or zlib.crc32(rest) != int.from_bytes(content[-4:], "little"):
        sys.exit(f"{path.name} has a wrong length or checksum")

    def take(form):
        nonlocal rest
        fields = struct.unpack_from("<" + form, rest)
        rest = rest[struct.calcsize("<" + form) :]
        return fields

    while len(rest) > 3 or any(rest):
        first, fields = take(head), {}
        for field in forms[first[1] & 0x7F if len(first) > 1 else 0].split():
            key, form = field.split("=")
            if form == "$":
                fields[key] = take(f"{take('H')[0]}s")[0].decode("latin-1")
            else:
                found = take(take("B")[0] * form[1:] if form[0] == "*" else form)
                fields[key] = list(found) if len(form) > 1 else found[0]
        yield first, fields


def check_pldm(inspect, capture, shown, folder):
    """Every attribute of both profiles, and no other."""
    for profile in ([], ["--profile", "common"]):
        left = run(inspect, "export", "--pldm", folder, *profile, "--json", capture)["leftOut"]
        if [one for one in left if not profile or not one["reason"].startswith("the common profile")]:
            yield f"left out: {left}"
        strings = {handle: fields["text"] for (handle,), fields in pldm_entries(folder / "stringTable", ["text=$"], "H")}
        values = {head: fields for head, fields in pldm_entries(folder / "attributeValueTable", VALUES, "HB")}
        read = {}
        for (handle, kind, name), fields in pldm_entries(folder / "attributeTable", BOUNDS, "HBH"):
            if "possible" in fields:
                fields["possible"] = [strings[value] for value in fields["possible"]]
            if "defaultLength" in fields:
                fields["defaultLength"] = len(fields["defaultLength"])
            current = values.pop((handle, kind), None)
            if kind & 0x7F == 2 and current:
                current = {"length": len(current["length"])}
            read[handle] = {"name": strings[name], "readOnly": kind > 0x7F, "current": current, **fields}
        for one in shown:
            if "possible" in one:
                one = {**one, "possible": [value["name"] for value in one["possible"]]}
            found = read.pop(one["handle"], None)
            if profile and one["type"] not in COMMON:
                expected = None
            else:
                expected = {key: one.get(key) for key in found or one}
            if found != expected:
                yield f"{one['name']} is read as {found}"
        if read or values:
            yield f"there are others, {read} {values}"


def read_by_fwupd(inspect, capture, folder):
    """What `fwupdtool get-bios-settings` prints; it leaves zeros out."""
    tool = os.environ.get("FWUPDTOOL") or shutil.which("fwupdtool") or skip("fwupd is not installed")
    tree = folder / "class" / "corvane"
    run(inspect, "export", "--firmware-attributes", tree, "--json", capture)
    paths = {"HOME": str(folder), "FWUPD_LOCALSTATEDIR": str(folder), "FWUPD_SYSFSFWATTRIBDIR": str(tree.parent)}
    for one in run(tool, "get-bios-settings", "--json", env={**os.environ, **paths})["BiosSettings"]:
        current, kind = one["BiosSettingCurrentValue"], COMMON[{1: 0, 3: 1, 2: 2}[one["BiosSettingType"]]]
        bounds = [one.get(f"BiosSetting{key}", 0) for key in ("LowerBound", "UpperBound")]
        yield one["Name"], (int(current) if kind == "integer" else current, one["Description"],
                            one["BiosSettingPossibleValues"] if kind == "enumeration" else bounds)  # fmt: skip


def serve(resources, sent):
    """A service on a port of its own; what is patched is added to `sent`."""

    class Handler(http.server.BaseHTTPRequestHandler):
        """Answers from the dictionary."""

        def do_GET(self):  # pylint: disable=invalid-name
            """And PATCH."""
            body = self.rfile.read(int(self.headers.get("Content-Length", 0)))
            if self.command == "PATCH":
                sent.append((self.path, json.loads(body)))
            self.send_response(200 if self.path in resources else 404)
            self.end_headers()
            self.wfile.write(json.dumps(resources.get(self.path, {})).encode())

        do_PATCH = do_GET

        def log_message(self, *_):
            """Keeps quiet."""

    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    return f"http://127.0.0.1:{server.server_port}"


def read_by_sushy(inspect, capture, folder):
    """What sushy reads; then sends a change of each type, which has to arrive at the settings."""
    try:
        import sushy  # pylint: disable=import-outside-toplevel
        from sushy import auth  # pylint: disable=import-outside-toplevel
    except ImportError:
        skip("python3-sushy is not installed")
    root, settings, sent = "/redfish/v1/", "/redfish/v1/Systems/1/Bios/Settings", []
    run(inspect, "export", "--redfish", "--settings", settings, "--json", "-o", folder, capture)
    registry, bios = (json.loads((folder / f"{name}.json").read_bytes()) for name in ("AttributeRegistry", "Bios"))
    languages = [registry["Language"]]
    resources = {
        root: {"Id": "1", "Registries": {"@odata.id": root + "Registries"}},
        root + "Systems/1": {"Id": "1", "Boot": {}, "Actions": {}, "Bios": {"@odata.id": bios["@odata.id"]}},
        root + "Registries": {"Name": "1", "Members": [{"@odata.id": root + "Registries/1"}]},
        root + "Registries/1": {"Id": "1", "Name": "1", "Registry": registry["Id"], "Languages": languages,
                                "Location": [{"Language": languages[0], "Uri": root + "Registry"}]},
        root + "Registry": registry, bios["@odata.id"]: bios, settings: bios,
    }  # fmt: skip
    # Debian's package lacks the standard message registries that sushy lists first.
    sushy.Sushy._get_standard_message_registry_collection = lambda _: []  # pylint: disable=protected-access
    client = sushy.Sushy(serve(resources, sent), auth=auth.BasicAuth("user", "secret"))
    seen = client.get_system(root + "Systems/1").bios
    change = {}
    for entry in seen.get_attribute_registry().registry_entries.attributes:
        current = seen.attributes[entry.name]
        if entry.attribute_type == "Enumeration":
            domain = [value["ValueName"] for value in entry.allowable_values]
            change["Enumeration"] = (entry.name, next((value for value in domain if value != current), current))
        elif entry.attribute_type == "Integer":
            domain = [entry.lower_bound, entry.upper_bound]
            change["Integer"] = (entry.name, entry.lower_bound)
        else:
            domain = [entry.min_length, entry.max_length]
        if entry.attribute_type != "Password":
            yield entry.name, (current, entry.display_name, domain)
    seen.set_attributes(dict(change.values()))
    if len(change) != 2 or sent != [(settings, {"Attributes": dict(change.values())})]:
        sys.exit(f"the change {change} arrived as {sent}")


def facts_of(one):
    """Current value, display name, and possible values or bounds."""
    name = one["display"] or bare(one["name"])
    if one["type"] == "enumeration":
        values = [bare(value["name"]) for value in one["possible"]]
        return values[one["current"]["indices"][0]], name, values
    if one["type"] == "integer":
        return one["current"]["value"], name, [one["lower"], one["upper"]]
    return one["current"]["text"], name, [one["minLength"], one["maxLength"]]


def compare(read, shown, rename):
    """What the reader has, against what `inspect show` has, of the types that all readers know."""
    for one in shown:
        if one["type"] in COMMON:
            found = read.pop(rename(bare(one["name"])), None)
            if found != facts_of(one):
                yield f"{one['name']} is read as {found}, not {facts_of(one)}"
    if read:
        yield f"there are others, {read}"


def main():
    """Runs one check over all captures."""
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    what, inspect, *captures = sys.argv[1:]
    failed = False
    for capture in captures:
        shown = run(inspect, "show", "--json", capture)["attributes"]
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            if what == "pldm":
                errors = check_pldm(inspect, capture, shown, folder)
            elif what == "fwupd":
                errors = compare(dict(read_by_fwupd(inspect, capture, folder)), shown, str)
            else:
                read = dict(read_by_sushy(inspect, capture, folder))
                errors = compare(read, shown, lambda name: name.replace(" ", ""))
            for error in errors:
                print(f"{capture}: {error}")
                failed = True
    sys.exit(1 if failed else 0)


main()
