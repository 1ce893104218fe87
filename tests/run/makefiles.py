#!/usr/bin/env python3
"""Runs the makefiles that the compiler writes: what they build, what they build anew, what they remove.

    makefiles.py --orvane PROGRAM --out FOLDER [--sanitize LIST] [--filter TEXT]

Each function whose name begins with `check_` is one check, in a fresh folder.
"""

import argparse
import os
import shutil
import subprocess
import sys
import time
from pathlib import Path

TIMEOUT_SECONDS = 300
INPUT = Path(__file__).resolve().parent.parent / "cases" / "build" / "input"
MODULES = [str(INPUT / "root.ttcn"), str(INPUT / "other.ttcn")]


class Failure(Exception):
    pass


def expect(condition, text):
    if not condition:
        raise Failure(text)


class Place:
    """A folder in which a suite is compiled, built and run."""

    def __init__(self, folder, orvane, sanitize):
        self.folder, self.orvane, self.sanitize = folder, orvane, sanitize
        self.installation = orvane.parent.parent
        self.mcfg = self.installation / "share" / "orvane" / "make_linux.mcfg"

    def run(self, command, folder=None, status=0, text=""):
        environment = {"ASAN_OPTIONS": "detect_leaks=0", **os.environ}
        done = subprocess.run(command, cwd=folder or self.folder, input=text, text=True, errors="replace",
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=TIMEOUT_SECONDS,
                              check=False, env=environment)
        expect(done.returncode == status, f"{command}: status {done.returncode}\n{done.stdout[-6000:]}")
        return done.stdout

    def add_to_mcfg(self, lines):
        """From now on the installation's MCFG file with more lines is used."""
        path = self.folder / "own.mcfg"
        path.write_text(self.mcfg.read_text() + lines)
        self.mcfg = path

    def compile(self, *options, files=MODULES, root="Root"):
        return self.run([str(self.orvane), "-K", "-f", str(self.mcfg), "-r", root, *options, "-F", *files])

    def make(self, *arguments, folder=None):
        flags = [f"LDFLAGS=-g -fsanitize={self.sanitize}"] if self.sanitize else []
        return self.run(["make", *flags, *arguments], folder)

    def compiled(self, output):
        """The sources that a run of make compiled."""
        return sorted(line.split(" -c ")[1].split(" -o ")[0] for line in output.split("\n") if " -c " in line)

    def compilations(self, output):
        return "\n".join(line for line in output.split("\n") if " -c " in line)

    def names(self, folder=None):
        return sorted(path.name for path in (folder or self.folder).iterdir())

    def runs(self, program="./Root", folder=None, modules=("Root", "Other")):
        """The executable holds the modules, and runs from their registration to their end."""
        output = self.run([program], folder)
        for module in modules:
            for event in ("registered", "finalized"):
                expect(f"Module {module} {event}" in output, output)


def check_build_and_clean(place):
    place.compile()
    (place.folder / "mine.txt").write_text("stays")
    output = place.make("-j2")
    expect(place.compiled(output) == ["Other.c", "Root.c", "main_driver.c"], output)
    expect("-O0" in output and " -g" not in place.compilations(output), output)
    place.runs()
    output = place.make("-j2")
    expect(not place.compiled(output) and " -o Root" not in output, "the second run built something: " + output)
    time.sleep(1.1)  # for disks with times of whole seconds
    os.utime(place.folder / "Other.c")
    output = place.make("-j2")
    expect(place.compiled(output) == ["Other.c"] and " -o Root" in output, output)
    place.runs()
    place.make("clean")
    expect(place.names() == ["makefile", "mine.txt"], f"clean left {place.names()}")


def check_compile_again(place):
    """A second compilation by other tools replaces what the first wrote, and make goes on from there."""
    place.compile()
    place.make()
    place.mcfg = place.mcfg.parent / "make_linux_tcc.mcfg"
    place.compile()
    expect((place.folder / "makefile.bak").exists(), "no backup")
    place.make("-j2")
    place.runs()


def check_registry(place):
    place.compile("-i")
    place.make("-j2")
    output = place.run(["./Root", "--list"])
    for line in ("module Root", "module Other"):
        expect(line in output, f"{line}: {output}")
    place.runs()
    place.make("clean")
    expect(place.names() == ["makefile"], f"clean left {place.names()}")


def check_asn1_in_another_folder(place):
    """What the tools leave for a source elsewhere is removed; the source stays."""
    source = place.folder / "types" / "Own.asn"
    source.parent.mkdir()
    source.write_text("Types DEFINITIONS ::= BEGIN T ::= INTEGER END\n")
    place.compile(files=["-A", "types/Own.asn", "-T", *MODULES])
    expect("Own.stx" in place.names() and "Typesper.c" in place.names(), f"not there: {place.names()}")
    place.make("clean")
    expect(place.names() == ["VEXA-ASN-1-std-channels.txt", "makefile", "types"] and source.exists(),
           f"clean left {place.names()}")


