#!/usr/bin/env python3
"""Runs golden cases: TTCN-3 sources that carry their expectations in comments.

    run_cases.py --orvane PROGRAM --out FOLDER [--jobs N] [--filter TEXT] FOLDER_OR_FILE...

A case is a .ttcn file with at least one RUN line. Its directives, each at the end of a line after `//`:

    RUN: -a -F %s            arguments for the compiler; several RUN lines run one after the other
    SH: rm %t/x.c            a shell command between RUN lines, which must succeed
    CWD: %S                  working directory of all commands (default %t)
    ENV: NAME=value          sets a variable; `ENV: NAME` alone removes it
    STATUS: -9               expected exit status, the n-th line for the n-th RUN line (default 0)
    expect-error@+1:12 {{text}}   a diagnostic one line below, column 12; `@:5` this line, `@12!:5` line 12,
                             `@*:0` a diagnostic without a position; a column of 0 is one without a column.
                             Kinds: expect-error, expect-warning, expect-found (text after "found/expected : ")
    each-error regex {{text}}     an error with this text, in which `*` is what the pattern found, wherever it finds something
                             in the source beside comments
    STDOUT: text, STDERR: text    lines that hold the text, in this order
    C: text, H: text         the same in the generated C and header file of this module
    FILE(name): text         the same in another file of %t; an empty text asks only for the file
    STDOUT-NOT: STDERR-NOT: C-NOT: H-NOT: FILE-NOT(name):   no line holds the text
    NO-FILE(name):           the file must not be there

In all of them %s is the case file, %S its folder, %t a fresh output folder, %o the compiler. Diagnostics are compared to the
letter and must be expected exactly once each; files named in a RUN line may carry expectations as well.
"""

import argparse
import concurrent.futures
import os
import re
import shlex
import shutil
import subprocess
import sys
from dataclasses import dataclass, field
from pathlib import Path

TIMEOUT_SECONDS = 60
DIRECTIVE = re.compile(
    r"(?://|--)\s*(RUN|SH|CWD|ENV|STATUS|STDOUT|STDERR|C|H|STDOUT-NOT|STDERR-NOT|C-NOT|H-NOT"
    r"|(?:FILE|FILE-NOT|NO-FILE)\([^)]*\)):(.*)$")
EXPECTATION = re.compile(r"^expect-(error|warning|found)@(\*|[+-]\d+|\d+!|):(\d+) \{\{(.*)\}\}\s*$")
EACH = re.compile(r"^\s*// each-(error|warning) (\S+) \{\{(.*)\}\}\s*$", re.MULTILINE)
DIAGNOSTIC = re.compile(
    r"^(?:(?P<file>.*?)\((?P<line>\d+)\) (?:: column (?P<column>\d+) )?: )?"
    r"(?P<kind>Fatal|Restriction|Error|Warning|Repair|Note|Information) +(?P<text>.*)$")
CLASS_WIDTH = 12
SANITIZER = re.compile(r"(Address|Leak|UndefinedBehavior|Memory)Sanitizer|runtime error: ")
NO_POSITION = (None, 0, 0)


class CaseError(Exception):
    """The case itself is written wrongly."""


@dataclass
class Case:
    path: Path
    commands: list = field(default_factory=list)  # (directive, text) of RUN and SH, in order
    statuses: list = field(default_factory=list)
    environment: list = field(default_factory=list)
    working_directory: str = "%t"
    checks: dict = field(default_factory=dict)  # subject -> texts in order
    absent: list = field(default_factory=list)  # (subject, text)
    absent_files: list = field(default_factory=list)
    module: str = ""


@dataclass
class Outcome:
    path: Path
    faults: list


def read_text(path):
    """The text of a source of any of the encodings that the compiler reads."""
    data = Path(path).read_bytes()
    if data[:2] in (b"\xff\xfe", b"\xfe\xff"):
        return data.decode("utf-16", errors="replace")
    return data.decode("utf-8-sig", errors="replace")


def add_directive(case, name, text):
    if name in ("RUN", "SH"):
        case.commands.append((name, text))
    elif name == "STATUS":
        case.statuses.append(int(text) % 256)
    elif name == "ENV":
        case.environment.append(text)
    elif name == "CWD":
        case.working_directory = text
    elif name.startswith("NO-FILE("):
        case.absent_files.append(name[len("NO-FILE("):-1])
    elif "-NOT" in name:
        if not text:
            raise CaseError(f"{name} without a text")
        case.absent.append((name.replace("-NOT", ""), text))
    else:
        if not text and not name.startswith("FILE("):
            raise CaseError(f"{name} without a text")
        case.checks.setdefault(name, []).append(text)


