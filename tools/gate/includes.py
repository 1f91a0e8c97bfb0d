#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks includes with include-what-you-use: no file includes a header that it does not use, and a header includes the
headers of the standard library that it uses, since another library's may include fewer of each other. That each public
header compiles alone is tested elsewhere.

Kernels are left out: they include themselves once for each instruction set, which the tool cannot follow.

usage: tools/gate/includes.py BUILD_DIR FILE..."""

import concurrent.futures
import json
import os
import re
import shlex
import subprocess
import sys

MAPPING = "tools/gate/includes.imp"
# What the tool asks for although it comes with another standard header, or for the insides of one.
LET_PASS = re.compile(r"<(bits|ext)/|<(algorithm|iosfwd|ios|compare|utility|iterator|tuple|type_traits)>|<CLI/|<.*\.h>|^\"")
# What the tool cannot see the use of: declarations made by a macro, the abs of two standard headers, a stream that some
# other header declares, names that the mapping leads elsewhere.
KEPT = {"<cmath>", "<cstdlib>", "<fstream>", "<gmock/gmock.h>", "<GLES3/gl3.h>", "<GLES3/gl31.h>", '"tools/command.h"',
        '"frameworks/jni/jni_types.h"'}
WANTED = re.compile(r"^(.*) should (add|remove) these lines:$")


def run(command):
    """What the tool says about one source file, as (file, add or remove, header)."""
    arguments = shlex.split(command["command"])[1:]
    arguments = [argument for argument in arguments if argument != "-Werror"]
    switches = [f"--mapping_file={os.path.abspath(MAPPING)}", "--no_fwd_decls", "--max_line_length=200"]
    switches += [f"--check_also={os.getcwd()}/{folder}/*.h" for folder in
                 ("algorithms", "applications", "frameworks", "platform", "tests", "tools")]
    tool = ["include-what-you-use"] + [part for switch in switches for part in ("-Xiwyu", switch)]
    said = subprocess.run(tool + arguments, cwd=command["directory"], capture_output=True, text=True).stderr
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
        found.append((os.path.relpath(command["file"]), "compile", said, ""))
    return found


def main():
    build, wanted = sys.argv[1], {os.path.abspath(file) for file in sys.argv[2:]}
    with open(os.path.join(build, "compile_commands.json"), encoding="utf-8") as file:
        commands = [command for command in json.load(file) if command["file"] in wanted]
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        found = {finding for findings in pool.map(run, commands) for finding in findings}
    faults = []
    for file, kind, header, reason in sorted(found):
        if kind == "compile":
            faults.append(f"{file}: does not compile:\n{header}")
        elif file.startswith("tests/") and file.endswith(".h"):
            continue  # a fixture brings what its tests need
        elif kind == "remove" and header not in KEPT:
            faults.append(f"{file}: {header} is not used")
        elif kind == "add" and file.endswith(".h") and not LET_PASS.search(header):
            faults.append(f"{file}: {header} is missing, for {reason.removeprefix('for ')}")
    print("\n".join(faults) if faults else f"{len(commands)} sources and their headers: the includes are right")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
