#!/usr/bin/env python3
"""Compares the ASN.1 codecs with another implementation of the encoding rules, the ASN.1 compiler of Erlang.

    run_oracle.py --oracle PROGRAM --out FOLDER [--rounds N] SOURCE.asn...

Values are made at random on both sides; what one encodes the other must take, and encode to the same octets. ROUNDS is
the number of values of each type, rule and side. The test is skipped (status 77) where the other one is not installed.
"""

import argparse
import collections
import re
import shutil
import subprocess
import sys
from pathlib import Path

SKIPPED = 77
HERE = Path(__file__).resolve().parent
DEFINITION = re.compile(r"^([A-Z][\w-]*) ::= (?!CLASS)", re.M)
# What a value may come to where the sides differ in what they hold: numbers beyond 64 bits, floats.
# What the other side does otherwise: it numbers the alternatives of a CHOICE with tags of its own in their order, not in
# that of the tags, and loses extensions in the aligned variant; with basic rules it does not encode a group of additions
# that was absent when it decoded.
# Zeros behind named bits it sends with other basic octets, as it may. In the aligned variant it pads behind lengths of no
# elements and before character strings of one size that take just 16 bits, which the forms here leave out, as they do
# numbers of one value, more than 64 additions, and parameterized types, whose tags and constraints it makes otherwise.
OTHERWISE = {"ber": ("Pair-More", "Many", "Bits-Named", "Bits-Named-Some"), "uper": ("Choice-Tags",),
             "per": ("Choice-Tags", "Pair-More", "Choice-More", "Many")}
ENDLESS = ("Tree",)  # recursive types, of which the other side makes no end
OUR_LIMITS = ("an integer does not fit", "an integer has a length that is not supported", "an object identifier is faulty")


def ask(command, requests, folder):
    done = subprocess.run(command, cwd=folder, input="".join(line + "\n" for line in requests), text=True,
                          errors="replace", stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=3000)
    answers = done.stdout.splitlines()
    if len(answers) != len(requests):
        sys.exit(f"{command[0]}: {len(answers)} answers to {len(requests)} requests\n{done.stdout[-500:]}{done.stderr[-2000:]}")
    return answers


class Oracle:
    def __init__(self, arguments):
        self.ours, self.out, self.rounds = [str(arguments.oracle.resolve())], arguments.out.resolve(), arguments.rounds
        shutil.rmtree(self.out, ignore_errors=True)
        self.out.mkdir(parents=True)
        self.types, self.files, self.faults, self.compared = [], [], [], 0
        for source in arguments.sources:
            text = source.read_text(encoding="utf-8")
            shutil.copy(source, self.out)
            self.files.append(source.name)
            self.types += [(source.stem, name) for name in DEFINITION.findall(text)]

    def compare(self, rule, side, pairs):
        """Of pairs of a type and the octets that one side made: what the other side makes of them."""
        made = [(kind, octets) for kind, octets in pairs if octets and not octets.startswith("-")]
        if side == "ours":
            answers = ask(self.ours, [f"take {m}.{t} {rule} {octets}" for (m, t), octets in made], self.out)
        else:
            answers = ask(self.theirs(rule), [f"take {m} {t} {octets}" for (m, t), octets in made], self.out / rule)
        wrong = collections.Counter()
        for ((module, name), octets), answer in zip(made, answers):
            if side == "ours" and answer[2:] in OUR_LIMITS:
                continue
            self.compared += 1
            if answer != octets:
                wrong[name] += 1
                if wrong[name] <= 2:
                    self.faults.append(f"{rule}: {module}.{name}: {octets} becomes {answer} by {side}")

    def theirs(self, rule):
        return ["escript", str(HERE / "oracle.escript"), rule, *self.files]

    def run(self, rule):
        (self.out / rule).mkdir()
        for name in self.files:
            shutil.copy(self.out / name, self.out / rule)
        kinds = [kind for kind in self.types if kind[1] not in OTHERWISE[rule] for _ in range(self.rounds)]
        made = [kind for kind in kinds if kind[1] not in ENDLESS]
        theirs = ask(self.theirs(rule), [f"make {m} {t}" for m, t in made], self.out / rule)
        self.compare(rule, "ours", zip(made, theirs))
        ours = ask(self.ours, [f"make {m}.{t} {rule} {seed}" for seed, (m, t) in enumerate(kinds)], self.out)
        self.compare(rule, "theirs", zip(kinds, ours))


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--oracle", required=True, type=Path)
    parser.add_argument("--out", required=True, type=Path)
    parser.add_argument("--rounds", type=int, default=10)
    parser.add_argument("sources", type=Path, nargs="+")
    arguments = parser.parse_args()
    found = shutil.which("escript") and subprocess.run(
        ["erl", "-noshell", "-eval", "halt(case code:which(asn1ct) of non_existing -> 1; _ -> 0 end)."],
        check=False).returncode == 0
    if not found:
        print("skipped: the other codec is not installed (apt-get install erlang-asn1)")
        return SKIPPED
    oracle = Oracle(arguments)
    for rule in ("ber", "uper", "per"):
        oracle.run(rule)
    print("\n".join(oracle.faults[:60]) or f"{oracle.compared} encodings agree")
    return 1 if oracle.faults or oracle.compared == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
