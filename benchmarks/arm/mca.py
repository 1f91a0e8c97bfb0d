# SPDX-License-Identifier: Apache-2.0
"""Cycles a pixel by llvm-mca.

Nothing is marked in the sources, which would change the code. The plugin's profile says how often every block ran; the
innermost loops are the backward branches in the disassembly, taken with the instructions that run in most rounds. What
llvm-mca gives for a round, times the rounds, over all pixels, is the figure; "covered" is the share of all executed
instructions that lie in these loops. Nothing misses the cache.
"""

import re
import shutil
import subprocess

PROCESSORS = ["cortex-a55", "cortex-a76", "cortex-a710"]
PIXELS = 1280 * 720
# Loops below this share of a kernel's instructions are left out.
LEAST_SHARE = 0.005
# An instruction belongs to a round if it runs in this share of the rounds.
USUAL = 0.5
ROUNDS = 200

BRANCH = re.compile(r"^(b|b\.\w+|cbn?z|tbn?z)$")
STEPPED_STORE = re.compile(r"^(st\w+)\t(.*)\[(\w+)\], #(-?\w+)$")
STEPPED_FIRST_STORE = re.compile(r"^(st\w+)\t(.*)\[(\w+), #(-?\w+)\]!$")


def tool():
    """Newer ones know more processors by models of their own."""
    return next((name for name in ("llvm-mca-19", "llvm-mca-14", "llvm-mca") if shutil.which(name)), "llvm-mca")


def disassembly(program):
    """Address to (mnemonic, operands)."""
    listing = subprocess.run(["llvm-objdump", "-d", "--no-show-raw-insn", str(program)], check=True,
                             capture_output=True, text=True).stdout
    code = {}
    for line in listing.splitlines():
        match = re.match(r"^\s*([0-9a-f]+):\s+(\S+)\s*(.*)$", line)
        if match:
            code[int(match[1], 16)] = (match[2], match[3])
    return code


def times_run(blocks):
    times = {}
    for address, length, count in blocks:
        for i in range(length):
            times[address + 4 * i] = times.get(address + 4 * i, 0) + count
    return times


def branch_target(operands):
    match = re.search(r"0x([0-9a-f]+)(?: <.*>)?$", operands)
    return int(match[1], 16) if match else None


def loops(code, times):
    """(first, last, rounds) of each innermost loop."""
    found = []
    for address, count in times.items():
        mnemonic, operands = code.get(address, ("", ""))
        target = branch_target(operands) if BRANCH.match(mnemonic) else None
        if target is None or target > address or target not in times:
            continue
        # How often the branch went back is what its target ran more often than what lies before it; near enough, the
        # smaller of the two counts.
        found.append((target, address, min(count, times[target])))
    return [loop for loop in found
            if not any(other != loop and loop[0] <= other[0] and other[1] <= loop[1] for other in found)]


def source_of(mnemonic, operands):
    """The instruction as llvm-mca takes it; a store that steps its address as two, since there the address would wait
    for the stored data, which it does not on a processor."""
    operands = re.sub(r"\s*<.*>$", "", operands)
    if BRANCH.match(mnemonic) or mnemonic == "adrp":
        operands = re.sub(r"0x[0-9a-f]+$", "somewhere", operands)
    text = f"{mnemonic}\t{operands}"
    for pattern, step_first in ((STEPPED_STORE, False), (STEPPED_FIRST_STORE, True)):
        match = pattern.match(text)
        if match:
            store = f"{match[1]}\t{match[2]}[{match[3]}]"
            step = f"add\t{match[3]}, {match[3]}, #{match[4]}" if not match[4].startswith("-") else \
                f"sub\t{match[3]}, {match[3]}, #{match[4][1:]}"
            return [step, store] if step_first else [store, step]
    return [text]


def round_cycles(body, processor):
    """None where llvm-mca has no model of an instruction."""
    done = subprocess.run([tool(), "-mtriple=aarch64", "-mcpu=" + processor, f"-iterations={ROUNDS}",
                           "-instruction-info=false", "-resource-pressure=false"],
                          input="\n".join(body), capture_output=True, text=True)
    match = re.search(r"Total Cycles:\s+(\d+)", done.stdout)
    return int(match[1]) / ROUNDS if match else None


def kernel_cycles(code, blocks):
    times = times_run(blocks)
    total = sum(times.values())
    bodies, rounds, covered = [], [], 0
    for first, last, count in loops(code, times):
        addresses = [a for a in range(first, last + 4, 4) if times.get(a, 0) >= USUAL * count]
        executed = sum(min(times[a], count) for a in addresses)
        if executed < LEAST_SHARE * total or any(code[a][0] in ("bl", "blr") for a in addresses):
            continue
        bodies.append([line for a in addresses for line in source_of(*code[a])])
        rounds.append(count)
        covered += executed
    result = {"covered": covered / total}
    for processor in PROCESSORS:
        each = [round_cycles(body, processor) for body in bodies]
        if each and None not in each:
            result[processor] = sum(cycles * count for cycles, count in zip(each, rounds)) / PIXELS
    return result


def cycles(build, only):
    code = disassembly(build.program)
    return {kernel: kernel_cycles(code, blocks) for kernel, _, _, blocks in build.count(["ours"], only, profile=True)}
