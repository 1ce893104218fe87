#!/usr/bin/env python3
"""Builds the suites of results/ and looks at how their runs end, what they print and which reports they write.

    results.py --orvane PROGRAM --out FOLDER [--sanitize LIST]
"""

import argparse
import json
import os
import re
import resource
import shutil
import signal
import subprocess
import sys
import time
from pathlib import Path

from makefiles import Place

SOURCES = Path(__file__).resolve().parent / "results"
SHARE = Path(__file__).resolve().parents[2] / "share" / "bin"
failures = []


def has(tool):
    if not shutil.which(tool):
        print(f"SKIPPED: what {tool} makes of it, since that is not installed")
    return shutil.which(tool)


def check(holds, what, *more):
    if not holds:
        failures.append(what)
        print("FAILED:", what, *more)


class Suite:
    """An executable in a folder of its own."""

    def __init__(self, options, name):
        self.folder = options.out.resolve() / name
        self.more = {}  # of the environment
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
        environment = {"ASAN_OPTIONS": "detect_leaks=0", **os.environ, "PEER_ENDS": str(self.path("ends")), **self.more}
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
        "arith": "user code ended with signal 'Floating point exception'",
        "exit": "user code ended the process", "end": "user code ended the process with status 0",
        "kill": "user code ended the process with signal 'Killed'", "exec": "user code ended the process with status 0"}


