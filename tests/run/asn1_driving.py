#!/usr/bin/env python3
"""How the compiler drives the ASN.1 tools: build avoidance, several files, tools that fail or are missing, names of
files, and the selection of codecs, of which each one's C must compile.

    asn1_driving.py --orvane PROGRAM [TEST...]
"""

import argparse
import os
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

ORVANE = Path()
TIMEOUT_SECONDS = 120
LIBRARY = "Lib-Mod DEFINITIONS AUTOMATIC TAGS ::= BEGIN Colour ::= ENUMERATED { red, green } END\n"
MAIN = """Main-Mod DEFINITIONS AUTOMATIC TAGS ::= BEGIN IMPORTS Colour FROM Lib-Mod;
Added ::= SEQUENCE { a INTEGER, ..., b BOOLEAN, [[ c IA5String, d Colour ]] }
Node ::= SEQUENCE { value INTEGER (0..255), left Node OPTIONAL, list SEQUENCE OF Node }
Pick ::= CHOICE { node Node, colour Colour, nothing NULL }
END
"""
UP_TO_DATE = "All MESK syntax files are up-to-date - skipping MESK invocation."


class DrivingTest(unittest.TestCase):
    def setUp(self):
        self.holder = tempfile.TemporaryDirectory()
        self.folder = Path(self.holder.name)
        self.path = os.environ["PATH"]
        self.write("lib.asn", LIBRARY)
        self.write("main.asn", MAIN)

    def tearDown(self):
        self.holder.cleanup()

    def write(self, name, text, mode=0o644):
        path = self.folder / name
        path.parent.mkdir(exist_ok=True)
        path.write_text(text)
        path.chmod(mode)
        return path

    def orvane(self, *arguments, program=None):
        """Status and the text of both channels."""
        done = subprocess.run([str(program or ORVANE), *map(str, arguments)], cwd=self.folder, text=True,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              timeout=TIMEOUT_SECONDS, env={**os.environ, "PATH": self.path})
        self.assertGreaterEqual(done.returncode, 0, done.stderr)
        return done.returncode, done.stdout, done.stderr

    def compile_c(self):
        sources = sorted(self.folder.rglob("*.c"))
        self.assertTrue(sources)
        for source in sources:
            done = subprocess.run(["gcc", "-std=c11", "-Wall", "-Werror", "-Wno-unused", "-fsyntax-only",
                                   f"-I{ORVANE.parent.parent / 'include'}", f"-I{source.parent}", str(source)],
                                  cwd=self.folder, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
            self.assertEqual((done.returncode, done.stdout), (0, ""), source.name)

    def no_option_files(self):
        left = {path.name for path in self.folder.rglob("VEXA-ASN-1*")}
        self.assertLessEqual(left, {"VEXA-ASN-1-std-channels.txt"})

    def test_two_files(self):
        status, out, err = self.orvane("-v", "3", "-F", "-A", "main.asn", "lib.asn")
        self.assertEqual((status, err), (0, ""), out)
        self.assertEqual(out.count("Invoking ASN.1 compiler"), 1)
        self.compile_c()
        self.no_option_files()

    def test_runs_at_once(self):
        """They don't disturb each other, and write the same, the given time included."""
        running = [subprocess.Popen([ORVANE, "-d", f"out{i}", "-F", "-A", "lib.asn"], cwd=self.folder, stdout=subprocess.DEVNULL,
                                    env={**os.environ, "SOURCE_DATE_EPOCH": "86400"}) for i in range(12)]
        self.assertEqual([one.wait() for one in running], [0] * 12)
        texts = {path.read_text() for path in self.folder.glob("out*/*t3asn.c")}
        self.assertEqual([text.count("on 02.01.1970 at 0:00.00") for text in texts], [2])
        folder = os.stat(self.folder)
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as holder:
            holder.bind(f"\0orvane-asn1-{folder.st_dev}-{folder.st_ino}".encode().ljust(108, b"\0"))
            held = subprocess.Popen([ORVANE, "-F", "-A", "lib.asn"], cwd=self.folder, text=True, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
            self.assertEqual(held.stderr.readline(), "waiting for another compiler that works on ASN.1 in this folder\n")
        self.assertEqual((held.communicate()[1], held.returncode), ("", 0))

    def test_build_avoidance(self):
        (self.folder / "main.asn").rename(self.folder / "main.asn1")
        arguments = ("-v", "3", "-B", "-F", "-A", "main.asn1", "lib.asn")
        old = time.time() - 10
        for name in ("main.asn1", "lib.asn"):
            os.utime(self.folder / name, (old, old))
        status, out, err = self.orvane(*arguments)
        self.assertEqual((status, err), (0, ""), out)
        self.assertNotIn(UP_TO_DATE, out)
        for _ in range(2):
            status, out, err = self.orvane(*arguments)
            self.assertEqual((status, err), (0, ""), out)
            self.assertEqual(out.count(UP_TO_DATE), 1, out)
            self.assertNotIn("Invoking ASN.1 compiler", out)
        self.compile_c()
        # A source that was touched, and a run that does not avoid anything.
        os.utime(self.folder / "lib.asn")
        self.assertIn("Invoking ASN.1 compiler", self.orvane(*arguments)[1])
        os.utime(self.folder / "lib.asn", (old, old))
        self.assertIn("Invoking ASN.1 compiler", self.orvane(*[word for word in arguments if word != "-B"])[1])
        self.no_option_files()

    def test_name_without_its_ending(self):
        for name in ("library1", "Rec.txt", "Rec.ASN", "my.mod.asn", "with blank.asn", "n" * 60 + ".asn"):
            self.write(name, LIBRARY)
            status, out, err = self.orvane("-F", "-A", name)
            self.assertEqual((status, err), (0, ""), name + out)
            (self.folder / name).unlink()
        self.compile_c()

    def test_two_modules_in_a_file(self):
        # The second one imports nothing of the first, which needs another file; both have names of their own. A third
        # one is called like the source, beside which a file has the second one's name.
        self.write("Second-" + "n" * 40 + ".asn", "no module at all")
        self.write("Two.asn", MAIN + "Two DEFINITIONS ::= BEGIN N ::= NULL END\n" + LIBRARY.replace("Lib-Mod", "Second-" + "n" * 40).replace("red", "blue"))
        self.write("user.ttcn", f"module User {{ import from Main_Mod all; import from Lib_Mod all; import from Second_{'n' * 40} all; "
                                "const Pick c := { colour := red }; const Second_NN.Colour d := blue }".replace("NN", "n" * 40))
        old = time.time() - 10
        for name in ("Two.asn", "lib.asn"):
            os.utime(self.folder / name, (old, old))
        for words in ((), ("-B", "-v", "3"), ("-B", "-v", "3")):
            status, out, err = self.orvane(*words, "-F", "user.ttcn", "-A", "Two.asn", "lib.asn")
            self.assertEqual((status, err), (0, ""), out)
        self.assertIn(UP_TO_DATE, out)
        self.compile_c()
        self.no_option_files()

    def test_names_that_collide(self):
        # A source beside, called like a copy that is made of another one, is left alone.
        self.write("A.asn", LIBRARY.replace("Lib-Mod", "A"))
        self.write("Abi.asn", beside := LIBRARY.replace("Lib-Mod", "Abi"))
        self.assertEqual(self.orvane("-F", "-A", "A.asn")[0], 0)
        self.assertEqual((self.folder / "Abi.asn").read_text(), beside)
        self.write("sub/A.asn", LIBRARY)
        for name in ("-a.asn", "+a.asn"):  # which the tools would take for options
            self.write(name, LIBRARY)
        for sources, text in ((("./-a.asn", "+a.asn"), 'the name of the ASN.1 file "+a.asn" must not begin with "+"'),
                              (("A.asn", "Abi.asn"), "would be written for module \"Abi\" and for module \"A\""),
                              (("A.asn", "sub/A.asn"), "have the same name")):
            status, out, err = self.orvane("-F", "-A", *sources)
            self.assertNotEqual(status, 0, out)
            self.assertIn(text, err)

    def test_refused_types_and_values(self):
        # All are told in one run, with the place where they stand; what names them is told no more.
        self.write("one.asn", """One DEFINITIONS AUTOMATIC TAGS ::= BEGIN IMPORTS T, v FROM Two;
S ::= SEQUENCE { a UTF8String (SIZE (1..4)) DEFAULT "ab", b CHOICE { x TeletexString, y SEQUENCE OF RELATIVE-OID } }
U ::= SEQUENCE { s S, t T DEFAULT v }
e EXTERNAL ::= { direct-reference { 1 2 3 }, encoding octet-aligned : '00'H }
END
""")
        self.write("two.asn", """Two DEFINITIONS ::= BEGIN
T ::= SEQUENCE { d ANY DEFAULT INTEGER : 5, o ObjectDescriptor }
B ::= BMPString
v T ::= { d BOOLEAN : TRUE, o "x" }
END
""")
        status, _, err = self.orvane("-F", "-A", "one.asn", "two.asn")
        found = {" ".join(line.split()) for line in err.splitlines()}
        self.assertEqual(status, 250, err)
        self.assertEqual(found, {
            "one.asn(2) : column 18 : Error ASN.1 translation: type\"1_S_a\" not supported UTF8String",
            "one.asn(2) : column 70 : Error ASN.1 translation: type\"2_S_b_x\" not supported TeletexString",
            "one.asn(2) : column 101 : Error ASN.1 translation: type\"3_S_b_y_elem\" not supported RELATIVE-OID",
            "one.asn(4) : column 1 : Error ASN.1 translation: \"e\" value of EXTERNAL not supported",
            "two.asn(2) : column 32 : Error ASN.1 translation: \"d\" value of ANY not supported",
            "two.asn(2) : column 45 : Error ASN.1 translation: type\"1_T_o\" not supported ObjectDescriptor",
            "two.asn(3) : column 1 : Error ASN.1 translation: type \"B\" not supported BMPString",
            "two.asn(4) : column 13 : Error ASN.1 translation: \"d\" value of ANY not supported"}, err)
        self.write("one.asn", """One DEFINITIONS ::= BEGIN
S ::= SEQUENCE { s SEQUENCE { x NULL }, t INTEGER, a SEQUENCE { b SET { } }, a-expl-b SEQUENCE { } }
S-expl-s ::= NULL
S-expl-t ::= NULL
END
""")
        status, _, err = self.orvane("-F", "-A", "one.asn")
        self.assertEqual((status, re.findall(r'one.asn\((\d+)\) : column (\d+) .*"(\w+)", the other one at line 2', err)),
                         (250, [("2", "78", "S_expl_a_expl_b"), ("3", "1", "S_expl_s")]), err)
        self.write("one.asn", """M DEFINITIONS ::= BEGIN MTx ::= INTEGER END
MM DEFINITIONS ::= BEGIN Tx ::= INTEGER END
""")
        status, _, err = self.orvane("-F", "-A", "one.asn")
        self.assertEqual(status, 246, err)
        self.assertIn('types of "M" and "MM" are both called "t3_MMTx" in C', err)

    def with_options(self, options, *words):
        """A run with options of the user for all tools."""
        self.write("VEXA-ASN-1-compilation-options.txt", options)
        return self.orvane(*words, "-F", "-A", "main.asn", "lib.asn")

    def test_options_of_the_user(self):
        for options, told in (("-TSUFF=_s\n-TNAME=Pick:Chosen\n", ""), ("-TCONV=U\n", ""), ("-C-GENERATION=COMMONTIME\n", ""),
                              ("-UNKNOWN=1\n-fxe=No\n", "UNKNOWN=1"), ("-ALTMAX=9\n", "ALTMAX=9"),
                              ("-ALTMAX=1\n-ALTENCF=a:b\n-FXE=maybe\n", "FXE=maybe")):
            status, out, err = self.with_options(options)
            self.assertEqual((status, err), (0, ""), out)
            ignored = f"\nWARNING : Argument ignored: {told}\n          In option file  : VEXA-ASN-1-compilation-options.txt\n"
            if "maybe" in told:
                ignored = f"\nWARNING : Option ignored: {told}\n"
            self.assertEqual(ignored in out, bool(told), out)
            self.compile_c()

    def test_browser(self):
        status, out, err = self.with_options("-ADE-PREFIX=browse\n")
        self.assertEqual((status, err), (0, ""), out)
        tree, summary, make = ((self.folder / f"browseMain_Mod.{end}").read_text() for end in ("tre", "acs", "mak"))
        self.assertIn("[Main-Mod]\nmain.asn:2: Added : SEQUENCE\n  main.asn:2: a : INTEGER\n", tree)
        self.assertEqual(summary.splitlines()[:2],
                         ["[Main-Mod]", "1:type:'Main_Mod.Added':2:SEQUENCE:main.asn:Main_Mod"])
        self.assertEqual(make, "browseMain_Mod.acs : lib.asn main.asn\n")
        status, _, err = self.with_options("-ADE-DIRECTORY=.\n")
        self.assertNotEqual(status, 0)
        self.assertIn("FATAL ERROR : Can not open file for writing\n              No ADE-PREFIX\n", err)

    def test_length_functions(self):
        self.write("main.asn", "Main-Mod DEFINITIONS ::= BEGIN L ::= SEQUENCE OF NULL S ::= SEQUENCE { d L (SIZE (2)), e L } END\n")
        self.assertEqual(self.orvane("-F", "-A", "main.asn")[0], 0)
        text = (self.folder / "Main_Mod.c").read_text()
        self.assertEqual(["consof_S_expl_d" in text, "consof_S_expl_e" in text], [True, False])
        self.compile_c()

    def test_strict_standard(self):
        for text, told, relaxed in (
                ("A ::= SEQUENCE { INTEGER }", "(1,44): Error: a component needs a name", "a component of \"A\" has no name"),
                ("A ::= SEQUENCE { b ANY }", "(1,46): Error: ANY is no type of the standard", ""),
                ("B ::= SEQUENCE OF NULL b B ::= { n NULL }", "(1,60): Error: an element has no name", "")):
            self.write("old.asn", f"Old DEFINITIONS ::= BEGIN {text} END\n")
            status, _, err = self.orvane("-F", "-A", "old.asn")
            self.assertEqual((status, relaxed in err), (250 if relaxed else 0, True), err)
            status, out, _ = self.orvane("-D", "-F", "-A", "old.asn")
            self.assertEqual(status, 250)
            self.assertIn(told, out)

    def test_other_encodings(self):
        (self.folder / "ucs.asn").write_bytes(LIBRARY.encode("utf-16"))
        (self.folder / "mark.asn").write_bytes(b"\xef\xbb\xbf" + LIBRARY.encode())
        for name in ("ucs.asn", "mark.asn"):
            status, out, _ = self.orvane("-F", "-A", name)
            self.assertEqual(status, 0, out)

    def test_missing_file(self):
        self.write("library1.txt", LIBRARY)
        status, out, err = self.orvane("-F", "-A", "library1.asn")
        self.assertNotEqual(status, 0, out)
        self.no_option_files()

    def installation_without(self, *missing):
        """The compiler with the tools beside it, but for some."""
        folder = self.folder / "other" / "bin"
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        for tool in ("orvane", "mkprefil", "mesk", "asn2c", "asn2per"):
            if tool not in missing:
                shutil.copy(ORVANE.parent / tool, folder / tool)
        self.path = "/usr/bin:/bin"
        return folder / "orvane"

    def test_missing_tools(self):
        program = self.installation_without("mesk")
        status, out, err = self.orvane("-F", "-A", "lib.asn", program=program)
        self.assertEqual(status, 250, out)
        self.assertIn("VEXA-ASN-1: failed to find mesk in path\n", err)
        self.assertIn("Failed invoking external components", err)
        self.no_option_files()

    def test_link_to_the_compiler(self):
        self.installation_without()
        (self.folder / "orvane").symlink_to("other/bin/orvane")
        status, out, err = self.orvane("-F", "-A", "lib.asn", program=self.folder / "orvane")
        self.assertEqual((status, err), (0, ""), out)

    def test_missing_mkprefil(self):
        program = self.installation_without("mkprefil")
        status, out, err = self.orvane("-F", "-A", "lib.asn", program=program)
        self.assertEqual(status, 1, out)
        self.assertIn("ASN.1 compilation failed", err)
        self.no_option_files()

    def failing(self, tool, *options):
        program = self.installation_without(tool)
        self.write(f"other/bin/{tool}", "#!/bin/sh\necho told by $1\necho told to error >&2\nexit 3\n", 0o755)
        return self.orvane(*options, "-F", "-A", "lib.asn", program=program)

    def test_failing_mesk(self):
        status, out, err = self.failing("mesk", "-v", 1)
        self.assertEqual(status, 250)
        self.assertIn("told by -VERBOSE=tool\ntold to error\n", out)
        self.assertIn("Errors found in ASN.1 compilation", err)
        self.assertNotIn("told", err)
        self.no_option_files()

    def test_failing_generators(self):
        for level, digit in enumerate("0122", 1):
            tool = ("asn2c", "asn2per")[level % 2]
            status, out, err = self.failing(tool, "-v", level)
            self.assertEqual(status, 246, tool)
            self.assertIn(f"told by -VERBOSE={digit}\n", out)
            self.assertIn("ASN.1 compilation failed", err)
        self.no_option_files()

    def test_selection_of_codecs(self):
        names = ["all", "none", "no-translation", "BER:1997", "BER:1997-length-form-3", "PER-BASIC-UNALIGNED:1997",
                 "PER-BASIC-ALIGNED:1997"]
        for selection in [[name] for name in names] + [["BER:1997", "PER-BASIC-ALIGNED:1997"]]:
            with self.subTest(selection):
                for path in [*self.folder.glob("*.c"), *self.folder.glob("*.h"), *self.folder.glob("*.ext")]:
                    path.unlink()
                words = [word for name in selection for word in ("-C", name)]
                status, out, err = self.orvane(*words, "-F", "-A", "main.asn", "lib.asn")
                self.assertEqual((status, err), (0, ""), out)
                self.compile_c()
                has_per = (self.folder / "mainpec.c").exists() or any(self.folder.glob("*pec.c"))
                self.assertEqual(has_per, any(name == "all" or name.startswith("PER") for name in selection))
                headers = "".join(path.read_text() for path in self.folder.glob("*.h") if "t3asn" not in path.name)
                self.assertEqual("t3asn.h" in headers, selection != ["no-translation"])


def main():
    global ORVANE
    parser = argparse.ArgumentParser()
    parser.add_argument("--orvane", type=Path, required=True)
    parser.add_argument("tests", nargs="*")
    arguments = parser.parse_args()
    ORVANE = arguments.orvane.resolve()
    unittest.main(argv=[sys.argv[0], *arguments.tests], verbosity=1)


if __name__ == "__main__":
    main()
