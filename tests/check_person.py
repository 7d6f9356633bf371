"""The command in the hands of a person and a busy machine: check_person.py BUILD CASE"""
import json
import os
import pty
import re
import select
import shutil
import signal
import sqlite3
import subprocess
import sys
import tempfile
import threading
import time

BUILD = sys.argv[1]
TOOL = os.path.join(BUILD, 'bin', 'mp4judge')
SANITIZED = os.path.basename(BUILD) == 'sanitized'
CLEAR, PROTECTED = (os.path.join(BUILD, 'samples', name) for name in ('clear.m4a', 'protected.m4a'))
LOOKING = [['tree'], ['tree', '--json'], ['info'], ['info', '--json'], ['samples'],
           ['samples', '--json'], ['samples', '--csv']]


def run(*words, status=None, **more):
    done = subprocess.run([TOOL, *words], stdin=subprocess.DEVNULL, capture_output=True, timeout=60, **more)
    assert status is None or done.returncode == status, (words, done)
    return done


def links(folder, count):
    """So many files of one byte sequence; a file has at most some 60,000 names."""
    os.makedirs(folder)
    for i in range(count):
        if i % 10000 == 0:
            first = f'{folder}/{i:06}.m4a'
            shutil.copy(CLEAR, first)
        else:
            os.link(first, f'{folder}/{i:06}.m4a')


def case_a_hundred_thousand_files():
    count = 5000 if SANITIZED else 100000
    links('many', count)
    done = run('-r', '--summary', 'many', status=0)
    assert done.stderr == f'{count:,} files: {count:,} clear, 0 protected, 0 undetermined\n'.encode(), done.stderr
    names = [line.split(b':')[0] for line in done.stdout.splitlines()]
    assert len(names) == count and names == sorted(names)


def case_a_folder_that_changes():
    links('busy', 4000)
    ended = threading.Event()

    def change():
        turn = 0
        while not ended.is_set():
            name = f'busy/{turn * 7 % 4000:06}.m4a'
            if os.path.exists(name):
                os.unlink(name)
            else:
                shutil.copy(PROTECTED, name)
            turn += 1

    changer = threading.Thread(target=change)
    changer.start()
    try:
        for words in (['-j', '4'], ['--cache', 'cache.db'], ['--json']):
            done = run('-r', *words, 'busy')
            assert done.returncode in (0, 1, 2), done
            for line in done.stdout.splitlines():
                if words == ['--json']:
                    assert json.loads(line)['verdict'] in ('clear', 'protected', 'undetermined'), line
                else:
                    assert re.fullmatch(rb'busy/\d{6}\.m4a: (clear|protected \(drms: audio\)|undetermined \(.+\))',
                                        line), line
            assert b'Sanitizer' not in done.stderr, done.stderr
    finally:
        ended.set()
        changer.join()
    # Removed between its listing and its turn, a file has its own line like any other.
    os.symlink('nowhere', 'busy/gone.m4a')
    assert b'busy/gone.m4a: undetermined (it cannot be opened: No such file' in run('-r', 'busy', status=2).stdout


def started(*words, **more):
    return subprocess.Popen([TOOL, *words], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                            stderr=subprocess.PIPE, **more)


def fed(*words, names):
    """A run that has judged these names and waits for more."""
    os.mkfifo('names')
    running = started(*words, '--files-from', 'names')
    feed = open('names', 'w')
    feed.write(''.join(name + '\n' for name in names))
    feed.flush()
    return running, feed


def case_interrupted_in_the_middle():
    links('many', 500)
    running, feed = fed('-j', '4', names=['many/%06d.m4a' % i for i in range(500)])
    time.sleep(1)
    running.send_signal(signal.SIGINT)
    out, err = running.communicate(timeout=20)
    feed.close()
    assert running.returncode == 130, (running.returncode, err)
    assert out.count(b': clear\n') == 500 and out.endswith(b'\n')
    assert err == (b'mp4judge: interrupted; this is what was done:\n'
                   b'500 files: 500 clear, 0 protected, 0 undetermined\n'), err


