# SPDX-License-Identifier: Apache-2.0
# The program, while each call that touches a file fails once, or the disk is full from then on: command_faults_test.py
# PROGRAM FAILING_FILES [--long]. Whatever happens, it says so in a line and an exit code, and each output is what it was or the
# whole result.
import errno
import os
import shutil
import subprocess
import sys
import tempfile

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
        with open('out/' + output, 'wb') as file:
            file.write(OLD)
        if before == 'linked':
            os.link('out/' + output, 'out/other')


def contents():
    found = {}
    for folder, _, names in os.walk('out'):
        for name in names:
            path = os.path.join(folder, name)
            with open(path, 'rb') as file:
                found[os.path.relpath(path, 'out')] = file.read()
    return found


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
    failures = []
    calls = 0
    for error, lasts in FAULTS if IS_LONG else FAULTS[:2]:
        number = 0
        while True:
            number += 1
            prepare(outputs, state)
            before = contents()
            if os.path.exists('report'):
                os.remove('report')
            done = run(arguments, {'LD_PRELOAD': FAILING_FILES, 'KORVANE_FAULT': f'{number} {error} {lasts}',
                                   'KORVANE_FAULT_FOLDER': os.getcwd(), 'KORVANE_FAULT_REPORT': 'report'})
            found = problem(done, whole, before, name == 'batch')
            if not os.path.exists('report'):
                break
            calls += 1
            if found:
                with open('report', encoding='ascii') as file:
                    failures.append(f'{name}: call {number}, {file.read()}, error {error}: {found}')
    print(f'proof: {calls} failing calls of files')
    return failures + ([] if calls > 10 else [f'{name}: only {calls} calls failed'])


def main():
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        os.mkdir('in')
        for photo in ('1.jpg', '2.jpg', '1.png'):
            assert run(f'scene in/{photo} --size 160x80', {}).returncode == 0
        with open('in/track.csv', 'w', encoding='ascii') as file:
            file.write('1,0\n2,0\n3,0\n')
        failures = [line for call in CALLS[:None if IS_LONG else 4] for line in fail_each_call(*call)]
        os.chdir('/')
    print('\n'.join(failures))
    sys.exit(1 if failures else 0)


main()
