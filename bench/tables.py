"""The tables of the documents, each from the figures of one run."""
from figures import FILES, LOAD_TABLES, OPENING, PEERS, SHAPES, WALKS, markdown, show

LONG = ["3h", "3h-variable", "4m"]


def times(value):
    return "–" if value is None else show(value) + " ×"


def opening(r):
    rows = [[label] + [show(r.median("opening", row, f)) for f in FILES]
            for row, label in OPENING.items() if any(r.median("opening", row, f) for f in FILES)]
    return markdown(["ms"] + list(FILES.values()), rows)


def ratios(r):
    def against(own, peers):
        cells = []
        for f in FILES:
            peer, ratio = r.fastest(f, peers, own)
            cells.append("–" if peer is None else f"{times(ratio)} ({OPENING[peer].split(' ')[0]})")
        return cells
    limit = [times(r.ratio(("opening", "init", f), ("opening", "limit", f))) for f in FILES]
    fresh = [times(r.ratio(("opening", "init", f), ("opening", "fresh", f))) for f in FILES]
    return markdown([""] + list(FILES.values()), [
        ["`Init` over the limit"] + limit,
        ["`Init` over the limit into fresh memory"] + fresh,
        ["fastest peer that loads tables over `Init`"] + against("init", LOAD_TABLES),
        ["fastest peer of all over judging"] + against("judge", PEERS)])


def fragments(r):
    counts = [1000, 4000, 16000, 64000]
    def row(name, label):
        return [label] + [show(r.median("fragments", name, str(n)), 1e3 / n) for n in counts]
    return markdown(["µs a fragment"] + [f"{n:,}" for n in counts],
                    [row("judge", "judging"), row("init", "`Init`")])


def walking(r):
    return markdown([""] + [FILES[s] for s in SHAPES],
                    [[label] + [show(r.median("walk", row, s)) for s in SHAPES]
                     for row, label in WALKS.items()])


def allowance(r, f):
    """1.5 times the sample tables and what the sequences of audio tracks need."""
    tables, published = r.median("memory", "tables", f), r.median("memory", "published", f)
    return None if tables is None or published is None else 1.5 * tables + published


def memory(r):
    rows = [("movie", "movie and fragment boxes"), ("tables", "sample tables in them"),
            ("runs", "track runs in them"), ("published", "published sequences of audio tracks"),
            ("init", "**`Init`**, while open"), ("init peak", "`Init`, peak"),
            ("judge", "**judging**, before it closes"), ("judge peak", "judging, peak"),
            ("judge anonymous", "judging, without the program's own pages")]
    cells = [[label] + [show(r.median("memory", row, f), 1 / 1024) for f in FILES]
             for row, label in rows]
    share = []
    for f in FILES:
        grown, allowed = r.median("memory", "init", f), allowance(r, f)
        share.append(times(grown / allowed if f in LONG and allowed and grown else None))
    cells.append(["`Init` over 1.5 × tables + published"] + share)
    return markdown(["KiB"] + list(FILES.values()), cells)


def calls(r):
    return markdown(["one judgement"] + list(FILES.values()), [
        [label] + [show(r.median("calls", row, f), factor) for f in FILES]
        for row, label, factor in (("calls", "system calls", 1), ("bytes", "KiB read", 1 / 1024))])


def folder_rows(r):
    rows = [row for table, row, _ in r.figures if table == "folder"]
    return list(dict.fromkeys(rows))


def folder(r):
    own = ("folder", "mp4judge", "rate")
    return markdown(["", "files a second", "`mp4judge` against it"],
                    [[f"`{row}`" if "," not in row else row, show(r.median("folder", row, "rate")),
                      times(r.ratio(own, ("folder", row, "rate")))] for row in folder_rows(r)])