def rows(cache):
    with sqlite3.connect(cache) as base:
        try:
            return base.execute('SELECT count(*) FROM verdicts').fetchone()[0]
        except sqlite3.OperationalError:
            return 0


def case_killed_and_run_again():
    os.mkdir('many')
    names = ['many/%03d.m4a' % i for i in range(300)]
    for name in names:
        shutil.copy(CLEAR, name)
    running, feed = fed('--cache', 'cache.db', names=names)
    deadline = time.time() + 20
    while time.time() < deadline and (not os.path.exists('cache.db') or rows('cache.db') < 300):
        time.sleep(0.1)
    running.kill()
    # What was judged has been told, and is remembered, although more names were to come.
    assert running.communicate()[0].count(b': clear\n') == 300
    feed.close()
    assert rows('cache.db') == 300
    done = run('--cache', 'cache.db', *names, status=0)
    assert done.stdout == b''.join(name.encode() + b': clear\n' for name in names) and not done.stderr
    assert rows('cache.db') == 300


def case_output_that_does_not_arrive():
    commands = [[], ['--json'], ['--explain'], ['-0'], *LOOKING]
    calls = [words + [CLEAR] for words in commands] + [['diff', CLEAR, PROTECTED]]
    calls += [[name, '--help'] for name in ('tree', 'info', 'samples', 'chart', 'diff')]
    for words in calls:
        with open('/dev/full', 'wb') as full:
            done = subprocess.run([TOOL, *words], stdout=full, stderr=subprocess.PIPE, timeout=60)
        assert done.returncode == 2 and b'output' in done.stderr, (words, done)
        reader, writer = os.pipe()
        os.close(reader)
        done = subprocess.run([TOOL, *words], stdout=writer, stderr=subprocess.PIPE, timeout=60)
        os.close(writer)
        assert done.returncode == 2 and b'output' in done.stderr, (words, done)
    for end in ('svg', 'html'):
        os.symlink('/dev/full', 'full.' + end)
        done = run('chart', CLEAR, '-o', 'full.' + end, status=2)
        assert b'cannot be written: No space left on device' in done.stderr, done


def case_a_reader_that_goes_away():
    running, feed = fed(names=[CLEAR])
    assert running.stdout.readline() == CLEAR.encode() + b': clear\n'
    running.stdout.close()
    feed.write(CLEAR + '\n')
    feed.flush()
    # No name follows, but nobody would read of it.
    assert running.wait(timeout=20) == 2
    feed.close()
    assert b'the output cannot be written' in running.stderr.read()


def case_pipes_and_devices():
    os.mkfifo('pipe')
    for words in [[], ['--json'], *LOOKING]:
        for name in ('pipe', '/dev/null', '/dev/zero'):
            done = run(*words, name, status=2)
            assert done.stdout or done.stderr, words
    for words in (['diff', 'pipe', CLEAR], ['diff', CLEAR, 'pipe'], ['chart', 'pipe', '-o', 'a.svg'],
                  ['samples', '--init', 'pipe', CLEAR], ['tree', '.'], ['info', '.'], ['chart', '.', '-o', 'a.svg']):
        run(*words, status=2)
    assert not os.path.exists('a.svg')


