"""Asks mp4judge and other tools about files whose answer is known: compare.py MP4JUDGE FOLDER

Prints docs/comparison.md. Each tool is asked the way its documentation offers; what of its output
counts as "protected" is the pattern beside it. A tool that is not there is left out.
"""
import collections
import os
import re
import shutil
import struct
import subprocess
import sys
import time

import known

Tool = collections.namedtuple('Tool', 'name ask many pattern version')

CODES = r'(enc[a-z0-9]|drm[a-z]|p608|aavd)'
TOOLS = [
    Tool('ffprobe', ['ffprobe', '-v', 'error', '-show_entries',
                     'stream=codec_type,codec_tag_string:stream_side_data=side_data_type',
                     '-of', 'compact'], False,
         rf'codec_tag_string={CODES}|Encryption info', ['ffprobe', '-version']),
    Tool('MediaInfo', ['mediainfo', '--Output=JSON'], True, r'"Encryption"',
         ['mediainfo', '--Version']),
    Tool('exiftool', ['exiftool', '-s', '-ee', '-G1'], True,
         rf'(AudioFormat|CompressorID|OtherFormat|SchemeType)\s*: {CODES}|SchemeType',
         ['exiftool', '-ver']),
    Tool('AtomicParsley', ['AtomicParsley', '{}', '-T', '1'], False, rf'Atom ({CODES}|sinf) ',
         ['AtomicParsley', '-v']),
]


def ask(words, path):
    """Exit status and everything printed, or None after ten seconds."""
    words = [path if word == '{}' else word for word in words]
    if path not in words:
        words = words + [path]
    try:
        done = subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=10,
                              stdin=subprocess.DEVNULL)
    except subprocess.TimeoutExpired:
        return None, ''
    return done.returncode, done.stdout.decode('utf-8', 'replace')


def peer_answer(tool, path):
    status, out = ask(tool.ask, path)
    if status is None:
        return 'no end', None
    if re.search(tool.pattern, out):
        return 'protected', status
    # What describes a file without a word of protection is read as "clear".
    return ('refused' if status != 0 else 'clear'), status


def our_answer(judge, path):
    status, out = ask([judge], path)
    found = re.search(r': (clear|protected|undetermined)', out)
    return found.group(1) if found else 'no answer', status


def is_right(truth, answer):
    return answer in ('undetermined', 'refused') if truth == 'undetermined' else answer == truth


def mark(truth, answer, status):
    wrong = '' if is_right(truth, answer) else ' ✗'
    if answer == 'clear' and truth != 'clear':
        wrong = ' ✗✗'
    return f'{answer}{wrong}, {status}'


