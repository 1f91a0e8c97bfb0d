#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes the gallery: OUT/index.html with every effect on a picture before and after, and OUT/pictures.

The command that a picture shows is the text that was run to make it. Parameters, code and known behaviours come from the
program's own tables, the speed figures from the last run of the benchmarks when there is one.
"""
import argparse
import concurrent.futures
import hashlib
import html
import json
import math
import os
import pathlib
import re
import shlex
import shutil
import struct
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGE = ROOT / 'tools' / 'bench'
MOST_BYTES = 6_000_000
GROUPS = ['Blur', 'Filters', 'Colour', 'Capture', 'Stamp', 'Analysis']

RGBA = '// rgba: width * height pixels of four bytes'
YUYV = '// yuyv: width * height * 2 bytes'


def number(value):
    return f'{value:.4g}'


def as_float(value):
    text = number(float(value))
    return text + ('f' if '.' in text or 'e' in text else '.0f')


# How a value stands in code; see effect_code.h, and page/code.js, which does the same.
KINDS = {
    'float': as_float,
    'bytes': lambda color: ', '.join(f'0x{color[at:at + 2]}' for at in (1, 3, 5)),
    'argb': lambda color: f'0xFF{color[1:].upper()}',
    'share': lambda weight: f'{number(int(weight) / 256)}f',
    'quoted': json.dumps,
    'not': lambda is_on: '0' if is_on else '1',
}


class Table:
    """The playground's effects: what they are called, their code, and their known behaviours."""

    def __init__(self, korvane_gallery):
        self.rows = {row['id']: row for row in json.loads(korvane_gallery('effects'))}

    def code(self, identity, values, about):
        """C++ and Java for values that differ from the defaults."""
        row = self.rows[identity]
        every = {p['name']: p['initial'] for p in row['parameters']} | values

        def fill(line, known):
            return re.sub(r'\{(\w+)(?::(\w+))?\}', lambda m: KINDS.get(m[2], str)(known[m[1]]), line)

        def lines(text):
            for line in text.splitlines():
                condition = re.match(r'(!?)(\w+)\? (.*)', line)
                if not condition:
                    yield fill(line, every)
                elif condition[2] == 'each':
                    for key, value in values.items():
                        yield fill(condition[3], {'key': key, 'value': value})
                elif bool(every[condition[2]]) != bool(condition[1]):
                    yield fill(condition[3], every)

        def whole(text, first):
            return '\n'.join([first] * bool(first) + [line for line in lines(text) if not line.startswith(('#inc', 'import'))])

        return whole(row['cpp'], about), whole(row['java'], '') if row['java'] else None


class Shot:
    """One picture: the command that makes it out of a source, and the calls that do the same."""

    def __init__(self, effect, suffix, arguments, source, calls, extension='webp'):
        self.effect = effect
        name = effect.id + (f'-{suffix}' if suffix else '')
        self.after = f'pictures/{name}.{extension}'
        self.source = source
        # A PNG file has no quality.
        quality = '' if extension == 'png' else ' -q 80'
        self.command = f'korvane {arguments} -o {self.after}{quality}'
        self.cpp, self.java = calls
        self.said = ''


class Effect:
    def __init__(self, group, name, summary, source, command, calls, row, extension='webp'):
        self.group, self.name, self.summary, self.source = group, name, summary, source
        self.id = re.sub(r'[^a-z0-9]+', '-', name.lower()).strip('-')
        self.command, self.calls, self.row, self.extension = command, calls, row, extension
        self.parameters = []
        self.main = Shot(self, '', command({}), source, calls({}), extension)
        self.shots = [self.main]
        self.film = None
        self.before = None
        self.tags = ('Before', 'After')

    def keep(self, shots):
        self.shots = [shot for shot in self.shots if shot in shots]
        for parameter in self.parameters:
            parameter['values'] = [(value, shot) for value, shot in parameter['values'] if shot in shots]

    def add_parameter(self, row, values=None):
        """A row of a table of the program: name, type, range, default, summary; and the values to show."""
        entry = dict(row, values=[])
        for value in values or []:
            if str(value) == row['default']:
                shot = self.main
            else:
                settings = {row['name']: value}
                shot = Shot(self, f'{row["name"].strip("-")}-{value}', self.command(settings), self.source,
                            self.calls(settings), self.extension)
                self.shots.append(shot)
            entry['values'].append((str(value), shot))
        self.parameters.append(entry)


