#!/usr/bin/env python3
"""Installs a build, and does with it what the guide says, word for word, in a clean folder; and what the files beside
the programs are for: CMake and pkg-config, manual pages, the package for Debian, SARIF.

    guide.py --build FOLDER --source FOLDER --out FOLDER [--cmake PROGRAM]
"""

import argparse
import json
import os
import re
import shutil
import socket
import subprocess
import sys
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
from run_suite import free_port  # noqa: E402

def run(command, folder, environment=None, shell=True):
    done = subprocess.run(command, shell=shell, cwd=folder, env=environment, text=True, errors="replace", check=False,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=300)
    if done.returncode != 0:
        sys.exit(f"{command}: status {done.returncode}\n{done.stdout[-5000:]}")
    return done.stdout


def expect(holds, what):
    if not holds:
        sys.exit(f"FAILED: {what}")


def examples_of(guide):
    """What is indented, as it is to be typed."""
    blocks = re.findall(r"(?:^    .*\n|^\n(?=    ))+", guide, re.MULTILINE)
    return [re.sub(r"(?m)^    ", "", block).strip("\n") + "\n" for block in blocks if block.strip()]


def ask_server(server, suite, port, folder, environment):
    environment = {**environment, "PATH": environment["PATH"] + ":/usr/sbin"}
    if not shutil.which("dnsmasq", path=environment["PATH"]):
        return print("SKIPPED: the chapter on a peer, since dnsmasq is not installed")
    peer = subprocess.Popen(["sh", "-c", "exec " + server], cwd=folder, env=environment, stderr=subprocess.DEVNULL)
    listening = f":{int(port):04X} "
    for _ in range(400):
        if listening in Path("/proc/net/udp").read_text():
            break
        time.sleep(0.05)
    try:
        expect("1 test case: 1 pass" in run(suite, folder, environment), "an answer")
    finally:
        peer.terminate()
    expect((folder / "report.html").exists() and (folder / "run.pcap").stat().st_size > 24, "reports")


def follow(guide, folder, environment):
    examples = examples_of(guide)

    def example(start):
        return next(text for text in examples if text.startswith(start))

    run(example("mkdir"), folder, environment)
    folder = folder / "hello"
    for name, start in ("Hello.ttcn", "module Hello"), ("Dns.ttcn", "module Dns"), ("CMakeLists.txt", "cmake_minimum"):
        (folder / name).write_text(example(start), encoding="utf-8")
    shown = re.sub(r"\d\.\d{3}", "N", example("Hello.TC_echo"))
    output = re.sub(r"\d\.\d{3}", "N", run(example("orvane-run Hello"), folder, environment))
    expect(all(line in output for line in shown.splitlines()), f"verdicts\n{output}")
    run(example("orvane -K"), folder, environment)
    port = str(free_port(socket.SOCK_DGRAM))  # others may follow the guide at the same time
    ask_server(*(example(start).replace("5300", port) for start in ("dnsmasq", "orvane-run Dns")), port, folder, environment)
    commands = re.search(r"`(cmake -B build[^`]*)`", guide)[1]
    expect("hello.Hello.TC_echo" in run(commands + " -V", folder, environment), "tests of CTest")
    commands = re.search(r"`(parallel [^`]*)`", guide)[1]
    if shutil.which("parallel"):
        run(commands, folder, environment)
        merge = re.search(r"`(orvane-merge [^`]*)`", guide)[1]
        expect("1 tests, 0 failures" in run(merge, folder, environment), "merged report of the shards")
    if shutil.which("lcov"):
        run("for i in 1 2; do ./Hello --coverage coverage-$i.info; done; true", folder, environment)
        run(re.search(r"`(lcov [^`]*)`", guide)[1] + "&& grep BRDA all.info", folder, environment)
    sarif = re.search(r"`orvane \.\.\. (2>&1 [^`]*)`", guide)[1]
    (folder / "Bad.ttcn").write_text("module Bad {\n  /* \u00e4 */\ttype integer }\n", encoding="utf-8")
    (folder / "Bad.asn").write_text("T DEFINITIONS ::= BEGIN A ::=\n\tNix END\n")
    for files, places in ("Bad.ttcn", [(2, 24)]), ("Missing.ttcn", [None]), ("Hello.ttcn -A Bad.asn", [(2, 2), None]):
        run(f"(orvane -v 2 -a -F {files}; true) {sarif}", folder, environment)
        results = json.loads((folder / "messages.sarif").read_text())["runs"][0]["results"]
        regions = [place["physicalLocation"]["region"] for result in results for place in result["locations"]]
        found = [(region["startLine"], region["startColumn"]) for region in regions] + [None] * (len(results) - len(regions))
        expect(found == places and {result["level"] for result in results} == {"error"}, f"SARIF: {results}")
    return folder


def unpack(package, out):
    """Into the folder root: by dpkg with a record of its own where it may."""
    if os.geteuid() != 0 or not shutil.which("dpkg"):
        return run(f"dpkg-deb -x {package} root", out)
    admin = out / "root/var/lib/dpkg"
    for name in ("info", "updates"):
        (admin / name).mkdir(parents=True)
    (admin / "status").touch()
    (admin / "available").touch()
    dpkg = f"dpkg --instdir={out}/root --admindir={admin} --log=/dev/null"
    run(f"{dpkg} --force-depends -i {package}", out)
    return expect("install ok installed" in run(f"{dpkg} -s orvane", out), "the package's state")


