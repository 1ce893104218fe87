#!/usr/bin/env python3
"""Measures the compiler on generated suites and prints the figures beside the budgets.

    run_bench.py --orvane PROGRAM [--before PROGRAM] [--parts stages,instructions,chain,growth,matching,fields]
                 [--sizes 10000,100000,1000000] [--actions s,a,c] [--layouts many,one] [--rounds N] [--short]
    run_bench.py --orvane PROGRAM --exchange 1000000     the run-time library instead: messages between components

Prints, one below the other, the compiler's stages (this file), instructions for each line (instructions.py), the road from
sources to verdicts (chain.py), growth with
inputs that are large in one way (growth.py), matching and messages of bit fields (match_bench and raw_bench, where they were
built beside the program by `cmake --build ... --target match_bench raw_bench`); each part with the program that --before
names first. --short takes up to 100,000 lines and two rounds: all figures in some minutes.

`many` stands for modules of 1,000 lines that import each other, `one` for a single module. In each round the sizes take
turns, and each size gets as many runs as make up the lines of the largest one: a hundred runs of 10,000 lines stand
against one of 1,000,000, so that no size is measured in better minutes than another, nor as the best of more tries.
A row shows the median of the rounds: lines per second of processor time, the system's share of that time, the memory
per line, and the growth, which is the time per line against that of the smallest size in the same round, with the
lowest and the highest of it. Exits with 1 when a run of the compiler fails; a missed budget is only marked.

Before each row's runs another process touches twice the memory that one takes (--cold leaves that out). A virtual
machine may give freed memory back to its host after some seconds, and touching it again then costs as much as the
compiler's whole work on it, for each run that comes after a pause, whatever the compiler does. All files lie in memory
where the system lets them: the search for a free entry among those that were just deleted, which each new file costs on
some disks, is not the compiler's either.
"""

import argparse
import os
import shutil
import subprocess
import sys
import tempfile
from dataclasses import dataclass
from pathlib import Path
from statistics import median

BENCH = Path(__file__).resolve().parent

LINES_PER_MODULE = 1000


@dataclass
class Budget:
    lines_per_second: int
    kilobytes_per_line: float | None
    growth: float | None


BUDGETS = {
    "s": Budget(1_500_000, 2.5, None),
    "a": Budget(600_000, None, 1.1),
    "c": Budget(300_000, None, None),
}
BUDGET_START_UP = 0.001
BUDGET_EXCHANGE = 2_000_000


@dataclass
class Run:
    seconds: float  # processor time
    kernel: float  # the part of it that the system took, most of it for pages touched for the first time
    kilobytes: int  # at most; never below what this program itself takes
    status: int


def run_once(command, folder):
    """Runs a command with its output in a file of the folder; answers what it took."""
    output = os.open(folder / "output", os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o644)
    here = os.getcwd()
    os.chdir(folder)
    # Spawned, not forked: a copy of this program would cost time of its own, which counts as the child's.
    actions = [(os.POSIX_SPAWN_DUP2, output, 1), (os.POSIX_SPAWN_DUP2, output, 2)]
    child = os.posix_spawn(command[0], command, os.environ, file_actions=actions)
    os.chdir(here)
    os.close(output)
    _, status, usage = os.wait4(child, 0)
    return Run(usage.ru_utime + usage.ru_stime, usage.ru_stime, usage.ru_maxrss, os.waitstatus_to_exitcode(status))


def run_best(command, folder, repeat):
    """The fastest of some runs; a failed run ends the program."""
    best = None
    for _ in range(repeat):
        run = run_once(command, folder)
        if run.status != 0:
            print(f"status {run.status}: {' '.join(command)[:300]}", file=sys.stderr)
            print("\n".join((folder / "output").read_text(errors="replace").split("\n")[:20]), file=sys.stderr)
            sys.exit(1)
        if best is None or run.seconds < best.seconds:
            best = run
    return best


def mark(good):
    return "" if good else " (missed)"