# The effects


def spread(least, most, default):
    """Values over a range, its ends and the default among them; a wide range on both sides of 0 by powers."""
    if least < 0 < most and most - least > 100:
        values = [sign * abs(end) ** share for sign, end in ((-1, least), (1, most)) for share in (1 / 3, 1)]
    else:
        values = [least + (most - least) * part / 4 for part in range(5)]
    return sorted({number(value) for value in values + [default]}, key=float)


def filter_effects(korvane, table):
    effects = []
    for row in json.loads(korvane('filters', '--json'))['filters']:
        name, short = row['name'], row['name'].removeprefix('ImageFilter')
        # What changes only colours shows best on a face.
        identity = f'filter-{short}'
        group = table.rows[identity]['group']
        source = 'portrait' if group == 'Colour' else 'house'

        def command(settings, name=name, source=source):
            return f'filter {name} {source}.png' + ''.join(f' --set {k}={v}' for k, v in settings.items())

        effect = Effect(group, short, row['summary'] + '.', source, command,
                        lambda settings, identity=identity: table.code(identity, settings, RGBA), identity)
        for parameter in row['parameters']:
            default = '' if parameter['default'] is None else number(parameter['default'])
            values = None
            if parameter['type'] == 'float' and parameter['minimum'] is not None:
                values = spread(parameter['minimum'], parameter['maximum'], parameter['default'])
            effect.add_parameter(dict(name=parameter['name'], type=parameter['type'], range=parameter['range'],
                                      default=default, summary=parameter['summary']), values)
        effects.append(effect)
    return effects


def option_row(options, command, name):
    """A row of the parameter table, from what the command line program says about one of its options."""
    option = next(o for o in options[command]['options'] if name in o['name'].split(','))
    kind, _, limits = option['type'].partition(':')
    bounds = re.search(r'\[(\S+) - (\S+)\]', limits)
    return dict(name=name, type={'INT': 'int', 'FLOAT': 'float', 'TEXT': 'text'}.get(kind, 'switch'),
                range=f'{bounds[1]} ... {bounds[2]}' if bounds else '', default=option['default'],
                summary=option['summary'])


def radius_row(options, method):
    """What the program says about the radius, as far as it is about this method."""
    row = option_row(options, 'blur', '--radius')
    part = re.search(rf'\b{method} (\d+) to (\d+) \(([^)]*)\)', row['summary'])
    if part:
        row['range'], row['summary'] = f'{part[1]} ... {part[2]}', f'in pixels: {part[3]}'
    return row


BLURS = [
    ('stack', 'Stack blur', 'Weights that fall evenly from the centre: close to a Gaussian, at the cost of a box.'),
    ('box', 'Box blur', 'A plain mean over a square.'),
    ('gauss', 'Gauss blur', 'Three boxes, which together come close to a Gaussian.'),
    ('fast', 'Fast blur', 'A plain mean, rounded down, for whole pixels of four bytes.'),
    ('iir', 'Recursive blur', 'A recursive Gaussian: its time does not depend on the radius.'),
]


def blur_effects(options, table):
    effects = []
    for method, name, summary in BLURS:
        def command(settings, method=method):
            chosen = '' if method == 'stack' else f' --method {method}'
            return f'blur portrait.png{chosen} --radius {settings.get("--radius", 25)}'

        def calls(settings, method=method):
            about = '' if method in ('box', 'gauss') else RGBA
            return table.code(f'blur-{method}', {'radius': settings.get('--radius', 25)}, about)

        effect = Effect('Blur', name, summary, 'portrait', command, calls, f'blur-{method}')
        effect.add_parameter(radius_row(options, method), [2, 8, 25, 50, 80])
        effects.append(effect)

    def dim_calls(settings):
        values = {'radius': 25, 'color': '#102040', 'alpha': settings.get('--alpha', 112)}
        return table.code('blur-stack', values, RGBA)

    dim = Effect('Blur', 'Blur and dim', 'The background behind a dialog: blurred, then mixed with a colour.',
                 'portrait', lambda s: f"blur portrait.png --radius 25 --color '#102040' --alpha {s.get('--alpha', 112)}",
                 dim_calls, 'dim')
    alpha = option_row(options, 'blur', '--alpha')
    dim.add_parameter(dict(alpha, default='112'), [0, 56, 112, 168, 256])
    dim.parameters[0]['default'] = alpha['default']
    dim.add_parameter(option_row(options, 'blur', '--color'))
    effects.insert(1, dim)
    return effects