def check_ends(suite):
    """The named test case gets verdict error, the adapter hears of its end, reports are whole, the status is not 0."""
    for word, reason in ENDS.items():
        if suite.sanitized and word in ("crash", "abort", "arith"):
            continue  # the sanitizer has handlers of its own
        suite.path("ends").unlink(missing_ok=True)
        out, _ = suite.run(f"-vinfo,event,error -L e.log --log-dir e -t TC_pass,TC_{word},TC_none --junit j.xml --json j.json --coverage c.info")
        at_once = "with status" in reason or "Killed" in reason
        check_has(out, [f"Outcome.TC_{word}: error Outcome.ttcn:22 {reason}\n", "run ended early", "\n2 test cases: 1 pass"],
                  word)
        log, sent = suite.read("e.log"), f'mtc:p: "{word}"\n'
        check_has(log, [f"TC_{word} finished with verdict error: "], f"end in the log after {word}")
        check(log.count(sent) == suite.read("e/mtc.log").count(sent) == 1 and -1 < log.find(sent) < log.find(reason), f"log after {word}", log)
        check(suite.read("ends") == "end\n" * (1 if at_once else 2), f"triEndTestCase after {word}")
        check_junit(suite, "j.xml", tests=2, errors=1)
        check(json.loads(suite.read("j.json").splitlines()[-1])["bad"] == 1, f"JSON after {word}")
        check_has(suite.read("c.info"), ["DA:22,1\n"], f"coverage after {word}")
    check_has(suite.run("-vnone -t TC_pass,TC_mute,TC_none")[0], ["TC_mute: error Outcome.ttcn:25 standard output cannot be written: Bad file", "\n3 test cases: 1 pass,"], "no output")
    suite.run("-vnone -t TC_close,TC_fail,TC_pass --junit j.xml --json j.json")
    check_junit(suite, "j.xml", tests=3, failures=1)
    check(len(re.findall('"event":"(end_testcase|verdict)"', suite.read("j.json"))) == 6, "JSON without the way to it")
    for order in "--jobs 2", "--shuffle", "--shard 1/1", "--explore 1":
        out, _ = suite.run(f"-vnone -T 0.5 {order} -p times=-1")
        check("Outcome.TC_loop: error Outcome.ttcn:56 the time given" in out or order == "--explore 1", f"time of all with {order}", out)
    for word, place in ("wait", "54"), ("loop", "5"), ("block", "22"), ("spin", "22"):
        if suite.sanitized and word in ("block", "spin"):
            continue
        for clock in ("", "-s ") if word != "wait" else ("",):
            out, _ = suite.run(f"-vnone {clock}-T 0.3 -t TC_{word},TC_none")
            # The code of a sanitizer may not be left at any moment; the run ends there.
            others = [] if suite.sanitized else ["Outcome.TC_none: none\n"]
            check_has(out, [f"Outcome.TC_{word}: error Outcome.ttcn:{place}", "the time given to the test case is over",
                            *others], clock + word)
        process = suite.start(f"-vnone -t TC_{word},TC_none --tap t.tap")
        while not suite.path("ends").exists() and process.poll() is None:
            time.sleep(0.01)
        time.sleep(0.2)
        process.send_signal(signal.SIGINT if word in ("wait", "spin") else signal.SIGTERM)
        out, _ = process.communicate(timeout=30)
        check(process.returncode == 1 and "the run was ended by signal" in out, f"signal in {word}", out)
        check(suite.read("t.tap").endswith("1..1\n"), f"TAP after a signal in {word}")
    for arguments in "-j 2 -t TC_pass,TC_replace", "-t TC_pass,TC_close":
        suite.run(f"-vevent {arguments} --json j.json" + " -L e.log" * ("-j" in arguments), status=0)
        check(suite.read("j.json").count('"event":"send"') == 1, "a job that closes its files")
    suite.run("-vnone -t TC_unheard,TC_pass --junit j.xml -j 2", status=0)
    def ignore():
        signal.signal(signal.SIGCHLD, signal.SIG_IGN)
        signal.signal(signal.SIGALRM, signal.SIG_IGN)
        resource.setrlimit(resource.RLIMIT_NOFILE, (12, 12))
    done = subprocess.run(suite.command + "-vinfo --log-dir few -T 0.5 -t TC_odd,TC_wait,TC_block".split(), cwd=suite.folder, capture_output=True, text=True, preexec_fn=ignore, timeout=20)
    check(done.returncode == 1 and done.stdout.count("time given to the test case is over") == 2 + 2 and "TC_odd: fail" in done.stdout, "ignored signals and few descriptors", done.stdout, done.stderr)
    for status, word in (2, "exit"), (2, "end"), (2, "crash"), (2, "arith"), (0, "copy"):
        if suite.sanitized and word in ("crash", "arith"):
            continue
        suite.more = {"PEER_INIT": word}
        out, err = suite.run("-vnone -t TC_pass --junit start.xml", status=status)
        check("could not be started: user code ended" in err if status else out.count("pass") == 3, f"{word} at the start", out, err)
        check(status == 0 or not suite.path("start.xml").exists(), f"a report without a start: {word}")
    suite.more = {}
    suite.run("-vevent -L e.log -t TC_kill,TC_none -j 2")
    check(suite.read("e.log").count('mtc:p: "kill"\n') == 1, "log of a job that was killed")
    process = suite.start("-vevent -L e.log -t TC_wait --junit killed.xml")
    time.sleep(0.3)
    process.kill()
    process.communicate()
    check("start of v_long" in suite.read("e.log"), "log of a run that waits")
    check(not suite.path("killed.xml").exists() and list(suite.folder.glob("killed.xml.*.part")), "half a report")
    suite.run("-vnone -t TC_pass --junit killed.xml", status=0)
    check(not list(suite.folder.glob("killed.xml.*")), "what a killed run left")
    process = suite.start("-vnone -t TC_wait,TC_wait -j 2")
    time.sleep(0.5)
    process.send_signal(signal.SIGINT)
    check(re.search(r"TC_wait: error .*Outcome.ttcn:54 the run was ended by signal .Interrupt", process.communicate(timeout=30)[0]), "interrupted jobs")


