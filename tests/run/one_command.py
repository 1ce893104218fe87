#!/usr/bin/env python3
"""Runs suites from their sources by orvane-run: what is built anew, what a suite is told, and that nothing old runs.

    one_command.py --program PROGRAM --example FOLDER --out FOLDER [--sanitize LIST]
"""

import argparse
import os
import re
import shutil
import subprocess
import sys
import time
from pathlib import Path

SUITE = """module %s { %s
  type component C {} testcase TC() runs on C { setverdict(%s) } control { execute(TC()) } }
"""
ADAPTER = """#include "value.h"
#include "tri.h"
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
TriStatus triSAReset(void) { free(strdup("gnu11")); printf("value %d\\n", VALUE); return TRI_OK; }
"""


class Place:
    def __init__(self, options):
        self.program, self.folder = options.program.resolve(), options.out.resolve()
        shutil.rmtree(self.folder, ignore_errors=True)
        self.folder.mkdir(parents=True)
        self.flags = f" LDFLAGS=-fsanitize={options.sanitize}" if options.sanitize else ""
        self.environment = {**os.environ, "ASAN_OPTIONS": "detect_leaks=0"}

    def write(self, name, text):
        (self.folder / name).write_text(text, encoding="utf-8")

    def run(self, *arguments, status=0, out="", err=""):
        """Both texts must occur; with none, standard output must be empty. Another make is around it, other ones each time."""
        self.environment["MAKEFLAGS"] = f"k -j2 --jobserver-auth=3,{time.monotonic_ns()} --{self.flags}"
        done = subprocess.run([self.program, *arguments], cwd=self.folder, capture_output=True, text=True,
                              errors="replace", timeout=300, check=False, env=self.environment)
        good = done.returncode == status and re.search(out, done.stdout) and err in done.stderr
        good = good and (out or not done.stdout)
        if not good:
            sys.exit(f"orvane-run {arguments}: status {done.returncode}\n{done.stdout}{done.stderr}")

    def times(self):
        return {path.name: path.stat().st_mtime_ns for path in (self.folder / ".orvane-run").glob("*.[or]*")
                if path.suffix in (".o", ".run")}


