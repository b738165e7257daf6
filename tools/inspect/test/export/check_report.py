#!/usr/bin/env python3
# @file
# Checks the page of `inspect report` in headless Chromium, as wide as a desk and as narrow as a phone: no error and no
# request, everything shown, nothing wider than the window, search and print at work.
#
# Copyright (c) 2026, Corvane contributors
# SPDX-License-Identifier: BSD-2-Clause-Patent
"""Usage: check_report.py INSPECT NEWER OLDER; exits 1 with one line for each error, 77 when Chromium is missing."""

import html
import json
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

SKIPPED = 77
WIDTHS = (1280, 390)

# Runs before the page's own script.
WATCH = """<script>
window.problems = [];
addEventListener('error', (event) => problems.push(String(event.message)), true);
addEventListener('securitypolicyviolation', (event) => problems.push('asks for ' + event.blockedURI));
</script>"""

# Runs after it, and says what it saw to the page around it.
PROBE = """<script>
addEventListener('load', () => {
  const all = (selector) => document.querySelectorAll(selector).length;
  const seen = {
    overflow: document.documentElement.scrollWidth - innerWidth,
    rows: all('details.attribute'), bars: all('.bar'), findings: all('#findings li'),
    nodes: all('.graph g'), lines: all('.graph svg > path'), changes: all('#differences tbody tr'),
    width: innerWidth,
    hiddenNames: [...document.querySelectorAll('summary .name')].filter((name) => name.offsetParent === null).length,
    namedBars: all('.track[aria-label*=": "]'),
    counted: document.getElementById('inputs').textContent.includes(`${all('details.attribute')} attributes`),
  };
  const search = document.getElementById('search');
  search.value = SEARCH;
  search.dispatchEvent(new Event('input'));
  seen.found = all('details.attribute:not([hidden])');
  dispatchEvent(new Event('beforeprint'));
  seen.open = all('details[open] dl');
  dispatchEvent(new Event('afterprint'));
  seen.openAfterwards = all('details[open]');
  seen.resources = performance.getEntriesByType('resource').length;
  seen.problems = problems;
  parent.postMessage(JSON.stringify(seen), '*');
});
</script>"""

# Windows have a least width; frames do not.
FRAME = """<!DOCTYPE html><iframe src="report.html" width="WIDTH" height="900" style="border: 0"></iframe><script>
addEventListener('message', (event) => { document.body.dataset.seen = event.data; });
</script>"""


def look(browser, page, width):
    """What the probe saw at a width of the window, and what the console said."""
    frame = page.with_name("frame.html")
    frame.write_text(FRAME.replace("WIDTH", str(width)), encoding="utf-8")
    with tempfile.TemporaryDirectory() as home:
        result = subprocess.run(
            [browser, "--headless", "--no-sandbox", "--disable-gpu", f"--user-data-dir={home}", "--enable-logging=stderr",
             "--window-size=1400,1000", "--virtual-time-budget=3000", "--dump-dom", frame.as_uri()],
            capture_output=True, text=True, timeout=120, check=False)  # fmt: skip
    seen = re.search(r'data-seen="([^"]*)"', result.stdout)
    if seen is None:
        sys.exit(f"the page did not load: {result.stderr[-300:]}")
    console = [line for line in result.stderr.splitlines() if "CONSOLE" in line]
    return json.loads(html.unescape(seen.group(1))), console


def main():
    """Compares what the browser shows with the data that went into the page."""
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    inspect, newer, older = sys.argv[1:]
    browser = shutil.which("chromium") or shutil.which("chromium-browser")
    if browser is None:
        print("Chromium is not installed: the report was not looked at")
        sys.exit(SKIPPED)

    def run(*options):
        return subprocess.run([inspect, "report", newer, "--since", older, *options], capture_output=True, check=False).stdout

    data = json.loads(run("--json"))
    members = [place for group in data["groups"] for place in group["members"]]
    word = data["attributes"][members[-1]]["name"]
    names = {name for edge in data["edges"] for name in (edge["from"], edge["to"])}
    expected = {"rows": len(members), "bars": len(data["tables"]), "findings": len(data["findings"]), "nodes": len(names),
                "lines": len(data["edges"]), "changes": len(data["differences"]), "open": len(members), "openAfterwards": 0,
                "hiddenNames": 0, "namedBars": len(data["tables"]), "counted": True, "resources": 0, "problems": []}  # fmt: skip
    errors = []
    with tempfile.TemporaryDirectory() as folder:
        page = Path(folder, "report.html")
        text = run().decode()
        text = text.replace("<head>", "<head>" + WATCH, 1)
        page.write_text(text.replace("</body>", PROBE.replace("SEARCH", json.dumps(word)) + "</body>", 1), encoding="utf-8")
        for width in WIDTHS:
            seen, console = look(browser, page, width)
            errors += [f"{width}: {key} is {seen[key]}, not {value}" for key, value in expected.items() if seen[key] != value]
            errors += [f"{width}: {line}" for line in console]
            if seen["overflow"] > 0 or seen["width"] != width:
                errors.append(f"{width}: the page is {seen['overflow']} wider than its window of {seen['width']}")
            if not 0 < seen["found"] < len(members):
                errors.append(f"{width}: a search for {word} shows {seen['found']} attributes")
    for error in errors:
        print(error)
    sys.exit(1 if errors else 0)


main()
