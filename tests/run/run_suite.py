#!/usr/bin/env python3
"""Compiles a test suite, builds it by the makefile that the compiler writes, runs it and compares the verdicts.

    run_suite.py --orvane PROGRAM --out FOLDER [--sanitize LIST] [--encoding NAME] [--cc COMPILER] [--c-flags FLAGS]
                 [--options OPTIONS] SUITE

SUITE is a .ttcn file, or a folder with the modules of a suite, TTCN-3 and ASN.1, C sources that are linked in, MCFG
keys, and a file VERDICTS. What is expected stands there, or in comments of the file after `//`:

    VERDICT: TC_name pass     the test cases in the order of their execution; all must be named, with the reason of
                              their verdict behind it or without. When the root module has no control part, all its
                              test cases are run, and those that are not named must pass
    VERDICT: TC_name pass * 3 three times in a row
    LOG: text                 lines of the suite's output that hold the texts, in this order
    LOG-NOT: text             no line of the output holds the text
    STATUS: 1                 exit status of the suite (default: 0 when all verdicts are pass or none, else 1)
    ROOT: Module              root module (default: the file's module; needed in VERDICTS)
    OPTIONS: -G -O            more options for the compiler
    ARGUMENTS: --log all      arguments of the suite's executable
    ENVIRONMENT: NAME=value   a variable that the executable sees
    SOURCE: ../echo.c         a C source that is linked in too
    DEFINE: NAME              a macro for all C sources
    MEMORY: 60                megabytes that the executable may take (not counted with sanitizers)

A name in brackets, `LOG(ber): text`, makes a line count with that --encoding of the suite's ASN.1 types only.
A folder's program `peer` runs the suite beside what it speaks to, on free ports; the test is skipped where that is not
installed. A suite that imports the module Harness gets it from suites/harness. The generated C must compile without a
warning; the C compiler, its flags and more OPTIONS for all suites may be given (also by the variables SUITE_CC,
SUITE_C_FLAGS and SUITE_OPTIONS), so that they can be run through a matrix.
"""

import argparse
import os
import re
import shlex
import shutil
import socket
import subprocess
import sys
from pathlib import Path

TIMEOUT_SECONDS = 300
SKIPPED = 77
PEER_PORTS = {"SNMP_PORT": socket.SOCK_DGRAM, "DNS_PORT": socket.SOCK_DGRAM, "HTTP_PORT": socket.SOCK_STREAM, "LDAP_PORT": socket.SOCK_STREAM}
DIRECTIVE = re.compile(r"^(?:.*//)?\s*(VERDICT|LOG|LOG-NOT|STATUS|ROOT|OPTIONS|ARGUMENTS|ENVIRONMENT|SOURCE|DEFINE|MEMORY)"
                       r"(?:\(([\w-]+)\))?:\s*(.*?)\s*$")
FINISHED = re.compile(r"test case (?:\w+\.)?(\w+) finished with verdict (\w+)(?:: (.*?))?\r?$", re.MULTILINE)
HARNESS = Path(__file__).resolve().parent / "suites" / "harness" / "Harness.ttcn"
ENCODINGS = {"ber": "BER:1997", "ber-indefinite": "BER:1997-length-form-3",
             "per-aligned": "PER-BASIC-ALIGNED:1997", "per-unaligned": "PER-BASIC-UNALIGNED:1997"}
C_FLAGS = "-std=c11 -g -Wall -Werror -Wno-unused"

# Runs a command and tells the most memory that it took.
MEASURED = """import resource, subprocess, sys
status = subprocess.call(sys.argv[1:])
print("resident megabytes", resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss // 1024)
sys.exit(status)"""


def verdicts_of(text):
    many = re.fullmatch(r"(\w+) (\w+) \* (\d+)", text)
    return [many.groups()[:2]] * int(many[3]) if many else [tuple(text.split(None, 2))]


