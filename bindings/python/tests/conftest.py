"""Tests run on the library that MP4JUDGE_LIBRARY names."""

import pathlib
import sys

sys.path[:0] = [str(pathlib.Path(__file__).parent), str(pathlib.Path(__file__).parents[1])]