def check_lost_output(suite):
    for arguments in ("-L /dev/full -t TC_pass", "-vnone -t TC_pass --junit /dev/full", "-vnone -t TC_pass --html /dev/full"):
        _, err = suite.run(arguments)
        check_has(err, ["cannot be written: No space left on device\n"], arguments)
    suite.path("link.xml").symlink_to("far.xml"), suite.path("far.xml").touch()
    check_has(suite.run("--junit link.xml --tap ./far.xml", status=2)[1], ["cannot both write to './far.xml'"], "two reports by a link")
    suite.run("-vnone -t TC_pass --junit link.xml --json /dev/stderr", status=0)
    check("testsuites" in suite.read("far.xml") and suite.path("link.xml").is_symlink() and Path("/dev/stderr").is_symlink(), "reports behind links")
    os.mkfifo(suite.path("pipe"))
    done = subprocess.run(["timeout", "1", *suite.command, "--tap", "pipe"], cwd=suite.folder, capture_output=True, timeout=20)
    check(done.returncode == 124, "an end while nobody reads a report", done)
    with open("/dev/full", "w") as full:
        process = subprocess.run(suite.command + ["-vnone", "-t", "TC_pass"], stdout=full, stderr=subprocess.PIPE, text=True)
    check(process.returncode == 1 and "standard output cannot be written" in process.stderr, "full standard output")


def check_names(suite):
    for arguments, text in (("-t TC_psas", "there is no test case 'TC_psas', did you mean 'Outcome.TC_pass'?"),
                            ("-p tmies=3", "there is no module parameter 'tmies', did you mean 'Outcome.times'?"),
                            ("-p times=x -vnone", "module parameter Outcome.times cannot be set to x"),
                            ("--port q=udp:127.0.0.1:9", "there is no port 'q'"), ("--port P[0]=udp:127.0.0.1:9", "did you mean 'p'?"),
                            ("-t !TC_psas", "there is no test case 'TC_psas', did you mean 'Outcome.TC_pass'?"),
                            ("--junit --html r", "option '--junit' needs a value"), ("--log=", "option '--log=' needs a value"),
                            ("--seed 99999999999999999999", "is no value"), ("--jnuit x", "unknown option '--jnuit', did you mean '--junit'?"),
                            ("--junit /no/such/file", "could not open '/no/such/file': No such file"),
                            ("--shard 3/2", "'3/2' is no value for option '--shard', which takes K/N: "), ("-c .", "could not open '.': "), ("-P .", "could not open '.'"), ("-j 0", "'0' is no value")):
        _, err = suite.run(arguments, status=2)
        check_has(err, [text], arguments)


def check_junit(suite, name, **numbers):
    path = suite.path(name)
    if has("xmllint"):
        done = subprocess.run(["xmllint", "--noout", "--schema", str(SOURCES / "junit.xsd"), str(path)],
                              capture_output=True, text=True)
        check(done.returncode == 0, f"schema of {name}", done.stderr)
    head = suite.read(name).split("<testsuite ")[1]
    for key, number in numbers.items():
        check(f'{key}="{number}"' in head.split(">")[0], f"{key} of {name}", head)


# Options, then the output without durations.
ALL_OUT = """\
Outcome.TC_pass: pass
Outcome.TC_none: none
Outcome.TC_inconc: inconc Outcome.ttcn:30
Outcome.TC_fail: fail Outcome.ttcn:33 on "purpose"
Outcome.TC_param: pass
Outcome.TC_param: pass
Outcome.TC_error: error Outcome.ttcn:38 division by zero
failed:
  Outcome.TC_inconc: inconc Outcome.ttcn:30
  Outcome.TC_fail: fail Outcome.ttcn:33 on "purpose"
  Outcome.TC_error: error Outcome.ttcn:38 division by zero
7 test cases: 3 pass, 1 none, 1 inconc, 1 fail, 1 error
"""


