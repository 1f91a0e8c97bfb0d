#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Peak heap and stack of every effect and conversion at 12 megapixels, as a 64-bit ARM phone has them."""

import argparse
import os
import sys

sys.dont_write_bytecode = True
from arm_cost import Build, CostFile, ROOT, run  # noqa: E402

TABLE_FILE = ROOT / "docs/memory.md"
PIXELS = 4000 * 3000
# More heap than on record by this share fails the check, or by as many bytes a pixel where there is next to none.
GROWTH = 0.01
LEAST_BYTES = 0.001


def measure(build):
    """Yields (name, bytes of heap a pixel, bytes of stack)."""
    printed = run("qemu-aarch64", build.program, capture_output=True, text=True,
                  env={**os.environ, "QEMU_CPU": "max,sve=off"}).stdout
    for line in printed.splitlines():
        name, heap, stack = line.split("\t")
        yield name, int(heap) / PIXELS, int(stack)


def faults_of(entry, heap, stack):
    faults = []
    if "heap" not in entry:
        return ["stands not in cost.json: run ./dev bench --memory --renew"]
    if heap > entry["heap"] * (1 + GROWTH) + LEAST_BYTES:
        faults.append(f"takes {heap:.4f} bytes of heap a pixel; {entry['heap']} are on record")
    if heap > entry.get("heap goal", heap):
        faults.append(f"takes {heap:.4f} bytes of heap a pixel, above its goal of {entry['heap goal']}")
    if stack > entry.get("stack goal", stack):
        faults.append(f"takes {stack} bytes of stack, above its goal of {entry['stack goal']}")
    return faults


def row(name, heap, stack):
    return f"| {name} | {heap:.2f} | {heap * PIXELS / 1e6:.1f} | {-(-stack // 1024)} |"


def rows(figures):
    """The plain conversions are many and take nothing: one row for those that are alike."""
    plain = "color_convert_"
    listed = {row(plain + "... (all)" if name.startswith(plain) else name, heap, stack): None
              for name, heap, stack in figures}
    return list(listed)


def write_table(figures):
    lines = TABLE_FILE.read_text().splitlines()
    first = next(i for i, line in enumerate(lines) if line.startswith("|"))
    last = max(i for i, line in enumerate(lines) if line.startswith("|"))
    # Two lines of heading stay.
    lines[first + 2:last + 1] = rows(figures)
    TABLE_FILE.write_text("\n".join(lines) + "\n")


def renew(costs, figures):
    entries = {entry["name"]: entry for entry in costs.content.setdefault("memory", [])}
    costs.content["memory"] = [{**entries.get(name, {"name": name}), "heap": round(heap, 4), "stack": stack}
                               for name, heap, stack in figures]
    costs.write()
    write_table(figures)


def main():
    parser = argparse.ArgumentParser(prog="./dev bench --memory", description=__doc__)
    parser.add_argument("--memory", action="store_true", help=argparse.SUPPRESS)
    parser.add_argument("--check", action="store_true", help="exit code 1 when a goal is missed or more is needed")
    parser.add_argument("--renew", action="store_true", help="write the figures to cost.json and docs/memory.md")
    options = parser.parse_args()
    costs = CostFile()
    figures = list(measure(Build("clang", target="memory")))
    if options.renew:
        renew(costs, figures)
    entries = {entry["name"]: entry for entry in costs.content.get("memory", [])}
    faults = [f"{name} {fault}" for name, heap, stack in figures
              for fault in faults_of(entries.get(name, {}), heap, stack)]
    faults += [f"{name} was not measured" for name in entries.keys() - {name for name, _, _ in figures}]
    print(f"{'':<38}{'heap, bytes a pixel':>20}{'goal':>8}{'stack, bytes':>14}{'goal':>8}")
    for name, heap, stack in figures:
        entry = entries.get(name, {})
        print(f"{name:<38}{heap:>20.4f}{entry.get('heap goal', '-'):>8}{stack:>14}{entry.get('stack goal', '-'):>8}")
    for fault in faults:
        print("memory: " + fault)
    sys.exit(1 if options.check and faults else 0)


if __name__ == "__main__":
    main()