def check_editors(place, grammar, folder, environment):
    """The problem matcher finds what is really printed, and the grammar's expressions what they name."""
    patterns = [entry["pattern"][0] for entry in json.loads((place / "problem-matcher.json").read_text())["problemMatcher"]]
    messages = run("orvane -v 2 -a -F Bad.ttcn; orvane -v 2 -a -F Hello.ttcn -A Bad.asn; ./Hello -vnone -t TC_echo || true", folder, environment)
    for pattern, file, line in zip(patterns, ("Bad.ttcn", "Bad.asn", "Hello.ttcn"), ("2", "2", None), strict=True):
        found = re.search(pattern["regexp"], messages, re.MULTILINE)
        expect(found and found[pattern["file"]] == file and line in (None, found[pattern["line"]]), f"{pattern}\n{messages}")
    colours = coloured(grammar, r"""type record of charstring Names; testcase TC runs on C { p.send(/* /* */ on */ "a\"); type record length(1) of R L; template C t := pattern "\"" "\b" } // on""")
    expect(colours == ["keyword type", "storage record", "keyword of", "storage charstring", "entity Names", "keyword testcase", "entity TC",
                       "keyword runs", "keyword on", "keyword send", "comment /* /* */ on */", r'string "a\"', "keyword type", "storage record",
                       "keyword length", "constant 1", "keyword of", "entity L", "keyword template", "entity t",
                       r'string pattern "\""', r'string "\b"', "comment // on"], colours)


def coloured(grammar, line):
    """The pieces of a line and what they are, as editors find them: the first piece, and for it the first rule."""
    parts = {f"#{name}": part.get("patterns" if "begin" not in part else "", [part]) for name, part in grammar["repository"].items()}
    rules = [r for rule in grammar["patterns"] for r in parts.get(rule.get("include"), [rule])]
    out, at = [], 0
    while found := min(((m.start(), i, m) for i, r in enumerate(rules)
                        if (m := re.compile(r.get("match") or r["begin"]).search(line, at))), default=None):
        rule, match = rules[found[1]], found[2]
        for group, given in rule.get("captures", {"0": rule}).items():
            if "name" in given:
                out.append(f"{given['name'].split('.')[0]} {match[int(group)]}")
            else:
                out += coloured({**grammar, "patterns": parts["#words"]}, match[int(group)])
        at = match.end()
        if "begin" in rule:
            escape = "|".join(part.get("match", r"/\*.*?\*/") for part in rule.get("patterns", [])) or "(?!)"
            at = re.compile(f"(?:{escape}|(?!{rule['end']}).)*{rule['end']}").match(line, at).end()
            out[-1] += line[match.end():at]
    return out


