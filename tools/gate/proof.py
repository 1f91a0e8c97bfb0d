#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The long runs that nobody waits for: fuzzing, faults, limits, drivers, threads, stress. Ends with a table of what ran,
how much of it, and how often it failed; the exit status is 1 if anything did.

A row is one line of ROWS. Its tests are those with its label in ctest; a test with the label "proof" as well is too long
for every day and runs only here. What a program says on a line of its own, as in "proof: 1000 pushes", is added up."""

import argparse
import collections
import os
import pathlib
import re
import subprocess
import sys
import time
import xml.etree.ElementTree as xml

OUT = pathlib.Path("out/proof")
JOBS = os.cpu_count() or 1
COUNT = re.compile(r"^(?:\s*\d+: )?proof: (\d+) (.+?)\s*$", re.MULTILINE)
FUZZED = re.compile(r"^((?!together)\w+) +(\d+) +\d+ +\d+  (.+)$", re.MULTILINE)


class Run:
    """What one row has counted so far; its output goes into one file."""

    def __init__(self, name, given):
        self.given = given
        self.log = OUT / f"{name}.log"
        self.log.unlink(missing_ok=True)
        self.counts = collections.Counter()
        self.failures = []

    def command(self, *words, **environment):
        """The output of a command, and whether it went well."""
        with open(self.log, "ab") as log:
            log.write(f"== {' '.join(map(str, words))} {environment or ''}\n".encode())
            log.flush()
            start = log.tell()
            status = subprocess.run([str(word) for word in words], stdin=subprocess.DEVNULL, stdout=log, stderr=log,
                                    env={**os.environ, **environment}, check=False).returncode
        output = self.log.read_bytes()[start:].decode(errors="replace")
        for number, what in COUNT.findall(output):
            self.counts[what] += int(number)
        return status == 0, output

    def must(self, *words, **environment):
        """A command that is no test by itself, but without which the row proves nothing."""
        done, output = self.command(*words, **environment)
        if not done:
            self.failures.append(" ".join(map(str, words)))
        return done, output

    def build(self, preset, *targets, folder=None, options=()):
        folder = folder or f"build/{preset}"
        chosen = ["--target", *targets] if targets else []
        return (self.must("cmake", "--preset", preset, "-B", folder, "-DKORVANE_WERROR=OFF", *options)[0]
                and self.must("cmake", "--build", folder, "-j", JOBS, *chosen)[0])

    def tests(self, where, *selection, what="test programs", at_length=True, **environment):
        """Runs ctest in a build folder, or with a preset and what it excludes. That nothing was selected is a failure: a
        label may have been misspelt."""
        if at_length:
            environment["KORVANE_PROOF"] = "1"
        place = ["--test-dir", where] if "/" in where else ["--preset", where]
        report = (OUT / "report.xml").resolve()
        report.unlink(missing_ok=True)
        self.command("ctest", *place, "--verbose", "--parallel", JOBS, "--output-junit", report, *selection,
                     **environment)
        cases = xml.parse(report).getroot().findall("testcase") if report.exists() else []
        ran = [case for case in cases if case.get("status") in ("run", "fail")]
        self.failures += [f"{case.get('name')} in {where}" for case in cases if case.get("status") != "run"]
        self.counts[what] += len(ran)
        if not ran:
            self.failures.append(f"no test in {where} for {' '.join(selection)}")


def labelled(label, *targets):
    """The tests of the everyday build with this label; without targets all are built."""
    def row(run):
        if run.build("dev", *targets):
            run.tests("build/dev", "-L", f"^{label}$", KORVANE_STRESS_SECONDS=str(run.given.seconds))
    return row


def fuzz(run):
    done, output = run.command("./dev", "fuzz", run.given.fuzz)
    for name, executions, findings in FUZZED.findall(output):
        run.counts["targets"] += 1
        run.counts["executions"] += int(executions)
        run.failures += [f"{name} found {finding}" for finding in findings.split(", ") if finding != "0"]
    if not run.counts["targets"] or (not done and not run.failures):
        run.failures.append("./dev fuzz")


def threads(run):
    """What counts here is that all code runs on several threads, so only the program made for that runs at length."""
    if run.build("tsan", options=["-DKORVANE_BULK_BUILD=ON", "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O2 -g1 -DNDEBUG"]):
        run.tests("tsan", "-R", "^threads_stress_test$")
        run.tests("tsan", "-E", "^threads_stress_test$", at_length=False)


def each_vector_length(run, *selection, **how):
    """The tests on 64-bit ARM: without SVE, and with each length of its vectors."""
    run.tests("build/aarch64", *selection, **how, QEMU_CPU="max,sve=off")
    for bits in (128, 256, 512, 1024, 2048):
        run.tests("build/aarch64", *selection, **how, QEMU_CPU=f"max,sve-default-vector-length={bits // 8}")


def pages(run):
    labelled("pages")(run)
    if run.build("aarch64", "korvane_protected_pages_test"):
        each_vector_length(run, "-R", "^protected_pages_test$")


def determinism(run):
    """One program, built in other ways than CI does, and on processors whose vectors have other lengths."""
    def digests(folder, **environment):
        run.tests(folder, "-R", "^digests_test$", what="runs", **environment)

    for preset in ("dev", "gcc"):
        for kind in ("Debug", "Release"):
            folder = f"build/proof-{preset}-{kind.lower()}"
            if run.build(preset, "korvane_digests_test", folder=folder, options=[f"-DCMAKE_BUILD_TYPE={kind}"]):
                digests(folder)
    if run.build("aarch64", "korvane_digests_test"):
        each_vector_length(run, "-R", "^digests_test$", what="runs")


# The name, what it shows, and how. Tests in the everyday build need no more than a label and a line here.
ROWS = {
    "fuzz": ("fuzz targets", fuzz),
    "faults": ("files, memory, Java and GL that fail at the n-th call", labelled("faults")),
    "pages": ("buffers that end at a protected page", pages),
    "limits": ("sizes at the edge of what is taken", labelled("limits")),
    "drivers": ("graphics drivers, mediump", labelled("drivers")),
    "threads": ("all tests under the thread sanitizer", threads),
    "stress": ("all modules at once, flat memory", labelled("stress", "korvane_stress_test")),
    "jni": ("each native method again and again", labelled("jni", "korvane_jni_stress_test")),
    "determinism": ("equal bytes, however built", determinism),
}


def arguments():
    parser = argparse.ArgumentParser(prog="./dev proof", description=__doc__.split("\n\n")[0])
    parser.add_argument("rows", nargs="*", metavar="ROW", help=f"all of these when none is named: {', '.join(ROWS)}")
    parser.add_argument("--fuzz", type=int, default=60, metavar="SECONDS", help="for each fuzz target [60]")
    parser.add_argument("--seconds", type=int, default=600, metavar="SECONDS", help="for the stress program [600]")
    given = parser.parse_args()
    for row in given.rows:
        if row not in ROWS:
            parser.error(f"no row '{row}'")
    return given


def main():
    given = arguments()
    OUT.mkdir(parents=True, exist_ok=True)
    table = [("row", "what", "how many", "failures", "minutes")]
    failures = []
    for name in given.rows or ROWS:
        what, how = ROWS[name]
        print(f"proof: {name} ({what}), log in {OUT}/{name}.log", flush=True)
        run = Run(name, given)
        start = time.monotonic()
        how(run)
        minutes = (time.monotonic() - start) / 60
        counted = ", ".join(f"{number:,} {thing}" for thing, number in run.counts.items() if number)
        table.append((name, what, counted or "nothing", str(len(run.failures)), f"{minutes:.1f}"))
        failures += [f"{name}: {failure}" for failure in run.failures]
    widths = [max(len(line[column]) for line in table) for column in range(len(table[0]))]
    lines = ["  ".join(cell.ljust(width) for cell, width in zip(line, widths)).rstrip() for line in table]
    text = "\n".join(lines + [""] + failures + [f"{len(failures)} failures"])
    (OUT / "table.txt").write_text(text + "\n", encoding="utf-8")
    print(text)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
