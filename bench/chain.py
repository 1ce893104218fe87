#!/usr/bin/env python3
"""Measures the road from sources to verdicts: the compiler's stages, C compilers, the linker, runs.

    chain.py --orvane PROGRAM [--lines 20000] [--messages 1000000] [--components 1000,10000,100000]

Prints seconds of processor time; for orvane-run also those that pass on the clock, in an empty folder, again, and again
after a change in one module. Exits with 1 when a step fails.
"""

import argparse
import os
import shutil
import subprocess
import sys
import tempfile
import time
from pathlib import Path

from run_bench import BENCH, run_best, write_suite

COMPILERS = (("tcc", []), ("gcc", ["-O0"]), ("gcc", ["-O1", "-g"]), ("clang", ["-O0"]))


def say(what, seconds, more=""):
    print(f"{what:34} {seconds:8.2f} s  {more}", flush=True)


def measure_stages(orvane, names, folder, lines):
    for action in "sac":
        (folder / "out").mkdir(exist_ok=True)
        run = run_best([orvane, "-v", "1", f"-{action}", "-d", "out", "-F", *names], folder, 3)
        say(f"orvane -{action}", run.seconds, f"{lines / run.seconds:,.0f} lines/s")


def measure_compilers(installation, folder):
    sources = sorted(str(path) for path in (folder / "out").glob("*.c"))
    size = sum(path.stat().st_size for path in (folder / "out").glob("*.[ch]"))
    for compiler, flags in COMPILERS:
        if shutil.which(compiler) is None:
            continue
        command = [shutil.which(compiler), "-c", "-w", *flags, f"-I{installation}/include", f"-I{folder}/out", *sources]
        say(" ".join([compiler, *flags]), run_best(command, folder, 1).seconds, f"{size / 1e6:.1f} MB of C")


def measure_one_command(installation, names, folder):
    """orvane-run from nothing, again, and after a change in one module."""
    place = folder / "one"
    place.mkdir()
    for name in names:
        shutil.copy(name, place)
    files = sorted(path.name for path in place.glob("*.ttcn"))
    for what in ("orvane-run, in an empty folder", "orvane-run, again", "orvane-run, one module changed"):
        if "changed" in what:
            with open(place / files[0], "a", encoding="utf-8") as last:
                last.write("// changed\n")
        begin = time.monotonic()
        run = run_best([f"{installation}/bin/orvane-run", "-r", Path(files[-1]).stem, *files, "--", "--list"], place, 1)
        say(what, run.seconds, f"{time.monotonic() - begin:.2f} s on the clock")


def build(installation, source, folder):
    """The executable of a suite of one module."""
    run_best([f"{installation}/bin/orvane-run", "-d", str(folder / source.stem), str(source), "--", "--list"], folder, 1)
    return str(folder / source.stem / f"{source.stem}.run")


def measure_runs(installation, folder, messages, counts):
    exchange = folder / "Exchange.ttcn"
    exchange.write_text((BENCH / "exchange.ttcn").read_text().replace("COUNT)", f"{messages})"))
    run = run_best([build(installation, exchange, folder), "-v", "none"], folder, 3)
    say(f"{messages:,} messages", run.seconds, f"{messages / run.seconds:,.0f} messages/s")
    source = folder / "Components.ttcn"
    shutil.copy(BENCH / "components.ttcn", source)
    program = build(installation, source, folder)
    for test_case in ("TC_at_once", "TC_in_turn", "TC_waiting", "TC_connected"):
        for count in counts:
            run = run_best([program, "-v", "none", "-s", "-p", f"COUNT={count}", "-t", test_case], folder, 1)
            say(f"{test_case} {count:,}", run.seconds, f"{run.kilobytes / 1024:.0f} MB")


def measure_large(installation, folder, counts):
    source = folder / "Large.ttcn"
    shutil.copy(BENCH / "large.ttcn", source)
    program = build(installation, source, folder)
    for test_case in ("list", "set", "timers", "defaults", "links", "states"):
        for count in counts:
            run = run_best([program, "-v", "none", "-s", "-p", f"COUNT={count}", "-t", f"TC_{test_case}"], folder, 1)
            say(f"{test_case} {count:,}", run.seconds, f"{run.kilobytes / 1024:.0f} MB")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--orvane", required=True, type=Path)
    parser.add_argument("--lines", type=int, default=20000)
    parser.add_argument("--messages", type=int, default=1000000)
    parser.add_argument("--components", default="1000,10000,100000")
    options = parser.parse_args()
    orvane = options.orvane.resolve()
    installation = orvane.parent.parent
    with tempfile.TemporaryDirectory(prefix="orvane-bench-") as name:
        folder = Path(name)
        names, lines = write_suite(folder, options.lines, options.lines // 1000)
        measure_stages(str(orvane), names, folder, lines)
        measure_compilers(installation, folder)
        measure_one_command(installation, names, folder)
        counts = [int(count) for count in options.components.split(",")]
        measure_runs(installation, folder, options.messages, counts)
        measure_large(installation, folder, counts)


if __name__ == "__main__":
    main()
