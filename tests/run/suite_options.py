#!/usr/bin/env python3
"""Builds a suite of two modules with each kind of main file, runs it with all options and compares what it prints.

    suite_options.py --orvane PROGRAM --out FOLDER [--sanitize LIST]
"""

import argparse
import re
import shutil
import subprocess
import sys
from pathlib import Path

from makefiles import Place

SOURCES = Path(__file__).resolve().parent / "options"
PROGRAMS = {"plain": (), "registry": ("-i",), "server": ("-i", "-R")}

TWO_MODULES_LOG = """\
info Module Base registered
info Module Main registered
info Base.ttcn:6 Module Base initialized
info Main.ttcn:9 Module Main initialized
info Base.ttcn:6 Module Base - module parameters initialized
info Main.ttcn:9 Module Main - module parameters initialized
info control Main.ttcn:8 test case Main.tc_good started
ttcn3 mtc Main.ttcn:4 twice 21 is 42 limit 7
info control Main.ttcn:8 test case Main.tc_good finished with verdict pass
info control Main.ttcn:8 test case Main.tc_wrong started
info mtc Main.ttcn:5 verdict set to fail: on purpose 5
info control Main.ttcn:8 test case Main.tc_wrong finished with verdict fail: on purpose 5
info control Main.ttcn:8 test case Main.tc_error started
error mtc Main.ttcn:6 value 15 does not belong to type 'Small'
info control Main.ttcn:8 test case Main.tc_error finished with verdict error: value 15 does not belong to type 'Small'
info Module Base finalized
info Module Main finalized
"""

TWO_MODULES_OUT = """\
Main.tc_good: pass
Main.tc_wrong: fail Main.ttcn:5 on purpose 5
Main.tc_error: error Main.ttcn:6 value 15 does not belong to type 'Small'
failed:
  Main.tc_wrong: fail Main.ttcn:5 on purpose 5
  Main.tc_error: error Main.ttcn:6 value 15 does not belong to type 'Small'
3 test cases: 1 pass, 0 none, 0 inconc, 1 fail, 1 error
"""