def check_choice(suite, steered):
    check(suite.run("-vnone -p times=2")[0] == ALL_OUT, "output of all")
    check(suite.run("-vnone -p times=2 -j 3")[0] == ALL_OUT, "output of several processes")
    parts = [suite.run(f"-vnone -p times=2 --shard {k}/3 --junit {k}.xml", status=int(k != 2))[0] for k in (1, 2, 3)]
    merged = subprocess.run([sys.executable, str(SHARE / "orvane-merge"), "merged.xml", "1.xml", "2.xml", "3.xml"], cwd=suite.folder)
    check(merged.returncode == 1, "status of a merge")
    check_junit(suite, "merged.xml", tests=7, failures=2, errors=1)
    names = re.findall(r'testcase name="(\w+)"', (suite.folder / "merged.xml").read_text())
    check(names == re.findall(r"(?m)^Outcome\.(\w+)", ALL_OUT), "order of a merge", names)
    lines = sorted(line for part in parts for line in part.splitlines() if line.startswith("Outcome"))
    check(lines == sorted(ALL_OUT.splitlines()[:7]), "the parts of a run", parts)
    for arguments, status, names in (("-t TC_p*,TC_n*", 0, "pass none"), ("-t Outcome.TC_?a*,!*fail,!TC_wait,!TC_*t?h,!TC_la*", 0, "pass race"),
                                     ("-t TC_pass,TC_fail --repeat 2", 1, "pass fail pass fail"),
                                     ("-t TC_pass,TC_fail,TC_none --until-fail", 1, "pass fail"),
                                     ("-t TC_pass,TC_fail,TC_none -j 2 --until-fail", 1, "pass fail"),
                                     ("-t TC_pass,TC_none,TC_default,TC_echo --shuffle --seed 3", 0, None)):
        out, _ = suite.run("-vnone -s " + arguments, status)
        found = re.findall(r"(?m)^Outcome.TC_(\w+)", out)
        check(found == (names or "").split() or (not names and sorted(found) == ["default", "echo", "none", "pass"] and
              "seed 3\n" in out and out == suite.run("-vnone -s " + arguments, status)[0]), arguments, out)
    out, _ = suite.run("-vnone -t TC_pass,TC_end,TC_crash,TC_none -j 2 --coverage c.info" if not suite.sanitized else "-vnone -t TC_end,TC_none -j 2 --coverage c.info")
    check_has(out, ["TC_end: error the process of the test case ended with status 0\n", "TC_none: none\n"], "processes that end")
    check_has(suite.read("c.info"), [f"DA:22,{1 if suite.sanitized else 2}\n"], "coverage of processes that end")
    check_has(steered.run("-vnone --explore 2")[1], ["and no other schedule is explored: it asks"], "steered schedules")
    out, err = steered.run("-vnone -j 2")
    check_has(out + err, ["run as a whole, in one process: it asks for verdicts", "TC_second: pass"], "steered by verdicts")
    out, _ = suite.run("-vnone -t TC_race,TC_default,TC_late,TC_guard --explore 60")
    check_has(out, ["TC_late: 60 schedules, 2 outcomes", "TC_race: 60 schedules, 2 outcomes", "TC_guard: 60 schedules, 2 outcomes", "TC_default: 60 schedules, 1 outcome\n"], "explore")
    found = re.findall(r"\d+ (\w+) Outcome.ttcn:\d+ .*--seed (\d+) -t Outcome.(TC_\w+)", out)
    check(len(found) == 7, "outcomes of all schedules", out)
    events = []
    for more in "", " -j 2":
        suite.run("-vinfo -t TC_race,TC_rnd --explore 3 --seed 7 --junit s.xml --json s.json --html s.html --tap s.tap -L s.log" + more)
        for report, texts in (("s.xml", ['"seed" value="7"', 'name="TC_race (seed 9)"']), ("s.json", [',"seed":7}\n', 'Outcome.TC_race","seed":9,']), ("s.html", ['seed = "7"', '"Outcome.TC_race (seed 9)"']),
                              ("s.tap", ["# seed 7\n", "Outcome.TC_rnd (seed 9)\n"]), ("s.log", [" info seed 7\n", "TC_rnd (seed 9) finished with"])):
            check_has(suite.read(report), texts, "seeds" + more)
        events.append(re.sub(r'"(started|time|duration)":[0-9.]+', "", suite.read("s.json")))
    check(events[0] == events[1], "events of schedules in processes")
    rnd = re.findall(r'TC_rnd","seed":9,"verdict":"fail","text":"(.*?)"', events[0])
    check(rnd and rnd[0] in suite.run("-vnone -t TC_rnd --explore 1 --seed 9")[0] and rnd[0] in suite.run("-vnone -t TC_rnd --seed 9")[0], "random numbers of a seed", rnd)
    out, _ = suite.run("-vnone -t TC_busy,TC_race --explore 9 --until-fail")
    check_has(out, ["TC_busy: 9 schedules, 1 outcome\n", "TC_race: 1 schedule, 1 outcome\n"], "a busy loop, and the first bad schedule")
    for verdict, seed, name in found:
        out, _ = suite.run(f"-vnone -t {name} --explore 1 --seed {seed}", int(verdict not in ("pass", "none")))
        check_has(out, [f"1 {verdict} "], "the schedule of a seed")
    suite.path("Outcome.cfg").write_text("# all but errors\nparam = times = 2\nverbose none\ntestcase = TC_f*\n")
    check_has(suite.run("--config")[0], ["1 test case: 0 pass, 0 none, 0 inconc, 1 fail"], "configuration")
    check_has(suite.run("-t TC_pass --config", status=0)[0], ["1 test case: 1 pass"], "the command line has the last word")
    for line, text in (("param = tmies = 2", "bad.cfg, line 1: there is no module parameter 'tmies', did you mean"),
                       ("testcase = TC_pass , TC_psas", "bad.cfg, line 1: there is no test case 'TC_psas'"),
                       ("port = q=udp:127.0.0.1:9", "bad.cfg, line 1: there is no port 'q'"), ("config = x", "bad.cfg, line 1: option 'config' stands"),
                       ("param = times = x", "bad.cfg, line 1: module parameter Outcome.times cannot be set to x"),
                       ("verbsoe = none", "bad.cfg, line 1: unknown option 'verbsoe', did you mean 'verbose'?"),
                       ("junit = /no/such/file", "bad.cfg, line 1: could not open '/no/such/file': No such"), ("testcase = ,", "bad.cfg, line 1: ',' is no value"),
                       ("params = /no/such", "bad.cfg, line 1: could not open '/no/such': No such"), ("x" * 300, "xx ... and 100 octets more'"),
                       ("junit = a.xml\nlog = ./a.xml", "bad.cfg, line 2: option 'log' and option 'junit' cannot both write to './a.xml'"), ("x" * 5000000, "bad.cfg, line 1: the line is too long")):
        suite.path("bad.cfg").write_text("\ufeff" + line + "\r\n")
        check_has(suite.run("-c bad.cfg", status=2)[1], [text], line)