def start_up(orvane, folder, repeat):
    """Prints what the analysis of an empty module takes."""
    source = folder / "Empty.ttcn"
    source.write_text("module Empty { }\n")
    run = run_best([orvane, "-v", "1", "-a", "-F", str(source)], folder, max(repeat, 10))
    good = run.seconds <= BUDGET_START_UP
    print(f"start-up, empty module: {run.seconds * 1000:.1f} ms of processor time"
          f" (budget {BUDGET_START_UP * 1000:.0f} ms){mark(good)}")


@dataclass
class Case:
    """One size of a suite under one action; what its rounds took."""
    command: list[str]
    output: Path
    lines: int
    runs: int  # in a round
    seconds: list[float]  # a run, by rounds
    kernel: list[float]
    kilobytes: int


def write_suite(folder, size, modules):
    """Writes a suite in a process of its own: what this one takes is the least that a run's memory can show."""
    command = [sys.executable, str(BENCH / "gen_suite.py"), "--lines", str(size), "--modules", str(modules), str(folder)]
    names = subprocess.run(command, check=True, capture_output=True, text=True).stdout.split()
    counted = subprocess.run(["awk", "END { print NR }", *names], check=True, capture_output=True, text=True)
    return names, int(counted.stdout)


TOUCH = """
import mmap, sys
size, page = int(sys.argv[1]) * 1024, 1 << 21
for _ in range(2):  # some of what the first round takes is given back before the second
    memory = mmap.mmap(-1, size + page, flags=mmap.MAP_PRIVATE | mmap.MAP_ANONYMOUS)
    memory.madvise(mmap.MADV_HUGEPAGE)
    for at in range(0, size, 4096):
        memory[at] = 1
    memory.close()
"""


def touch_memory(kilobytes):
    """Another process takes memory in large pages, writes to it and gives it back."""
    subprocess.run([sys.executable, "-c", TOUCH, str(kilobytes)], check=True)


def run_case(case, cold):
    """One round of a case."""
    if not cold:
        touch_memory(2 * case.kilobytes)
    runs = []
    for _ in range(case.runs):
        shutil.rmtree(case.output, ignore_errors=True)
        case.output.mkdir()
        runs.append(run_best(case.command, case.output.parent, 1))
    case.seconds.append(sum(run.seconds for run in runs) / len(runs))
    case.kernel.append(sum(run.kernel for run in runs) / len(runs))
    case.kilobytes = max(case.kilobytes, *(run.kilobytes for run in runs))


def print_head():
    print(f"{'action':6} {'layout':6} {'lines':>9} {'seconds':>8} {'kernel':>7} {'lines/s':>10} {'budget':>10}"
          f" {'kB/line':>8} {'growth':>7} {'lowest':>7} {'highest':>7}")


def print_row(action, layout, case, smallest):
    budget = BUDGETS[action]
    seconds = median(case.seconds)
    rate = case.lines / max(seconds, 1e-6)
    memory = case.kilobytes / case.lines
    growths = [own / case.lines / (least / smallest.lines) for own, least in zip(case.seconds, smallest.seconds)]
    notes = []
    if rate < budget.lines_per_second:
        notes.append("slow")
    if budget.kilobytes_per_line and case.lines >= 100_000 and memory > budget.kilobytes_per_line:
        notes.append(f"memory above {budget.kilobytes_per_line} kB")
    if budget.growth and median(growths) > budget.growth:
        notes.append(f"growth above {budget.growth}")
    kernel = median(case.kernel) / seconds
    print(f"{'-' + action:6} {layout:6} {case.lines:9,} {seconds:8.3f} {kernel:7.0%} {rate:10,.0f}"
          f" {budget.lines_per_second:10,} {memory:8.2f} {median(growths):7.2f} {min(growths):7.2f} {max(growths):7.2f}"
          f" {', '.join(notes)}", flush=True)