def case_caches():
    shutil.copy(CLEAR, 'a.m4a')
    run('--cache', 'cache.db', 'a.m4a', status=0)
    sound = open('cache.db', 'rb').read()
    # Of another version.
    with sqlite3.connect('cache.db') as base:
        base.execute('PRAGMA user_version=1')
    base.close()
    done = run('--cache', 'cache.db', 'a.m4a', status=0)
    assert b'made by another version, and is begun anew' in done.stderr, done
    assert not run('--cache', 'cache.db', 'a.m4a', status=0).stderr
    # Cut in the middle, and with a page of noise.
    for broken in (sound[:len(sound) // 2], sound[:100] + b'\xAA' * 4000 + sound[4100:]):
        for name in os.listdir('.'):
            if name.startswith('cache.db'):
                os.unlink(name)
        with open('cache.db', 'wb') as file:
            file.write(broken)
        done = run('--cache', 'cache.db', 'a.m4a', status=0)
        assert done.stdout == b'a.m4a: clear\n', done
        assert not run('--cache', 'cache.db', 'a.m4a', status=0).stderr
    # Another application's base, and other formats, stay as they are.
    with sqlite3.connect('other.db') as base:
        base.execute('CREATE TABLE notes (text)')
    base.close()
    for name, content in (('text', b'my notes\n'), ('zip', b'PK\3\4' + bytes(200)),
                          ('other.db', open('other.db', 'rb').read())):
        with open(name, 'wb') as file:
            file.write(content)
        done = run('--cache', name, 'a.m4a', status=2)
        assert b'cannot be used as a cache: it is not a cache of mp4judge' in done.stderr, done
        assert open(name, 'rb').read() == content
    run('--cache', '.', 'a.m4a', status=2)
    run('--cache', '/dev/null', 'a.m4a')


def case_a_cache_in_use():
    shutil.copy(CLEAR, 'a.m4a')
    run('--cache', 'cache.db', 'a.m4a', status=0)
    holder = sqlite3.connect('cache.db', isolation_level=None)
    holder.execute('BEGIN IMMEDIATE')
    done = run('--cache', 'cache.db', 'a.m4a', status=2)
    assert b'cannot be used as a cache: another process holds it' in done.stderr, done
    # It is still the holder's.
    holder.execute('DELETE FROM verdicts')
    holder.execute('COMMIT')
    assert holder.execute('SELECT count(*) FROM verdicts').fetchone()[0] == 0
    holder.close()
    assert not run('--cache', 'cache.db', 'a.m4a', status=0).stderr
    assert rows('cache.db') == 1


def case_a_cache_that_is_read_only():
    if os.getuid() != 0:
        become = None
    else:
        # The superuser may write everything.
        def become():
            os.setgroups([])
            os.setgid(65534)
            os.setuid(65534)
        try:
            subprocess.run([TOOL, '--version'], preexec_fn=become, check=True, capture_output=True)
        except (OSError, subprocess.CalledProcessError):
            return
    shutil.copy(CLEAR, 'a.m4a')
    os.chmod('.', 0o755)
    run('--cache', 'cache.db', 'a.m4a', status=0)
    for name in os.listdir('.'):
        os.chmod(name, 0o444)
    os.chmod('.', 0o555)
    before = open('cache.db', 'rb').read()
    try:
        done = run('--cache', 'cache.db', 'a.m4a', status=2, preexec_fn=become)
        assert b'cannot be used as a cache: ' in done.stderr and b'anew' not in done.stderr, done
        assert open('cache.db', 'rb').read() == before
        done = run('--cache', 'new.db', 'a.m4a', status=2, preexec_fn=become)
        assert b'cannot be used as a cache: ' in done.stderr, done
    finally:
        os.chmod('.', 0o755)


NAMES = [b'two\nlines.m4a', b'\xff\xfe.m4a', b'tab\there.m4a', b'esc\x1b[31m.m4a', b'quote"\\.m4a',
         b'cut\xe2\x82.m4a', b'<b>&amp;.m4a', '\u202e4.m4a'.encode()]


def case_any_name():
    for name in NAMES:
        shutil.copy(PROTECTED, name)
    for words in ([], ['-l'], ['--host-answer'], ['--explain']):
        done = run(*words, *NAMES, status=1)
        assert b'\x1b' not in done.stdout and b'\t' not in done.stdout, done
        shown = [line for line in done.stdout.splitlines() if not line.startswith(b'  ')]
        assert len(shown) == len(NAMES) == len(set(shown)), shown
    assert run('-0', '-l', *NAMES, status=1).stdout == b''.join(name + b'\0' for name in NAMES)
    lines = run('--json', *NAMES, status=1).stdout.decode().splitlines()
    assert [json.loads(line)['verdict'] for line in lines] == ['protected'] * len(NAMES)
    with open('list', 'wb') as file:
        file.write(b''.join(name + b'\0' for name in NAMES))
    assert run('-0', '-l', '--files0-from', 'list', status=1).stdout == b''.join(name + b'\0' for name in NAMES)
    for name in NAMES:
        for words in LOOKING:
            done = run(*words, name, status=0)
            assert b'\x1b' not in done.stdout, (words, done)
            if '--json' in words and words[0] != 'samples':
                json.loads(done.stdout)
        assert run('diff', name, CLEAR, status=1).stdout.count(b'\n') >= 3
        for end in ('svg', 'html'):
            run('chart', name, '-o', 'a.' + end, status=0)
            with open('a.' + end, encoding='utf-8') as file:
                text = file.read()
            assert '<b>&amp;.m4a' not in text.split('<script>')[0]
        missing = name + b'.missing'
        for words in (['tree'], ['info'], ['samples'], ['diff', CLEAR], ['chart', '-o', 'a.svg']):
            done = run(*words, missing, status=2)
            assert done.stderr.count(b'\n') == 1 and b'\x1b' not in done.stderr, done


def on_a_terminal(words, environment=(), during=lambda: None, streams=(1, 2)):
    """What a run prints whose streams of these numbers are a terminal."""
    master, slave = pty.openpty()
    handles = {number: slave if number in streams else subprocess.DEVNULL for number in (1, 2)}
    running = subprocess.Popen([TOOL, *words], stdin=subprocess.DEVNULL, stdout=handles[1], stderr=handles[2],
                               env={**os.environ, 'TERM': 'xterm', 'NO_COLOR': '', **dict(environment)})
    os.close(slave)
    during()
    seen = b''
    while select.select([master], [], [], 20)[0]:
        try:
            piece = os.read(master, 65536)
        except OSError:
            break
        if not piece:
            break
        seen += piece
    os.close(master)
    running.wait(timeout=20)
    return seen


def case_colours():
    for words in ([], ['tree'], ['info']):
        assert b'\x1b[' in on_a_terminal([*words, PROTECTED]), words
        for no in ({'NO_COLOR': '1'}, {'TERM': 'dumb'}):
            assert b'\x1b' not in on_a_terminal([*words, PROTECTED], no), (words, no)
        assert b'\x1b' not in run(*words, PROTECTED).stdout
    assert b'\x1b' not in on_a_terminal(['--json', PROTECTED])
    assert b'\x1b' not in on_a_terminal(['-l', PROTECTED])


def case_progress():
    def slowly():
        with open('names', 'w') as feed:
            for _ in range(14):
                feed.write(CLEAR + '\n')
                feed.flush()
                time.sleep(0.1)

    os.mkfifo('names')
    seen = on_a_terminal(['--files-from', 'names', '-q'], during=slowly)
    assert re.search(rb'\r\x1b\[K\d+ files, \d+ a second', seen), seen
    # It is wiped at the end.
    assert seen.endswith(b'\r\x1b[K'), seen
    # Nothing of it when the work is short, or standard error is no terminal.
    assert on_a_terminal(['-q', CLEAR]) == b''
    assert b'a second' not in on_a_terminal(['--files-from', 'names', '-q'], during=slowly, streams=(1,))


def main():
    work = tempfile.mkdtemp()
    home = os.getcwd()
    os.chdir(work)
    try:
        globals()['case_' + sys.argv[2]]()
    finally:
        os.chdir(home)
        shutil.rmtree(work)


main()