PATH = 'answers[0].rdata.a: expected "192.0.2.11", actual "192.0.2.10"'


def check_logs(suite):
    out, err = suite.run("-b -t TC_mismatch")
    check_has(out + err, ["info mtc Outcome.ttcn:65 mismatch: " + PATH, "Outcome.ttcn:65 unexpected message: " + PATH], "mismatch")
    check_has(suite.run("-vnone -t TC_match")[0], [f"TC_match: fail Outcome.ttcn:95 {PATH}\n"], "match")
    check("vexa" not in (out + err).lower(), "names of generated code", err)
    suite.run("-t TC_echo -v all --log-dir logs --log-format columns", status=0)
    check_has(suite.read("logs/mtc.log"), [" event   mtc        Outcome.ttcn:50          system:p sends '6563686F'O\n"], "octets")
    # Names of components may be any text; those that make the same name of a file share it, and there are more than descriptors.
    out, _ = suite.run("-t TC_odd -n -v all --log-dir odd --log-format columns")
    check_has(out, ["TC_odd: fail Outcome.ttcn:96 \\n\\x1B\\xED\\xA0\\x80\\xC2\\x9B\u00E4\n"], "a reason that is no text")
    check(suite.read("odd/a_b.log").count("verdict") == 2 and suite.path("odd/c69.log").exists(), "names of components")
    check_has(suite.read(next(suite.path("odd").glob("long*"))), ["event   ..onglongx Outcome.ttcn:96          verdict"], "columns")
    suite.run("-t TC_none,TC_none,TC_pass -j 2 --log-dir logs", status=0)
    check(suite.read("logs/mtc.log").count("\n") == 2 and suite.read("logs/control.log").count("started") == 3, "folder of several processes")
    suite.run("-t TC_none -L log.json --log-format json", status=0)
    check(json.loads(suite.read("log.json").splitlines()[-2])["text"].endswith("verdict none"), "log in JSON")
    check_has(suite.run("-t TC_none", status=0)[1], ["ttcn3 mtc Outcome.ttcn:29 nothing <&>\\x1B1\n"], "what would steer a terminal")
    for more in "", " -j 2":
        suite.run("-b -n -L small.log --log-size 1 -v all -p times=20" + more)
        check(suite.path("small.log.2").exists() and suite.path("small.log").stat().st_size <= 1024, "sizes of logs" + more)
        parts = [suite.read(path.name) for path in suite.folder.glob("small.log*")]
        check(sum(part.count("TC_param started") for part in parts) == 20, "parts of logs" + more)
        for path in suite.folder.glob("small.log*"):
            path.unlink()


