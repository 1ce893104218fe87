#!/usr/bin/env python3
"""Counts the faults that the tests find: puts mutants into a copy of the sources and runs the tests against each.

All mutants are compiled into one build. Each stands beside the original, `(mutant(17) ? mutated : original)`, and
MUTANT=17 in the environment selects it. A first run without one shows which tests reach which mutants; a mutant then
meets these only, the quickest first, until one fails.

Which places are changed follows from the seed and the text of the lines, not from their numbers: the same seed finds
the same places again after the sources or the tests have been changed elsewhere.

  mutate.py --list                       the mutants of a seed
  mutate.py --tree COPY                  copies HEAD into COPY, if that is not there, builds it and runs the tests
  mutate.py --tree COPY --tests OTHER    the same with tests/ as it stands in commit OTHER: what a change of them costs
"""

import argparse
import hashlib
import json
import os
import re
import subprocess
import sys
import time
from pathlib import Path

# Selects a mutant; C and C++. MUTANTS_REACHED names a file that gets the number of each one met.
HEADER = r'''
#pragma once
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>
static inline int mutant(int number) {
  static int chosen = -1;
  static char* reached = 0;
  static char seen[1000];
  if (chosen < 0) {
    const char* text = getenv("MUTANT");
    chosen = text ? atoi(text) : 0;
    reached = getenv("MUTANTS_REACHED");
  }
  if (reached && !seen[number]) {
    char line[16];
    int file = open(reached, O_WRONLY | O_CREAT | O_APPEND, 0666);
    seen[number] = 1;
    if (file >= 0) {
      if (write(file, line, (size_t)snprintf(line, sizeof line, "%d\n", number)) < 0) seen[number] = 0;
      close(file);
    }
  }
  return number == chosen;
}
'''
SWAPS = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "&&": "||", "||": "&&"}
SHARE = {"negated": 8, "comparison": 12, "off-by-one": 7, "row": 6, "call": 7}   # of forty
ROOMS = ("src", "runtime/src", "tools")


class Mutant:
    """A place in a file, and the text that takes its place; `@` stands for the call that selects the mutant."""

    def __init__(self, file, form, start, end, text, shown):
        self.file, self.form, self.start, self.end, self.text, self.shown = file, form, start, end, text, shown

    def key(self, seed):
        return hashlib.sha256(f"{seed}|{self.file}|{self.form}|{self.shown}".encode()).hexdigest()


def condition_end(text, start):
    """Where the parenthesis that opens at `start` is closed."""
    depth = 0
    for at in range(start, min(len(text), start + 1000)):
        depth += {"(": 1, ")": -1}.get(text[at], 0)
        if depth == 0:
            return at
    return -1


def conditions(text):
    """Start and end of the conditions and of returned truth values, as long as they declare nothing."""
    for found in re.finditer(r"\b(?:if|while) \(", text):
        end = condition_end(text, found.end() - 1)
        yield found.end(), end
    for found in re.finditer(r"\breturn ([^;{}]* (?:[<>=!]=|<|>|&&|\|\|) [^;{}]*);", text):
        yield found.start(1), found.end(1)


def mutants_of(file, text):
    def one(form, start, end, mutated, cast="!!"):
        old = text[start:end]
        line = text[text.rfind("\n", 0, start) + 1:].split("\n")[0].strip()
        shown = f"{line}   [{re.sub(chr(10) + ' *', ' ', old)} -> {re.sub(chr(10) + ' *', ' ', mutated)}]"
        return Mutant(file, form, start, end, f"(@ ? {cast}({mutated}) : {cast}({old}))", shown)

    for start, end in conditions(text):
        body = text[start:end]
        if end < 0 or re.search(r"[;{}\"']| = |\[&|\[=|//|#|<=>", body):
            continue
        yield one("negated", start, end, f"!({body})")
        for sign in re.finditer(r" (<=?|>=?|[=!]=|&&|\|\|) ", body):
            yield one("comparison", start, end,
                      body[:sign.start(1)] + SWAPS[sign.group(1)] + body[sign.end(1):])
    for found in re.finditer(r"(?<= [-+<>] )\b[01]\b(?=[;),\] ])", text):
        yield one("off-by-one", found.start(), found.end(), str(int(found.group()) + 1), "")
    # A row with the key of the row above is not found any more.
    for found in re.finditer(r"(?m)^ *\{((?:K_)?\w+|\"[^\"]*\"),.*\},\n *\{((?:K_)?\w+|\"[^\"]*\"),", text):
        if found.group(1) != found.group(2) and not found.group(2).isdigit():
            yield one("row", found.start(2), found.end(2), found.group(1), "")
    for found in re.finditer(r"(?m)(?<=[;{}]\n) +((?:\w+(?:::|->|\.))*\w+\([^;{}]*\);)$", text):
        line = found.group(1)
        if not re.match(r"(return|throw|static_assert|delete|if|while)\b", line):
            yield Mutant(file, "call", found.start(1), found.end(1), f"if (!@) {line}", f"{line}   [dropped]")


