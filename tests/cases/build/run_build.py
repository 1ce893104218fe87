#!/usr/bin/env python3
"""Runs the cases of build files: what a compilation writes is compared with whole expected files.

    run_build.py --orvane PROGRAM --out FOLDER [--update] [--filter TEXT] CASE_FOLDER

A case is a `.case` file of lines `DIRECTIVE: text`; `#` begins a comment line.

    RUN: -K -F %I/a.ttcn     arguments for the compiler; several RUN lines run one after the other
    STATUS: -11              expected exit status of the RUN line above (default 0)
    STDOUT: text             a line of standard output of the RUN line above; in this order
    STDERR: text             a line of standard error, likewise
    SH: touch %t/x           a shell command, which must succeed
    FILE: makefile name      a written file, compared with expect/NAME where `name` is given, else with
                             expect/CASE.makefile
    WORDS: lines => NAME = words   the value that the makefile has for NAME when %I/tools.mcfg ends in these lines of
                             the MCFG file, which `;` separates
    ABSENT: name             a file that must not be there at the end
    ENV: NAME=value          sets a variable; `ENV: NAME` alone removes it

An expected file whose first line is `@@ OTHER` holds changes of expect/OTHER: `@ 14 15` stands before the lines that
take the place of lines 14 and 15, `@ 14 13` before those that stand in front of line 14.

%t is a fresh output folder and the working directory, %I the folder `input`, %O the installation. In
expected files these names stand for the folders, and $DAY for the day on which banners are dated.
"""

import argparse
import difflib
import os
import re
import shlex
import shutil
import subprocess
import sys
from pathlib import Path

TIMEOUT_SECONDS = 60
DAY = "Thu Jan  1 00:00:00 1970"


class Case:
    def __init__(self, path, options):
        self.path = path
        self.faults = []
        self.folder = Path(options.out).resolve() / path.stem
        self.input = path.parent.resolve() / "input"
        self.program = Path(options.orvane).resolve()
        self.update = options.update
        self.environment = dict(os.environ, SOURCE_DATE_EPOCH="0", OSTYPE="linux", TZ="UTC", LC_ALL="C")
        self.result = None
        self.seen = {}

    def names(self):
        return (("%t", str(self.folder)), ("%I", str(self.input)), ("%O", str(self.program.parent.parent)))

    def fill(self, text):
        for short, name in self.names():
            text = text.replace(short, name)
        return text

    def shorten(self, text):
        for short, name in self.names():
            text = text.replace(name, short)
        return text.replace(DAY, "$DAY")

    def run(self):
        shutil.rmtree(self.folder, ignore_errors=True)
        self.folder.mkdir(parents=True)
        for line in self.path.read_text().splitlines():
            if not line.strip() or line.startswith("#"):
                continue
            directive, _, text = line.partition(":")
            getattr(self, "do_" + directive.lower())(text.strip())
        self.check_status()
        return self.faults

    def check_status(self):
        """The last compilation must have ended as its STATUS line said."""
        if self.result and self.result.returncode % 256 != self.expected_status % 256:
            self.faults.append(f"exit status {self.result.returncode}, expected {self.expected_status}\n"
                               f"{self.result.stdout}{self.result.stderr}")
        self.result = None

    def execute(self, command, **more):
        return subprocess.run(command, cwd=self.folder, env=self.environment, text=True, errors="replace",
                              capture_output=True, timeout=TIMEOUT_SECONDS, **more)

    def do_run(self, text):
        self.check_status()
        self.expected_status = 0
        self.result = self.execute([str(self.program)] + shlex.split(self.fill(text)))
        self.seen = {"stdout": self.shorten(self.result.stdout).splitlines(),
                     "stderr": self.shorten(self.result.stderr).splitlines()}

    def do_sh(self, text):
        done = self.execute(self.fill(text), shell=True)
        if done.returncode != 0:
            self.faults.append(f"{text}: status {done.returncode}\n{done.stdout}{done.stderr}")

    def do_status(self, text):
        self.expected_status = int(text)

    def do_env(self, text):
        name, sign, value = text.partition("=")
        if sign:
            self.environment[name] = self.fill(value)
        else:
            self.environment.pop(name, None)

    def line_of(self, stream, text):
        lines = self.seen[stream]
        if text not in lines:
            self.faults.append(f"{stream} has no further line {text!r}; it goes on with {lines[:10]}")
            return
        del lines[:lines.index(text) + 1]

    def do_stdout(self, text):
        self.line_of("stdout", text)

    def do_stderr(self, text):
        self.line_of("stderr", text)

    def do_words(self, text):
        lines, _, expected = text.partition(" => ")
        mcfg = self.folder / "words.mcfg"
        mcfg.write_text((self.input / "words.mcfg").read_text() + lines.replace(" ; ", "\n") + "\n")
        self.do_run("-K -r Root -f %t/words.mcfg -F %I/root.ttcn %I/other.ttcn")
        makefile = self.shorten((self.folder / "makefile").read_text()) if self.result.returncode == 0 else ""
        name, _, words = expected.partition(" =")
        found = re.findall(rf"(?m)^{re.escape(name)} *[=:](.*)$", makefile)
        if [words.strip()] != [value.strip() for value in found] and (found or words != " undefined"):
            self.faults.append(f"{text}: found {found}")

    def do_absent(self, text):
        if (self.folder / text).exists():
            self.faults.append(f"{text} was written")

    def do_file(self, text):
        name, _, expected_name = text.partition(" ")
        expected = self.path.parent / "expect" / (expected_name or f"{self.path.stem}.{Path(name).name}")
        written = self.folder / name
        if not written.exists():
            self.faults.append(f"{name} was not written")
            return
        text = self.shorten(written.read_text(errors="replace"))
        if self.update:
            expected.write_text(changes(expected, text))
        elif not expected.exists():
            self.faults.append(f"{expected} is missing")
        elif text != whole(expected):
            self.faults.append(f"{name} differs:\n" + "\n".join(difflib.unified_diff(
                whole(expected).split("\n"), text.split("\n"), str(expected), "written", lineterm="")))