def check_told(suite):
    check_has(suite.run("-vevent -t TC_result")[1], ["reply on ptc3:q: Sig:{ a := -, b := 7 } value 9\n"], "the result of a call in the log")
    out, _ = suite.run("-vnone")
    told = dict(re.findall(r"(?m)^Told.(\w+): (?:fail|error) Told.ttcn:\d+ (.*)$", out))
    for name, text in re.findall(r"(?ms)^  testcase (\w+).*?// (.*?)$", (SOURCES / "Told.ttcn").read_text()):
        check(told.get(name) == text, f"what {name} tells", told.get(name))


def check_colors(suite):
    for words, is_colored in ({}, False), ({"CLICOLOR_FORCE": "1"}, True), ({"FORCE_COLOR": "1"}, True), ({"FORCE_COLOR": "1", "NO_COLOR": "1"}, False):
        os.environ.update(words)
        check_has(suite.run("-vnone -t TC_lines")[0], ["Told.TC_lines: " + ("\033[31mfail\033[0m" if is_colored else "fail")], f"colors by {words}")
        for word in words:
            del os.environ[word]


def check_reports(suite):
    suite.run("-p times=2 -j 2 --junit j.xml --json j.json --html r.html --coverage c.info --tap t.tap")
    check_junit(suite, "j.xml", tests=7, failures=2, errors=1)
    check_has(suite.read("j.xml"), ['message="on &quot;purpose&quot;"', "info mtc Outcome.ttcn:33 verdict set to fail: on &quot;purpose&quot;\n"], "JUnit")
    check(suite.read("t.tap").count("\nok ") == 4 and suite.read("t.tap").endswith("\n1..7\n"), "TAP")
    events = [json.loads(line) for line in suite.read("j.json").splitlines()]
    check([e["verdict"] for e in events if e["event"] == "end_testcase"][3] == "fail", "JSON")
    check_has(suite.read("c.info"), ["BRDA:32,0,0,1\nBRDA:32,0,1,0\n", "DA:35,0\n", "DA:33,1\n", "FNDA:0,TC_echo\n",
                                      "FNDA:2,kind_of\n", "BRDA:123,0,0,0\nBRDA:125,0,0,2\n",
                                      "FNDA:12,idle\n", "FNDA:4,beside\n", "DA:134,4\nDA:135,4\nDA:136,4\n",
                                      "BRDA:134,0,0,2\nBRDA:134,0,1,2\nBRDA:134,1,0,2\nBRDA:134,1,1,0\nBRDA:134,2,0,2\nBRDA:134,2,1,2\n"
                                      "BRDA:135,0,0,4\nBRDA:135,1,0,0\nBRDA:136,0,0,2\nBRDA:136,0,1,2\n"], "coverage")
    check("DA:133," not in suite.read("c.info"), "coverage of a declaration without a value")
    os.rename(suite.path("Outcome.c"), suite.path("kept.c"))
    suite.run("-p times=2 --coverage c.info")
    check_has(suite.read("c.info"), ["BRDA:134,0,0,10\nBRDA:134,1,0,10\n"], "coverage without the code")
    os.rename(suite.path("kept.c"), suite.path("Outcome.c"))
    check_has(suite.run("-vnone -t TC_pass,TC_fail --tap")[0], ["TAP version 13\nok 1 - Outcome.TC_pass\nnot ok 2"], "TAP")
    if has("genhtml"):
        done = subprocess.run(["genhtml", "-q", "--branch-coverage", "-o", "pages", "c.info"], cwd=suite.folder)
        check(done.returncode == 0 and suite.path("pages/index.html").exists(), "genhtml")
    for more, octets in (" -b", "226563686f22"), ("", "6563686f"):
        suite.run("-t TC_echo --pcap p.pcap --html r.html" + more, status=0)
        if has("tshark"):
            out = subprocess.run(["tshark", "-r", "p.pcap", "-T", "fields", "-e", "data.data", "-e", "ip.dst"], cwd=suite.folder,
                                 capture_output=True, text=True).stdout
            check(out == f"{octets}\t10.0.0.2\n{octets}\t10.0.0.1\n", "tshark", out)
    if has("chromium"):
        check_page(suite)