def capture_effects(options):
    day = 'frames/day{1..8}.png'
    night = 'frames/night{1..9}.png'

    def merge_calls(count):
        def calls(_):
            return (f'{YUYV}, the next frame each time\n'
                    'intptr_t burst = super_capture_module_init(width, height, FRAME_FORMAT_TYPE_YUYV);\n'
                    'unsigned char* planes[4] = {yuyv, nullptr, nullptr, nullptr};\n'
                    f'for (int frame = 0; frame < {count}; ++frame) {{\n'
                    '    super_capture_module_push_frame(burst, planes);\n}\n'
                    'super_capture_module_pop_frame(burst, planes);\nsuper_capture_module_destroy(burst);',
                    'try (Burst burst = new Burst(width, height)) {\n    for (byte[] yuyv : frames) {\n'
                    '        burst.push(yuyv);\n    }\n    byte[] merged = burst.merge();\n}')
        return calls

    effects = []
    for name, frames, count, first, summary in [
            ('Merge by day', day, 8, 'frames/day1.png', 'The mean of a burst: eight noisy frames become one calm picture.'),
            ('Merge by night', night, 9, 'frames/night5.png',
             'The maximum of a dark burst: every light that any frame saw stays.')]:
        effect = Effect('Capture', name, summary, first, lambda s, frames=frames: f'merge {frames}', merge_calls(count),
                        'merge')
        effect.tags = ('One frame', 'Merged')
        effect.add_parameter(option_row(options, 'merge', 'frames'))
        effects.append(effect)
    return effects


SWEEP_TURN_DEGREES = [0, 3, 6, 9, -4, 12, 15]


def sweep_calls(_):
    return ('// nv21: width * height * 3 / 2 bytes\nPanoramaInterface panorama;\n'
            'panorama.startup(width, height, PANORAMA_FRAME_FORMAT_NV21, nullptr);\nint offsetX = 0;\nint offsetY = 0;\n'
            'result_t result = panorama.addFrame(nv21, gyroX, gyroY, offsetX, offsetY);\n'
            'PanoramaDirectionType direction = panorama.getDirectionType();',
            'Panorama panorama = new Panorama(width, height, Panorama.Format.NV21, (result, x, y, direction) -> {\n'
            '    // Move the guide on the screen to (x, y).\n});\npanorama.feed(nv21, gyroX, gyroY);')


def sweep_effect(options):
    frames = ' '.join(f'frames/sweep{frame}.png' for frame in (1, 2, 3, 4, 1, 5, 6))
    effect = Effect('Capture', 'Panorama sweep',
                    'The intake of a panorama: which way the camera turns, where each frame belongs, and which frames go '
                    'against the sweep.', 'wide', lambda s: f'sweep track.csv {frames}', sweep_calls, 'sweep')
    effect.main.command = f'korvane sweep track.csv {frames} --json'
    effect.main.after = 'pictures/before-wide.webp'
    effect.film = True
    effect.add_parameter(option_row(options, 'sweep', 'track'))
    effect.add_parameter(option_row(options, 'sweep', 'frames'))
    return effect


def other_effects(options, table):
    text = '2026-01-02 03:04'

    def stamp_calls(_):
        return table.code('stamp', {'text': text}, '')

    effects = []
    for name, source, summary in [
            ('Stamp 16 to 9', 'screen', 'Date and time in the corner, with the glyphs for wide frames.'),
            ('Stamp 4 to 3', 'classic', 'Date and time in the corner, with the glyphs for all other frames.')]:
        effect = Effect('Stamp', name, summary, source, lambda s, source=source: f"stamp {source}.png --text '{text}'",
                        stamp_calls, 'stamp')
        effect.add_parameter(option_row(options, 'stamp', '--text'))
        effects.append(effect)

    def corner_calls(settings):
        return table.code('corners', {'threshold': settings.get('--threshold', 20),
                                      'distance': settings.get('--min-dist', 8)}, '')

    corners = Effect('Analysis', 'Corners', 'FAST corners, each marked by a red square.', 'house',
                     lambda s: 'corners house.png' + ''.join(f' {k} {v}' for k, v in s.items()), corner_calls, 'corners')
    corners.add_parameter(option_row(options, 'corners', '--threshold'), [5, 10, 20, 60, 120])
    corners.add_parameter(option_row(options, 'corners', '--min-dist'), [2, 8, 16, 32, 64])

    def palette_calls(settings):
        return table.code('palette', {'colors': settings.get('--colors', 16)}, '')

    palette = Effect('Analysis', 'Palette', 'The few colours that stand for a picture best.', 'portrait',
                     lambda s: f"palette portrait.png -n {s.get('--colors', 16)}", palette_calls, 'palette', 'png')
    palette.add_parameter(option_row(options, 'palette', '--colors'), [2, 4, 8, 16, 64])
    return effects + [corners, palette]