def read_case(path):
    """The case in a file, or None when the file has no RUN line."""
    case = Case(path)
    text = read_text(path)
    for line in text.split("\n"):
        match = DIRECTIVE.search(line.rstrip("\r"))
        if match:
            add_directive(case, match.group(1), match.group(2).strip())
    runs = sum(1 for name, _ in case.commands if name == "RUN")
    if runs == 0:
        return None
    if len(case.statuses) > runs:
        raise CaseError("more STATUS lines than RUN lines")
    case.statuses += [0] * (runs - len(case.statuses))
    module = re.search(r"^\s*module\s+(\w+)", text, re.MULTILINE)
    case.module = module.group(1) if module else path.stem
    return case


def expectation_line(place, number):
    if place == "*":
        return 0
    if place.endswith("!"):
        return int(place[:-1])
    return number + int(place or "0")


def read_expectations(path, substitute):
    """The diagnostics that a source expects, as (file, line, column, kind, text)."""
    text = read_text(path)
    patterns = EACH.findall(text)
    expected = []
    for number, line in enumerate(text.split("\n"), 1):
        code = re.split(r"//|--", line)[0] if patterns else ""
        for kind, pattern, message in patterns:
            expected += [(os.path.realpath(path), number, found.start() + 1, kind.capitalize(),
                          message.replace("*", found.group())) for found in re.finditer(pattern, code)]
        parts = re.split(r"(?://|--)\s*(?=expect-)", line.rstrip("\r"))
        for part in parts[1:]:
            match = EXPECTATION.match(part)
            if not match:
                raise CaseError(f"{path.name}:{number}: expectation not understood: {part}")
            kind, place, column, text = match.groups()
            at = expectation_line(place, number)
            file = None if place == "*" else os.path.realpath(path)
            expected.append((file, at, int(column), *diagnostic_form(kind, substitute(text))))
    return expected


def diagnostic_form(kind, text):
    if kind == "found":
        return "Error", "found/expected : " + text
    return kind.capitalize(), text


def read_diagnostics(stderr, directory):
    """Splits standard error into diagnostics, in the form of read_expectations, and other lines."""
    diagnostics, others = [], []
    for line in stderr.split("\n"):
        match = DIAGNOSTIC.match(line)
        if not match or match.start("text") - match.start("kind") < CLASS_WIDTH:
            others.append(line)
            continue
        text = line[match.start("kind") + CLASS_WIDTH:]
        if match.group("file") is None:
            place = NO_POSITION
        else:
            file = os.path.realpath(os.path.join(directory, match.group("file")))
            place = (file, int(match.group("line")), int(match.group("column") or 0))
        diagnostics.append((*place, match.group("kind"), text))
    return diagnostics, others


def describe(diagnostic):
    file, line, column, kind, text = diagnostic
    place = f"{os.path.basename(file)}({line}) : column {column}" if file else "(no position)"
    return f"{place} : {kind} {{{{{text}}}}}"


def compare_diagnostics(expected, actual):
    faults = []
    rest = list(actual)
    for diagnostic in expected:
        if diagnostic in rest:
            rest.remove(diagnostic)
        else:
            faults.append("missing diagnostic: " + describe(diagnostic))
    faults += ["surplus diagnostic: " + describe(diagnostic) for diagnostic in rest]
    return faults


def missing_in_order(subject, lines, texts):
    position = 0
    for text in texts:
        found = next((i for i in range(position, len(lines)) if text in lines[i]), None)
        if found is None:
            where = "" if position == 0 else f" after line {position}"
            return [f"{subject}: no line{where} holds: {text}"]
        position = found + 1
    return []


