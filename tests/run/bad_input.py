#!/usr/bin/env python3
"""Input and surroundings that are not as they should be: each run of the compiler must end by itself, in time, with
a message and its status, and must leave no file behind but what it is asked for.

    bad_input.py --orvane PROGRAM [TEST...]
"""

import argparse
import os
import re
import resource
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

ORVANE = ""
TIMEOUT_SECONDS = 60
FILES, PARSING, ANALYSIS, GENERATION, LIMIT, EXCEPTION, FATAL = -5, -6, -9, -10, -12, -4, 1
DIAGNOSTIC = re.compile(r"(Fatal|Error|Warning) {5,}\S")


class Result:
    def __init__(self, process):
        code = process.returncode
        self.signal = -code if code < 0 else 0
        self.status = code - 256 if code > 127 else code
        self.stdout = process.stdout.decode("utf-8", errors="replace")
        self.stderr = process.stderr.decode("utf-8", errors="replace")

    def messages(self):
        return [line for line in self.stderr.split("\n") if DIAGNOSTIC.search(line)]


def module(body):
    return "module M {\n" + body + "\n}\n"


class BadInputTest(unittest.TestCase):
    def setUp(self):
        self.holder = tempfile.TemporaryDirectory()
        self.folder = Path(self.holder.name)

    def tearDown(self):
        self.holder.cleanup()

    def write(self, content, name="M.ttcn"):
        path = self.folder / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        return path

    def orvane(self, *arguments, stdout=subprocess.PIPE, preexec=None):
        process = subprocess.run([ORVANE, *map(str, arguments)], cwd=self.folder, stdin=subprocess.DEVNULL,
                                 stdout=stdout, stderr=subprocess.PIPE, timeout=TIMEOUT_SECONDS, check=False,
                                 preexec_fn=preexec)
        if process.stdout is None:
            process.stdout = b""
        result = Result(process)
        self.assertEqual(0, result.signal, f"ended by signal {result.signal}\n{result.stderr[-2000:]}")
        self.assertNotIn("Sanitizer", result.stderr)
        self.assertNotIn("runtime error:", result.stderr)
        return result

    def listing(self):
        return sorted(str(path.relative_to(self.folder)) for path in self.folder.rglob("*"))

    def check(self, arguments, statuses, left=()):
        """A run that must fail with one of the statuses and a message, and leave only what is named."""
        before = self.listing()
        result = self.orvane(*arguments)
        self.assertIn(result.status, statuses, result.stderr[:2000])
        self.assertTrue(result.stderr.strip(), "no message")
        self.assertEqual([], [name for name in self.listing() if name not in before and name not in left])
        return result

    def test_unreadable_missing_and_directory(self):
        missing = self.check(["-a", "-F", "nowhere.ttcn"], [FILES])
        self.assertIn("Cannot open file: nowhere.ttcn", missing.stderr)
        both = self.check(["-a", "-F", "nowhere.ttcn", "elsewhere.ttcn"], [FILES])
        self.assertEqual(2, len(both.messages()))
        (self.folder / "d.ttcn").mkdir()
        folder = self.check(["-a", "-F", "d.ttcn"], [FILES])
        self.assertEqual(["Error       Cannot open file: d.ttcn"], folder.messages())
        if os.geteuid() != 0:
            self.write(module(""), "secret.ttcn").chmod(0)
            self.check(["-a", "-F", "secret.ttcn"], [FILES])

    def test_empty_and_binary_files(self):
        self.write(b"")
        result = self.check(["-a", "-F", "M.ttcn"], [PARSING])
        self.assertEqual(["Error       Could not determine file format of M.ttcn"], result.messages())
        self.write(b"// nothing but a comment\n")
        result = self.check(["-a", "-F", "M.ttcn"], [PARSING])
        self.assertEqual(["M.ttcn(2) : column 1 : Error       found/expected : _EOF_/module"],
                         result.messages())
        for content in (bytes(range(256)) * 64, Path(ORVANE).read_bytes()[:1_000_000]):
            self.write(content)
            result = self.check(["-a", "-F", "M.ttcn"], [LIMIT])
            self.assertIn("Maximum number of errors reached, breaking", result.messages()[-1])

    def test_nul_bytes(self):
        self.write(b"module M {\0 const integer c := 1; }\n")
        result = self.check(["-a", "-F", "M.ttcn"], [PARSING])
        self.assertEqual(["M.ttcn(1) : column 11 : Error       illegal character: \0"], result.messages())
        self.write(b"module M { // a\0b\n /* a\0b */ }\n")
        self.assertEqual(0, self.orvane("-a", "-F", "M.ttcn").status)
        self.write(b'module M { const charstring c := "a\0b"; }\n')
        self.assertEqual(0, self.orvane("-c", "-F", "M.ttcn").status)

    def test_broken_encodings(self):
        # A last odd byte is dropped.
        self.write(b"\xfe\xff" + module("").encode("utf-16-be") + b"}")
        self.assertEqual(0, self.orvane("-a", "-F", "M.ttcn").status)
        self.write(b"\xfe\xff" + module("").encode("utf-16-be")[:-3])
        self.check(["-a", "-F", "M.ttcn"], [PARSING])
        self.write(b"\xff\xfe" + module("const integer").encode("utf-16-le")[:21])
        self.check(["-a", "-F", "M.ttcn"], [PARSING])
        for content in (b"\xff\xfe", b"\xfe\xff\0", b"\xef\xbb\xbf"):
            self.write(content)
            self.assertIn("found/expected : _EOF_/", self.check(["-a", "-F", "M.ttcn"], [PARSING]).stderr)
        for content in (b"\xff", b"\0\0\xfe\xff", b"+/v8-"):
            self.write(content)
            self.assertIn("Could not determine file format of M.ttcn",
                          self.check(["-a", "-F", "M.ttcn"], [PARSING]).stderr)
        self.write(module("").encode("utf-8"))
        result = self.check(["-a", "-F", "-e", "UCS-2", "M.ttcn"], [EXCEPTION])
        self.assertIn("Could not determine UCS-2 endianess for M.ttcn", result.stderr)

    def test_endless_comment_and_string(self):
        self.write("module M { /* no end\n" + "x" * 100_000)
        self.assertIn("unterminated comment", self.check(["-a", "-F", "M.ttcn"], [PARSING]).stderr)
        self.write('module M { const charstring c := "no end\n')
        self.assertIn("unterminated string constant", self.check(["-a", "-F", "M.ttcn"], [PARSING]).stderr)

    def test_cut_and_holed_files(self):
        source = Path(__file__).resolve().parent / "suites" / "procedures.ttcn"
        text = source.read_text().replace("  import from Harness all;\n", "")
        end = text.rindex("}")
        for at in range(1, end, end // 120):
            begin = text.index("module")
            for broken in (text[:max(at, begin + 7)], text[:at] + text[at + 9:]):
                self.write(broken)
                result = self.orvane("-v", "1", "-s", "-F", "M.ttcn")
                self.assertIn(result.status, [0, PARSING], f"at {at}: {result.stderr[:500]}")
                self.assertEqual(result.status != 0, bool(result.messages()))

    def test_long_tokens(self):
        name = "a" * 100_000
        self.write(module(f'const integer {name} := 1; const integer b := {name}; const charstring s := "{name}";'))
        self.assertIn("identifier is longer than", self.check(["-a", "-F", "M.ttcn"], [PARSING]).stderr)
        name = "a" * 60_000
        self.write(module(f'const integer {name} := 1; const integer b := {name}; const charstring s := "{name}";'))
        self.assertEqual(0, self.orvane("-a", "-F", "M.ttcn").status)
        self.write(module(f"const integer b := {name};"))
        result = self.check(["-a", "-F", "M.ttcn"], [ANALYSIS])
        self.assertIn("no declaration for", result.stderr)
        self.write(module("const integer b := " + "9" * 100_000 + ";"))
        self.check(["-a", "-F", "M.ttcn"], [PARSING])
        self.write(module("const integer b := " + "9" * 60_000 + ";"))
        self.assertIn("integer literal might be too large", self.orvane("-a", "-F", "M.ttcn").stderr)
        self.write(module(f"const integer b := @{name};"))
        self.check(["-a", "-F", "M.ttcn"], [PARSING])

    def test_deep_nesting(self):
        depth = 200_000
        for body in ["const integer c := " + "(" * depth + "1" + ")" * depth + ";",
                     "function f() { " + "{" * depth + "}" * depth + " }",
                     "function f() { " + "if (true) {" * depth + "}" * depth + " }",
                     "const integer c := " + "{" * depth + "}" * depth + ";",
                     "type " + "record of " * depth + "integer R;",
                     "const integer c := f(" * 1 + "f(" * depth + ")" * depth + ");",
                     "const boolean c := " + "not " * depth + "true;",
                     "type record R { " + "record { " * depth + "integer a" + " } a" * depth + " }"]:
            with self.subTest(body[:40]):
                self.write(module(body))
                begin = time.monotonic()
                result = self.check(["-a", "-F", "M.ttcn"], [PARSING])
                self.assertEqual(["nesting is too deep"], [line[-19:] for line in result.messages()])
                self.assertLess(time.monotonic() - begin, TIMEOUT_SECONDS / 2)

    def test_little_stack(self):
        """Nesting below the limit is an ordinary input, however little stack the shell allows."""
        depth = 1800
        little = 1 << 20
        for body in ["function g() { var integer x := " + "f(" * depth + "1" + ")" * depth + "; }",
                     "const integer c := " + "(" * depth + "1" + ")" * depth + ";",
                     "function g() { " + "if (true) {" * 900 + "}" * 900 + " }"]:
            with self.subTest(body[:40]):
                self.write(module("function f(integer i) return integer { return i; } " + body))
                result = self.orvane("-a", "-F", "M.ttcn", preexec=lambda: resource.setrlimit(
                    resource.RLIMIT_STACK, (little, little)))
                self.assertEqual((0, []), (result.status, result.messages()))

    def test_little_memory(self):
        """A small suite is an ordinary input under a limit on address space."""
        if b"__asan_init" in Path(ORVANE).read_bytes():
            self.skipTest("a sanitizer reserves address space for itself")
        self.write(module("type component C { timer t } testcase tc() runs on C { t.start(1.0); t.timeout; setverdict(pass) }"))
        little = 64 << 20
        result = self.orvane("-c", "-F", "M.ttcn", preexec=lambda: resource.setrlimit(resource.RLIMIT_AS, (little, little)))
        self.assertEqual((0, []), (result.status, result.messages()))

    def test_tangled_references(self):
        """Each of many declarations refers to the next one three times: looked through once each, not 3^40 times."""
        links = range(40)
        tangles = {
            "templates": "type record N { N x optional, N y optional, N z optional } "
                         "type port P message { inout N } type component C { port P p } "
                         + " ".join(f"template N t{i} := {{ t{i + 1}, t{i + 1}, t{i + 1} }};" for i in links)
                         + " template N t40 := { omit, omit, omit }; function f() runs on C { p.send(t0); p.receive(t0); }",
            "types": " ".join(f"type record {n}{i} {{ {n}{i + 1} a, {n}{i + 1} b }}" for n in "XY" for i in links)
                     + " type record X40 { integer a } type record Y40 { integer a } "
                       "function f(X0 x, inout Y0 y) { y := x; if (y == x) { } }",
            "functions": " ".join(f"function g{i}() return integer {{ return g{i + 1}() + g{i + 1}() + g{i + 1}(); }}"
                                  for i in links)
                         + " function g40() return integer { return g0(); } type component C { timer t }"
                         + " function h() runs on C { alt { [g0() > 1] t.timeout { } } }",
            "altsteps": "type component C { timer t } "
                        + " ".join(f"altstep a{i}() runs on C {{ [] a{i + 1}() {{ }} [] a{i + 1}() {{ }} [] a0() {{ }} }}"
                                   for i in links)
                        + " altstep a40() runs on C { [] t.timeout { } }"}
        for name, body in tangles.items():
            with self.subTest(name):
                self.write(module(body))
                begin = time.monotonic()
                self.assertEqual(0, self.orvane("-a", "-F", "M.ttcn").status)
                self.assertLess(time.monotonic() - begin, TIMEOUT_SECONDS / 4)

    def test_long_lists(self):
        count = 100_000
        names = [f"n{i}" for i in range(20_000)]
        for body in ["function f() { var integer v := 0; " + "v := v + 1;\n" * count + "}",
                     "const integer c := 1" + " + 1\n" * 5_000 + ";",
                     "type record of integer L; const L c := { " + "1,\n" * count + "1 };",
                     "".join(f"const integer c{i} := {i};\n" for i in range(count)),
                     "type enumerated E { " + ",\n".join(f"e{i}" for i in range(20_000)) + " }",
                     "import from N { " + ";".join(f"type T{i}" for i in range(20_000)) + " } type port P message { "
                     + ";".join(f"in T{i}" for i in range(20_000)) + " } modulepar integer " + ", ".join(names)
                     + "; type component C { timer t" + ", t".join(names) + " } } module N { "
                     + "".join(f"type integer T{i}; " for i in range(20_000))]:
            with self.subTest(body[:40]):
                self.write(module(body))
                self.assertEqual(0, self.orvane("-v", "1", "-a", "-F", "M.ttcn").status)

    def test_large_file(self):
        line = "  // " + "long comment " * 7 + "\n"
        text = "".join(line * 40 + f"  const integer c{i} := {i};\n" for i in range(13_000))
        self.assertGreater(len(text), 49_000_000)
        self.write(module(text))
        self.assertEqual(0, self.orvane("-v", "1", "-s", "-F", "M.ttcn").status)

    def test_forty_faults_on_forty_lines(self):
        lines = [f"const integer c{i} := x{i};" for i in range(40)]
        self.write(module("\n".join(lines)))
        result = self.check(["-a", "-F", "M.ttcn"], [ANALYSIS])
        self.assertEqual([f'M.ttcn({i + 2}) : column {20 + len(str(i))} : Error       no declaration for "x{i}"'
                          for i in range(40)], result.messages())
        faults = ["const integer c%d := ;", "type record R%d { integer }", "function f%d() { x := }",
                  "template integer t%d := ( ;", "testcase tc%d() runs C { }", "type enumerated E%d { a, }",
                  "type port P%d message { in }", "function g%d( { }"]
        self.write(module("\n".join(faults[i % 8] % i for i in range(40))))
        result = self.check(["-a", "-F", "M.ttcn"], [PARSING])
        form = re.compile(r"M\.ttcn\((\d+)\) : column \d+ : Error {7}found/expected : \S+/.+")
        self.assertEqual(list(range(2, 42)), [int(form.fullmatch(line).group(1)) for line in result.messages()])

    def test_error_limit(self):
        self.write(module("".join(f"const integer c{i} := x{i};\n" for i in range(40))))
        result = self.check(["-a", "-m", "7", "-F", "M.ttcn"], [LIMIT])
        self.assertEqual(8, len(result.messages()))
        self.assertIn("Maximum number of errors reached, breaking", result.messages()[-1])

    def test_full_device(self):
        self.write(module("const integer c := 1;"))
        with open("/dev/full", "wb") as full:
            result = self.orvane("-v", "4", "-a", "-F", "M.ttcn", stdout=full)
        self.assertIn(result.status, [0, EXCEPTION, FATAL])

        # A file that takes nothing: the header goes away with the C file, and the stamp tells of no code.
        (self.folder / "out").mkdir()
        (self.folder / "out" / "M.c").symlink_to("/dev/full")
        result = self.check(["-c", "-d", "out", "-F", "M.ttcn"], [EXCEPTION], left=["out/M.t3a"])
        self.assertIn("Generator: Exception\n", result.stderr)
        self.assertTrue((self.folder / "out" / "M.t3a").read_text().startswith("analysed\n"))
        (self.folder / "out" / "M.t3a").unlink()
        (self.folder / "out" / "M.t3a").symlink_to("/dev/full")
        self.assertEqual(0, self.orvane("-a", "-d", "out", "-F", "M.ttcn").status)

    def test_closed_streams(self):
        self.write(module("const integer c := 1;"))

        def close_all():
            for stream in (0, 1, 2):
                os.close(stream)

        self.assertEqual(0, self.orvane("-v", "4", "-c", "-F", "M.ttcn", preexec=close_all).status)
        self.assertNotIn("Generating code", (self.folder / "M.c").read_text() + (self.folder / "M.h").read_text())
        self.write(module("const integer c := x;"))
        self.assertEqual(ANALYSIS, self.orvane("-v", "4", "-c", "-F", "M.ttcn", preexec=close_all).status)

    def test_output_that_cannot_be_written(self):
        self.write(module("const integer c := 1;"))
        self.write("in the way", "out")
        result = self.check(["-c", "-d", "out", "-F", "M.ttcn"], [EXCEPTION])
        self.assertIn('WARNING: Could not create directory "./out"', result.stdout)
        self.assertEqual("in the way", (self.folder / "out").read_text())
        (self.folder / "M.c").mkdir()
        self.check(["-c", "-F", "M.ttcn"], [EXCEPTION], left=["M.t3a"])

    def test_without_permission(self):
        """What the owner may not do either: read a source, write into a folder, write where the run started."""
        self.write(module("const integer c := 1;"))
        self.write(module("").encode("utf-16"), "W.ttcn")
        self.write(module(""), "secret.ttcn").chmod(0)
        (self.folder / "out").mkdir()
        for folder in (self.folder, self.folder / "out"):
            folder.chmod(0o555)

        def give_up_privileges():
            if os.geteuid() == 0:
                os.setgid(65534)
                os.setuid(65534)

        def check(arguments, status, text):
            try:
                result = self.orvane(*arguments, preexec=give_up_privileges)
            except PermissionError:
                self.skipTest("the compiler cannot be reached without privileges")
            self.assertEqual(status, result.status, result.stderr)
            self.assertIn(text, result.stderr)
            self.assertEqual(["M.ttcn", "W.ttcn", "out", "secret.ttcn"], self.listing())

        try:
            check(["-a", "-F", "secret.ttcn"], FILES, "Error       Cannot open file: secret.ttcn\n")
            check(["-a", "-F", "M.ttcn", "W.ttcn"], ANALYSIS, "Multiply defined module name")
            check(["-s", "-F", "W.ttcn"], 0, "")
            check(["-a", "-F", "M.ttcn"], 0, "")
            check(["-c", "-d", "out", "-F", "M.ttcn"], EXCEPTION, "Generator: Exception\n")
            check(["-c", "-d", "out/deeper", "-F", "M.ttcn"], EXCEPTION, "could not create directory")
        finally:
            for folder in (self.folder, self.folder / "out"):
                folder.chmod(0o755)

    def test_failed_run_leaves_nothing(self):
        self.write(module("const integer c := x;"))
        self.check(["-c", "-F", "M.ttcn"], [ANALYSIS])
        self.write(module("const integer c = 1"))
        self.check(["-c", "-F", "M.ttcn"], [PARSING])
        self.write("\ufeff".encode("utf-16-le") + module("const integer c = 1").encode("utf-16-le"))
        self.check(["-c", "-F", "M.ttcn"], [PARSING])


def main():
    parser = argparse.ArgumentParser(description="Bad input.")
    parser.add_argument("--orvane", required=True)
    arguments, rest = parser.parse_known_args()
    global ORVANE
    ORVANE = os.path.abspath(arguments.orvane)
    unittest.main(argv=[sys.argv[0], *rest])


if __name__ == "__main__":
    main()