def base_of(path):
    """The expected file whose changes another one holds, or None."""
    first = path.read_text().split("\n")[0] if path.exists() else ""
    return path.with_name(first[3:]) if first.startswith("@@ ") else None


def whole(path):
    """The text of an expected file, with its changes made."""
    base = base_of(path)
    if base is None:
        return path.read_text()
    lines, done = base.read_text().splitlines(), 0
    result = []
    for line in path.read_text().splitlines()[1:]:
        if line.startswith("@ "):
            first, last = map(int, line[2:].split())
            result += lines[done:first - 1]
            done = last
        else:
            result.append(line)
    return "\n".join(result + lines[done:]) + "\n"


def changes(path, text):
    """What is kept for a text: itself, or its changes where the file held changes before."""
    base = base_of(path)
    if base is None:
        return text
    before, after = base.read_text().splitlines(), text.splitlines()
    kept = [f"@@ {base.name}"]
    for kind, i, j, k, m in difflib.SequenceMatcher(None, before, after, autojunk=False).get_opcodes():
        if kind != "equal":
            kept += [f"@ {i + 1} {j}", *after[k:m]]
    return "\n".join(kept) + "\n"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--orvane", required=True)
    parser.add_argument("--out", required=True)
    parser.add_argument("--update", action="store_true", help="write the expected files anew")
    parser.add_argument("--filter", default="")
    parser.add_argument("folder", type=Path)
    options = parser.parse_args()
    cases = [path for path in sorted(options.folder.glob("*.case")) if options.filter in path.stem]
    failed = 0
    for path in cases:
        faults = Case(path, options).run()
        failed += bool(faults)
        for fault in faults:
            print(f"{path.name}: {fault}")
    print(f"{len(cases)} cases, {failed} failed")
    sys.exit(1 if failed or not cases else 0)


main()
