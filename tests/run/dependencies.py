#!/usr/bin/env python3
"""Declarations that need each other by the thousand: analysis takes time in proportion to their number, whatever the
shape of their dependencies, and values that share their parts cost what is written of them.

    dependencies.py --orvane PROGRAM [TEST...]
"""

import argparse
import random
import resource
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ORVANE = ""
TIMEOUT_SECONDS = 120
ANALYSIS, LIMIT = -9, -12
R = "type record R { integer a, R b optional }\n"
TEXT = "type charstring Text length(0 .. infinity);\ntype Text Word (\"a\" .. \"z\");\n"


def links(first, link, count, order):
    """`first` and a chain of declarations behind it, in the order of the source that is asked for."""
    lines = [first] + [link.format(this=i, before=i - 1) for i in range(1, count)]
    if order == "forward":
        lines.reverse()
    if order == "shuffled":
        random.Random(1).shuffle(lines)
    return "\n".join(lines)


CHAINS = {
    "constants": ("const integer c0 := 1;", "const integer c{this} := c{before} + 1;"),
    "aliases": ("const integer c0 := 1;", "const integer c{this} := c{before};"),
    "subtypes": ("type integer T0 (0 .. 9);", "type T{before} T{this} (0 .. 9);"),
    "bounds": ("type integer T0 (0 .. 9);\nconst T0 c0 := 1;",
               "type integer T{this} (0 .. c{before});\nconst T{this} c{this} := 1;"),
    "strings": (TEXT + 'const Word c0 := "a";', 'const Word c{this} := c{before} & "b";'),
    "values": (R + "const R c0 := { 1, omit };", "const R c{this} := {{ c{before}.a, c{before} }};"),
    "templates": (R + "template R c0 := { 1, omit };", "template R c{this} := {{ {this}, c{before} }};"),
    "modifications": (R + "template R c0 := { 1, omit };",
                      "template R c{this} modifies c{before} := {{ a := {this} }};"),
}


class DependenciesTest(unittest.TestCase):
    def setUp(self):
        self.holder = tempfile.TemporaryDirectory()
        self.path = Path(self.holder.name) / "M.ttcn"

    def tearDown(self):
        self.holder.cleanup()

    def analyse(self, body):
        """Status, error lines, and the seconds of processor time that the analysis took."""
        self.path.write_text("module M {\n" + body + "\n}\n")
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        process = subprocess.run([ORVANE, "-v", "1", "-a", "-F", "M.ttcn"], cwd=self.holder.name, check=False,
                                 stdin=subprocess.DEVNULL, capture_output=True, timeout=TIMEOUT_SECONDS)
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        self.assertGreaterEqual(process.returncode, 0, process.stderr[-2000:])
        status = process.returncode - 256 if process.returncode > 127 else process.returncode
        errors = [line for line in process.stderr.decode().split("\n") if "Error  " in line]
        return status, errors, after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime

    def check_growth(self, body):
        """Eight times as many declarations take less than sixteen times the time of a run that is worth measuring."""
        times = []
        for count in (1_000, 8_000):
            status, errors, seconds = self.analyse(body(count))
            self.assertEqual((0, []), (status, errors[:5]))
            times.append(seconds)
        self.assertLess(times[1], 16 * max(times[0], 0.1), times)

    def test_chains(self):
        for name, (first, link) in CHAINS.items():
            for order in ("backward", "forward", "shuffled"):
                with self.subTest(f"{name} {order}"):
                    self.check_growth(lambda count: links(first, link, count, order))

    def test_fans(self):
        def out(count):
            return "const integer c := 1;\n" + "\n".join(f"const integer c{i} := c;" for i in range(count))

        def together(count):
            return ("const integer c := 0" + "".join(f" + c{i}" for i in range(count)) + ";\n" +
                    "\n".join(f"const integer c{i} := {i};" for i in range(count)))

        def tangle(count):
            choose = random.Random(2)
            lines = [f"const integer c{i} := {i}" + "".join(f" + c{choose.randrange(i)}" for _ in range(min(i, 3))) + ";"
                     for i in range(count)]
            choose.shuffle(lines)
            return "\n".join(lines)

        for body in (out, together, tangle):
            with self.subTest(body.__name__):
                self.check_growth(body)

    def test_rings_are_reported_once(self):
        count = 5_000
        ring = [f"const integer c{i} := c{(i + 1) % count};" for i in range(count)]
        random.Random(3).shuffle(ring)
        for body, text in (("\n".join(ring), "cycle in constant definition"),
                           ("\n".join(f"type T{(i + 1) % count} T{i};" for i in range(count)),
                            "cycle in subtype definition"),
                           (R + "\n".join(f"template R t{i} := {{ 1, t{(i + 1) % count} }};" for i in range(count)),
                            "cycle in template definition"),
                           (R + "\n".join(f"template R t{i} modifies t{(i + 1) % count} := {{ a := 1 }};"
                                          for i in range(count)),
                            "cyclic dependencies in chain of template modifications")):
            with self.subTest(text):
                status, errors, _ = self.analyse(body)
                self.assertEqual((ANALYSIS, 1), (status, len(errors)), errors[:5])
                self.assertIn(text, errors[0])

    def test_shared_parts(self):
        """Values that double with each declaration are neither built nor walked as a whole."""
        doubled = "".join(f"const {{0}} c{i} := {{1}}c{i - 1}{{2}}c{i - 1}{{3}};\n" for i in range(1, 80))
        cases = [
            TEXT + 'const Text c0 := "a";\n' + doubled.format("Text", "", " & ", ""),
            TEXT + 'const charstring c0 := "a";\n' + doubled.format("charstring", "", " & ", "") + "const Word w := c79;",
            TEXT + 'type charstring Two ("a", "b");\nconst charstring c0 := "a";\n' +
            doubled.format("charstring", "", " & ", "") + "const Two w := c79;",
            "type record P { P a optional, P b optional }\nconst P c0 := { omit, omit };\nconst P d0 := { omit, omit };\n" +
            doubled.format("P", "{", ", ", "}") + doubled.format("P", "{", ", ", "}").replace("c", "d").replace("donst", "const") +
            "type P Q (c79);\nconst Q q := d79;",
        ]
        for body in cases:
            with self.subTest(body[-60:]):
                self.assertEqual((0, []), self.analyse(body)[:2])

    def test_ten_thousand_faults(self):
        for first, fault in (("", "const integer c{0} := x{0};"),
                             ("", "const integer c{0} := c{0};"),
                             ("", "type T{0} T{0};"),
                             ("", "const boolean c{0} := {0};"),
                             ("", "const integer c{0} := {0} / 0;"),
                             (R, "template R t{0} := {{ 1, t{0} }};"),
                             (R, "template R t{0} modifies t{0} := {{ a := 1 }};"),
                             ("type integer I (1 .. 3);\n", "const I c{0} := 7;")):
            with self.subTest(fault):
                status, errors, _ = self.analyse(first + "\n".join(fault.format(i) for i in range(10_000)))
                self.assertEqual((LIMIT, 101), (status, len(errors)))
                self.assertIn("Maximum number of errors reached, breaking", errors[-1])


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--orvane", required=True)
    options, rest = parser.parse_known_args()
    ORVANE = str(Path(options.orvane).resolve())
    unittest.main(argv=[sys.argv[0]] + rest)
