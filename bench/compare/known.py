"""Files whose answer is known, because of how they are made: known.py FOLDER

Each is a name, the right answer, why, and the bytes. Boxes are built here from their layouts, so
that the comparison does not depend on the code that it compares.
"""
import os
import shutil
import struct
import subprocess
import sys
import zlib

u8, u16, u32 = (lambda v: struct.pack('>B', v)), (lambda v: struct.pack('>H', v)), (lambda v: struct.pack('>I', v))


def box(kind, *parts):
    body = b''.join(parts)
    return u32(8 + len(body)) + kind.encode('latin-1') + body


def full(kind, version, flags, *parts):
    return box(kind, u32(version << 24 | flags), *parts)


KEY = bytes(range(16))
WIDEVINE = bytes.fromhex('edef8ba979d64acea3c827dcd51d21ed')


def sinf(scheme=None, original='mp4a', tenc=b'', version=0x10000):
    parts = [box('frma', original.encode())]
    if scheme:
        parts.append(full('schm', 0, 0, scheme.encode(), u32(version)))
    return box('sinf', *parts, box('schi', tenc))


def tenc(protected=1, iv=8):
    return full('tenc', 0, 0, u16(0), u8(protected), u8(iv), KEY)


def audio(kind, *children, version=0):
    extra = bytes(16) if version == 1 else b''
    return box(kind, bytes(6), u16(1), u16(version), bytes(6), u16(2), u16(16), bytes(4),
               u32(44100 << 16), extra, *children)


def video(kind, *children):
    return box(kind, bytes(6), u16(1), bytes(16), u16(640), u16(360), u32(0x480000),
               u32(0x480000), bytes(4), u16(1), bytes(32), u16(24), u16(0xFFFF), *children)


def other(kind, *children):
    return box(kind, bytes(6), u16(1), *children)


def esds():
    config = bytes.fromhex('1210')
    dsi = b'\x05' + u8(len(config)) + config
    dcd = b'\x04' + u8(13 + len(dsi)) + b'\x40\x15' + bytes(11) + dsi
    es = b'\x03' + u8(3 + len(dcd) + 3) + u16(1) + u8(0) + dcd + b'\x06\x01\x02'
    return full('esds', 0, 0, es)


def trak(number, handler, entries, sizes=None):
    kind = {'soun': full('smhd', 0, 0, bytes(4)), 'vide': full('vmhd', 0, 1, bytes(8))}
    tables = (full('stts', 0, 0, u32(1), u32(4), u32(1024)) +
              full('stsc', 0, 0, u32(1), u32(1), u32(4), u32(1)) +
              (full('stsz', 0, 0, u32(100), u32(4)) if sizes is None else sizes) +
              full('stco', 0, 0, u32(1), u32(64)))
    stbl = box('stbl', full('stsd', 0, 0, u32(len(entries)), *entries), tables)
    dinf = box('dinf', full('dref', 0, 0, u32(1), full('url ', 0, 1)))
    minf = box('minf', kind.get(handler, full('nmhd', 0, 0)), dinf, stbl)
    mdhd = full('mdhd', 0, 0, bytes(8), u32(44100), u32(4096), u16(0x55C4), u16(0))
    hdlr = full('hdlr', 0, 0, u32(0), handler.encode(), bytes(12), b'\0')
    matrix = struct.pack('>9I', 0x10000, 0, 0, 0, 0x10000, 0, 0, 0, 0x40000000)
    tkhd = full('tkhd', 0, 7, bytes(8), u32(number), u32(0), u32(93), bytes(16), matrix, bytes(8))
    return box('trak', tkhd, box('mdia', mdhd, hdlr, minf))


def moov(*children):
    matrix = struct.pack('>9I', 0x10000, 0, 0, 0, 0x10000, 0, 0, 0, 0x40000000)
    mvhd = full('mvhd', 0, 0, bytes(8), u32(1000), u32(93), u32(0x10000), u16(0x100), bytes(10),
                matrix, bytes(24), u32(9))
    return box('moov', mvhd, *children)


FTYP = box('ftyp', b'isom', u32(0x200), b'isommp41')
MDAT = box('mdat', bytes(400))


def movie(*tracks):
    return FTYP + moov(*tracks) + MDAT


CLEAR_SOUND = trak(1, 'soun', [audio('mp4a', esds())])
PSSH = full('pssh', 0, 0, WIDEVINE, u32(4), b'data')


def compressed(track):
    plain = moov(track)
    return box('moov', box('cmov', box('dcom', b'zlib'),
                           box('cmvd', u32(len(plain)), zlib.compress(plain))))


def heif(index):
    infe = full('infe', 2, 0, u16(1), u16(index), b'hvc1', b'\0')
    meta = full('meta', 0, 0, full('hdlr', 0, 0, u32(0), b'pict', bytes(13)),
                full('pitm', 0, 0, u16(1)), full('iinf', 0, 0, u16(1), infe),
                full('ipro', 0, 0, u16(1), sinf('cenc', 'hvc1', tenc())))
    return box('ftyp', b'heic', u32(0), b'mif1heic') + meta


def fragment(*extra):
    return box('moof', full('mfhd', 0, 0, u32(1)),
               box('traf', full('tfhd', 0, 0x20000, u32(1)), full('trun', 0, 0, u32(0)), *extra))