def main():
    parser = argparse.ArgumentParser()
    for name in ("--build", "--source", "--out"):
        parser.add_argument(name, required=True, type=Path)
    parser.add_argument("--cmake", default="cmake")
    options = parser.parse_args()
    out, build = options.out.resolve(), options.build.resolve()
    shutil.rmtree(out, ignore_errors=True)
    out.mkdir(parents=True)
    prefix = out / "prefix"
    run([options.cmake, "--install", str(build), "--prefix", "prefix"], out, shell=False)
    environment = {**os.environ, "PATH": f"{prefix}/bin:{os.environ['PATH']}", "CMAKE_PREFIX_PATH": str(prefix),
                   "PKG_CONFIG_PATH": f"{prefix}/lib/pkgconfig"}
    folder = follow((options.source / "docs" / "guide.md").read_text(encoding="utf-8"), out, environment)
    (folder / "echo.cpp").write_text("""#include "echo.h"
#include "tri.h"
extern "C" TriStatus triSend(const TriComponentId *c, const TriPortId *t, const TriAddress *, const TriMessage *m) { ECHO(t, 0, c, m); return TRI_OK; }
""")
    (folder / "echo.h").write_text("#define ECHO triEnqueueMsg\n")
    with open(folder / "CMakeLists.txt", "a", encoding="utf-8") as file:
        file.write('orvane_add_suite(NAME adapted ROOT Hello SOURCES Hello.ttcn echo.cpp ARGUMENTS "--tap=a \\"b;.tap"\n'
                   'PROPERTIES LABELS "one;two")\norvane_add_suite(NAME off ROOT N SOURCES N.ttcn PROPERTIES LABELS two)\n')
    (folder / "N.ttcn").write_text("module N { type component C {} testcase TC(integer i) runs on C { setverdict(pass) } control { execute(TC(1)) } }")
    build_and_test = f"OSTYPE=none {options.cmake} --build build -j2 && ctest --test-dir build -L two"
    done = run(f"{options.cmake} -B build && {build_and_test}", folder, environment)
    expect("100% tests passed, 0 tests failed out of 2" in done and "off.control" in done and "warning" not in done and (folder / 'build/a "b;.tap').exists(), done)
    (folder / "echo.h").write_text("#define ECHO(...)\n")
    expect("1 tests failed" in run(f"{build_and_test} || true", folder, environment), "a header of an adapter counts")
    (folder / "echo.h").write_text("no C")
    results = run(f"({build_and_test}; ctest --test-dir build --output-junit j.xml; orvane-merge k.xml build/j.xml; true) 2>&1", folder, environment)
    expect("adapted.not_built (Failed)" in results and "3 tests, 1 failures" in results, f"what could not be built\n{results}")
    if shutil.which("pkg-config"):
        call = f"{options.source.resolve()}/examples/call"
        run("cc -o by_hand main_driver.c Hello.c $(pkg-config --cflags --libs orvane) && ./by_hand -b && mkdir call && cd call && "
            f"orvane -E -k -f {prefix}/share/orvane/make_linux.mcfg -r Call_Suite -F {call}/*.ttcn -A {call}/*.asn && "
            f"cc -o by_hand *.c {call}/*.c $(pkg-config --cflags --libs orvane) && ./by_hand", folder, environment)
    versions = run("for p in run merge sarif; do orvane-$p --version; done; ./Hello --version", folder, environment)
    expect(len(re.findall(r"Orvane \d+\.\d+[.0-9]+$", versions, re.MULTILINE)) == 4, versions)
    pages = [page.name for page in prefix.glob("share/man/man*/*")]
    expect(sorted(pages) == ["mcfg.5", "orvane-merge.1", "orvane-run.1", "orvane-sarif.1", "orvane-suite.1", "orvane.1"], pages)
    if shutil.which("mandoc"):
        lint = run("mandoc -T lint share/man/man*/*; true", prefix)
        expect("ERROR" not in lint and "WARNING" not in lint, lint)
    suite_page = (prefix / "share/man/man1/orvane-suite.1").read_text()
    expect(all(word.replace("-", "\\-") in suite_page for word in ("--explore", "--junit", "--shard")), "options in the manual")
    documents = prefix / "share/doc/orvane/docs"
    links = [(page.name, link) for page in documents.glob("*.md") for link in re.findall(r"\]\(([^):#]+)\)", page.read_text())]
    expect(links and all((documents / link).exists() for _, link in links), f"links of installed documents: {links}")
    grammar = json.loads((prefix / "share/orvane/editors/ttcn3.tmLanguage.json").read_text())
    check_editors(prefix / "share/orvane/editors", grammar, folder, environment)
    (folder / "a b.ttcn").touch()
    script = ". ../prefix/share/bash-completion/completions/orvane-run\nshow() { local IFS=,; echo \"${COMPREPLY[*]}\"; }\n"
    asked = {"--jun": "--junit", "--build": "--build", "Hello.ttcn -v info,e": "info,error,info,event", "-r H": "Hello", "--tap = a\\ ": "a b.ttcn",
             "Hello.ttcn -t !TC": "!TC_echo", "a": "a b.ttcn", "../prefix/": "../prefix/bin"}
    for words in asked:
        script += f"COMP_WORDS=(orvane-run {words}); COMP_CWORD=$((${{#COMP_WORDS[@]}} - 1)); _orvane_suite orvane-run; show\n"
    script += "COMP_WORDS=(orvane -); COMP_CWORD=1; _orvane; show\n"
    script += "COMP_WORDBREAKS=: COMP_WORDS=(orvane -C BER : 1997-); COMP_CWORD=4; _orvane; show\n"
    (folder / "complete.sh").write_text(script)
    words = run("bash complete.sh", folder, environment).splitlines()
    expect(all(text in word for text, word in zip([*asked.values(), "-F,", "1997-length-form-3"], words, strict=True)), f"completion: {words}")
    if shutil.which("dpkg-deb") and shutil.which("cpack"):
        run(f"umask 077; cpack -G DEB --config {build}/CPackConfig.cmake -B package", out)
        listed = run("dpkg-deb -c package/*.deb", out)
        kinds = {line[:10] for line in listed.splitlines()}
        expect(kinds == {"drwxr-xr-x", "-rw-r--r--", "-rwxr-xr-x"} and not re.search(r"man\d/.*[^z]$", listed, re.MULTILINE), listed)
        expect(not run(f"grep -rl {build.parent.parent} package/_CPack_Packages/*/DEB/*/usr || true", out), "paths of the build")
        unpack(next((out / "package").glob("*.deb")), out)
        mcfg = (out / "root/usr/share/orvane/make_linux.mcfg").read_text()
        expect('<ORV_DIR> = "/usr"' in mcfg, "the package's place")
        packaged = out / "packaged"
        packaged.mkdir()
        shutil.copy(folder / "Hello.ttcn", packaged)
        (packaged / "usr.mcfg").write_text(mcfg.replace('"/usr"', f'"{out}/root/usr"'))
        run(f"{out}/root/usr/bin/orvane -K -f usr.mcfg -r Hello -F Hello.ttcn && make && ./Hello -b", packaged)
    print("all as the guide says")


if __name__ == "__main__":
    main()