# Making the pictures


class Failed(Exception):
    pass


class Workshop:
    def __init__(self, build, out, photo):
        self.tools = (build / 'tools').resolve()
        self.out = out
        self.photo = photo
        self.environment = dict(os.environ, PATH=f'{self.tools}:{os.environ["PATH"]}')

    def run(self, command):
        """Runs a line as a shell would: the same text works when it is pasted."""
        done = subprocess.run(['bash', '-c', command], cwd=self.out, env=self.environment, capture_output=True, text=True)
        if done.returncode != 0:
            raise Failed(f'{command}: {done.stderr.strip()}')
        return done.stdout

    def korvane(self, *arguments):
        return self.run(shlex.join(['korvane', *arguments]))

    def size(self, path):
        """Width and height of a PNG file."""
        with open(self.out / path, 'rb') as file:
            return struct.unpack('>II', file.read(24)[16:])

    def fit(self, source, target, pixels):
        """A copy of at most so many pixels."""
        width, height = self.size(source)
        scale = min(1.0, math.sqrt(pixels / (width * height)))
        self.run(f'korvane_strip {target} {max(1, round(height * scale))} {source}')

    def prepare(self, pixels):
        """The pictures that the effects begin with."""
        for folder in ('pictures', 'frames'):
            shutil.rmtree(self.out / folder, ignore_errors=True)
            (self.out / folder).mkdir()
        if self.photo:
            self.run(f'korvane blur {shlex.quote(str(self.photo))} -o frames/upright.png --radius 0 --strip')
            self.fit('frames/upright.png', 'house.png', pixels)
            shutil.copy(self.out / 'house.png', self.out / 'portrait.png')
            shutil.copy(self.out / 'house.png', self.out / 'wide.png')
        else:
            height = round(math.sqrt(pixels * 9 / 16))
            width = round(height * 16 / 9)
            self.run(f'korvane scene house.png --size {width}x{height}')
            self.run(f'korvane scene portrait.png --size {width}x{height} --subject portrait')
            self.run(f'korvane scene wide.png --size {round(height * 2.1)}x{height * 3 // 4}')
        self.run('korvane_gallery crop house.png screen.png --shape 16 9')
        self.run('korvane_gallery crop portrait.png classic.png --shape 4 3')
        self.run('korvane_gallery noisy house.png frames/day -n 8')
        self.run('korvane_gallery night house.png frames/night -n 9')

    def prepare_sweep(self):
        """Frames that lie as far apart as the guide's offsets say; the number of pixels, or 0 for a narrow picture."""
        width = self.size('wide.png')[0]
        moves = max(SWEEP_TURN_DEGREES) // 3
        track = ''.join(f'10,{20 - degrees}\n' for degrees in SWEEP_TURN_DEGREES)
        (self.out / 'track.csv').write_text(track)
        readings = json.loads(self.run('korvane sweep track.csv --json'))['readings']
        step = readings[1]['offset_x']
        if step * moves >= width:
            return False
        self.run(f'korvane_gallery sweep wide.png frames/sweep -n {moves + 1} --step {step}')
        return True

    def try_shot(self, shot):
        """False where the effect cannot do with this picture: a stamp, say, does not fit into a few pixels."""
        try:
            shot.said = self.run(shot.command)
        except Failed as failure:
            print(f'gallery: left out {failure}', file=sys.stderr)
            return False
        return True

    def make(self, effects):
        """Makes all pictures; returns the effects that could be made."""
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            shots = [shot for effect in effects for shot in effect.shots]
            made = {shot for shot, is_made in zip(shots, pool.map(self.try_shot, shots)) if is_made}
            effects = [effect for effect in effects if effect.main in made]
            for effect in effects:
                effect.keep(made)
                effect.before = f'pictures/before-{pathlib.Path(effect.source).stem}.webp'
            sources = {effect.before: effect.source.removesuffix('.png') + '.png' for effect in effects}
            list(pool.map(lambda item: self.run(f'korvane blur {item[1]} -o {item[0]} --radius 0 -q 80'), sources.items()))
            list(pool.map(lambda effect: self.make_thumbnail(effect), effects))
        self.share_equal_files(effects)
        return effects

    def make_thumbnail(self, effect):
        self.run(f'korvane_strip pictures/small-{effect.id}.jpg 120 {effect.main.after}')

    def share_equal_files(self, effects):
        """A parameter without effect gives the same picture again and again: one file is enough."""
        seen = {}
        for shot in (shot for effect in effects for shot in effect.shots):
            path = self.out / shot.after
            first = seen.setdefault(hashlib.sha256(path.read_bytes()).digest(), shot.after)
            shot.file = first
            if first != shot.after:
                path.unlink()

    def bytes_used(self):
        return sum(path.stat().st_size for path in (self.out / 'pictures').iterdir())