class CaseRun:
    """One run of one case in its own folder."""

    def __init__(self, case, orvane, out):
        self.case = case
        self.orvane = orvane
        self.out = out
        self.stdout = ""
        self.stderr = ""
        self.faults = []
        self.directory = self.substitute(case.working_directory)

    def substitute(self, text):
        values = {"%s": str(self.case.path), "%S": str(self.case.path.parent), "%t": str(self.out),
                  "%o": str(self.orvane)}
        return re.sub(r"%[sSto]", lambda match: values[match.group(0)], text)

    def environment(self):
        environment = dict(os.environ)
        for entry in self.case.environment:
            name, equals, value = self.substitute(entry).partition("=")
            environment.pop(name, None)
            if equals:
                environment[name] = value
        return environment

    def execute(self, command, what, status):
        try:
            process = subprocess.run(command, cwd=self.directory, env=self.environment(), timeout=TIMEOUT_SECONDS,
                                     stdin=subprocess.DEVNULL, capture_output=True, check=False)
        except subprocess.TimeoutExpired:
            self.faults.append(f"{what}: no end within {TIMEOUT_SECONDS} seconds")
            return
        self.stdout += process.stdout.decode("utf-8", errors="replace")
        self.stderr += process.stderr.decode("utf-8", errors="replace")
        if process.returncode < 0:
            self.faults.append(f"{what}: ended by signal {-process.returncode}")
        elif process.returncode != status:
            self.faults.append(f"{what}: status {signed(process.returncode)} instead of {signed(status)}")

    def run(self):
        shutil.rmtree(self.out, ignore_errors=True)
        self.out.mkdir(parents=True)
        statuses = iter(self.case.statuses)
        sources = {self.case.path}
        for name, text in self.case.commands:
            text = self.substitute(text)
            if name == "SH":
                self.execute(["sh", "-c", text], f"SH: {text}", 0)
                continue
            arguments = shlex.split(text)
            self.execute([self.orvane, *arguments], f"RUN: {text}", next(statuses))
            named = (Path(self.directory, argument) for argument in arguments)
            sources.update(path.resolve() for path in named if path.suffix in (".ttcn", ".ttcn3", ".asn"))
        self.compare(sorted(source for source in sources if source.is_file()))
        return self.faults

    def compare(self, sources):
        diagnostics, others = read_diagnostics(self.stderr, self.directory)
        expected = []
        for source in sources:
            expected += read_expectations(source, self.substitute)
        self.faults += compare_diagnostics(expected, diagnostics)
        if SANITIZER.search(self.stderr):
            self.faults.append("a sanitizer reported:\n" + self.stderr)
        for subject, texts in self.case.checks.items():
            lines = self.lines_of(subject, others)
            if lines is not None:
                texts = [self.substitute(text) for text in texts if text]
                self.faults += missing_in_order(subject, lines, texts)
        for subject, text in self.case.absent:
            text = self.substitute(text)
            hits = [line for line in self.lines_of(subject, others) or [] if text in line]
            self.faults += [f"{subject}: unwanted line: {line.strip()}" for line in hits]
        for name in self.case.absent_files:
            if (self.out / name).exists():
                self.faults.append(f"unwanted file: {name}")

    def lines_of(self, subject, others):
        if subject == "STDOUT":
            return self.stdout.split("\n")
        if subject == "STDERR":
            return others
        if subject in ("C", "H"):
            name = f"{self.case.module}.{subject.lower()}"
        else:
            name = subject[len("FILE("):-1]
        path = self.out / self.substitute(name)
        if not path.is_file():
            self.faults.append(f"missing file: {name}")
            return None
        return path.read_text(encoding="utf-8", errors="replace").split("\n")


def signed(status):
    return status - 256 if status > 127 else status


def run_case(path, orvane, out):
    try:
        case = read_case(path)
        if case is None:
            return None
        return Outcome(path, CaseRun(case, orvane, out).run())
    except (CaseError, OSError, ValueError) as error:
        return Outcome(path, [f"case not understood: {error}"])


def find_cases(places):
    """(file, its name relative to the place) of every source below the places, in order of names."""
    found = []
    for place in places:
        place = Path(place).resolve()
        if place.is_file():
            found.append((place, Path(place.name)))
        else:
            found += [(path, path.relative_to(place)) for path in sorted(place.rglob("*.ttcn"))]
    return found


def main(argv=None):
    parser = argparse.ArgumentParser(description="Runs golden cases.")
    parser.add_argument("--orvane", required=True, help="the compiler")
    parser.add_argument("--out", required=True, help="folder for the output folders of the cases")
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--filter", default="", help="only cases whose name holds this text")
    parser.add_argument("places", nargs="+")
    arguments = parser.parse_args(argv)
    out = Path(arguments.out).resolve()
    cases = [(path, name) for path, name in find_cases(arguments.places) if arguments.filter in str(name)]
    with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
        orvane = os.path.abspath(arguments.orvane)
        runs = [pool.submit(run_case, path, orvane, out / name.with_suffix("")) for path, name in cases]
        outcomes = [outcome for outcome in (run.result() for run in runs) if outcome is not None]
    failed = [outcome for outcome in outcomes if outcome.faults]
    for outcome in failed:
        print(f"FAILED {outcome.path}")
        for fault in outcome.faults:
            print(f"    {fault}")
    print(f"{len(outcomes) - len(failed)} passed, {len(failed)} failed")
    return 1 if failed or not outcomes else 0


if __name__ == "__main__":
    sys.exit(main())
