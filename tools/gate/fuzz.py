#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs the fuzz targets of a build and shows what they did: fuzz.py BUILD [SECONDS [TARGET...]], each for a minute.

Corpora grow in out/fuzz/corpus. The inputs of findings stay in out/fuzz/findings, each beside a .log of its run, and
make this fail. Every run adds its lines to out/fuzz/totals: target, executions, seconds, revision. As many targets run
at a time as there are processors, or as KORVANE_FUZZ_JOBS says.
"""
import concurrent.futures
import os
import pathlib
import re
import subprocess
import sys

OUT = pathlib.Path('out/fuzz')
# What reads whole files needs room for them; the others take their choices from few bytes.
LONG = {'jpeg_decode': 8192, 'photo_files': 8192, 'serve': 2048, 'program_cache': 1024}
# Only tiny pictures are taken here, so nothing needs more at a time. The others may ask for what there is not.
MALLOC_MB = {'photo_files': 64}
# Here graphics drivers keep what the leak checker takes for lost, or another thread frees it later.
WITHOUT_LEAKS = {'filters', 'serve'}


def run(folder, name, seconds):
    corpus = OUT / 'corpus' / name
    findings = OUT / 'findings'
    corpus.mkdir(parents=True, exist_ok=True)
    findings.mkdir(exist_ok=True)
    subprocess.run([folder / 'fuzz_seeds', name, corpus], check=True)
    before = set(findings.glob(f'{name}-*'))
    log = OUT / f'{name}.log'
    leaks = int(name not in WITHOUT_LEAKS)
    with open(log, 'wb') as output:
        status = subprocess.run(
            [folder / f'{name}_fuzz', f'-max_total_time={seconds}', f'-max_len={LONG.get(name, 400)}', '-timeout=20',
             '-rss_limit_mb=4096', f'-malloc_limit_mb={MALLOC_MB.get(name, 0)}', '-print_final_stats=1',
             f'-artifact_prefix={findings}/{name}-', f'-detect_leaks={leaks}', corpus],
            env={**os.environ, 'ASAN_OPTIONS': f'detect_leaks={leaks}'},
            stdout=output, stderr=subprocess.STDOUT, check=False).returncode
    text = log.read_text(errors='replace')
    number = re.search(r'number_of_executed_units: (\d+)', text)
    executions = int(number.group(1)) if number else 0
    edges = [int(found) for found in re.findall(r'cov: (\d+)', text)]
    found = sorted(set(findings.glob(f'{name}-*')) - before)
    for file in found:
        file.with_suffix('.log').write_text(text)
    if status != 0 and not found:
        found = [log]
    return name, executions, edges[-1] if edges else 0, found


def reason(name):
    """What a sanitizer or a failed requirement said first, with the frames below it."""
    lines = (OUT / f'{name}.log').read_text(errors='replace').splitlines()
    start = next((i for i, line in enumerate(lines) if re.search(r'ERROR|runtime error|: no: ', line)), len(lines))
    return '\n'.join(line[:200] for line in lines[start:start + 40] or lines[-10:])


def main():
    folder = pathlib.Path(sys.argv[1]) / 'tests/fuzz'
    seconds = int(sys.argv[2]) if len(sys.argv) > 2 else 60
    known = sorted(file.name[:-len('_fuzz')] for file in folder.glob('*_fuzz'))
    names = sys.argv[3:] or known
    unknown = set(names) - set(known)
    if unknown:
        sys.exit(f'fuzz: no target {", ".join(sorted(unknown))}; there are {", ".join(known)}')
    revision = subprocess.run(['git', 'describe', '--always', '--dirty'], capture_output=True, text=True, check=True)
    jobs = int(os.environ.get('KORVANE_FUZZ_JOBS', os.cpu_count()))
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        results = list(pool.map(lambda name: run(folder, name, seconds), names))
    print(f'{"target":14} {"executions":>11} {"a second":>9} {"edges":>6}  findings')
    with open(OUT / 'totals', 'a', encoding='utf-8') as totals:
        for name, executions, edges, found in results:
            print(f'{name:14} {executions:11} {executions // max(seconds, 1):9} {edges:6}  '
                  f'{", ".join(map(str, found)) or 0}')
            print(name, executions, seconds, revision.stdout.strip(), file=totals)
    print(f'{"together":14} {sum(result[1] for result in results):11}')
    for name in (result[0] for result in results if result[3]):
        print(f'-- {name}\n{reason(name)}')
    sys.exit(any(result[3] for result in results))


main()
