#!/usr/bin/env python3
"""Measures what reports cost: a run of 1,000 test cases and 100,000 events without and with each of them, and how
long headless Chromium takes to show the page, and a chart of 10,000 events.

    reports.py --orvane PROGRAM [--testcases 1000] [--messages 20] [--chart 2500]

Prints seconds on the clock, sizes, and the load of the machine, which the numbers depend on. Exits with 1 when a step
fails.
"""

import argparse
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time
from pathlib import Path

SUITE = """module Reports {{
  type record Message {{ integer number, charstring text }}
  type port P message {{ inout Message }}
  type component C {{ port P p; timer guard := 1.0 }}
  function echo(integer n) runs on C {{
    for (var integer i := 0; i < n; i := i + 1) {{
      guard.start;
      p.send(Message:{{ i, "some text of a usual length" }});
      p.receive(Message:{{ i, ? }});
      guard.stop;
    }}
    setverdict(pass);
  }}
  testcase TC_chart() runs on C {{ map(mtc:p, system:p); echo({chart}); }}
  testcase TC_echo(integer n) runs on C {{ map(mtc:p, system:p); echo(n); }}
  control {{ for (var integer i := 0; i < {testcases}; i := i + 1) {{ execute(TC_echo({messages})) }} }}
}}
"""
FORMS = ("junit", "tap", "json", "html", "pcap", "coverage")


def clock(command, folder, times=3):
    """The best of several runs: seconds on the clock, and of all processors together, which say more on a busy machine."""
    best, work = None, None
    for _ in range(times):
        begin = time.perf_counter()
        process = subprocess.Popen(command, cwd=folder, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL if command[0] == "chromium" else None)
        _, status, usage = os.wait4(process.pid, 0)
        if status:
            raise subprocess.CalledProcessError(status, command)
        seconds, used = time.perf_counter() - begin, usage.ru_utime + usage.ru_stime
        best, work = min(best or seconds, seconds), min(work or used, used)
    return best, work


def say(what, measured, more=""):
    print(f"{what:34} {measured[0]:8.3f} s  {measured[1]:6.3f} s of processors  {more}", flush=True)


def measure_page(folder, page, click):
    """From the start of the browser, which is told apart, to the page as it looks after a click on a test case."""
    base = ["chromium", "--headless", "--no-sandbox", "--disable-gpu", "--window-size=1400,900"]
    (folder / "empty.html").write_text("<p>")
    text = (folder / page).read_text(encoding="utf-8")
    (folder / "shown.html").write_text(text.replace("</body>", f"<script>{click}</script></body>"), encoding="utf-8")
    start = clock([*base, "--screenshot=empty.png", f"file://{folder}/empty.html"], folder, 2)
    seconds = clock([*base, f"--screenshot={page}.png", f"file://{folder}/shown.html"], folder, 2)
    say(f"{page} in the browser", seconds, f"{start[0]:.2f} s of it without a page")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--orvane", required=True, type=Path)
    parser.add_argument("--testcases", type=int, default=1000)
    parser.add_argument("--messages", type=int, default=20)
    parser.add_argument("--chart", type=int, default=2500)
    parser.add_argument("--keep", type=Path, help="leave the reports in this folder")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as name:
        folder = options.keep.resolve() if options.keep else Path(name)
        folder.mkdir(exist_ok=True)
        (folder / "Reports.ttcn").write_text(SUITE.format(**vars(options)))
        runner = [str(options.orvane.resolve().parent / "orvane-run"), "Reports.ttcn", "--loopback", "-vnone"]
        subprocess.run([*runner, "--list"], cwd=folder, check=True, stdout=subprocess.DEVNULL)
        suite = [str(folder / ".orvane-run/Reports.run"), "-b", "-vnone"]
        print(f"load {os.getloadavg()[0]:.1f} on {os.cpu_count()} cores")
        alone = clock(suite, folder)
        say("run", alone)
        for form in FORMS:
            seconds = clock([*suite, f"--{form}", f"r.{form}"], folder)
            say(f"run with --{form}", seconds, f"{(folder / f'r.{form}').stat().st_size / 1e6:.1f} MB, {seconds[0] - alone[0]:+.3f} s")
        events = len(re.findall(r'"event":"(?!begin|end_testcase|run)', (folder / "r.json").read_text(encoding="utf-8")))
        together = clock([*suite, *(part for form in FORMS for part in (f"--{form}", f"r.{form}"))], folder)
        say("all reports", together, f"{events} events, {together[0] - alone[0]:+.3f} s")
        clock([*suite, "-t", "TC_chart", "--html", "chart.html"], folder, 1)
        if shutil.which("chromium"):
            os.rename(folder / "r.html", folder / "page.html")
            measure_page(folder, "page.html", "")
            measure_page(folder, "chart.html", "")
        print(f"load {os.getloadavg()[0]:.1f}")


if __name__ == "__main__":
    sys.exit(main())
