#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks the documents: every relative link, image and anchor leads somewhere, files named in code spans exist, and
every page below docs/ is linked from the README. Links to other hosts are not followed.

usage: tools/gate/links.py"""

import os
import re
import subprocess
import sys

FENCE = re.compile(r"^(```|~~~).*?^\1\s*$", re.MULTILINE | re.DOTALL)
LINK = re.compile(r"!?\[[^\]]*\]\(\s*<?([^)\s>]+)>?[^)]*\)|<(?:img|a)\s[^>]*(?:src|href)=\"([^\"]+)\"")
HEADING = re.compile(r"^#{1,6}\s+(.*?)\s*#*$", re.MULTILINE)
SPAN = re.compile(r"`([\w./-]+/[\w.-]+)`")


def tracked(*patterns):
    listed = subprocess.run(["git", "ls-files", *patterns], check=True, capture_output=True, text=True)
    return listed.stdout.splitlines()


def anchors(text):
    """The names that GitHub gives to headings: lower case, blanks as dashes, other punctuation dropped."""
    found = {}
    names = set(re.findall(r"<a\s+(?:name|id)=\"([^\"]+)\"", text))
    for heading in HEADING.findall(FENCE.sub("", text)):
        heading = re.sub(r"!?\[([^\]]*)\]\([^)]*\)", r"\1", heading)
        name = re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")
        names.add(name if name not in found else f"{name}-{found[name]}")
        found[name] = found.get(name, 0) + 1
    return names


def targets(text):
    for match in LINK.finditer(re.sub(r"`[^`\n]*`", "", FENCE.sub("", text))):
        yield match.group(1) or match.group(2)


def main():
    os.chdir(os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", ".."))
    pages = {page: open(page, encoding="utf-8").read() for page in tracked("*.md")}
    files = set(tracked())
    folders = {os.path.dirname(name) for name in files}
    folders |= {folder[:at] for folder in folders for at, letter in enumerate(folder) if letter == "/"}
    tops = {folder for folder in folders if folder and "/" not in folder}
    faults = []
    linked = {}
    for page, text in pages.items():
        linked[page] = set()
        for target in targets(text):
            if re.match(r"[a-z]+:", target):
                continue
            path, _, anchor = target.partition("#")
            file = os.path.normpath(os.path.join(os.path.dirname(page), path)) if path else page
            linked[page].add(file)
            if file not in files and file not in folders:
                faults.append(f"{page}: nothing is at {target}")
            elif anchor and (file not in pages or anchor not in anchors(pages[file])):
                faults.append(f"{page}: no heading for {target}")
        for path in SPAN.findall(FENCE.sub("", text)):
            if "NAME" not in path and path.split("/")[0] in tops and path.rstrip("/") not in files | folders:
                faults.append(f"{page}: there is no {path}")

    reached = {"README.md"}
    waiting = ["README.md"]
    while waiting:
        for file in linked[waiting.pop()] & pages.keys() - reached:
            reached.add(file)
            waiting.append(file)
    faults += [f"{page}: no link leads here from the README" for page in sorted(pages.keys() - reached)]
    print("\n".join(faults) if faults else f"{len(pages)} pages: every link leads somewhere")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
