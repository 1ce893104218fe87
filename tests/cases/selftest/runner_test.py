#!/usr/bin/env python3
"""Proves that the runner of golden cases tells right from wrong, with a compiler that says what it is told."""

import contextlib
import io
import os
import stat
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent))
import run_cases

# Prints the environment's ERRORS and OUTPUT, with @ for the path of its last argument, writes M.c from CODE,
# and ends with EXIT.
FAKE_COMPILER = """#!{python} -SE
import os, signal, sys
sys.stderr.write(os.environ.get("ERRORS", "").replace("@", sys.argv[-1]).replace("\\\\n", "\\n"))
sys.stdout.write(os.environ.get("OUTPUT", "").replace("\\\\n", "\\n"))
if "CODE" in os.environ:
    open("M.c", "w").write(os.environ["CODE"].replace("\\\\n", "\\n"))
if "KILL" in os.environ:
    os.kill(os.getpid(), signal.SIGSEGV)
sys.exit(int(os.environ.get("EXIT", "0")) % 256)
"""

ERROR_AT_3_7 = r'// ENV: ERRORS=@(3) : column 7 : Error       no declaration for "x"\n'


class RunnerTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.root = Path(self.folder.name)
        self.compiler = self.root / "compiler"
        self.compiler.write_text(FAKE_COMPILER.format(python=sys.executable))
        self.compiler.chmod(self.compiler.stat().st_mode | stat.S_IXUSR)

    def tearDown(self):
        self.folder.cleanup()

    def run_case(self, *lines):
        """Exit status and output of the runner for a case of these lines."""
        cases = self.root / "cases"
        cases.mkdir(exist_ok=True)
        (cases / "case.ttcn").write_text("\n".join(lines) + "\n")
        arguments = ["--orvane", str(self.compiler), "--out", str(self.root / "out"), str(cases)]
        output = io.StringIO()
        with contextlib.redirect_stdout(output):
            status = run_cases.main(arguments)
        return status, output.getvalue()

    def assert_passes(self, *lines):
        status, output = self.run_case(*lines)
        self.assertEqual((0, "1 passed, 0 failed"), (status, output.strip().splitlines()[-1]), output)

    def assert_fails(self, text, *lines):
        status, output = self.run_case(*lines)
        self.assertEqual((1, "0 passed, 1 failed"), (status, output.strip().splitlines()[-1]), output)
        self.assertIn(text, output)

    def test_expected_diagnostics(self):
        self.assert_passes("// RUN: -a -F %s", ERROR_AT_3_7,
                           'x // expect-error@:7 {{no declaration for "x"}}')
        self.assert_passes("// RUN: -a -F %s", ERROR_AT_3_7, "x", "",
                           '// expect-error@-2:7 {{no declaration for "x"}}')
        self.assert_passes("// RUN: -a -F %s", '// expect-error@3!:7 {{no declaration for "x"}}', ERROR_AT_3_7)

    def test_missing_diagnostic(self):
        self.assert_fails("missing diagnostic: case.ttcn(2) : column 4 : Error {{is not a type}}",
                          "// RUN: -F %s", "// expect-error@:4 {{is not a type}}")

    def test_surplus_diagnostic(self):
        self.assert_fails('surplus diagnostic: case.ttcn(3) : column 7 : Error {{no declaration for "x"}}',
                          "// RUN: -F %s", ERROR_AT_3_7)

    def test_wrong_text_line_column_or_class(self):
        for wrong in ("error@:7 {{no declaration for \"X\"}}", "error@+1:7 {{no declaration for \"x\"}}",
                      "error@:8 {{no declaration for \"x\"}}", "warning@:7 {{no declaration for \"x\"}}",
                      "error@:7 {{no declaration}}", "error@*:0 {{no declaration for \"x\"}}"):
            status, output = self.run_case("// RUN: -F %s", ERROR_AT_3_7, "// expect-" + wrong)
            self.assertEqual(1, status, wrong)
            self.assertIn("missing diagnostic", output)
            self.assertIn("surplus diagnostic", output)

    def test_other_forms_of_diagnostics(self):
        self.assert_passes("// RUN: -F %s", r"// ENV: ERRORS=Error       no place\n",
                           "// expect-error@*:0 {{no place}}")
        self.assert_passes("// RUN: -F %s", r"// ENV: ERRORS=@(3) : Warning     no column\n",
                           "// expect-warning@:0 {{no column}}")
        self.assert_passes("// RUN: -F %s",
                           r"// ENV: ERRORS=@(3) : column 2 : Error       found/expected : }/{ }\n",
                           "// expect-found@:2 {{}/{ }}}")

    def test_two_expectations_on_one_line(self):
        self.assert_passes("// RUN: -F %s",
                           r"// ENV: ERRORS=@(3) : column 1 : Error       a\n@(3) : column 2 : Warning     b\n",
                           "// expect-error@:1 {{a}} // expect-warning@:2 {{b}}")

    def test_expectation_by_a_pattern(self):
        pattern = r'// each-error \bno\w+ {{no declaration for "*"}}'
        self.assert_passes("// RUN: -F %s", pattern, "", "a none; // nowhere",
                           r'// ENV: ERRORS=@(4) : column 3 : Error       no declaration for "none"\n')
        self.assert_fails('missing diagnostic: case.ttcn(3) : column 1 : Error {{no declaration for "none"}}',
                          "// RUN: -F %s", pattern, "none;")

    def test_malformed_expectation(self):
        self.assert_fails("expectation not understood", "// RUN: -F %s", "// expect-error@:x {{a}}")
        self.assert_fails("expectation not understood", "// RUN: -F %s", "// expect-eror@:1 {{a}}")

    def test_status(self):
        self.assert_passes("// RUN: -F %s", "// ENV: EXIT=-9", "// STATUS: -9")
        self.assert_fails("status -9 instead of 0", "// RUN: -F %s", "// ENV: EXIT=-9")
        self.assert_fails("status 0 instead of -9", "// RUN: -F %s", "// STATUS: -9")
        self.assert_fails("ended by signal 11", "// RUN: -F %s", "// ENV: KILL=1", "// STATUS: -11")

    def test_sanitizer_report(self):
        self.assert_fails("a sanitizer reported", "// RUN: -F %s", "// ENV: EXIT=1", "// STATUS: 1",
                          r"// ENV: ERRORS=a.cpp:3:4: runtime error: shift\n")

    def test_output_in_order(self):
        self.assert_passes("// RUN: -F %s", r"// ENV: OUTPUT=one 1\ntwo 2\nthree 3\n", "// STDOUT: one",
                           "// STDOUT: three")
        self.assert_fails("STDOUT: no line after line 2 holds: one", "// RUN: -F %s",
                          r"// ENV: OUTPUT=one 1\ntwo 2\n", "// STDOUT: two", "// STDOUT: one")
        self.assert_fails("STDOUT: unwanted line: two 2", "// RUN: -F %s", r"// ENV: OUTPUT=one 1\ntwo 2\n",
                          "// STDOUT-NOT: two")
        self.assert_passes("// RUN: -F %s", r"// ENV: ERRORS=usage: what\n", "// STDERR: usage:")
        self.assert_fails("STDERR: no line holds: usage:", "// RUN: -F %s", "// STDERR: usage:")

    def test_generated_files(self):
        self.assert_passes("// RUN: -F %s", r"// ENV: CODE=int a;\nint b;\n", "module M", "// C: int a;",
                           "// C: int b;", "// C-NOT: int c;", "// FILE(M.c): int", "// NO-FILE(M.h):")
        self.assert_fails("C: no line after line 2 holds: int a;", "// RUN: -F %s",
                          r"// ENV: CODE=int a;\nint b;\n", "module M", "// C: int b;", "// C: int a;")
        self.assert_fails("missing file: M.h", "// RUN: -F %s", "module M", "// H: int a;")
        self.assert_fails("unwanted file: M.c", "// RUN: -F %s", r"// ENV: CODE=int a;", "// NO-FILE(M.c):")

    def test_commands_between_runs(self):
        self.assert_passes("// RUN: -F %s", "// SH: test -f M.c && rm M.c", "// RUN: -F %s", "// ENV: CODE=x",
                           "// ENV: EXIT=3", "// STATUS: 3", "// STATUS: 3")
        self.assert_fails("SH: false: status 1 instead of 0", "// RUN: -F %s", "// SH: false")


if __name__ == "__main__":
    os.environ.pop("ERRORS", None)
    unittest.main()
