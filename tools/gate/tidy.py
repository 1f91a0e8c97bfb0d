#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs clang-tidy over sources; .clang-tidy says what it looks for.

The headers take ten times as long to look through as the sources, so sources are looked at many at a time: a unit is a
file that includes them one after another. Findings in included files are reported as those of headers are. Where two
sources cannot stand in one unit, mostly because both have a name of their own that is the same, the compiler says so
beforehand, and the later one goes to the next unit.

usage: tools/gate/tidy.py BUILD_DIR FILE..."""

import concurrent.futures
import json
import os
import platform
import re
import shlex
import subprocess
import sys

TIDY = "clang-tidy-14"
COMPILER = "clang++-14"


class Kind:
    """Sources that are looked at in one way."""

    def __init__(self, takes, checks="", options=(), alone=False):
        self.takes, self.checks, self.options, self.alone = takes, checks, list(options), alone


# Kernels are looked at for one instruction set, since the others are the same text; they include themselves, so each is
# a unit. Their helpers are named as Highway's functions. There is one main in a unit. What a client declares by itself
# differs from our headers. The numbers of tests are small and their own, and their speed does not count.
ONE_TARGET = ["-DHWY_COMPILE_ONLY_STATIC"] + (["-march=haswell"] if platform.machine() == "x86_64" else [])
FOR_TESTS = "-performance-*,-bugprone-*-widening-*"
KINDS = {
    "kernel": Kind(lambda file, text: "foreach_target" in text, "-readability-identifier-naming", ONE_TARGET, alone=True),
    "client": Kind(lambda file, text: file.startswith("tests/clients/"), FOR_TESTS, alone=True),
    "program": Kind(lambda file, text: "\nint main(" in text, alone=True),
    # Apart from those that use it, so that includes.py finds its header and not it.
    "support": Kind(lambda file, text: file.startswith("tests/") and os.path.exists(file[:-3] + "h"), FOR_TESTS),
    "test": Kind(lambda file, text: file.startswith("tests/"), FOR_TESTS),
    "source": Kind(lambda file, text: True),
}


def read_options(build):
    """For each source what decides how it is read: its macros, folders and language."""
    with open(os.path.join(build, "compile_commands.json"), encoding="utf-8") as file:
        commands = json.load(file)
    options = {}
    for command in commands:
        found = options.setdefault(os.path.relpath(command["file"]), [])
        arguments = iter(shlex.split(command["command"])[1:])
        for argument in arguments:
            if argument in ("-I", "-isystem", "-D"):
                argument += next(arguments)
            # The system's own folders must stay in their order.
            if argument.startswith(("-I", "-isystem", "-D", "-std=")) and argument != "-isystem/usr/include":
                found.append(argument)
    return options


def macros(options):
    return dict(option[2:].partition("=")[::2] for option in options if option.startswith("-D"))


def agree(options, others):
    theirs = macros(others)
    return all(theirs.get(name, value) == value for name, value in macros(options).items())


def write_unit(path, sources):
    with open(path, "w", encoding="utf-8") as file:
        file.writelines(f'#include "{os.path.abspath(source)}"\n' for source in sources)


def clashing(path, sources, options):
    """The sources of a unit that do not compile behind those before them."""
    said = subprocess.run([COMPILER, "-fsyntax-only", "-w", "-ferror-limit=0", *options, path], capture_output=True,
                          text=True).stderr
    found = set()
    source = None
    for line in said.splitlines():
        if place := re.match(rf"(?:In file included from )?{re.escape(path)}:(\d+):", line):
            source = sources[int(place.group(1)) - 1]
        if re.search(r": (fatal )?error: ", line):
            found.add(source)
    return found


def units_of(build, name, sources, options_of):
    """The units in which the sources of a kind compile."""
    units = []
    while sources:
        path = os.path.join(build, "units", f"{name}_{len(units)}.cpp")
        together, options = [], []
        for source in sources[:1] if KINDS[name].alone else sources:
            if agree(options_of[source], options):
                together.append(source)
                options = list(dict.fromkeys(options + options_of[source]))
        write_unit(path, together)
        # One clash can hide the next. The first source stays: if it does not compile, that is a fault of its own, which
        # clang-tidy reports.
        while len(together) > 1 and (clashes := clashing(path, together, options) - set(together[:1])):
            together = [source for source in together if source not in clashes]
            write_unit(path, together)
        units.append({"path": path, "sources": together, "options": options, "kind": name})
        sources = [source for source in sources if source not in together]
    return units


def tidy(unit):
    kind = KINDS[unit["kind"]]
    done = subprocess.run([TIDY, "--quiet", "--config-file=.clang-tidy", "--checks=" + kind.checks, unit["path"], "--",
                           *unit["options"], *kind.options], capture_output=True, text=True)
    said = [line for line in done.stderr.splitlines() if not re.match(r"\d+ warnings? generated", line)]
    return done.returncode == 0, done.stdout + "\n".join(said)


def main():
    build, files = os.path.abspath(sys.argv[1]), sys.argv[2:]
    options_of = read_options(build)
    if unbuilt := [file for file in files if file not in options_of]:
        sys.exit("tidy.py: no target compiles " + ", ".join(unbuilt))
    sources_of = {name: [] for name in KINDS}
    for source in files:
        with open(source, encoding="utf-8") as file:
            text = file.read()
        sources_of[next(name for name, kind in KINDS.items() if kind.takes(source, text))].append(source)
    os.makedirs(os.path.join(build, "units"), exist_ok=True)
    all_right = True
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        grouped = pool.map(lambda group: units_of(build, *group, options_of), sources_of.items())
        units = sorted((unit for group in grouped for unit in group), key=lambda unit: -len(unit["sources"]))
        # For includes.py.
        with open(os.path.join(build, "units", "units.json"), "w", encoding="utf-8") as file:
            json.dump([unit for unit in units if unit["kind"] not in ("kernel", "client")], file)
        for is_right, said in pool.map(tidy, units):
            all_right = all_right and is_right
            print(said, end="")
    print(f"clang-tidy: {len(files)} sources in {len(units)} units: " + ("no findings" if all_right else "findings"))
    return 0 if all_right else 1


if __name__ == "__main__":
    sys.exit(main())
