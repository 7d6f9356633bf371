"""The figures of a run: read, brought down to medians and ratios, and shown."""
import collections
import glob
import json
import os
import statistics

FILES = {"clip": "clip", "3h": "3 h", "3h-variable": "3 h, variable", "4m": "4 M samples",
         "200-tracks": "200 tracks", "fragments-20000": "20,000 fragments"}
OPENING = {"start": "`fopen`, read 4 KiB", "headers": "walk over the headers alone",
           "limit": "limit: `pread` the movie boxes, sum the words",
           "fresh": "the same into fresh memory", "judge": "**`JudgeMP4HaveDRM`**",
           "init": "**`Mp4Demux::Init`**", "taglib": "TagLib", "gstreamer": "GStreamer `qtdemux`",
           "avformat": "libavformat", "mediainfo": "MediaInfo"}
PEERS = ["taglib", "gstreamer", "avformat", "mediainfo"]
LOAD_TABLES = PEERS[1:]
NOT_COMPARED = {("gstreamer", "fragments-20000")}  # reads the first fragment alone
SHAPES = ["3h", "3h-variable", "4m"]
WALKS = {"WalkTrack": "walk one track, ns a sample", "Schedule": "both tracks in file order, ns a sample",
         "RandomSeek video": "seek to a random time, video, ns",
         "RandomSeek audio": "seek to a random time, audio, ns"}
UNITS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


def load(results):
    """figures[table, row, column] = [value of each round]"""
    figures = collections.defaultdict(list)
    for line in open(os.path.join(results, "figures"), encoding="utf-8"):
        table, _, row, column, value = line.rstrip("\n").split("\t")
        figures[table, row, column].append(float(value))
    for path in sorted(glob.glob(os.path.join(results, "*.json"))):
        with open(path, encoding="utf-8") as file:
            runs = json.load(file)["benchmarks"]
        for run in runs:
            if "aggregate_name" in run or "error_message" in run:
                continue
            name, *args = run["name"].split("/")
            time = run["real_time"] * UNITS[run["time_unit"]]
            if name in ("WalkTrack", "Schedule"):
                figures["walk", name, SHAPES[int(args[0])]].append(1e9 / run["items_per_second"])
            elif name == "RandomSeek":
                row = "RandomSeek " + ("video" if args[1] == "1" else "audio")
                figures["walk", row, SHAPES[int(args[0])]].append(time)
    return figures


class Report:
    def __init__(self, figures, setup):
        self.figures, self.setup = figures, setup

    def median(self, *key):
        return statistics.median(self.figures[key]) if self.figures.get(key) else None

    def ratio(self, over, under):
        a, b = self.figures.get(over, []), self.figures.get(under, [])
        pairs = [x / y for x, y in zip(a, b) if y > 0]
        return statistics.median(pairs) if pairs else None

    def fastest(self, name, peers, own):
        """The fastest of the peers on a file, and how many times as long as our own way it takes."""
        known = [p for p in peers if (p, name) not in NOT_COMPARED]
        known = [p for p in known if self.median("opening", p, name) is not None]
        if not known:
            return None, None
        peer = min(known, key=lambda p: self.median("opening", p, name))
        return peer, self.ratio(("opening", peer, name), ("opening", own, name))


def show(value, factor=1.0):
    """Two or three digits that mean something."""
    if value is None:
        return "–"
    value *= factor
    if value == 0:
        return "0"
    digits = 4 if abs(value) < 0.01 else 3 if abs(value) < 0.1 else 2 if abs(value) < 10 else 0
    return f"{value:,.{digits}f}"


def markdown(head, rows):
    lines = ["| " + " | ".join(head) + " |", "|---" * len(head) + "|"]
    return "\n".join(lines + ["| " + " | ".join(row) + " |" for row in rows])
