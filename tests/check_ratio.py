#!/usr/bin/env python3
"""Prints how the lines of tests and fuzz targets weigh against those of the sources, and fails above a limit that is meant to come down to a third.

    check_ratio.py ROOT
"""

import sys
from pathlib import Path

LIMIT = 0.33


def lines(root, folders):
    paths = (path for folder in folders for path in (root / folder).rglob("*"))
    return sum(path.read_bytes().count(b"\n") for path in paths if path.is_file() and path.suffix != ".pyc")


root = Path(sys.argv[1])
tests, sources = lines(root, ("tests", "fuzz")), lines(root, ("src", "runtime", "tools"))
print(f"{tests} lines of tests to {sources} lines of sources: {tests / sources:.3f}, at most {LIMIT}")
sys.exit(tests > LIMIT * sources)
