#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Counts the instructions that each kernel executes on 64-bit ARM, and judges them by cost.json. See README.md."""

import argparse
import json
import os
import subprocess
import sys
from pathlib import Path

sys.dont_write_bytecode = True
import mca  # noqa: E402  (what Python would leave beside it is not ours to keep)

ROOT = Path(__file__).resolve().parents[2]
COST_FILE = ROOT / "benchmarks/arm/cost.json"
PEERS = ROOT / "out/arm-peers"
PIXELS = 1280 * 720
# By the name that cost.json uses: the toolchain file and the program that says its version.
COMPILERS = {"clang": ("benchmarks/arm/aarch64-clang.cmake", "clang++"),
             "g++": ("cmake/aarch64-linux-gnu.cmake", "aarch64-linux-gnu-g++")}
# A figure may grow by this much before the check fails, and shrink by that much before the file must be renewed.
GROWTH = 0.01
SHRINKAGE = 0.03


def run(*command, **options):
    return subprocess.run([str(part) for part in command], check=True, cwd=ROOT, **options)


class Build:
    """The programs of one compiler, and the plugin that counts in them."""

    def __init__(self, compiler, target="arm_cost"):
        with_peers = target == "arm_cost_peers"
        self.folder = ROOT / "build" / ("arm-" + compiler)
        self.program = self.folder / target
        toolchain, executable = COMPILERS[compiler]
        self.plugin = self.folder / "instruction_counter.so"
        if with_peers:
            run("benchmarks/arm/fetch_peers.sh", PEERS)
        run("cmake", "-S", "benchmarks/arm", "-B", self.folder, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
            "-DCMAKE_TOOLCHAIN_FILE=" + str(ROOT / toolchain),
            "-DKORVANE_ARM_PEERS=" + (str(PEERS) if with_peers else ""), stdout=subprocess.DEVNULL)
        run("cmake", "--build", self.folder, "--target", target)
        run("clang++", "-std=c++20", "-O2", "-shared", "-fPIC", "-I.", "benchmarks/arm/plugin/instruction_counter.cpp",
            "-o", self.plugin)
        self.compiler = run(executable, "--version", capture_output=True, text=True).stdout.splitlines()[0]

    def count(self, who, only="", profile=False):
        """Runs the program; yields (kernel, contestant, instructions a pixel, blocks)."""
        out = self.folder / "counts.txt"
        libraries = PEERS / "usr/lib/aarch64-linux-gnu"
        # Helper threads would be counted too, and differently in each run.
        guest = {"OMP_NUM_THREADS": "1",
                 "LD_LIBRARY_PATH": ":".join(map(str, [libraries, libraries / "blas", libraries / "lapack"]))}
        command = ["qemu-aarch64"]
        for name, value in guest.items():
            command += ["-E", f"{name}={value}"]
        command += ["-plugin", f"{self.plugin},out={out},profile={'on' if profile else 'off'}", self.program, *who,
                    "only=" + only]
        printed = run(*command, capture_output=True, text=True, env={**os.environ, "QEMU_CPU": "max,sve=off"}).stdout
        names = dict((int(number), (kernel, contestant)) for number, kernel, contestant in
                     (line.split("\t") for line in printed.splitlines()))
        return self._figures(names, out)

    @staticmethod
    def _figures(names, out):
        figures = []
        overhead = 0
        blocks = []
        for line in out.read_text().splitlines():
            kind, *numbers = line.split()
            if kind == "block":
                blocks.append(tuple(map(int, numbers)))
                continue
            number, instructions = map(int, numbers)
            if number == 0:
                overhead = instructions
            else:
                figures.append((*names[number], (instructions - overhead) / PIXELS, blocks))
            blocks = []
        return figures


class CostFile:
    """cost.json: per kernel the goal, the figures of each compiler, the scalar twin and the best peer."""

    def __init__(self):
        self.content = json.loads(COST_FILE.read_text())
        self.kernels = {entry["kernel"]: entry for entry in self.content["kernels"]}

    def entry(self, kernel):
        if kernel not in self.kernels:
            self.kernels[kernel] = {"kernel": kernel}
            self.content["kernels"].append(self.kernels[kernel])
        return self.kernels[kernel]

    def write(self):
        lines = []
        for key, value in self.content.items():
            if isinstance(value, list):  # one line a row
                rows = ",\n".join("    " + json.dumps(row) for row in value)
                lines.append(f'  {json.dumps(key)}: [\n{rows}\n  ]')
            else:
                lines.append(f"  {json.dumps(key)}: {json.dumps(value)}")
        COST_FILE.write_text("{\n" + ",\n".join(lines) + "\n}\n")


def renew(costs, build, compiler, figures):
    for kernel, contestant, cost, _ in figures:
        entry = costs.entry(kernel)
        if contestant == "ours":
            entry[compiler] = round(cost, 4)
        elif contestant == "twin":
            entry["twin"] = {**entry.get("twin", {}), compiler: round(cost, 4)}
        else:
            entry["peer"] = [contestant, round(cost, 4)]
    costs.content["compilers"][compiler] = build.compiler
    costs.write()