def check_changes(place):
    """A change counts at once, also within a second; without one nothing is built; what is wrong does not run."""
    for verdict, status in (("pass", 0), ("fail", 1), ("pass", 0)):
        place.write("Root.ttcn", SUITE % ("Root", "", verdict))
        place.run("Root.ttcn", status=status, out=f"Root.TC: {verdict} ")
    times = place.times()
    place.run("Root.ttcn", out="Root.TC: pass ")
    if not times or times != place.times():
        sys.exit(f"built again without need: {times} {place.times()}")
    place.write("Root.ttcn", SUITE % ("Root", "", "pass") + "// a comment\n")
    place.run("Root.ttcn", out="Root.TC: pass ")
    if times != place.times():
        sys.exit("built again for a comment")
    for i, damaged in enumerate(sorted((place.folder / ".orvane-run").glob("*[!k]"))):
        size = damaged.stat().st_size
        damaged.unlink()
        if i % 3 == 1:
            damaged.mkdir()
        elif i % 3 == 2:
            damaged.write_bytes(bytes(size // 2))
            os.utime(damaged, (4e9, 4e9))
        place.run("Root.ttcn", out="Root.TC: pass ")
    place.write("Root.ttcn", SUITE % ("Root", "const integer c := x;", "pass"))
    place.run("Root.ttcn", status=247, err='no declaration for "x"')
    place.write("Root.ttcn", "module Root {")
    place.run("Root.ttcn", status=250, err="found/expected")
    place.write("Root.ttcn", "module Root { control { x := 1 } }")
    place.run("Root.ttcn", status=247, err='comes without any warranty.\n\n\nRoot.ttcn(1) : column 25 : Error       no declaration for "x"\n')
    place.run("Missing.ttcn", status=251, err="Missing.ttcn")


def check_arguments(place):
    """The suite's options may stand anywhere; the root is the module with a control part that no other imports."""
    place.write("Wide.ttcn", SUITE % ("Wide", "import from Root all;", "pass"))
    place.write("Root.ttcn", SUITE % ("Root", "// module Other { import from Wide all\n", "pass"))
    both = ("Root.ttcn", "Wide.ttcn")
    place.run(*both, out="Wide.TC: pass .*\n1 test case")
    place.run("--testcase", "Root.TC", *both, out="Root.TC: pass .*\n1 test case")
    place.run(*both, "-r", "Root", "--", "-n", out="Root.TC: pass .*\n1 test case")
    place.run(*both, "--list", "-vnone", out="module Root\n")
    place.run("Root.ttcn", "--no-such-option", status=2, err="unknown option '--no-such-option'")
    place.write("Other.ttcn", SUITE % ("Other", "", "pass"))
    place.run("Root.ttcn", "Other.ttcn", status=2, err="several modules could be the root, name one with -r: Root Other")
    place.run("Root.ttcn", "Root.ttcn", status=247, err="Root")
    place.run("-f", ".", "Root.ttcn", status=2, err="cannot read .")
    place.run("-r", "root", "Root.ttcn", status=2, err="no module is named root")
    place.write("own.mcfg", "<A> = <A>\nUSER_LIBS = <A>\n")
    place.run("-f", "own.mcfg", "Root.ttcn", status=245, err="Makefile/MainFile generation failed: ")
    place.run("-d", ".", "Root.ttcn", status=2, err="holds something else")
    place.run("--list", status=2, err="no TTCN-3 file")
    place.run("--version", out="orvane-run of Orvane [0-9.]+")
    place.run("--root=Wide", "-X-O", "-d.forms", *both, "--build")
    place.run(*both, "-rRoot", "--build", "value.C", status=2, err="'value.C' is neither a file")
    place.write("Root.cfg", "testcase = TC\n")
    place.run("--root=Root", "-d.forms", *both, "--config", out="Root.TC: pass .*\n1 test case")
    place.write("Odd.txt", SUITE % ("makefile", "", "pass"))
    place.run("--ttcn=Odd.txt", out="makefile.TC: pass ")
    place.write("Long.ttcn", SUITE % ("L" * 241, "", "pass"))
    place.run("Long.ttcn", status=2, err="LLL... is too long for files in .orvane-run, which takes 240 characters")
    place.run("Root.ttcn", "missing.c", status=2, err="missing.c: No such file")


def check_sources(place, example):
    """Sources of the user's own, which are built anew with their headers, and ASN.1 modules."""
    place.write("adapter.c", ADAPTER)
    for value in (3, 4, 5):
        place.write("value.h", f"#define VALUE {value}\n")
        os.utime(place.folder / "value.h", (1e9 - value, 1e9 - value))
        place.run("Root.ttcn", "adapter.c", out=f"value {value}")
    place.write("Root.c", "")
    place.run("Root.ttcn", "Root.c", status=2, err="Root.c would have the object of module Root")
    objects = place.times()
    (place.folder / ".orvane-run" / "report.xml").write_text("", encoding="utf-8")
    place.run("Root.ttcn", "adapter.c", out="value 5")
    if objects != place.times() or not (place.folder / ".orvane-run" / "report.xml").exists():
        sys.exit("a file of the user's in the folder has it built again, or is removed")
    include = place.program.parent.parent / "include"
    subprocess.run(f"cc -I'{include}' -c adapter.c -o ad.o && ar rcs adapter.a ad.o", shell=True, check=True, cwd=place.folder)
    if not place.flags:  # which replace the makefile's flags of the linker
        place.run("Root.ttcn", "adapter.a", out="value 5")
    odd = place.folder / "it's $(odd); #"
    odd.mkdir()
    shutil.copy(place.folder / "adapter.c", odd / "an adapter.c")
    for value in (6, 7):
        (odd / "value.h").write_text(f"#define VALUE {value}\n", encoding="utf-8")
        place.run("Root.ttcn", str(odd / "an adapter.c"), out=f"value {value}")
    place.write("adapter.c", "no C\n")
    place.run("Root.ttcn", "adapter.c", status=2, err="adapter.c")
    files = [str(path) for kind in ("ttcn", "asn", "c") for path in sorted(example.resolve().glob("*." + kind))]
    place.run(*files, out="Call_Suite.TC_two_calls: pass ")


def check_ends(place):
    """A signal to the program alone ends what it has started; a moved installation uses its own parts."""
    place.write("slow.cpp", "")
    place.write("c++", "#!/bin/sh\necho $$ > ../id.new\nmv ../id.new ../id\nexec sleep 60\n")
    (place.folder / "c++").chmod(0o755)
    environment = {**place.environment, "PATH": f"{place.folder}:{os.environ['PATH']}"}
    with subprocess.Popen([place.program, "Root.ttcn", "slow.cpp"], cwd=place.folder, env=environment) as started:
        while not (place.folder / "id").exists():
            time.sleep(0.01)
        started.terminate()
        if started.wait(30) != -15 or Path("/proc", (place.folder / "id").read_text().strip()).exists():
            sys.exit(f"ended with {started.returncode}; or the C compiler has not")
    moved = place.folder / "moved here"
    moved.mkdir()
    subprocess.run(["cp", "-rl", "bin", "include", "lib", "share", moved], cwd=place.program.parent.parent, check=True)
    place.program = moved / "bin" / "orvane-run"
    place.run("Root.ttcn", out="Root.TC: pass ")
    if "moved\\ here/lib" not in (place.folder / ".orvane-run" / "makefile").read_text():
        sys.exit("a moved installation is not used")
    shutil.rmtree(moved)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", required=True, type=Path)
    parser.add_argument("--example", required=True, type=Path)
    parser.add_argument("--out", required=True, type=Path)
    parser.add_argument("--sanitize", default="")
    options = parser.parse_args()
    place = Place(options)
    check_changes(place)
    check_arguments(place)
    check_sources(place, options.example)
    check_ends(place)


main()