def choose(top, seed, count, unsuitable):
    """The mutants of a seed: shares of the forms, two in a room and one in a file."""
    candidates = []
    for file in subprocess.run(["git", "ls-files", *ROOMS], cwd=top, capture_output=True, text=True).stdout.split():
        if file.endswith((".cpp", ".c")):
            candidates += mutants_of(file, (top / file).read_text())
    candidates = sorted((m for m in candidates if m.key(seed) not in unsuitable), key=lambda mutant: mutant.key(seed))
    left = {form: -(-share * count // 40) for form, share in SHARE.items()}
    chosen, rooms, files = [], {}, set()
    for shares in (True, False):
        for mutant in candidates:
            room = os.path.dirname(mutant.file)
            if len(chosen) == count or rooms.get(room, 0) == 2 or mutant.file in files:
                continue
            if shares and not left[mutant.form]:
                continue
            chosen.append(mutant)
            left[mutant.form] -= 1
            rooms[room] = rooms.get(room, 0) + 1
            files.add(mutant.file)
    return chosen


def plant(tree, chosen):
    (tree / "mutant.h").write_text(HEADER)
    for number, mutant in enumerate(chosen, 1):
        path = tree / mutant.file
        text = path.read_text()
        text = text[:mutant.start] + mutant.text.replace("@", f"mutant({number})") + text[mutant.end:]
        if mutant.form == "row":
            text = re.sub(r"(?m)^((?:static |inline )*)constexpr (?=.*\[\] *=|std::array)", r"\1const ", text)
        path.write_text(f'#include "{tree}/mutant.h"\n#line 1\n' + text)


def build(tree, options):
    """Plants and builds; what does not compile is left out and replaced, its keys are kept beside the tree."""
    record = Path(f"{tree}.unsuitable")
    unsuitable = set(record.read_text().split()) if record.exists() else set()
    while True:
        subprocess.run(["git", "checkout", "-q", "."], cwd=tree, check=True)
        chosen = choose(tree, options.seed, options.count, unsuitable)
        if options.tests:
            subprocess.run(f"git rm -rq tests && git checkout -q {options.tests} -- tests && git reset -q",
                           cwd=tree, shell=True, check=True)
        plant(tree, chosen)
        done = subprocess.run(options.build, cwd=tree, shell=True, capture_output=True, text=True)
        if done.returncode == 0:
            return chosen
        failed = {m.file for m in chosen if f"{m.file}:" in done.stdout and re.search(
            rf"{re.escape(m.file)}(\.o|:[0-9]+:[0-9]+: error)", done.stdout)}
        if not failed:
            sys.exit("the copy does not build:\n" + done.stdout[-4000:] + done.stderr[-2000:])
        for mutant in chosen:
            if mutant.file in failed:
                print(f"does not compile, replaced: {mutant.file}: {mutant.shown}", flush=True)
                unsuitable.add(mutant.key(options.seed))
        record.write_text("\n".join(sorted(unsuitable)) + "\n")


def run_test(tree, options, name, environment, limit):
    """Whether a test passes, and how long it took."""
    begin = time.time()
    done = subprocess.run(["nice", "ctest", "--test-dir", tree / options.binaries, "-R", f"^{re.escape(name)}$",
                           "--timeout", str(limit)], capture_output=True, text=True,
                          env={**os.environ, **environment})
    return done.returncode == 0, time.time() - begin


def reach(tree, options):
    """For each test that passes without a mutant: its time and the mutants that it reaches."""
    record = Path(f"{tree}.reached.{(options.tests or 'HEAD').replace('/', '_')}.json")
    if record.exists():
        return json.loads(record.read_text())
    listed = subprocess.run(["ctest", "--test-dir", tree / options.binaries, "-N", "--show-only=json-v1"],
                            capture_output=True, text=True).stdout
    tests = {}
    for name in (test["name"] for test in json.loads(listed)["tests"]):
        reached = tree / "reached"
        reached.unlink(missing_ok=True)
        passes, seconds = run_test(tree, options, name, {"MUTANTS_REACHED": str(reached)}, 900)
        if passes:
            numbers = sorted({int(n) for n in reached.read_text().split()}) if reached.exists() else []
            tests[name] = [seconds, numbers]
        else:
            print(f"fails without a mutant, left out: {name}", flush=True)
    record.write_text(json.dumps(tests))
    return tests


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--seed", type=int, default=14)
    parser.add_argument("--count", type=int, default=40)
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--tree", type=Path)
    parser.add_argument("--tests")
    parser.add_argument("--build", default="cmake --preset quick >/dev/null && cmake --build out/quick")
    parser.add_argument("--binaries", default="out/quick")
    parser.add_argument("--only", type=int, nargs="*", help="numbers of mutants")
    options = parser.parse_args()
    top = Path(__file__).resolve().parents[2]
    print(f"seed {options.seed}")
    if options.list:
        for number, mutant in enumerate(choose(top, options.seed, options.count, set()), 1):
            print(f"{number:3} {mutant.form:10} {mutant.file}: {mutant.shown}")
        return
    tree = options.tree.resolve()
    if not tree.exists():
        subprocess.run(["git", "clone", "-q", "--shared", top, tree], check=True)
    chosen = build(tree, options)
    tests = reach(tree, options)
    caught = 0
    for number, mutant in enumerate(chosen, 1):
        if options.only and number not in options.only:
            continue
        failing = None
        for name, (seconds, numbers) in sorted(tests.items(), key=lambda item: item[1][0]):
            if number in numbers and not run_test(tree, options, name, {"MUTANT": str(number)}, 60 + 10 * seconds)[0]:
                failing = name
                break
        caught += failing is not None
        reached = sum(number in numbers for _, numbers in tests.values())
        print(f"{number:3} {failing or 'SURVIVES'} (reached by {reached} tests): {mutant.form} in {mutant.file}: "
              f"{mutant.shown}", flush=True)
    print(f"caught {caught} of {len(options.only or chosen)}")


if __name__ == "__main__":
    main()