class Suite:
    """What a suite consists of and what is expected of it."""

    def __init__(self, place, encoding=None):
        place = place.resolve()
        self.sources = sorted(place.glob("*.ttcn")) if place.is_dir() else [place]
        if any("import from Harness" in source.read_text(encoding="utf-8") for source in self.sources):
            self.sources.append(HARNESS)
        self.asn1_sources = sorted(place.glob("*.asn")) if place.is_dir() else []
        self.c_sources = sorted(place.glob("*.c")) if place.is_dir() else []
        self.keys = sorted(place.glob("*.mcfg")) if place.is_dir() else []
        self.directives = {}
        expectations = place / "VERDICTS" if place.is_dir() else place
        text = expectations.read_text(encoding="utf-8")
        for line in text.split("\n"):
            match = DIRECTIVE.match(line)
            if match and match.group(2) in (None, encoding):
                self.directives.setdefault(match.group(1), []).append(match.group(3))
        if encoding:
            self.directives.setdefault("ENVIRONMENT", []).append(f"ORVANE_ASN1_CODEC={ENCODINGS[encoding]}")
        self.c_sources += [(place / name).resolve() for name in self.directives.get("SOURCE", [])]
        module = re.search(r"^\s*module\s+(\w+)", text, re.MULTILINE)
        self.root = self.first("ROOT", module.group(1) if module else "")
        self.verdicts = [row for text in self.directives.get("VERDICT", []) for row in verdicts_of(text)]
        self.arguments = shlex.split(self.first("ARGUMENTS"))
        root = next((text for text in (source.read_text(encoding="utf-8") for source in self.sources)
                     if re.search(rf"(?m)^\s*module\s+{self.root}\b", text)), "")
        if not re.search(r"(?m)^\s*control\b", root):
            self.run_all(re.findall(r"(?m)^\s*testcase\s+(\w+)", root))
        if not self.root or not self.verdicts:
            raise ValueError(f"{expectations}: no root or no verdicts")

    def run_all(self, names):
        """Makes the suite run the test cases of these names."""
        told = {row[0]: row for row in self.verdicts}
        self.verdicts = [told.get(name, (name, "pass")) for name in names]
        self.arguments += ["--testcase", ",".join(names)]

    def first(self, name, default=""):
        return self.directives.get(name, [default])[0]

    def status(self):
        good = all(verdict in ("pass", "none") for _, verdict, *_ in self.verdicts)
        return int(self.first("STATUS", "0" if good else "1"))


def run(command, folder, what, statuses=(0,), variables=()):
    """Output of a command; ends the program when the status is another one."""
    environment = {"ASAN_OPTIONS": "detect_leaks=0", **os.environ, **dict(line.split("=", 1) for line in variables)}
    try:
        process = subprocess.run(command, cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                 stderr=subprocess.STDOUT, timeout=TIMEOUT_SECONDS, check=False, env=environment)
    except subprocess.TimeoutExpired as error:
        print((error.stdout or b"").decode("utf-8", errors="replace")[-4000:])
        sys.exit(f"{what}: no end within {TIMEOUT_SECONDS} seconds")
    output = process.stdout.decode("utf-8", errors="replace")
    if process.returncode not in statuses:
        print(output[-8000:])
        sys.exit(f"{what}: status {process.returncode}")
    return output


def write_mcfg(suite, base, folder, sanitize):
    """The MCFG file of the installation with the suite's C sources added."""
    text = base.read_text(encoding="utf-8")
    if suite.c_sources:
        text += "USER_SRCS = " + " ".join(f'"{source}"' for source in suite.c_sources) + "\n"
    text += "".join(keys.read_text(encoding="utf-8") for keys in suite.keys)
    if sanitize:
        text += f"LD_FLAGS += -g -fsanitize={sanitize}\n"
    path = folder / "suite.mcfg"
    path.write_text(text, encoding="utf-8")
    return path


