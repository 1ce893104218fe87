#!/usr/bin/env python3
"""Installs a build into an empty prefix and builds and runs the examples from there.

    installed.py --build FOLDER --examples FOLDER --out FOLDER [--sanitize LIST] [--cmake PROGRAM]

Nothing else can be reached through PATH but the installed programs, make, a shell, rm and the C and C++
compilers with the programs that they call themselves. The examples are run by the compiler's own name, found
through PATH, and by a relative path to it.
"""

import argparse
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
from run_suite import Suite, compare  # noqa: E402

TIMEOUT_SECONDS = 300
TOOLS = ("make", "sh", "rm", "cc", "c++", "as", "ld")
INSTALLED = ("bin/orvane", "bin/orvane-run", "bin/mesk", "bin/mkprefil", "bin/asn2c", "bin/asn2per", "include/asn2lumos.h",
             "include/asnmisc.typ", "lib/libasn1home.a", "include/lumos.h", "include/tci.h", "include/tri.h", "lib/liblumos.a",
             "share/orvane/make_linux.mcfg", "share/orvane/make_linux_tcc.mcfg", "share/orvane/rts.mk")


def run(command, folder, environment):
    done = subprocess.run(command, cwd=folder, env=environment, text=True, errors="replace", check=False,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=TIMEOUT_SECONDS)
    if done.returncode != 0:
        sys.exit(f"{command} in {folder}: status {done.returncode}\n{done.stdout[-6000:]}")
    return done.stdout


def install(options, prefix):
    run([options.cmake, "--install", str(options.build.resolve()), "--prefix", str(prefix)], options.out, None)
    missing = [name for name in INSTALLED if not (prefix / name).is_file()]
    if missing:
        sys.exit(f"not installed: {missing}")


def bare_path(folder):
    """A folder with links to the few tools that may be used."""
    folder.mkdir()
    for tool in TOOLS:
        place = shutil.which(tool)
        if place is None:
            sys.exit(f"this machine has no {tool}")
        (folder / tool).symlink_to(place)
    return folder


def check_life_cycle(module, output, folder):
    """Each module goes once through its life, and tells so."""
    lines = re.findall(rf"Module {module} (.*)$", output, re.MULTILINE)
    if lines != ["registered", "initialized", "- module parameters initialized", "finalized"]:
        sys.exit(f"{folder}: the life of module {module} was {lines}\n{output[-4000:]}")


def build_and_run(suite, program, prefix, folder, environment, options):
    folder.mkdir(parents=True)
    for source in suite.sources + suite.asn1_sources + suite.c_sources:
        shutil.copy(source, folder)
    sources = [source.name for source in suite.sources]
    if suite.asn1_sources:
        sources += ["-A", *(source.name for source in suite.asn1_sources)]
    mcfg = prefix / "share" / "orvane" / "make_linux.mcfg"
    if suite.c_sources:
        text = mcfg.read_text(encoding="utf-8")
        mcfg = folder / "suite.mcfg"
        names = " ".join(source.name for source in suite.c_sources)
        mcfg.write_text(f"{text}USER_SRCS = {names}\n", encoding="utf-8")
    run([program, "-v", "2", "-K", "-f", str(mcfg), "-r", suite.root, "-F", *sources], folder, environment)
    make = ["make", "-s", "-j2"] + ([f"LDFLAGS=-g -fsanitize={options.sanitize}"] if options.sanitize else [])
    run(make, folder, environment)
    output = run([f"./{suite.root}"], folder, environment)
    for source in suite.sources:
        run(["cc", "-std=c11", "-Wall", "-Werror=implicit", f"-I{prefix / 'include'}", "-fsyntax-only", source.stem + ".c"],
            folder, environment)
        check_life_cycle(source.stem, output, folder)
    faults = compare(suite, output)
    if faults:
        sys.exit("\n".join([f"{folder}:", *faults, output[-4000:]]))
    return len(suite.sources)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", required=True, type=Path)
    parser.add_argument("--examples", required=True, type=Path)
    parser.add_argument("--out", required=True, type=Path)
    parser.add_argument("--sanitize", default="")
    parser.add_argument("--cmake", default="cmake")
    options = parser.parse_args()
    options.out = options.out.resolve()
    shutil.rmtree(options.out, ignore_errors=True)
    options.out.mkdir(parents=True)
    prefix = options.out / "installed here"
    install(options, prefix)
    tools = bare_path(options.out / "tools")
    environment = {"PATH": f"{prefix / 'bin'}:{tools}", "ASAN_OPTIONS": "detect_leaks=0", "LC_ALL": "C"}
    # Those that speak to a program of the system have runs of their own.
    folders = (path.parent for path in sorted(options.examples.glob("*/VERDICTS")))
    suites = [Suite(folder) for folder in folders if not (folder / "peer").exists()]
    if not suites:
        sys.exit("no examples")
    count = 0
    for suite in suites:
        work = options.out / "work"
        relative = os.path.relpath(prefix / "bin" / "orvane", work / suite.root / "relative")
        for name, program in (("by name", "orvane"), ("relative", relative)):
            count += build_and_run(suite, program, prefix, work / suite.root / name, environment, options)
    print(f"{len(suites)} examples, {count} modules ran")


main()