def made_here():
    for scheme in ('cenc', 'cens', 'cbc1', 'cbcs'):
        yield (f'{scheme}.mp4', 'protected', f'one sound track, "{scheme}"',
               movie(trak(1, 'soun', [audio('enca', esds(), sinf(scheme, 'mp4a', tenc()))])))
    yield ('itunes.m4p', 'protected', 'a song as a music shop sold it',
           movie(trak(1, 'soun', [audio('drms', esds(), sinf('itun', 'mp4a'))])))
    yield ('itunes-bare.m4p', 'protected', 'the same without a scheme box',
           movie(trak(1, 'soun', [audio('drms', esds())])))
    yield ('oma.3gp', 'protected', 'OMA DRM 2',
           movie(trak(1, 'soun', [audio('enca', esds(), sinf('odkm', 'mp4a', version=0x200))])))
    yield ('ismacryp.mp4', 'protected', 'ISMACryp',
           movie(trak(1, 'soun', [audio('enca', esds(), sinf('iAEC', 'mp4a'))])))
    yield ('piff.ismv', 'protected', 'PIFF 1.1',
           movie(trak(1, 'vide', [video('encv', sinf('piff', 'avc1', version=0x10001))])))
    yield ('second-entry.mp4', 'protected', 'a clear start, then an encrypted entry',
           movie(trak(1, 'soun', [audio('mp4a', esds()),
                                  audio('enca', esds(), sinf('cenc', 'mp4a', tenc()))])))
    yield ('second-track.mp4', 'protected', 'sound is clear, the picture is not',
           movie(CLEAR_SOUND, trak(2, 'vide', [video('encv', sinf('cbcs', 'avc1', tenc()))])))
    yield ('subtitles.mp4', 'protected', 'only the subtitles are encrypted',
           movie(CLEAR_SOUND, trak(2, 'text', [other('enct', sinf('cenc', 'wvtt', tenc()))])))
    yield ('clear-format.mp4', 'protected', 'a clear format with a protection box',
           movie(trak(1, 'soun', [audio('mp4a', esds(), sinf('cenc', 'mp4a', tenc()))])))
    yield ('bad-table.mp4', 'protected', 'encrypted, and its size table is broken',
           movie(trak(1, 'soun', [audio('enca', esds(), sinf('cenc', 'mp4a', tenc()))],
                      full('stsz', 0, 0, u32(0), u32(0xFFFFFFFF)))))
    yield ('compressed.mov', 'protected', 'inside a compressed movie box',
           compressed(trak(1, 'soun', [audio('drms', esds(), sinf('itun', 'mp4a'))])) + MDAT)
    yield ('quicktime.mov', 'protected', 'a QuickTime sound description',
           movie(trak(1, 'soun', [audio('enca', esds(), sinf('cenc', 'mp4a', tenc()), version=1)])))
    yield ('image.heic', 'protected', 'an encrypted image item', heif(1))
    yield ('segment.m4s', 'protected', 'a media segment with encrypted samples',
           box('styp', b'msdh', u32(0)) + fragment(full('senc', 0, 0, u32(1), bytes(8))) + MDAT)
    yield ('clear.m4a', 'clear', 'an ordinary sound track', movie(CLEAR_SOUND))
    yield ('left-over.mp4', 'clear', 'a key box is left, nothing is encrypted',
           FTYP + moov(CLEAR_SOUND, PSSH) + MDAT)
    yield ('stereo.mp4', 'clear', 'a restricted entry: two views in one picture',
           movie(trak(1, 'vide', [video('resv', box('rinf', box('frma', b'avc1'),
                                                   full('schm', 0, 0, b'stvi', u32(0))))])))
    yield ('image-clear.heic', 'clear', 'an image; the protection box is unused', heif(0))
    yield ('cut.mp4', 'undetermined', 'the movie box is cut before the second track',
           (FTYP + moov(CLEAR_SOUND, trak(2, 'vide', [video('encv')])))[:-300])
    yield ('count.mp4', 'undetermined', 'announces two entries, holds one',
           movie(CLEAR_SOUND).replace(b'stsd' + bytes(4) + u32(1), b'stsd' + bytes(4) + u32(2)))


def run(*words):
    subprocess.run(words, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def made_by_ffmpeg(folder):
    """A clear movie and encrypted ones, as the distribution's ffmpeg writes them."""
    if not shutil.which('ffmpeg'):
        return
    source = ['ffmpeg', '-y', '-f', 'lavfi', '-i', 'testsrc=d=1:s=64x64:r=10', '-f', 'lavfi', '-i',
              'sine=d=1', '-c:v', 'mpeg4', '-c:a', 'aac', '-shortest']
    keys = ['-encryption_scheme', 'cenc-aes-ctr', '-encryption_key', '00' * 16,
            '-encryption_kid', '11' * 16]
    pieces = ['-movflags', 'frag_keyframe+empty_moov']
    for name, answer, why, more in (('ffmpeg-clear.mp4', 'clear', 'ffmpeg, two tracks', []),
                                    ('ffmpeg-cenc.mp4', 'protected', 'ffmpeg, "cenc"', keys),
                                    ('ffmpeg-cenc-fragments.mp4', 'protected',
                                     'ffmpeg, "cenc", in fragments', keys + pieces)):
        run(*source, *more, os.path.join(folder, name))
        yield name, answer, why


def make(folder):
    """Writes all files and returns (name, answer, why) of each."""
    os.makedirs(folder, exist_ok=True)
    rows = []
    for name, answer, why, content in made_here():
        with open(os.path.join(folder, name), 'wb') as file:
            file.write(content)
        rows.append((name, answer, why))
    rows.extend(made_by_ffmpeg(folder))
    rows.append(('missing.mp4', 'undetermined', 'does not exist'))
    return rows


if __name__ == '__main__':
    for row in make(sys.argv[1]):
        print(*row, sep='\t')