def measure(arguments, folder):
    orvane = os.path.abspath(arguments.orvane)
    start_up(orvane, folder, arguments.rounds)
    print_head()
    sizes = [int(size) for size in arguments.sizes.split(",")]
    for layout in arguments.layouts.split(","):
        suites = []
        for size in sizes:
            modules = max(1, size // LINES_PER_MODULE) if layout == "many" else 1
            suites.append(write_suite(folder / f"{layout}{size}", size, modules))
        for action in arguments.actions.split(","):
            output = folder / "generated"
            cases = [Case([orvane, "-v", "1", "-" + action, "-d", str(output), "-F", *names], output, lines,
                          max(1, round(max(sizes) / size)), [], [], 0) for size, (names, lines) in zip(sizes, suites)]
            for round_ in range(-1, arguments.rounds):
                for case in cases:
                    if round_ >= 0:
                        run_case(case, arguments.cold)
                    else:  # how much memory it takes, with the files in the system's cache
                        output.mkdir(exist_ok=True)
                        case.kilobytes = run_best(case.command, folder, 1).kilobytes
            for case in cases:
                print_row(action, layout, case, cases[0])
            shutil.rmtree(output)


def run_part(title, command):
    """A part that is a program of its own, with its output below a title."""
    print(f"\n{title}", flush=True)
    subprocess.run(command, check=True)


def measure_parts(arguments, folder):
    parts = arguments.parts.split(",")
    programs = [program for program in (arguments.before, arguments.orvane) if program]
    for part in parts:
        for program in programs:
            title = f"{part}: {program}"
            bench = Path(program).resolve().parent / {"matching": "match_bench", "fields": "raw_bench"}.get(part, "")
            if part == "stages":
                print(f"\n{title}", flush=True)
                measure(argparse.Namespace(**{**vars(arguments), "orvane": program}), folder)
            elif part in ("instructions", "chain", "growth"):
                run_part(title, [sys.executable, str(BENCH / f"{part}.py"), "--orvane", program])
            elif part in ("matching", "fields") and bench.exists():
                run_part(title, [str(bench)])
            else:
                print(f"\n{title}: {'was not built' if part in ('matching', 'fields') else 'is no part'}", flush=True)


def build_exchange(orvane, folder, count):
    """The executable of a suite in which two components exchange `count` messages."""
    folder.mkdir()
    source = folder / "Exchange.ttcn"
    text = (BENCH / "exchange.ttcn").read_text()
    source.write_text(text.replace("COUNT)", f"{count})"))
    mcfg = Path(orvane).parent.parent / "share" / "orvane" / "make_linux.mcfg"
    run_best([orvane, "-v", "1", "-K", "-f", str(mcfg), "-r", "Exchange", "-F", str(source)], folder, 1)
    run_best([shutil.which("make"), "-s", "CFLAGS=-std=c11 -O2"], folder, 1)
    return str(folder / "Exchange")


def measure_exchange(arguments, folder):
    """Messages per second, from the difference of two runs, and the growth of memory between them."""
    orvane = os.path.abspath(arguments.orvane)
    counts = (arguments.exchange // 10, arguments.exchange)
    few, many = (run_best([build_exchange(orvane, folder / str(count), count)], folder / str(count),
                          arguments.rounds) for count in counts)
    rate = (counts[1] - counts[0]) / max(many.seconds - few.seconds, 1e-6)
    print(f"exchange: {rate:,.0f} messages/s (budget {BUDGET_EXCHANGE:,}){mark(rate >= BUDGET_EXCHANGE)};"
          f" {few.kilobytes / 1024:.1f} MB after {counts[0]:,}, {many.kilobytes / 1024:.1f} MB after {counts[1]:,}")


def main():
    parser = argparse.ArgumentParser(description="Measures the compiler on generated suites.")
    parser.add_argument("--orvane", required=True)
    parser.add_argument("--before", help="another build of the compiler, measured as well")
    parser.add_argument("--parts", default="stages,instructions,chain,growth,matching,fields")
    parser.add_argument("--sizes", default="10000,100000,1000000")
    parser.add_argument("--actions", default="s,a,c")
    parser.add_argument("--layouts", default="many,one")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--cold", action="store_true", help="do not touch memory before the runs")
    parser.add_argument("--exchange", type=int, default=0, help="messages to exchange at run time")
    parser.add_argument("--short", action="store_true", help="up to 100,000 lines, two rounds")
    arguments = parser.parse_args()
    if arguments.short:
        arguments.sizes, arguments.rounds = "10000,100000", 2
    memory = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    with tempfile.TemporaryDirectory(prefix="orvane-bench-", dir=memory) as folder:
        (measure_exchange if arguments.exchange else measure_parts)(arguments, Path(folder))


if __name__ == "__main__":
    main()