def seconds_for(words, many, paths):
    start = time.monotonic()
    if many:
        subprocess.run(words + paths, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    else:
        for path in paths:
            ask(words, path)
    return time.monotonic() - start


def version(words):
    done = subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    found = re.search(r'\d+\.\d+[\w.+-]*', done.stdout.decode('utf-8', 'replace'))
    return found.group(0) if found else ''


def copies(folder, names, count):
    """Paths of `count` hard links to the files, one after the other."""
    many = os.path.join(folder, 'many')
    shutil.rmtree(many, ignore_errors=True)
    os.makedirs(many)
    paths = []
    for i in range(count):
        paths.append(os.path.join(many, f'{i:04}-{names[i % len(names)]}'))
        os.link(os.path.join(folder, names[i % len(names)]), paths[-1])
    return paths


def best_of(times, words):
    """Seconds of the fastest of some runs, from its start to its end."""
    best = float('inf')
    nothing = os.open(os.devnull, os.O_WRONLY)
    for _ in range(times):
        start = time.monotonic()
        child = os.posix_spawnp(words[0], words, os.environ, file_actions=[
            (os.POSIX_SPAWN_DUP2, nothing, 1), (os.POSIX_SPAWN_DUP2, nothing, 2)])
        os.waitpid(child, 0)
        best = min(best, time.monotonic() - start)
    os.close(nothing)
    return best


def small_files(folder, count):
    """A folder of files that share nothing, of up to 100 KB."""
    many = os.path.join(folder, 'small')
    os.makedirs(many)
    for i in range(count):
        content = known.movie(known.CLEAR_SOUND)
        with open(os.path.join(many, f'{i:05}.m4a'), 'wb') as file:
            file.write(content + known.box('free', bytes(i * 7919 % 98000)))
    return many


def long_film(folder):
    """100 GB of media, which is a hole, and the movie box behind it."""
    path = os.path.join(folder, 'long.mp4')
    size = 100 * 10**9
    with open(path, 'wb') as file:
        file.write(known.FTYP + known.u32(1) + b'mdat' + struct.pack('>Q', size))
        file.seek(size - 16, os.SEEK_CUR)
        file.write(known.moov(known.CLEAR_SOUND))
    return path


def speed_rows(judge, folder):
    many, cache = small_files(folder, 10000), os.path.join(folder, 'cache.db')
    film, one = long_film(folder), os.path.join(folder, 'clear.m4a')
    ffprobe = next((tool.ask for tool in TOOLS if tool.name == 'ffprobe' and shutil.which('ffprobe')), None)
    rows = [['10,000 files of up to 100 KB', '`mp4judge -r FOLDER`', best_of(7, [judge, '-r', many])]]
    best_of(1, [judge, '-r', '--cache', cache, many])
    rows.append(['the same again, remembered', '`mp4judge -r --cache FILE FOLDER`',
                 best_of(7, [judge, '-r', '--cache', cache, many])])
    rows.append(['one file, from start to end', '`mp4judge FILE`', best_of(50, [judge, one])])
    rows.append(['a film of 100 GB, its movie box behind the media', '`mp4judge FILE`', best_of(20, [judge, film])])
    if ffprobe:
        rows.append(['one file', '`ffprobe`, as below', best_of(5, ffprobe + [one])])
        rows.append(['the film of 100 GB', '`ffprobe`, as below', best_of(5, ffprobe + [film])])
    return [[what, how, f'{seconds:.2g}' if seconds >= 0.01 else f'{seconds:.4f}'] for what, how, seconds in rows]


def table(header, rows):
    lines = ['| ' + ' | '.join(header) + ' |', '|' + '---|' * len(header)]
    return '\n'.join(lines + ['| ' + ' | '.join(map(str, row)) + ' |' for row in rows])


def main(judge, folder):
    files = known.make(folder)
    tools = [tool for tool in TOOLS if shutil.which(tool.ask[0])]
    names = ['mp4judge'] + [tool.name for tool in tools]
    right, false_clear = collections.Counter(), collections.Counter()
    rows = []
    for name, truth, why in files:
        path = os.path.join(folder, name)
        answers = [our_answer(judge, path)] + [peer_answer(tool, path) for tool in tools]
        for who, (answer, _) in zip(names, answers):
            right[who] += is_right(truth, answer)
            false_clear[who] += answer == 'clear' and truth != 'clear'
        rows.append([f'`{name}`', why, truth] + [mark(truth, *answer) for answer in answers])
    sample = copies(folder, ['clear.m4a', 'cenc.mp4', 'itunes.m4p', 'left-over.mp4'], 1000)
    times = {'mp4judge': seconds_for([judge], True, sample)}
    for tool in tools:
        times[tool.name] = seconds_for(tool.ask, tool.many, sample)
    speed = speed_rows(judge, folder)
    total = len(files)
    summary = [[who, f'{right[who]} of {total}', false_clear[who],
                f'{times[who]:.2f}' if times[who] < 10 else f'{times[who]:.0f}'] for who in names]
    asked = [['mp4judge', f'`mp4judge FILE...`', 'its verdict', version([judge, '--version'])]]
    asked += [[tool.name, '`' + ' '.join(tool.ask).replace('{}', 'FILE') + '`',
               '`' + tool.pattern.replace('|', '\\|') + '`', version(tool.version)]
              for tool in tools]
    print(f"""# Compared

What mp4judge and other tools say about files whose answer is known, because `bench/compare/known.py`
makes them. Written by `bench/compare/run.sh`; run it again to check.

The others describe files and were not made to judge them. Each is asked the best way that its
documentation offers, and whatever it prints of protection counts for it; a description without a
word of it is read as "clear", an exit status other than 0 without one as "refused".

{table(['', 'right', 'false "clear"', 'seconds for 1,000 files'], summary)}

## How long it takes

The best of several runs from the start of the process to its end, on {os.cpu_count()} processors, with everything in
the system's cache; other work went on beside it (load {os.getloadavg()[0]:.1f}).

{table(['what', 'asked', 'seconds'], speed)}

## File by file

Answer and exit status. ✗ is a wrong answer, ✗✗ one that calls "clear" what is not known to be.

{table(['file', 'what it is', 'right'] + names, rows)}

## How they were asked

{table(['', 'asked', 'read as protected', 'version'], asked)}

ffprobe and AtomicParsley take one file a process; the others took all 1,000 at once.""")


if __name__ == '__main__':
    main(sys.argv[1], sys.argv[2])
