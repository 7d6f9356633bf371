"""Whether MP4, MOV, M4A, 3GP, CMAF and HEIF files are protected, and where they say so.

    >>> import mp4judge
    >>> mp4judge.judge("clip.mp4")
    'clear'
    >>> mp4judge.inspect("film.mp4").evidence[0].box_path
    'moov/trak[1]/mdia/minf/stbl/stsd/encv[1]/sinf/schm'
"""

from ._chart import Chart, chart
from ._inspect import inspect, judge
from ._library import version
from ._movie import Columns, Edit, Error, Movie, MovieTrack, Sample, Samples
from ._movie import open_movie as open
from ._report import (
    Entry,
    Evidence,
    Failure,
    Item,
    Problem,
    Report,
    Scheme,
    System,
    Track,
    Verdict,
)
from ._scan import Summary, judge_row, objects_of, read_rows, scan
from ._sources import Source
from ._tree import Box, Tree, info, tree

__version__ = version()

__all__ = [
    "Box",
    "Chart",
    "Columns",
    "Edit",
    "Entry",
    "Error",
    "Evidence",
    "Failure",
    "Item",
    "Movie",
    "MovieTrack",
    "Problem",
    "Report",
    "Sample",
    "Samples",
    "Scheme",
    "Source",
    "Summary",
    "System",
    "Track",
    "Tree",
    "Verdict",
    "chart",
    "info",
    "inspect",
    "judge",
    "judge_row",
    "objects_of",
    "open",
    "read_rows",
    "scan",
    "tree",
    "version",
]