def deviation(entry, compiler, cost):
    """What is wrong with a figure, or nothing."""
    recorded = entry.get(compiler)
    if recorded is None:
        return "stands not in cost.json: run ./dev arm-cost --renew"
    if cost > recorded * (1 + GROWTH):
        return f"needs {cost / recorded - 1:.1%} more than the {recorded} in cost.json"
    if cost < recorded * (1 - SHRINKAGE):
        return f"needs {1 - cost / recorded:.1%} less than the {recorded} in cost.json: run ./dev arm-cost --renew"
    return ""


def check(costs, build, compiler, figures):
    """One line for each figure that is not as recorded; true when there is none."""
    faults = []
    for kernel, contestant, cost, _ in figures:
        if contestant == "ours":
            fault = deviation(costs.kernels.get(kernel, {}), compiler, cost)
            if fault:
                faults.append(f"{kernel} {fault}")
    counted = {kernel for kernel, contestant, _, _ in figures if contestant == "ours"}
    faults += [f"{kernel} was not counted" for kernel in costs.kernels if kernel not in counted]
    for fault in faults:
        print("arm-cost: " + fault)
    recorded = costs.content["compilers"].get(compiler)
    if faults and recorded != build.compiler:
        print(f"arm-cost: this is {build.compiler}; the figures are from {recorded}")
    return not faults


def number(value):
    return "-" if value is None else f"{value:.3g}" if value < 100 else f"{value:.0f}"


def verdict(entry, compiler, cost):
    goal = entry.get("goal", {}).get(compiler)
    if goal is None:
        return ""
    return f"{goal:<5} {'met' if round(cost, 2) <= goal else 'MISSED'}"


def print_table(costs, compiler, figures, cycles):
    names = list(dict.fromkeys(kernel for kernel, _, _, _ in figures))
    cost_of = {(kernel, contestant): cost for kernel, contestant, cost, _ in figures}
    missed = 0
    processors = mca.PROCESSORS if cycles else []
    print(f"{'kernel':<28}{'ours':>8}{'twin':>8}{'/ours':>7}{'peer':>8}{'/ours':>7}  {'goal':<15}"
          + "".join(f"{name:>12}" for name in processors) + ("  covered" if cycles else "") + "  best peer")
    for kernel in names:
        entry = costs.kernels.get(kernel, {})
        ours = cost_of.get((kernel, "ours"))
        if ours is None:
            continue
        twin = cost_of.get((kernel, "twin"), entry.get("twin", {}).get(compiler))
        peer_name, peer = entry.get("peer", ["", None])
        judged = verdict(entry, compiler, ours)
        missed += judged.endswith("MISSED")
        row = (f"{kernel:<28}{number(ours):>8}{number(twin):>8}{number(twin and twin / ours):>7}{number(peer):>8}"
               f"{number(peer and peer / ours):>7}  {judged:<15}")
        if cycles:
            loop = cycles[kernel]
            row += "".join(f"{number(loop.get(name)):>12}" for name in processors) + f"{loop['covered']:>9.0%}"
            for name in entry.get("goal", {}).keys() & loop.keys():
                judged = verdict(entry, name, loop[name])
                missed += judged.endswith("MISSED")
                row += f"  {name} {judged}"
        print(row + "  " + peer_name)
    print(f"instructions a pixel at 1280 x 720; {missed} goals missed")


def arguments():
    parser = argparse.ArgumentParser(prog="./dev arm-cost", description=__doc__)
    parser.add_argument("--check", action="store_true", help="count ours only; exit code 1 unless as in cost.json")
    parser.add_argument("--renew", action="store_true", help="write what was counted to cost.json")
    parser.add_argument("--peers", action="store_true", help="count libyuv, OpenCV and libimagequant anew")
    parser.add_argument("--mca", action="store_true", help="add llvm-mca's cycles a pixel in the hottest loops")
    parser.add_argument("--compiler", choices=COMPILERS, default="clang")
    parser.add_argument("--only", default="", metavar="TEXT", help="only kernels with TEXT in their names")
    return parser.parse_args()


def main():
    options = arguments()
    if options.only and options.check:
        sys.exit("arm-cost: --check looks at all kernels")
    costs = CostFile()
    build = Build(options.compiler, "arm_cost_peers" if options.peers else "arm_cost")
    who = ["ours"] if options.check else ["ours", "twin"] + (["peer"] if options.peers else [])
    figures = build.count(who, options.only)
    if options.check:
        sys.exit(0 if check(costs, build, options.compiler, figures) else 1)
    if options.peers:
        for kernel, contestant, cost, _ in figures:
            if contestant not in ("ours", "twin"):
                costs.entry(kernel)["peer"] = [contestant, round(cost, 4)]
    if options.renew:
        renew(costs, build, options.compiler, figures)
    cycles = mca.cycles(build, options.only) if options.mca else {}
    print(build.compiler)
    print_table(costs, options.compiler, figures, cycles)


if __name__ == "__main__":
    try:
        main()
    except subprocess.CalledProcessError as error:
        if error.stderr:
            sys.stderr.write(error.stderr)
        sys.exit(f"arm-cost: {error.cmd[0]} failed")
