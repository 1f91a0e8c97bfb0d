# SPDX-License-Identifier: Apache-2.0
# command_faults_test.py PROGRAM FAILING_FILES [--long]: each call that touches a file fails once, or the disk is full from
# then on. The program says so in a line and an exit code, and each output is what it was or the whole result.
import errno
import itertools
import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

PROGRAM, FAILING_FILES = map(os.path.abspath, sys.argv[1:3])
IS_LONG = sys.argv[3:] == ['--long']
HALF, LASTS = 0, 1
FAULTS = [(errno.EIO, 0), (errno.ENOSPC, LASTS), (errno.EROFS, 0), (errno.EINTR, 0), (HALF, 0)]
OLD = b'what was there before'
# Name, arguments, outputs, and how the outputs stand before. What follows the first four is for the long run.
CALLS = [
    ('two names', 'blur in/1.png -o out/a.png', ['a.png'], 'linked'),
    ('kept', 'corners in/1.png -o out/a.webp --no-clobber', ['a.webp'], None),
    ('batch', 'blur in/1.jpg in/2.jpg -o out/deep/ -j 1', ['deep/1.jpg', 'deep/2.jpg'], None),
    ('old', 'stamp in/1.jpg -o out/a.jpg --text 12:30', ['a.jpg'], 'file'),
    ('new', 'blur in/1.jpg -o out/a.png', ['a.png'], None),
    ('gif', 'gif in/1.jpg in/2.jpg -o out/a.gif', ['a.gif'], None),
    ('pipe', 'stamp in/1.jpg -o - --text 12:30', [], None),
    ('text', 'palette in/1.jpg -n 4 --json', [], None),
    ('merge', 'merge in/1.jpg in/2.jpg -o out/a.jpg', ['a.jpg'], 'file'),
    ('sweep', 'sweep in/track.csv', [], None),
    ('filter', 'filter xray in/1.jpg -o out/a.jpg', ['a.jpg'], 'file'),
]


def run(arguments, environment):
    return subprocess.run([PROGRAM, *arguments.split()], env={**os.environ, **environment}, capture_output=True,
                          timeout=120, check=False)


def prepare(outputs, before):
    shutil.rmtree('out', ignore_errors=True)
    os.mkdir('out')
    for output in outputs if before else []:
        Path('out', output).write_bytes(OLD)
        if before == 'linked':
            os.link('out/' + output, 'out/other')


def contents():
    return {str(path.relative_to('out')): path.read_bytes() for path in Path('out').rglob('*') if path.is_file()}


def problem(done, whole, before, is_batch):
    lines = done.stderr.decode().splitlines()
    found = contents()
    if done.returncode not in ((0, 1, 2) if is_batch else (0, 2)):
        return f'exit code {done.returncode}: {done.stderr.decode()}'
    if done.returncode == 0 and (found != whole[1] or done.stdout != whole[0] or lines):
        return f'no failure, but {sorted(found)} are not right; said {lines}'
    if done.returncode != 0 and not (lines and all(line.startswith('korvane: ') for line in lines)):
        return f'said {lines}'
    if len(lines) > (len(whole[1]) if is_batch else 1):
        return f'said {lines}'
    for name, content in found.items():
        if content not in (whole[1].get(name), before.get(name)):
            return f'{name} is neither as before nor whole: {len(content)} bytes; said {lines}'
    return None if set(before) <= set(found) else f'lost {set(before) - set(found)}'


def fail_each_call(name, arguments, outputs, state):
    prepare(outputs, state)
    whole = run(arguments, {})
    assert whole.returncode == 0 and not whole.stderr, whole.stderr
    whole = (whole.stdout, contents())
    failures, calls, report = [], 0, Path('report')
    for error, lasts in FAULTS if IS_LONG else FAULTS[:2]:
        for number in itertools.count(1):
            prepare(outputs, state)
            before = contents()
            report.unlink(missing_ok=True)
            done = run(arguments, {'LD_PRELOAD': FAILING_FILES, 'KORVANE_FAULT': f'{number} {error} {lasts}',
                                   'KORVANE_FAULT_FOLDER': os.getcwd(), 'KORVANE_FAULT_REPORT': 'report'})
            found = problem(done, whole, before, name == 'batch')
            if not report.exists():
                break
            calls += 1
            if found:
                failures.append(f'{name}: call {number}, {report.read_text(encoding="ascii")}, error {error}: {found}')
    print(f'proof: {calls} failing calls of files')
    return failures + ([] if calls > 10 else [f'{name}: only {calls} calls failed'])


def main():
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        os.mkdir('in')
        for photo in ('1.jpg', '2.jpg', '1.png'):
            assert run(f'scene in/{photo} --size 160x80', {}).returncode == 0
        Path('in/track.csv').write_text('1,0\n2,0\n3,0\n', encoding='ascii')
        failures = [line for call in CALLS[:None if IS_LONG else 4] for line in fail_each_call(*call)]
        os.chdir('/')
    sys.exit('\n'.join(failures) or 0)


main()
