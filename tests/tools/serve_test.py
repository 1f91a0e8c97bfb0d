# SPDX-License-Identifier: Apache-2.0
"""The playground's server: what it answers, what it refuses, and that it stands up to load. That its pictures are those of
the commands is seen in a browser."""
import atexit
import concurrent.futures
import json
import os
import re
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import time
import zlib
from http.client import HTTPConnection

program = sys.argv[1]
os.chdir(tempfile.mkdtemp(prefix='korvane_serve_'))
failures = []


def check(is_right, what):
    if not is_right:
        failures.append(what)
        print('FAILED:', what)


def korvane(*arguments):
    subprocess.run([program, *arguments], check=True, stdout=subprocess.DEVNULL)


def start():
    server = subprocess.Popen([program, 'serve'], stdout=subprocess.PIPE, text=True)
    atexit.register(server.kill)
    port, token = re.fullmatch(r'http://127\.0\.0\.1:(\d+)/([0-9a-f]{32})/\n', server.stdout.readline()).groups()
    return server, int(port), f'/{token}/'


server, port, root = start()


def ask(path, body=None, headers=None, method=None):
    """Status, headers and body."""
    connection = HTTPConnection('127.0.0.1', port, timeout=60)
    if isinstance(body, (dict, list)):
        body = json.dumps(body)
    connection.request(method or ('GET' if body is None else 'POST'), path, body, headers or {})
    answer = connection.getresponse()
    result = answer.status, answer.headers, answer.read()
    connection.close()
    return result


def raw(text):
    """The status after a request sent as it is, or 0 when the server only hangs up."""
    with socket.create_connection(('127.0.0.1', port), timeout=30) as connection:
        connection.sendall(text)
        try:
            found = re.match(rb'HTTP/1\.1 (\d+)', connection.recv(4096))
        except ConnectionResetError:
            found = None
    return int(found.group(1)) if found else 0


def png(side):
    """A small picture that says it is a large one."""
    header = b'IHDR' + struct.pack('>II', side, side) + small[24:29]
    return small[:12] + header + struct.pack('>I', zlib.crc32(header)) + small[33:]


korvane('scene', 'scene.jpg', '--size', '601x399')
korvane('scene', 'large.jpg', '--size', '2400x1800')
korvane('scene', 'long.png', '--size', '65500x3')
scene = open('scene.jpg', 'rb').read()
korvane('scene', 'small.png', '--size', '4x4')
small = open('small.png', 'rb').read()

# The page and its rules.
status, headers, page = ask(root)
check(status == 200 and b'<title>korvane playground' in page, 'the page')
check("script-src 'self'" in headers['Content-Security-Policy'] and 'unsafe' not in headers['Content-Security-Policy'],
      'no inline script')
names = re.findall(rb'(?:href|src)="([a-z.]+)"', page) + [b'stage.js', b'code.js']
total = len(page) + sum(len(ask(root + name.decode())[2]) for name in names)
check(len(names) == 5 and total < 60000, f'the page takes {total} bytes')
effects = json.loads(ask(root + 'api/effects')[2])
check({'blur-stack', 'filter-Distorted', 'palette', 'stamp', 'corners'} <= {effect['id'] for effect in effects}, 'effects')

# Who may ask.
host = f'127.0.0.1:{port}'
for expected, path, headers in [
        (200, root, {'Host': f'localhost:{port}'}), (200, root, {'Sec-Fetch-Site': 'cross-site'}),
        (200, root + 'api/effects', {'Origin': f'http://{host}', 'Sec-Fetch-Site': 'same-origin'}),
        (403, root, {'Host': f'evil.example:{port}'}), (403, root, {'Host': '127.0.0.1'}), (403, root, {'Host': ''}),
        (403, root + 'api/effects', {'Origin': 'http://evil.example'}), (403, root, {'Origin': 'null'}),
        (403, root + 'api/effects', {'Sec-Fetch-Site': 'cross-site'}),
        (403, '/', {}), (403, '/' + '0' * 32 + '/', {}), (403, root[:-1], {}),
        (404, root + '../../etc/passwd', {}), (404, root + '%2e%2e/%2e%2e/etc/passwd', {}), (404, root + 'index', {})]:
    check(ask(path, headers=headers)[0] == expected, f'{path} {headers} is no {expected}')
check(ask(root + 'api/photos', scene, {'Origin': 'http://evil.example'})[0] == 403, 'a post of another page')
check(ask(root + 'api/effects', method='PUT')[0] == 405, 'PUT')