# The README's pictures


# Name, height in pixels, shape that each picture is cut to, and the pictures.
STRIPS = [
    ('strip', 240, '16 9', ['before-portrait', 'stack-blur', 'blur-and-dim']),
    ('blurs', 190, '1 1', ['stack-blur', 'box-blur', 'gauss-blur', 'fast-blur', 'recursive-blur']),
    ('filters', 150, '16 9', ['none', 'distorted', 'extrusion', 'mirror']),
    ('filters_2', 150, '16 9', ['timetunnel', 'table', 'temperature', 'xray']),
]


def make_strips(workshop, folder):
    for name, height, shape, pictures in STRIPS:
        for picture in pictures:
            workshop.run(f'korvane_gallery crop pictures/{picture}.webp frames/cut-{picture}.png --shape {shape}')
        cuts = ' '.join(f'frames/cut-{picture}.png' for picture in pictures)
        workshop.run(f'korvane_strip {shlex.quote(str(folder / name))}.jpg {height} {cuts}')


# The page


def inline(text):
    """Marked code becomes an element."""
    return re.sub(r'`([^`]*)`', r'<code>\1</code>', html.escape(text, quote=False))


def said_text(effect, shot):
    """What the command printed, where it is worth a line."""
    lines = shot.said.strip().splitlines()
    if effect.film or not lines:
        return ''
    return ' '.join(lines) if effect.id == 'palette' else lines[0]


def effect_data(workshop, table, effect):
    width, height = workshop.size(effect.source.removesuffix('.png') + '.png')
    pictures = {}

    def picture(shot, label):
        index = effect.shots.index(shot)
        pictures[index] = dict(src=shot.file, text=f'{effect.name}{label}', command=shot.command, cpp=shot.cpp,
                               java=shot.java, said=said_text(effect, shot))
        return index

    picture(effect.main, '')
    parameters = []
    for row in effect.parameters:
        values = [dict(value=value, picture=picture(shot, f', {row["name"]} {value}' if shot is not effect.main else ''))
                  for value, shot in row['values']]
        chosen = next((v['value'] for v in values if v['picture'] == 0), None)
        parameters.append(dict(row, values=values, chosen=chosen))
    data = dict(id=effect.id, group=effect.group, name=effect.name, summary=effect.summary, width=width, height=height,
                before=effect.before, thumbnail=f'pictures/small-{effect.id}.jpg', tags=effect.tags,
                pictures=[pictures[index] for index in sorted(pictures)], parameters=parameters,
                behaviours=[[inline(cell) for cell in row]
                            for row in table.rows.get(effect.row, {}).get('behaviours', [])])
    if effect.film:
        frame = workshop.size('frames/sweep1.png')
        data['film'] = dict(frame=frame, readings=json.loads(effect.main.said)['readings'])
    return data


