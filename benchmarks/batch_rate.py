#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The rate of one `korvane blur` over a folder of 12-megapixel photos, against two processes side by side.

Each round runs the contestants one after the other, the first one last in every second round, so that other work on
the machine hits both alike. The ratio is the median over the rounds; the results are compared byte by byte.
"""

import argparse
import filecmp
import os
import pathlib
import resource
import statistics
import subprocess
import sys
import tempfile
import threading
import time

SIZE = "4000x3000"
GOAL = 0.95


def make_photos(program, folder, count):
    """Eight scenes of their own strength of blur, so that not all files are one file; the rest are copies."""
    folder.mkdir()
    for i in range(count):
        photo = folder / f"{i:04}.jpg"
        if i < 8:
            subprocess.run([program, "scene", photo, "--size", SIZE], check=True)
            subprocess.run([program, "blur", photo, "-o", photo, "--radius", str(i)], check=True)
        else:
            os.link(folder / f"{i % 8:04}.jpg", photo)
    return sorted(folder.iterdir())


def tree_bytes(process):
    """Memory of the process and its children, shared pages counted once."""
    total = 0
    children = pathlib.Path(f"/proc/{process}/task/{process}/children").read_text().split()
    for number in [process, *children]:
        try:
            rollup = pathlib.Path(f"/proc/{number}/smaps_rollup").read_text()
        except OSError:
            continue  # it has just ended
        total += sum(int(line.split()[1]) * 1024 for line in rollup.splitlines() if line.startswith("Pss:"))
    return total


class Peak:
    """The most memory that processes take together, looked at twenty times a second."""

    def __init__(self, processes):
        self.bytes = 0
        self._processes = processes
        self._over = threading.Event()
        self._thread = threading.Thread(target=self._watch)

    def __enter__(self):
        self._thread.start()
        return self

    def __exit__(self, *_):
        self._over.set()
        self._thread.join()

    def _watch(self):
        while not self._over.wait(0.05):
            try:
                self.bytes = max(self.bytes, sum(tree_bytes(process.pid) for process in self._processes))
            except OSError:
                pass


def processor_seconds():
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    return used.ru_utime + used.ru_stime


def run(commands):
    """Seconds, processor seconds and peak memory of the commands side by side."""
    start = time.monotonic()
    used = processor_seconds()
    processes = [subprocess.Popen(command) for command in commands]
    with Peak(processes) as peak:
        codes = [process.wait() for process in processes]
    if any(codes):
        sys.exit(f"a call failed: {commands[0][:4]}")
    return time.monotonic() - start, processor_seconds() - used, peak.bytes


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program", help="the command line program, as build/release/tools/korvane")
    parser.add_argument("--photos", type=int, default=500)
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--check", action="store_true", help=f"fail below a ratio of {GOAL}")
    options = parser.parse_args()
    program = os.path.abspath(options.program)

    with tempfile.TemporaryDirectory(prefix="korvane-batch-") as scratch:
        folder = pathlib.Path(scratch)
        photos = make_photos(program, folder / "photos", options.photos)

        def blur(photos, output, jobs):
            return [program, "blur", *photos, "-o", f"{folder}/{output}/", "-j", str(jobs), "--quiet"]

        contestants = {
            "one batch": lambda: run([blur(photos, "batch", options.jobs)]),
            "two processes": lambda: run([blur(photos[i::2], "halves", 1) for i in range(2)]),
        }
        seconds = {name: [] for name in contestants}
        peaks = {name: 0 for name in contestants}
        for number in range(options.rounds):
            for name in sorted(contestants, reverse=number % 2 == 1):
                spent, used, peak = contestants[name]()
                seconds[name].append(spent)
                peaks[name] = max(peaks[name], peak)
                print(f"round {number + 1}, {name}: {len(photos) / spent:.2f} photos a second, "
                      f"{used / len(photos) * 1000:.0f} ms of processor a photo, peak {peak / 2**20:.0f} MiB", flush=True)
        same = filecmp.cmpfiles(folder / "batch", folder / "halves", [p.name for p in photos], shallow=False)[0]
        if len(same) != len(photos):
            sys.exit("the results differ")
        ratio = statistics.median(two / one for one, two in zip(seconds["one batch"], seconds["two processes"]))
        few = photos[: 4 * options.jobs]
        print(f"the batch has {ratio:.3f} of the rate of two processes (goal {GOAL})")
        few_peak = run([blur(few, "few", options.jobs)])[2]
        print(f"peak with {len(few)} photos {few_peak / 2**20:.0f} MiB, with {len(photos)} "
              f"{peaks['one batch'] / 2**20:.0f} MiB")
        sys.exit(1 if options.check and ratio < GOAL else 0)


if __name__ == "__main__":
    main()
