"""Writes the film of docs/chart.svg: film.py FILE

A film of 40 s as a shop would stream it: H.264 and AAC in one file, both encrypted with "cenc", a
title, and keys for one system. Its media is a hole.
"""
import struct
import sys

u8, u16, u32 = (lambda v: struct.pack('>B', v)), (lambda v: struct.pack('>H', v)), (lambda v: struct.pack('>I', v))
MATRIX = struct.pack('>9I', 0x10000, 0, 0, 0, 0x10000, 0, 0, 0, 0x40000000)
KEY = bytes(range(1, 17))
WIDEVINE = bytes.fromhex('edef8ba979d64acea3c827dcd51d21ed')


def box(kind, *parts):
    body = b''.join(parts)
    return u32(8 + len(body)) + kind + body


def full(kind, version, flags, *parts):
    return box(kind, u32(version << 24 | flags), *parts)


def protection(original):
    tenc = full(b'tenc', 0, 0, u16(0), u8(1), u8(8), KEY)
    return box(b'sinf', box(b'frma', original), full(b'schm', 0, 0, b'cenc', u32(0x10000)),
               box(b'schi', tenc))


def picture():
    sps, pps = bytes.fromhex('67640028acd940780227e5c05a80'), bytes.fromhex('68ebe3cb22c0')
    avcc = box(b'avcC', bytes.fromhex('01640028ffe1'), u16(len(sps)), sps, u8(1), u16(len(pps)), pps)
    return box(b'encv', bytes(6), u16(1), bytes(16), u16(1920), u16(1080), u32(0x480000),
               u32(0x480000), bytes(4), u16(1), bytes(32), u16(24), u16(0xFFFF), avcc,
               protection(b'avc1'))


def sound():
    config = b'\x05\x02\x11\x90'
    decoder = b'\x04' + u8(13 + len(config)) + b'\x40\x15' + bytes(3) + u32(128000) * 2 + config
    esds = full(b'esds', 0, 0, b'\x03' + u8(6 + len(decoder)) + u16(2) + u8(0) + decoder + b'\x06\x01\x02')
    return box(b'enca', bytes(6), u16(1), bytes(8), u16(2), u16(16), bytes(4), u32(48000 << 16),
               esds, protection(b'mp4a'))


def picture_sizes():
    """Scenes of two seconds, each as busy as its turn; a key picture begins each."""
    busy = (3, 4, 4, 9, 6, 3, 2, 2, 7, 12, 10, 5, 4, 8, 14, 11, 6, 4, 2, 1)
    return [busy[i // 50] * (9000 if i % 50 == 0 else 1100 + 37 * (i * 7 % 11)) for i in range(1000)]


def sound_sizes():
    return [340 + 13 * (i * 5 % 9) for i in range(1875)]


def chunks(sizes, seconds):
    """Samples of each second."""
    return [sizes[len(sizes) * i // seconds:len(sizes) * (i + 1) // seconds] for i in range(seconds)]


def runs(counts):
    rows = [(i + 1, n) for i, n in enumerate(counts) if i == 0 or n != counts[i - 1]]
    return u32(len(rows)) + b''.join(u32(first) + u32(n) + u32(1) for first, n in rows)


def track(number, handler, header, entry, scale, duration, sizes, offsets, counts, keys, shown):
    tables = [full(b'stts', 0, 0, u32(1), u32(len(sizes)), u32(duration))]
    if keys:
        tables.append(full(b'stss', 0, 0, u32(len(keys)), *map(u32, keys)))
    tables += [full(b'stsc', 0, 0, runs(counts)),
               full(b'stsz', 0, 0, u32(0), u32(len(sizes)), *map(u32, sizes)),
               full(b'stco', 0, 0, u32(len(offsets)), *map(u32, offsets))]
    stbl = box(b'stbl', full(b'stsd', 0, 0, u32(1), entry), *tables)
    dinf = box(b'dinf', full(b'dref', 0, 0, u32(1), full(b'url ', 0, 1)))
    mdia = box(b'mdia', full(b'mdhd', 0, 0, bytes(8), u32(scale), u32(duration * len(sizes)), u16(0x15C7), u16(0)),
               full(b'hdlr', 0, 0, u32(0), handler, bytes(12), b'\0'), box(b'minf', header, dinf, stbl))
    width, height = shown
    return box(b'trak', full(b'tkhd', 0, 3, bytes(8), u32(number), u32(0), u32(40000), bytes(16), MATRIX,
                             u32(width << 16), u32(height << 16)), mdia)


def film():
    """What stands in front of the media, and the bytes of the media."""
    video, audio = chunks(picture_sizes(), 40), chunks(sound_sizes(), 40)

    def head(media):
        offsets = [[], []]
        for i in range(40):
            for which, part in ((0, video[i]), (1, audio[i])):
                offsets[which].append(media)
                media += sum(part)
        title = box(b'\xa9nam', box(b'data', u32(1), u32(0), b'The Long Way Home'))
        meta = full(b'meta', 0, 0, full(b'hdlr', 0, 0, u32(0), b'mdir', b'appl', bytes(9)), box(b'ilst', title))
        moov = box(b'moov', full(b'mvhd', 0, 0, bytes(8), u32(1000), u32(40000), u32(0x10000), u16(0x100),
                                 bytes(10), MATRIX, bytes(24), u32(3)),
                   track(1, b'vide', full(b'vmhd', 0, 1, bytes(8)), picture(), 25, 1, sum(video, []),
                         offsets[0], [len(part) for part in video], range(1, 1000, 50), (1920, 1080)),
                   track(2, b'soun', full(b'smhd', 0, 0, bytes(4)), sound(), 48000, 1024, sum(audio, []),
                         offsets[1], [len(part) for part in audio], (), (0, 0)),
                   full(b'pssh', 0, 0, WIDEVINE, u32(24), bytes(24)), box(b'udta', meta))
        return box(b'ftyp', b'mp42', u32(0), b'mp42isom') + moov + box(b'free', bytes(2000))

    size = sum(map(sum, video)) + sum(map(sum, audio))
    return head(len(head(0)) + 8) + u32(size + 8) + b'mdat', size


if __name__ == '__main__':
    begin, size = film()
    with open(sys.argv[1], 'wb') as file:
        file.write(begin)
        file.truncate(len(begin) + size)