# What is no photo, or too much of one.
jpeg_header = scene[:scene.index(b'\xff\xda')]
for expected, name, body in [
        (422, 'no photo', b'GIF89a' + bytes(99)), (422, 'an empty file', b''), (422, 'half a JPEG', scene[:len(scene) // 2]),
        (422, 'a JPEG without scans', jpeg_header), (422, 'a JPEG of rubbish', jpeg_header + bytes(range(256)) * 9),
        (422, 'a PNG bomb', png(60000)), (422, 'a PNG that lacks rows', png(5000)),
        (413, 'a large file', bytes((64 << 20) + 1))]:
    try:
        status = ask(root + 'api/photos', body)[0]
    except (BrokenPipeError, ConnectionResetError):
        status = 413
    check(status == expected, f'{name}: {status}')
post = f'POST {root}api/photos HTTP/1.1\r\nHost: {host}\r\n'.encode()
for expected, name, text in [
        (413, '10 GB', post + b'Content-Length: 10000000000\r\n\r\nabc'),
        (413, 'a count that wraps', post + b'Content-Length: 99999999999999999999999\r\n\r\nabc'),
        (415, 'a packed body', post + b'Content-Encoding: gzip\r\nContent-Length: 3\r\n\r\nabc'),
        (408, 'a sender that stops', post + b'Content-Length: 1000\r\n\r\nabc')]:
    status = raw(text)
    check(status == expected, f'{name}: {status}')

# Photos and previews.
photo = json.loads(ask(root + 'api/photos', scene)[2])
check((photo['width'], photo['height'], photo['format']) == (601, 399, 'jpg'), f'{photo}')
question = {'photo': photo['id'], 'page': 'test', 'format': 'png'}
long = {'photo': json.loads(ask(root + 'api/photos', open('long.png', 'rb').read())[2])['id']}
for expected, change in [
        (404, {'photo': '../../etc/passwd'}), (404, {'photo': 7}), (422, {'chain': 'blur'}), (422, {'chain': [{}] * 17}),
        (422, {'chain': [{'effect': 'no'}]}), (422, {'chain': [{'effect': 'blur-stack', 'values': {'radius': 255}}]}),
        (422, {'chain': [{'effect': 'blur-stack', 'values': {'radius': '1'}}]}),
        (422, {'chain': [{'effect': 'blur-stack', 'values': {'color': '$(id)'}}]}),
        (422, {'chain': [{'effect': 'stamp', 'values': {'text': 'abc'}}]}),
        (422, {'chain': [{'effect': 'filter-Mirror', 'values': {'mPosVertices': 1}}]}), (400, {'pixels': -1}),
        # Longer than any driver's textures: no filter, but all else.
        (422, long | {'chain': [{'effect': 'filter-Mirror'}]}), (200, long | {'chain': [{'effect': 'blur-stack'}]})]:
    status = ask(root + 'api/preview', question | change)[0]
    check(status == expected, f'{change}: {status}')
check(ask(root + 'api/preview', '[' * 60000)[0] == 400, 'deep JSON')
check(ask(root + 'api/save', question | {'format': '/tmp/x'})[0] == 400, 'a format with a path')

large = json.loads(ask(root + 'api/photos', open('large.jpg', 'rb').read())[2])
check(large['previewWidth'] * large['previewHeight'] <= 2_000_000 and large['width'] == 2400, f'{large}')

# Load: each answer is a picture, a newer question's or a refusal that says when to come again.
def client(number):
    answers = []
    for index in range(20):
        step = {'effect': 'blur-stack', 'values': {'radius': index}}
        begun = time.monotonic()
        status, headers, body = ask(root + 'api/preview', {'photo': large['id'], 'page': str(number), 'chain': [step]})
        whole = (status == 200 and body[:2] == b'BM') or (status == 503 and headers['Retry-After'] == '1')
        answers.append((status, whole, time.monotonic() - begun))
    return answers


begun = time.monotonic()
with concurrent.futures.ThreadPoolExecutor(50) as pool:
    answers = [answer for part in pool.map(client, range(50)) for answer in part]
check(all(whole for _, whole, _ in answers), 'a failure under load')
drawn = sum(status == 200 for status, _, _ in answers)
check(drawn >= 300, f'only {drawn} of 1000 previews were drawn')
peak = int(re.search(r'VmHWM:\s+(\d+)', open(f'/proc/{server.pid}/status').read()).group(1)) // 1024
# The sanitizers keep freed memory, and so show nothing here.
check(peak < 1500 or 'asan' in program, f'{peak} MiB under load')
print(f'load: {drawn} drawn, {1000 - drawn} refused, {time.monotonic() - begun:.1f} s, '
      f'slowest {max(seconds for _, _, seconds in answers):.2f} s, peak {peak} MiB')

# The page closes; the server ends.
ask(root + 'api/drop', {'photo': photo['id']})
check(ask(root + 'api/preview', question)[0] == 404, 'a dropped photo')
before = sorted(os.listdir('.'))
chain = [{'effect': 'filter-Distorted'}, {'effect': 'blur-box', 'values': {'radius': 4}}]
with concurrent.futures.ThreadPoolExecutor(1) as pool:
    saving = pool.submit(ask, root + 'api/save', question | {'photo': large['id'], 'chain': chain * 4})
    time.sleep(0.15)
    server.send_signal(signal.SIGTERM)
    status, _, body = saving.result()
    check(status == 200 and body[-12:] == small[-12:], f'a save that runs at the end: {status}')
check(server.wait(20) == -signal.SIGTERM, 'SIGTERM ends it')
check(sorted(os.listdir('.')) == before, 'something is left behind')
sys.exit(1 if failures else 0)