# program, arguments, status, output, log, perhaps input; None is not compared, a list holds what must occur. Durations
# are taken out.
CASES = [
    ("plain", ["--no-times"], 1, TWO_MODULES_OUT, TWO_MODULES_LOG),
    ("plain", ["-n", "-v", "ttcn3", "-t", "tc_good", "--param", "Base.step=11"], 0,
     "Main.tc_good: pass\n1 test case: 1 pass, 0 none, 0 inconc, 0 fail, 0 error\n",
     "ttcn3 mtc Main.ttcn:4 twice 21 is 231 limit 7\n"),
    ("plain", ["-n", "--testcase=Main.tc_good,tc_wrong", "-vnone"], 1,
     ["Main.tc_good: pass\n", "Main.tc_wrong: fail Main.ttcn:5 on purpose 5\n"], ""),
    ("plain", ["--list", "-vnone"], 0,
     "module Base\nmodule Main (root)\n  testcase Main.tc_good\n  testcase Main.tc_wrong\n"
     "  testcase Main.tc_error\n  testcase Main.tc_param\n", ""),
    ("plain", ["--help"], 0, ["--simulated-time", "Exit status"], ""),
    ("plain", ["--unknown"], 2, "", ["unknown option '--unknown'"]),
    ("plain", ["-t", "nothing"], 2, "", ["there is no test case 'nothing'"]),
    ("plain", ["-t", "tc_param"], 2, "", ["test case 'tc_param' has parameters"]),
    ("plain", ["-n", "-vttcn3", "-t", "tc_good", "-P", "/dev/stdin"], 0, None,
     "ttcn3 mtc Main.ttcn:4 twice 21 is 63 limit 7\n", "# comment\n\n  Base.step = 3  \r\nother := { 1, 2 }\n"),
    ("plain", ["-n", "-P", "/dev/stdin"], 2, "", ["/dev/stdin, line 2: '=' is missing"], "fine = 1\nno equals sign\n"),
    ("plain", ["-n", "-P", "/no/such"], 2, "", ["could not open '/no/such'"]),
    ("plain", ["-n", "-p", "step=abc"], 2, "",
     ["module parameter Base.step cannot be set to abc: an integer is missing at character 1"]),
    ("registry", ["--no-times"], 1, TWO_MODULES_OUT, TWO_MODULES_LOG),
    ("registry", ["-vnone", "-t", "tc_good"], 0, ["Main.tc_good: pass\n"], ""),
    ("registry", ["--list"], 0, "module Base\nmodule Main\n", ""),
    ("registry", ["-t", "nothing"], 2, "", ["there is no test case 'nothing'"]),
    ("registry", ["-x"], 1, "", ["unknown option '-x'"]),
    ("server", ["--list"], 0, "module Base\nmodule Main\n", ""),
    ("server", ["-vnone"], 0, """\
module Base
module Main
error: no root module is chosen
error: no such module
ok
module Base
module Main (root)
  testcase Main.tc_good
  testcase Main.tc_wrong
  testcase Main.tc_error
  testcase Main.tc_param
Main.tc_good: pass
1 test case: 1 pass, 0 none, 0 inconc, 0 fail, 0 error
done 0
done 2
Main.tc_good: pass
Main.tc_wrong: fail Main.ttcn:5 on purpose 5
Main.tc_error: error Main.ttcn:6 value 15 does not belong to type 'Small'
failed:
  Main.tc_wrong: fail Main.ttcn:5 on purpose 5
  Main.tc_error: error Main.ttcn:6 value 15 does not belong to type 'Small'
3 test cases: 1 pass, 0 none, 0 inconc, 1 fail, 1 error
done 1
ok
error: unknown command 'frobnicate'
""", None, "modules\nrun tc_good\nroot Nowhere\nroot Main\ntestcases\nrun tc_good\nrun nothing\n\n"
            "control\nparam step=3\nfrobnicate\nquit\nmodules\n"),
    ("plain", ["-n", "-L", "/nonexistent/log"], 2, "", ["no value for option"]),
]


def agrees(expected, actual):
    if expected is None:
        return True
    if isinstance(expected, list):
        return all(part in actual for part in expected)
    return expected == actual


def build(options):
    """The executables by their names."""
    made = {}
    for name, more in PROGRAMS.items():
        folder = options.out.resolve() / name
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        place = Place(folder, options.orvane.resolve(), options.sanitize)
        place.compile(*more, files=[str(SOURCES / "Base.ttcn"), str(SOURCES / "Main.ttcn")], root="Main")
        place.make("-s")
        made[name] = str(folder / "Main")
    return made


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--orvane", required=True, type=Path)
    parser.add_argument("--out", required=True, type=Path)
    parser.add_argument("--sanitize", default="", help="sanitizers that the run-time library is built with")
    programs = build(parser.parse_args())
    failures = 0
    for program, arguments, status, out, log, *given in CASES:
        command = [programs[program]] + arguments
        try:
            run = subprocess.run(command, input="".join(given), capture_output=True, text=True, timeout=60)
        except subprocess.TimeoutExpired:
            print(f"FAILED (no end): {' '.join(command)}")
            failures += 1
            continue
        log_lines = [line for line in run.stderr.splitlines(True) if "ASan doesn't fully support" not in line]
        run.stderr = "".join(log_lines)
        run.stdout = re.sub(r" \d+\.\d{3} s", "", run.stdout)
        if run.returncode == status and agrees(out, run.stdout) and agrees(log, run.stderr):
            continue
        failures += 1
        print(f"FAILED: {' '.join(command)}\nstatus {run.returncode}, expected {status}")
        print(f"--- output\n{run.stdout}--- expected\n{out}\n--- log\n{run.stderr}--- expected\n{log}")
    print(f"{len(CASES) - failures} of {len(CASES)} runs as expected")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
