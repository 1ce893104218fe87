#!/usr/bin/env python3
"""Builds the suites of results/ and looks at how their runs end, what they print and which reports they write.

    results.py --orvane PROGRAM --out FOLDER [--sanitize LIST]
"""

import argparse
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import time
from pathlib import Path

from makefiles import Place

SOURCES = Path(__file__).resolve().parent / "results"
failures = []


def check(holds, what, *more):
    if not holds:
        failures.append(what)
        print("FAILED:", what, *more)


class Suite:
    """An executable in a folder of its own."""

    def __init__(self, options, name):
        self.folder = options.out.resolve() / name
        self.sanitized = bool(options.sanitize)
        shutil.rmtree(self.folder, ignore_errors=True)
        self.folder.mkdir(parents=True)
        place = Place(self.folder, options.orvane.resolve(), options.sanitize)
        place.add_to_mcfg(f'USER_SRCS = "{SOURCES}/peer.c"\n')
        place.compile(files=[str(SOURCES / f"{name}.ttcn")], root=name)
        place.make("-s")
        self.command = [str(self.folder / name)]

    def path(self, name):
        return self.folder / name

    def read(self, name):
        return self.path(name).read_text(encoding="utf-8")

    def start(self, arguments, **more):
        environment = {**os.environ, "PEER_ENDS": str(self.path("ends"))}
        return subprocess.Popen(self.command + arguments.split(), cwd=self.folder, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, text=True, env=environment, **more)

    def run(self, arguments, status=1, seconds=30):
        """Output without durations, and what stands on standard error."""
        process = self.start(arguments)
        try:
            out, err = process.communicate(timeout=seconds)
        except subprocess.TimeoutExpired:
            process.kill()
            out, err = process.communicate()
            check(False, f"no end: {arguments}")
        check(process.returncode == status, f"status of {arguments}", process.returncode, out, err)
        return re.sub(r" \d+\.\d{3} s", "", out), err


def check_has(text, parts, what):
    for part in parts:
        check(part in text, what, f"lacks {part!r}:\n{text}")


ENDS = {"crash": "user code ended with signal 'Segmentation fault'", "abort": "user code ended with signal 'Aborted'",
        "exit": "user code ended the process"}


def check_ends(suite):
    """The named test case gets verdict error, the adapter hears of its end, reports are whole, the status is not 0."""
    for word, reason in ENDS.items():
        if suite.sanitized and word != "exit":
            continue  # the sanitizer has handlers of its own
        suite.path("ends").unlink(missing_ok=True)
        out, _ = suite.run(f"-vnone -t TC_pass,TC_{word},TC_none --junit j.xml --json j.json")
        check_has(out, [f"Outcome.TC_{word}: error Outcome.ttcn:22 {reason}\n", "run ended early", "\n2 test cases: 1 pass"],
                  word)
        check(suite.read("ends") == "end\nend\n", f"triEndTestCase after {word}")
        check_junit(suite, "j.xml", tests=2, errors=1)
        check(json.loads(suite.read("j.json").splitlines()[-1])["bad"] == 1, f"JSON after {word}")
    for word, place in ("block", "22"), ("spin", "22"), ("wait", "54"), ("loop", "5"):
        out, _ = suite.run(f"-vnone -T 0.3 -t TC_{word},TC_none")
        check_has(out, [f"Outcome.TC_{word}: error Outcome.ttcn:{place}", "the time given to the test case is over",
                        "Outcome.TC_none: none\n"], word)
        process = suite.start(f"-vnone -t TC_{word},TC_none --tap t.tap")
        while not suite.path("ends").exists() and process.poll() is None:
            time.sleep(0.01)
        time.sleep(0.2)
        process.send_signal(signal.SIGINT if word in ("wait", "spin") else signal.SIGTERM)
        out, _ = process.communicate(timeout=30)
        check(process.returncode == 1 and "the run was ended by signal" in out, f"signal in {word}", out)
        check(suite.read("t.tap").endswith("1..1\n"), f"TAP after a signal in {word}")
    process = suite.start("-vnone -t TC_wait --junit killed.xml")
    time.sleep(0.3)
    process.kill()
    process.communicate()
    check(not suite.path("killed.xml").exists(), "half a report")


def check_lost_output(suite):
    for arguments in ("-L /dev/full -t TC_pass", "-vnone -t TC_pass --junit /dev/full", "-vnone -t TC_pass --html /dev/full"):
        _, err = suite.run(arguments)
        check_has(err, ["cannot be written: No space left on device\n"], arguments)
    with open("/dev/full", "w") as full:
        process = subprocess.run(suite.command + ["-vnone", "-t", "TC_pass"], stdout=full, stderr=subprocess.PIPE, text=True)
    check(process.returncode == 1 and "standard output cannot be written" in process.stderr, "full standard output")


def check_names(suite):
    for arguments, text in (("-t TC_psas", "there is no test case 'TC_psas', did you mean 'Outcome.TC_pass'?"),
                            ("-p tmies=3", "there is no module parameter 'tmies', did you mean 'Outcome.times'?"),
                            ("-p times=x -vnone", "module parameter Outcome.times cannot be set to x"),
                            ("--jnuit x", "unknown option '--jnuit', did you mean '--junit'?"),
                            ("--junit /no/such/file", "could not open '/no/such/file': No such file"),
                            ("--shard 3/2", "'3/2' is no value"), ("-j 0", "'0' is no value")):
        _, err = suite.run(arguments, status=2)
        check_has(err, [text], arguments)


def check_junit(suite, name, **numbers):
    path = suite.path(name)
    if shutil.which("xmllint"):
        done = subprocess.run(["xmllint", "--noout", "--schema", str(SOURCES / "junit.xsd"), str(path)],
                              capture_output=True, text=True)
        check(done.returncode == 0, f"schema of {name}", done.stderr)
    head = suite.read(name).split("\n")[1]
    for key, number in numbers.items():
        check(f' {key}="{number}"' in head, f"{key} of {name}", head)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--orvane", required=True, type=Path)
    parser.add_argument("--out", required=True, type=Path)
    parser.add_argument("--sanitize", default="", help="sanitizers that the run-time library is built with")
    options = parser.parse_args()
    suite, steered = Suite(options, "Outcome"), Suite(options, "Steered")
    check_names(suite)
    check_lost_output(suite)
    check_ends(suite)
    for more in "", " -s":
        _, err = steered.run("-vnone -T 0.3 -p stuck=true" + more)
        check_has(err, ["the time given to the control part is over"], "a control part that is stuck" + more)
    print(f"{len(failures)} failures")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
