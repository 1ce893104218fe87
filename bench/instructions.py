#!/usr/bin/env python3
"""Counts what the compiler does in instructions, which do not depend on what else the machine does.

    instructions.py --orvane PROGRAM [--lines N]

Prints, for one module and for modules of 1,000 lines, the instructions for each line of TTCN-3 that -s, -a and -c
take. Needs valgrind.
"""

import argparse
import re
import subprocess
import sys
import tempfile
from pathlib import Path

BUDGET = 25_000


def count(command, folder):
    """The instructions of a command that succeeds, with those of what it starts; none where it fails or valgrind is missing."""
    try:
        run = subprocess.run(["valgrind", "--tool=callgrind", "--trace-children=yes", "--callgrind-out-file=callgrind", *command], cwd=folder,
                             capture_output=True, text=True)
    except FileNotFoundError:
        return None
    found = re.findall(r"Collected : (\d+)", run.stderr + run.stdout)
    return sum(map(int, found)) if run.returncode == 0 and found else None


def main():
    parser = argparse.ArgumentParser(description="Counts the compiler's instructions for each line.")
    parser.add_argument("--orvane", required=True, type=Path)
    parser.add_argument("--lines", type=int, default=10000)
    options = parser.parse_args()
    generate = Path(__file__).resolve().parent / "gen_suite.py"
    for layout, modules in (("one", 1), ("many", max(1, options.lines // 1000))):
        with tempfile.TemporaryDirectory() as folder:
            command = [sys.executable, str(generate), "--lines", str(options.lines), "--modules", str(modules), folder]
            names = subprocess.run(command, check=True, capture_output=True, text=True).stdout.split()
            lines = sum(Path(name).read_text().count("\n") for name in names)
            for action in "sac":
                found = count([str(options.orvane.resolve()), "-v", "1", f"-{action}", "-F", *names], folder)
                text = "was not counted" if found is None else f"{found / lines:,.0f} instructions a line"
                budget = f" (budget {BUDGET:,})" if action == "c" else ""
                print(f"-{action} {layout:5} {lines:7,} lines: {text}{budget}", flush=True)


if __name__ == "__main__":
    main()
