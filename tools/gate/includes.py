#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks includes with include-what-you-use: no file includes a header that it does not use, and a header includes the
headers of the standard library that it uses, since another library's may include fewer of each other. That each public
header compiles alone is tested elsewhere.

It runs behind tidy.py and takes the sources from there: tests in the units that share the test framework's headers,
where each file is judged by itself, and others one by one, since in a unit the tool takes a source for the home of what
it defines. Kernels are left out: they include themselves once for each instruction set, which the tool cannot follow.
So are a client's own declarations.

usage: tools/gate/includes.py BUILD_DIR"""

import concurrent.futures
import json
import os
import re
import subprocess
import sys

MAPPING = "tools/gate/includes.imp"
# What the tool asks for although it comes with another standard header, or for the insides of one.
LET_PASS = re.compile(r"<(bits|ext)/|<(algorithm|iosfwd|ios|compare|utility|iterator|tuple|type_traits)>|<(CLI|nlohmann)/|<.*\.h>|^\"")
# What the tool cannot see the use of: declarations made by a macro, the abs of two standard headers, a stream that some
# other header declares, names that the mapping leads elsewhere.
KEPT = {"<cmath>", "<cstdlib>", "<fstream>", "<jni.h>", "<gmock/gmock.h>", "<GLES3/gl3.h>", "<GLES3/gl31.h>", '"tools/command.h"',
        '"frameworks/jni/jni_types.h"'}
WANTED = re.compile(r"^(.*) should (add|remove) these lines:$")


def parts_of(unit):
    if unit["kind"] == "test":
        return [unit]
    return [{**unit, "path": source, "sources": [source]} for source in unit["sources"]]


def run(unit):
    """What the tool says about the files of a unit, as (file, add or remove, header, reason)."""
    switches = [f"--mapping_file={MAPPING}", "--no_fwd_decls", "--max_line_length=200"]
    switches += [f"--check_also={os.getcwd()}/{folder}/*.{ending}" for ending in ("h", "cpp") for folder in
                 ("algorithms", "applications", "frameworks", "platform", "tests", "tools")]
    tool = ["include-what-you-use"] + [part for switch in switches for part in ("-Xiwyu", switch)]
    said = subprocess.run(tool + ["-w", *unit["options"], unit["path"]], capture_output=True, text=True).stderr
    found = []
    kind = None
    for line in said.splitlines():
        header = WANTED.match(line)
        if header:
            file, kind = os.path.relpath(header.group(1)), header.group(2)
        elif line.startswith("The full include-list") or not line:
            kind = None
        elif kind and (name := re.search(r'#include ([<"][^>"]+[>"])', line)):
            found.append((file, kind, name.group(1), line.partition("// ")[2]))
    if re.search(r"^.*: (fatal )?error: ", said, re.MULTILINE):
        found.append((os.path.relpath(unit["path"]), "compile", said, ""))
    return found


def names_one(file, reason):
    """Whether one of the names stands in the file: a template may use what only its caller brings."""
    with open(file, encoding="utf-8") as text:
        return bool(set(re.findall(r"\w+", text.read())) & set(re.findall(r"\w+", reason.removeprefix("for "))))


def is_used(file, header, found):
    """Whether a header that the tool finds no use of has one: the source that defines what the header declares may be in
    the unit, and then the tool names that instead."""
    if header.strip('"') == re.sub(r"(_test)?\.cpp$", ".h", file) or header in KEPT:
        return True
    if header.startswith("<"):
        return False
    with open(header.strip('"'), encoding="utf-8") as text:
        declared = set(re.findall(r"\w+", text.read()))
    return any(other == file and kind == "add" and home.endswith('.cpp"') and
               declared & set(re.findall(r"\w+", reason.removeprefix("for "))) for other, kind, home, reason in found)


def main():
    with open(os.path.join(sys.argv[1], "units", "units.json"), encoding="utf-8") as file:
        units = [part for unit in json.load(file) for part in parts_of(unit)]
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        found = {finding for findings in pool.map(run, units) for finding in findings}
    faults = []
    for file, kind, header, reason in sorted(found):
        if kind == "compile":
            faults.append(f"{file}: does not compile:\n{header}")
        elif file.startswith("tests/") and file.endswith(".h") or file.startswith("build/"):
            continue  # a fixture brings what its tests need
        elif kind == "remove" and not is_used(file, header, found):
            faults.append(f"{file}: {header} is not used")
        elif kind == "add" and file.endswith(".h") and not LET_PASS.search(header) and names_one(file, reason):
            faults.append(f"{file}: {header} is missing, for {reason.removeprefix('for ')}")
    sources = sum(len(unit["sources"]) for unit in units)
    print("\n".join(faults) if faults else f"{sources} sources and their headers: the includes are right")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