def check_server(place):
    place.compile("-i", "-R")
    place.make("-j2")
    place.run(["./Root"], text="quit\n")


def check_library(place):
    place.add_to_mcfg("BUILD_LIBRARY = yes\nUSER_SRCS = own.c\n")
    (place.folder / "own.c").write_text("int own(void) { return 1; }\n")
    place.compile("-E")
    place.make("-j2")
    members = sorted(place.run(["ar", "t", "Root.a"]).split())
    expect(members == ["Other.o", "Root.o", "own.o"], members)
    expect("main_driver.c" not in place.names(), "a library has no main file")
    place.make("clean")
    expect(place.names() == ["makefile", "own.c", "own.mcfg"], f"clean left {place.names()}")


def check_blanks(place):
    """Blanks in the path of the work, in output directories and in sources of the user."""
    work = place.folder / "my work"
    (work / "the suite").mkdir(parents=True)
    (work / "user code").mkdir()
    (work / "user code" / "ext fun.c").write_text("int ext_fun(void) { return 1; }\n")
    (work / "user code" / "ext.cpp").write_text("int ext(void) { return 1; }\n")
    place.add_to_mcfg(f'USER_SRCS = "{work}/user code/ext fun.c" "{work}/user code/ext.cpp"\n'
                      f'USER_INCLUDE_DIRS += "{work}/user code"\nCC_FLAGS =\n')
    suite = work / "the suite"
    place.compile("-d", str(suite))
    place.make("-j2", folder=suite)
    expect({"ext fun.o", "ext.cpp.o"} <= set(place.names(suite)), place.names(suite))
    place.runs(folder=suite)
    place.make("clean", folder=suite)
    expect(place.names(suite) == ["makefile"], f"clean left {place.names(suite)}")


def check_output_directories(place):
    """Modules in directories of their own: the makefile of the root names the others by absolute paths."""
    for name in ("a", "b"):
        (place.folder / name).mkdir()
    place.run([str(place.orvane), "-K", "-f", str(place.mcfg), "-r", "Root", "-p", str(place.folder), "-M",
               "-T", "-d", "a", "-o", "suite", "Root", "-T", "-d", "b", "Other", "-F", *MODULES])
    folder = place.folder / "a"
    place.make("-j2", folder=folder)
    place.runs("./suite", folder)
    place.make("clean", folder=folder)
    expect(place.names(folder) == ["makefile"] and not place.names(place.folder / "b"), "clean left something")


def check_run_time_sources(place):
    """Sources of the run-time system are compiled anew each time, in order, and see the defines."""
    (place.folder / "boot.c").write_text(
        "#if !defined(LUMO_DEBUG) || !defined(LUMO_XML_EVENT_LOG) || defined(LUMO_MSC96_EVENT_LOG)\n"
        "#error wrong defines\n#endif\nint boot(void) { return 1; }\n")
    place.add_to_mcfg("RTS_SRCS = boot.c\nXML_LOGGING = yes\nINCLUDE = <ORV_DIR>/share/orvane/rts.mk\n")
    place.compile("-G")
    output = place.make("-j4")
    expect(len(place.compiled(output)) == 4 and place.compilations(output).count(" -g ") == 4, output)
    for _ in range(10):
        output = place.make("-j4")
        expect(place.compiled(output) == ["boot.c"], output)
    place.runs()


def check_adapter(place):
    """The section of a user's adapter counts with its TRI mode only."""
    (place.folder / "adapter.c").write_text('#include "tri.h"\n#include <stdio.h>\n'
                                            '__attribute__((constructor)) static void loaded(void) {\n'
                                            '  puts("own adapter");\n}\n'
                                            'TriStatus triSAReset(void) { return TRI_OK; }\n')
    place.add_to_mcfg("<SECTION=USER_DEFINED>\nUSER_SRCS += adapter.c\n</SECTION>\n")
    place.compile("-t", "2")
    place.make("-j2")
    expect("own adapter" in place.run(["./Root"]), "the adapter is not in the executable")
    for mode in ("0", "1"):
        place.compile("-t", mode)
        place.make("-j2")
        expect("own adapter" not in place.run(["./Root"]), f"the adapter is in the executable with -t {mode}")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--orvane", required=True, type=Path)
    parser.add_argument("--out", required=True, type=Path)
    parser.add_argument("--sanitize", default="", help="sanitizers that the run-time library is built with")
    parser.add_argument("--filter", default="")
    options = parser.parse_args()
    checks = {name: call for name, call in globals().items()
              if name.startswith("check_") and options.filter in name}
    failed = 0
    for name, check in checks.items():
        folder = options.out.resolve() / name
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        try:
            check(Place(folder, options.orvane.resolve(), options.sanitize))
        except Failure as failure:
            failed += 1
            print(f"{name}: {failure}")
    print(f"{len(checks)} checks, {failed} failed")
    sys.exit(1 if failed or not checks else 0)


if __name__ == "__main__":
    main()