def check_page(suite):
    """What the page shows after a click on the first arrow and a key that goes on to the message that comes back."""
    page = suite.read("r.html").replace("</body>", """<script>
document.querySelector('.row[data-r="0"] .hit').dispatchEvent(new MouseEvent("click", { bubbles: true }));
$("view").dispatchEvent(new KeyboardEvent("keydown", { key: "ArrowDown" }));
document.title += location.hash;</script></body>""")
    suite.path("clicked.html").write_text(page)
    done = subprocess.run(["chromium", "--headless", "--no-sandbox", "--disable-gpu", "--virtual-time-budget=2000", "--dump-dom",
                           f"file://{suite.path('clicked.html')}"], capture_output=True, text=True, timeout=120)
    check_has(done.stdout, ['class="arrow', ">mtc<title>mtc</title></text>", "octets    6563686F", "<title>Outcome.TC_echo: pass#1-Outcome.TC_echo</title>"], "page")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--orvane", required=True, type=Path)
    parser.add_argument("--out", required=True, type=Path)
    parser.add_argument("--sanitize", default="", help="sanitizers that the run-time library is built with")
    options = parser.parse_args()
    suite, steered = Suite(options, "Outcome"), Suite(options, "Steered")
    check_names(suite)
    check_lost_output(suite)
    check_choice(suite, steered)
    bare = Suite(options, "Bare")
    for arguments in "", " -j 2", " --shuffle":
        out, _ = bare.run("-vnone" + arguments)
        check_has(out, ["Bare.TC_one: pass", "Bare.TC_two: fail Bare.ttcn:5\n", "2 test cases: 1 pass, 0 none, 0 inconc, 1 fail"], "no control part" + arguments)
    bare.run("-vnone --shard 3/3 --coverage c.info", status=0)
    check_has(bare.read("c.info"), ["DA:4,0\n", "LH:0\n"], "coverage of a shard without test cases")
    check_logs(suite)
    told = Suite(options, "Told")
    check_told(told)
    check_colors(told)
    check_reports(suite)
    check_ends(suite)
    for more in "", " -s":
        _, err = steered.run("-vnone -T 0.3 -p stuck=true" + more)
        check_has(err, ["the time given to the control part is over"], "a control part that is stuck" + more)
    check_has(steered.run("-p limit=-1.0")[1], ["'Steered.TC_first' is executed for a negative duration"], "negative limit")
    print(f"{len(failures)} failures")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