def build(suite, orvane, folder, arguments):
    installation = orvane.parent.parent
    mcfg = write_mcfg(suite, installation / "share" / "orvane" / "make_linux.mcfg", folder,
                      arguments.sanitize)
    command = [str(orvane), "-v", "2", "-K", "-f", str(mcfg), "-r", suite.root,
               *shlex.split(suite.first("OPTIONS")), *shlex.split(arguments.options), "-F", *map(str, suite.sources)]
    if suite.asn1_sources:
        command += ["-A", *map(str, suite.asn1_sources)]
    run(command, folder, "compilation")
    defines = " ".join(f"-D{name}" for name in suite.directives.get("DEFINE", []))
    make = ["make", "-s", f"CFLAGS={C_FLAGS} {arguments.c_flags} {defines}"]
    if arguments.cc:
        make.append(f"CC={arguments.cc}")
    run(make, folder, "make")


def free_port(kind):
    with socket.socket(socket.AF_INET, kind) as one:
        one.bind(("127.0.0.1", 0))
        return one.getsockname()[1]


def compare(suite, output):
    """What differs from the expectations, as lines."""
    faults = []
    verdicts = FINISHED.findall(output)
    if len(verdicts) != len(suite.verdicts) or any(
            found[:len(expected)] != expected for expected, found in zip(suite.verdicts, verdicts)):
        faults += ["verdicts differ", f"  expected: {suite.verdicts}", f"  found:    {verdicts}"]
    lines = output.split("\n")
    position = 0
    for text in suite.directives.get("LOG", []):
        found = next((i for i in range(position, len(lines)) if text in lines[i]), None)
        if found is None:
            faults.append(f"no line after line {position} holds: {text}")
            break
        position = found + 1
    for text in suite.directives.get("LOG-NOT", []):
        faults += [f"unwanted line: {line}" for line in lines if text in line]
    return faults


def main():
    parser = argparse.ArgumentParser(description="Compiles, builds and runs a test suite.")
    parser.add_argument("--orvane", required=True, type=Path)
    parser.add_argument("--out", required=True, type=Path)
    parser.add_argument("--sanitize", default="", help="sanitizers that the run-time library is built with")
    parser.add_argument("--encoding", choices=ENCODINGS, help="how values of ASN.1 types are encoded")
    parser.add_argument("--cc", default=os.environ.get("SUITE_CC", ""), help="the C compiler")
    parser.add_argument("--c-flags", default=os.environ.get("SUITE_C_FLAGS", "-O0"), help="more flags for it")
    parser.add_argument("--options", default=os.environ.get("SUITE_OPTIONS", ""), help="more options for the compiler of all suites, such as =-G")
    parser.add_argument("suite", type=Path)
    arguments = parser.parse_args()
    suite = Suite(arguments.suite, arguments.encoding)
    peer = arguments.suite.resolve() / "peer"
    if peer.exists() and subprocess.run([str(peer), "--installed"], check=False).returncode != 0:
        print(f"skipped: the peer of {arguments.suite.name} is not installed")
        return SKIPPED
    folder = arguments.out.resolve()
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    build(suite, arguments.orvane.resolve(), folder, arguments)
    command = [sys.executable, "-c", MEASURED, f"./{suite.root}", *suite.arguments]
    variables = list(suite.directives.get("ENVIRONMENT", ()))
    if peer.exists():
        command = [str(peer), str(folder / "peer"), *command]
        variables += [f"{name}={free_port(kind)}" for name, kind in PEER_PORTS.items()]
    output = run(command, folder, "execution", (suite.status(),), variables)
    output, _, megabytes = output.rpartition("resident megabytes ")
    faults = compare(suite, output)
    if not arguments.sanitize and int(megabytes) > int(suite.first("MEMORY", "1000")):
        faults.append(f"the suite took {megabytes.strip()} megabytes")
    if faults:
        print(output[-8000:])
        print("\n".join(faults))
        return 1
    print(f"{len(suite.verdicts)} verdicts as expected")
    return 0


if __name__ == "__main__":
    sys.exit(main())