def speed_data(path):
    if path is None or not path.is_file():
        return None
    data = json.loads(path.read_text())
    for comparison in data['comparisons']:
        # memcpy is a floor that nobody passes, no peer.
        comparison['rows'] = [row for row in comparison['rows'] if not row['name'].startswith('memcpy')]
    data['comparisons'] = [comparison for comparison in data['comparisons'] if comparison['rows']]
    return data if data['comparisons'] else None


def write_page(out, data):
    script = (PAGE / 'page' / 'stage.js').read_text() + (PAGE / 'gallery.js').read_text()
    parts = {
        '@LOOK@': (PAGE / 'page' / 'look.css').read_text() + (PAGE / 'gallery.css').read_text(),
        '@DATA@': json.dumps(data, separators=(',', ':')).replace('<', '\\u003c'),
        '@SCRIPT@': script.replace('</script', '<\\/script'),
        '@SOURCE@': html.escape(data['source']),
        '@VERSION@': html.escape(data['version']),
    }
    page = re.sub('|'.join(parts), lambda match: parts[match[0]], (PAGE / 'gallery.html').read_text())
    (out / 'index.html').write_text(page)


def all_effects(workshop, table):
    options = json.loads(workshop.run('korvane_gallery options'))
    effects = (blur_effects(options, table) + filter_effects(workshop.korvane, table) + capture_effects(options) +
               [sweep_effect(options)] + other_effects(options, table))
    return sorted(effects, key=lambda effect: GROUPS.index(effect.group))


def write_snippets(effects, folder):
    """Every C++ and Java call as one function each, for a compiler to look at."""
    folder.mkdir(parents=True, exist_ok=True)
    shots = [shot for effect in effects for shot in effect.shots]
    cpp = [(PAGE / 'snippets.cpp').read_text()]
    java = []
    for index, shot in enumerate(shots):
        cpp.append(f'void call{index}() {{\n{shot.cpp}\n}}\n')
        if shot.java:
            java.append(f'void call{index}() throws Exception {{\n{shot.java}\n}}\n')
    (folder / 'snippets.cpp').write_text('\n'.join(cpp))
    (folder / 'Snippets.java').write_text((PAGE / 'Snippets.java').read_text().replace('//CALLS//', '\n'.join(java)))


def main():
    parser = argparse.ArgumentParser(description='Makes the gallery of all effects as a page.')
    parser.add_argument('build', type=pathlib.Path, help='the build folder')
    parser.add_argument('out', type=pathlib.Path, help='where index.html goes')
    parser.add_argument('--photo', type=pathlib.Path, help='in place of the drawn pictures')
    parser.add_argument('--bench', type=pathlib.Path, help='figures of the benchmarks, from ./dev bench')
    parser.add_argument('--snippets', type=pathlib.Path, metavar='DIR', help='only write the calls, for a compiler')
    parser.add_argument('--strips', type=pathlib.Path, metavar='DIR', help="also make the README's pictures")
    arguments = parser.parse_args()
    arguments.out.mkdir(parents=True, exist_ok=True)
    photo = arguments.photo.resolve() if arguments.photo else None
    workshop = Workshop(arguments.build, arguments.out, photo)
    table = Table(lambda name: workshop.run(f'korvane_gallery {name}'))
    if arguments.snippets:
        write_snippets(all_effects(workshop, table), arguments.snippets)
        return
    pixels = 720_000
    while True:
        effects = all_effects(workshop, table)
        workshop.prepare(pixels)
        if not workshop.prepare_sweep():
            effects = [effect for effect in effects if not effect.film]
        effects = workshop.make(effects)
        data = dict(version=workshop.korvane('--version').strip(),
                    source=arguments.photo.name if photo else 'two drawn pictures',
                    groups=GROUPS, effects=[effect_data(workshop, table, effect) for effect in effects],
                    speed=speed_data(arguments.bench))
        write_page(arguments.out, data)
        used = workshop.bytes_used() + (arguments.out / 'index.html').stat().st_size
        if used <= MOST_BYTES or pixels < 10_000:
            break
        pixels = int(pixels * MOST_BYTES / used * 0.9)
    if arguments.strips:
        make_strips(workshop, arguments.strips.resolve())
    print(f'gallery: {len(effects)} effects, {sum(len(effect.shots) for effect in effects)} pictures, '
          f'{used / 1e6:.1f} MB', file=sys.stderr)


if __name__ == '__main__':
    try:
        main()
    except Failed as failure:
        raise SystemExit(f'gallery: {failure}')