def aims(r):
    def worst(values):
        known = [v for v in values if v is not None]
        return max(known) if known else None
    def opened(own, f, factor=1.0):
        return show(r.median("opening", own, f), factor)
    own = ("folder", "mp4judge", "rate")
    probers = [r.ratio(own, ("folder", row, "rate")) for row in folder_rows(r)
               if row != "open_read" and "mp4judge" not in row]
    known = [p for p in probers if p is not None]
    walk = lambda row: show(worst(r.median("walk", row, s) for s in SHAPES))
    seek = lambda s: show(worst(r.median("walk", f"RandomSeek {k}", s) for k in ("video", "audio")))
    return markdown(["what", "aim", "measured"], [
        ["judging two tracks of any length, slowest", "25 µs", show(worst(
            r.median("opening", "judge", f) for f in ["clip"] + LONG), 1e3) + " µs"],
        ["judging, a fragment", "1.5 µs", opened("judge", "fragments-20000", 1 / 20) + " µs"],
        ["judging: system calls, KiB read", "60, 64", f"{show(worst(r.median('calls', 'calls', f) for f in LONG))}, "
         f"{show(worst(r.median('calls', 'bytes', f) for f in LONG), 1 / 1024)}"],
        ["`Init` of long movies over the limit, worst", "2 ×", times(worst(
            r.ratio(("opening", "init", f), ("opening", "limit", f)) for f in LONG))],
        ["`Init` of a clip", "20 µs", opened("init", "clip", 1e3) + " µs"],
        ["`Init`, a fragment", "3 µs", opened("init", "fragments-20000", 1 / 20) + " µs"],
        ["walking, worst shape", "25 ns a sample", walk("WalkTrack") + " ns"],
        ["both tracks in file order, worst shape", "60 ns a sample", walk("Schedule") + " ns"],
        ["seeking, 3 h and 3 h variable", "1,000 and 2,000 ns", f"{seek('3h')} and {seek('3h-variable')} ns"],
        ["memory of `Init` over 1.5 × tables + published, worst", "1 ×", times(worst(
            r.median("memory", "init", f) / allowance(r, f) for f in LONG if allowance(r, f)))],
        ["memory of judging, two tracks", "256 KiB", show(worst(
            r.median("memory", "judge peak", f) for f in ["clip"] + LONG), 1 / 1024) + " KiB"],
        ["memory of judging, 200 tracks", "", show(
            r.median("memory", "judge peak", "200-tracks"), 1 / 1024) + " KiB"],
        ["a folder, against a process a file of the fastest prober", "20 ×",
         times(min(known) if known else None)],
        ["a folder, against opening and reading alone", "a third",
         times(r.ratio(own, ("folder", "open_read", "rate")))]])


def speed(r):
    files = ["clip", "3h", "fragments-20000"]
    peers = []
    for f in files:
        peer, _ = r.fastest(f, LOAD_TABLES, "init")
        peers.append("–" if peer is None else
                     f"{show(r.median('opening', peer, f))} ({OPENING[peer].split(' ')[0]})")
    table = markdown(["ms"] + [FILES[f] for f in files], [
        ["`JudgeMP4HaveDRM`"] + [show(r.median("opening", "judge", f)) for f in files],
        ["`Mp4Demux::Init`, every table"] + [show(r.median("opening", "init", f)) for f in files],
        ["fastest other reader that loads tables"] + peers])
    return (f"{table}\n\nOf a 3-hour movie, walking takes {show(r.median('walk', 'WalkTrack', '3h'))} ns a "
            f"sample and a random seek {show(r.median('walk', 'RandomSeek video', '3h'))} ns. `mp4judge` goes "
            f"through {show(r.median('folder', 'mp4judge', 'rate'))} small files a second.\n\n"
            f"Measured on: {r.setup}.")


def all_tables(r):
    return {"setup": f"Measured on: {r.setup}.", "aims": aims(r), "opening": opening(r),
            "ratios": ratios(r), "fragments": fragments(r), "walking": walking(r),
            "memory": memory(r), "calls": calls(r), "folder": folder(r), "speed": speed(r)}
