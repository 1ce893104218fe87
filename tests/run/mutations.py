#!/usr/bin/env python3
"""Sources with tokens left out, doubled, exchanged or replaced, through the code generator.

    mutations.py --orvane PROGRAM [--rounds N] [--seed S] [--keep FOLDER] PLACE...

A place is a source, or a folder whose sources are compiled together. A round changes a few tokens of one source, as
its number says, and must end by itself with a status of its own: no signal, no internal error, no error told beside
status 0. The C that it writes must be C. What fails is kept, and can be tried again with its number as the seed.
"""

import argparse
import concurrent.futures
import os
import random
import re
import subprocess
import sys
import tempfile
from pathlib import Path

TOKEN = re.compile(r"""\s+|//[^\n]*|/\*.*?\*/|"(?:[^"]|"")*"|'[0-9A-Fa-f?*]*'[BHO]|\d+\.\d+(?:[eE][+-]?\d+)?|\w+"""
                   r"""|:=|->|\.\.|<<|>>|<@|@>|==|!=|<=|>=|.""", re.DOTALL)
STATUSES = {0, -6, -8, -9, -10, -12}
TIMEOUT_SECONDS = 60
C_CHECK = ["cc", "-std=c11", "-fsyntax-only", "-w", "-Werror=implicit", "-Werror=int-conversion"]


KEYWORDS = set("""
action activate all alt altstep and any anytype bitstring boolean break call case catch char charstring check clear
complement component connect const continue control create deactivate default disconnect do done else encode
enumerated error except execute extends external fail false float for from function getcall getreply getverdict goto
group hexstring if ifpresent import in inconc infinity inout integer interleave ispresent kill label language length
lengthof log map match message mixed mod modifies module modulepar mtc none not noblock nowait null objid octetstring
of omit on optional or out override param pass pattern permutation port procedure raise read receive record rem repeat
reply return running runs select self send sender set setverdict signature start stop subset superset system template
testcase timeout timer to trigger true type union universal unmap value valueof var variant verdicttype while with
xor""".split())


def kind_of(token):
    """Tokens of one kind may mostly stand where others of it do."""
    if token[0].isdigit():
        return "number"
    if token[0] in "\"'":
        return "string"
    if token[0].isalpha() or token[0] == "_":
        return "keyword" if token in KEYWORDS else "name"
    return "bracket" if token in "(){}[];,." else "operator"


def mutated(text, rng):
    """The text with one to three of its tokens changed, mostly to others of their kinds."""
    tokens = TOKEN.findall(text)
    places = [i for i, token in enumerate(tokens) if not token.isspace() and not token.startswith(("//", "/*"))]
    kinds = {}
    for i in places:
        kinds.setdefault(kind_of(tokens[i]), []).append(i)
    for _ in range(rng.choice((1, 1, 1, 2, 3))):
        at = rng.choice(kinds[rng.choice(["name"] * 12 + list(kinds) * 2)])
        other = rng.choice(kinds.get(kind_of(tokens[at] or " "), places) if rng.random() < 0.97 else places)
        change = rng.random()
        if change < 0.8:
            tokens[at] = tokens[other]
        elif change < 0.95:
            tokens[at], tokens[other] = tokens[other], tokens[at]
        elif change < 0.97:
            tokens[at] += " " + tokens[other]
        else:
            tokens[at] = " "
    return "".join(tokens)


def files_of(place):
    return sorted(place.glob("*.ttcn")) if place.is_dir() else [place]


def fault_of(orvane, folder, files):
    """What is wrong with a run over the files, or an empty text."""
    try:
        process = subprocess.run([orvane, "-c", "-F", *files], cwd=folder, stdin=subprocess.DEVNULL,
                                 capture_output=True, timeout=TIMEOUT_SECONDS, check=False)
    except subprocess.TimeoutExpired:
        return "does not end"
    status = process.returncode - 256 if process.returncode > 127 else process.returncode
    told = process.stderr.decode(errors="replace")
    if status not in STATUSES:
        return f"status {status}: {told[-500:]}"
    if status == 0 and re.search(r" : (Error|Fatal) ", told):
        return "an error with status 0: " + told[-500:]
    sources = sorted(name for name in os.listdir(folder) if name.endswith(".c"))
    if status != 0 or not sources:
        return ""
    include = Path(orvane).resolve().parent.parent / "include"
    check = subprocess.run([*C_CHECK, "-I", include, *sources], cwd=folder, capture_output=True, check=False)
    return check.stderr.decode(errors="replace")[:500] if check.returncode != 0 else ""


def round_of(orvane, places, number, keep):
    rng = random.Random(number)
    files = files_of(rng.choice(places))
    chosen = rng.choice(files)
    with tempfile.TemporaryDirectory() as folder:
        for file in files:
            text = file.read_text(encoding="utf-8", errors="replace")
            (Path(folder) / file.name).write_text(mutated(text, rng) if file == chosen else text, encoding="utf-8")
        fault = fault_of(orvane, folder, [file.name for file in files])
        if fault and keep:
            kept = Path(keep) / str(number)
            kept.mkdir(parents=True, exist_ok=True)
            for file in files:
                (kept / file.name).write_bytes((Path(folder) / file.name).read_bytes())
    return f"seed {number}, {chosen}: {fault}" if fault else ""


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--orvane", required=True)
    parser.add_argument("--rounds", type=int, default=1)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--keep", help="folder for the sources of rounds that fail")
    parser.add_argument("places", nargs="+", type=Path)
    options = parser.parse_args()
    orvane = str(Path(options.orvane).resolve())
    places = [place for place in options.places if files_of(place)]
    print(f"seeds {options.seed} to {options.seed + options.rounds - 1}")
    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        rounds = range(options.seed, options.seed + options.rounds)
        faults = [fault for fault in pool.map(lambda n: round_of(orvane, places, n, options.keep), rounds) if fault]
    print("\n".join(faults) if faults else "no faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
