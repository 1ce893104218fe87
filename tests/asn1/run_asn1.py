#!/usr/bin/env python3
"""Tests the ASN.1 tools.

    run_asn1.py --bin FOLDER --out FOLDER [--update] golden|faults|options|limits|mutations|damaged

golden compiles sources/ and compares the dumps with expected/; --update writes those anew. faults runs the table in
faults.txt. options and limits test arguments, files and hostile input, mutations sources with random faults, damaged
syntax files with faults in them, given to those that read them.
"""

import argparse
import random
import re
import shutil
import struct
import subprocess
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
SANITIZER = re.compile(r"(Address|Leak|UndefinedBehavior)Sanitizer|runtime error: ")
RECORD_SIZES = [112, 116, 76, 16, 36, 8, 20]


class Tests:
    def __init__(self, bin_folder, out):
        self.bin, self.out, self.faults, self.checks = Path(bin_folder).resolve(), Path(out).resolve(), [], 0
        shutil.rmtree(self.out, ignore_errors=True)
        self.out.mkdir(parents=True)

    def check(self, good, text):
        self.checks += 1
        if not good:
            self.faults.append(text)

    def equal(self, what, found, expected):
        self.check(found == expected, f"{what}:\n    found    {found!r}\n    expected {expected!r}")

    def run(self, *words, cwd=None, timeout=60):
        """Status and output of a tool."""
        done = subprocess.run([str(self.bin / words[0]), *map(str, words[1:])], cwd=cwd or self.out, text=True,
                              errors="replace", stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=timeout)
        self.check(done.returncode >= 0 and not SANITIZER.search(done.stderr),
                   f"{' '.join(map(str, words))} died: status {done.returncode}\n{done.stderr[-3000:]}")
        return done.returncode, done.stdout

    def folder(self, name, files):
        folder = self.out / name
        folder.mkdir(parents=True, exist_ok=True)
        for file, text in files.items():
            (folder / file).write_text(text, encoding="utf-8")
        return folder


def module(name, body, imports=""):
    return f"{name} DEFINITIONS ::= BEGIN {imports}\n{body}\nEND\n"


def check_layout(tests, path):
    """The frame of a syntax file, read without any help of the tool: sizes, counts, strings."""
    data = path.read_bytes()
    words = struct.unpack_from("=28i", data)
    first, version = struct.unpack_from("=HH", data)
    tests.equal(f"{path.name}: version", (first, version), (213, 213))
    counts = words[9:19]
    position = sum(size * count for size, count in zip(RECORD_SIZES, counts))
    texts = []
    for width, count in zip((1, 2, 4), counts[7:]):
        for _ in range(count):
            (units,) = struct.unpack_from("=H", data, position)
            text = data[position + 2:position + 2 + units * width]
            tests.check(units > 0 and text[-width:] == bytes(width), f"{path.name}: string without an end")
            texts.append(text[:-width].decode("latin-1"))
            position += 2 + units * width
    tests.equal(f"{path.name}: size", position, len(data))
    for word in words[5:6]:
        tests.check(0 <= word <= counts[1], f"{path.name}: first type {word}")
    for word in words[6:9]:
        tests.check(0 <= word <= counts[2], f"{path.name}: first value {word}")
    return texts[words[3] - 1], words


def golden(tests, update):
    sources = HERE / "sources"
    names = sorted(path.name for path in sources.glob("*.asn"))
    option_file = tests.out / "prefixes.txt"
    status, text = tests.run("mkprefil", f"-OPTION-FILE={option_file}", f"-A={sources}", *names, "-ANALYZE")
    tests.equal("mkprefil", (status, text), (0, ""))
    status, text = tests.run("mesk", f"-S={tests.out}", f"-A={sources}", f"+{option_file}", names[0], "-ANALYZE")
    tests.equal("mesk", (status, text), (0, ""))
    prefixes = [line.split(":") for line in option_file.read_text().splitlines()]
    files = sorted(tests.out.glob("*.stx"))
    tests.equal("files", [path.stem for path in files], sorted(fields[2] for fields in prefixes))
    for path in files:
        name, _ = check_layout(tests, path)
        tests.check(f"-PREFIX={name}" in [fields[0] for fields in prefixes], f"{path.name}: module {name}")
        status, dump = tests.run("mesk", f"-DUMP={path}")
        expected = HERE / "expected" / (path.stem + ".txt")
        if update:
            expected.parent.mkdir(exist_ok=True)
            expected.write_text(dump)
        lines = expected.read_text().splitlines() if expected.is_file() else []
        found = dump.splitlines()
        tests.equal(f"{path.name}: status and length", (status, len(found)), (0, len(lines)))
        for number, (line, wanted) in enumerate(zip(found, lines), 1):
            tests.equal(f"{expected.name}:{number}", line, wanted)


def read_faults():
    """Title, text and expected messages of each case."""
    cases = []
    for line in (HERE / "faults.txt").read_text(encoding="utf-8").split("\n"):
        if line.startswith("=== "):
            cases.append((line[4:], [], []))
        elif cases and line.startswith(">>> "):
            cases[-1][2].append(line[4:])
        elif cases:
            cases[-1][1].append(line)
    return cases


def faults(tests, _update):
    for number, (title, lines, expected) in enumerate(read_faults()):
        lines = lines[:-1] if lines and not lines[-1] else lines
        whole = any(re.match(r"\w+ DEFINITIONS", line) for line in lines)
        if title == "no module":
            text = "-- nothing\n" + "\n".join(lines)
        else:
            text = "\n".join(lines) if whole else "M DEFINITIONS ::= BEGIN\n" + "\n".join(lines) + "\nEND"
        folder = tests.folder(f"{number:03}", {"M.asn": text + "\n"})
        status, output = tests.run("mesk", "M", cwd=folder)
        found = [re.sub(r"^M\.asn\((\d+,\d+)\): Error: ", r"\1: ", line) for line in output.splitlines()]
        tests.check(expected, f"{title}: nothing is expected")
        tests.equal(title, found, expected)
        tests.equal(f"{title}: status and files", (status, list(folder.glob("*.stx"))), (1, []))


def options(tests, _update):
    # mkprefil: names with and without ending, several directories, two modules in a file, faults.
    one = tests.folder("one", {"a.b.asn": module("First", "A ::= NULL") + "-- x --" + module("Second-Mod", "B ::= NULL"),
                               "none.asn": "-- Foo DEFINITIONS ::= BEGIN --\n"})
    two = tests.folder("two", {"c.asn": "Third { iso 1 } DEFINITIONS AUTOMATIC TAGS ::= BEGIN C ::= NULL END\n",
                               "x" * 40 + ".asn": module("Long", "L ::= NULL")})
    status, text = tests.run("mkprefil", "-OPTION-FILE=p.txt", "-A=one", f"-A={two}", "a.b.asn", "c", "x" * 40, "-ANALYZE")
    tests.equal("mkprefil", (status, text), (0, ""))
    tests.equal("option file", (tests.out / "p.txt").read_text().splitlines(),
                ["-PREFIX=First:a_b:a_b", "-PREFIX=Second-Mod:a_b:Second-Mod", "-PREFIX=Third:c:c",
                 "-PREFIX=Long:" + "x" * 30 + ":" + "x" * 30])
    status, text = tests.run("mkprefil", "-OPTION-FILE=q.txt", "-A=one", "-A=two", "none.asn", "lost.asn")
    tests.equal("mkprefil faults", (status, text, (tests.out / "q.txt").exists()),
                (1, "one/none.asn(1): the file holds no ASN.1 module\nlost.asn(1): the file was not found\n", False))
    tests.equal("mkprefil writes", tests.run("mkprefil", "-OPTION-FILE=no/q.txt", "-A=two", "c.asn"),
                (1, "no/q.txt(1): the file can not be written\n"))

    # Prefixes, scopes, entries, options; imports bring their modules.
    types = module("Lib-Mod", "Thing ::= SEQUENCE { a INTEGER }\nPdu ::= NULL", "IMPORTS Main FROM App-Mod;")
    app = module("App-Mod", "Main ::= SEQUENCE { t Thing }\nLeaf ::= BOOLEAN", "IMPORTS Thing FROM Lib-Mod;")
    work = tests.folder("work", {"lib.asn": types, "app.asn": app})
    (work / "out").mkdir()
    (work / "o.txt").write_text("# comment\n-PREFIX=Lib_Mod:wrong:wrong\n-prefix=Lib-Mod:lib:Lib_gen\n"
                                "-BEGIN-SCOPE=other:Lib_gen\n-TPREF=XLib\n-C=there\n-END-SCOPE\n"
                                "-BEGIN-SCOPE=app\n-TPREF=XApp\n-END-SCOPE\n-ENTRY=Thing:sdu\n-entry=Pdu:sdu\n"
                                "-END-OF-OPTIONS\n-TPREF=never\nnever\n")
    status, text = tests.run("mesk", "-VERBOSE=0", "-S=out", "-A=.", "-L=x", "+o.txt", "app.asn", "-C-GENERATION=REAL",
                             "-STRICTSTANDARD", "-ANALYZE", cwd=work)
    tests.equal("mesk", (status, text), (0, ""))
    tests.equal("files", sorted(path.name for path in (work / "out").iterdir()), ["Lib_gen.stx", "app.stx"])
    _, dump = tests.run("mesk", "-DUMP=out/Lib_gen.stx", cwd=work)
    tests.equal("library", dump.splitlines(), [
        "module Lib-Mod file lib generation Lib_gen tags explicit", "import 2 App-Mod file app entry 1",
        "option 2 TPREF=XLib", "option 2 C=there", "option 2 ENTRY=Thing:sdu", "option 2 entry=Pdu:sdu",
        "option 2 C-GENERATION=REAL", "option 2 STRICTSTANDARD", "entry types 2", "type #1 unique 1 Thing TYP_SEQ entry line 2",
        "  a TYP_INTEGER", "type #2 unique 2 Pdu TYP_NULL entry line 3"])
    _, dump = tests.run("mesk", "-DUMP=out/app.stx", cwd=work)
    tests.check("import 2 Lib-Mod file Lib_gen entry 1\noption 2 TPREF=XApp\n" in dump, f"application: {dump}")
    name, words = check_layout(tests, work / "out" / "app.stx")
    tests.equal("header of the application", (name, words[22], words[26], words[27]), ("App-Mod", 0, 1, 5))

    # Prefixes that are not the files' names.
    (tests.out / "more").mkdir()
    tests.equal("cut prefixes", tests.run("mesk", "-S=more", "-A=one", "-A=two", "+p.txt"), (0, ""))
    tests.equal("files of cut prefixes", sorted(path.name for path in (tests.out / "more").iterdir()),
                ["Second-Mod.stx", "a_b.stx", "c.stx", "x" * 30 + ".stx"])

    # A second run in the manner of the generation: only -PREFIX, both modules under other names.
    (work / "p.txt").write_text("-PREFIX=App-Mod:app:G-App\n-PREFIX=Lib-Mod:lib:G-Lib\n")
    tests.equal("by prefixes", tests.run("mesk", "-S=out", "-A=.", "+p.txt", cwd=work), (0, ""))
    tests.check((work / "out" / "G-App.stx").exists() and (work / "out" / "G-Lib.stx").exists(), "files by prefixes")
    (work / "p.txt").write_text("-PREFIX=App-Mod:app:same\n-PREFIX=Lib-Mod:lib:same\n")
    status, text = tests.run("mesk", "-S=out", "+p.txt", cwd=work)
    tests.equal("one prefix for two", (status, "have the same prefix \"same\"" in text), (1, True))

    # What can't be found, read or written.
    for words, message in [
            (["lost.asn"], "Error: the source lost.asn was not found\n"),
            (["-PREFIX=Lost:lost:lost"], "Error: the source of module Lost was not found\n"),
            (["+lost.txt"], "Error: the option file lost.txt can not be opened\n"),
            (["-PREFIX=1:a:b"], "Error: the option -PREFIX=1:a:b is not of the form module:file:generation\n"),
            (["-S=none", "-PREFIX=Lib-Mod:lib:lib", "app"], "Error: the file none/app.stx can not be written\n"),
            (["-DUMP=o.txt"], "Error: o.txt is not a valid syntax file: the version is wrong\n")]:
        tests.equal(" ".join(words), tests.run("mesk", *words, cwd=work), (1, message))
    tests.equal("usage", tests.run("mesk", cwd=work)[0], 1)

    # The words of the tools that read syntax files.
    (work / "d.stx").mkdir()
    (work / "w.txt").write_text("# a\n(* c\n-TYP=1  \nfixed\n-BEGIN-SCOPE=a\n-BEGIN-SCOPE=b\n-END-SCOPE\n-END-SCOPE\n"
                                "-PrefixLen=9\n+o.txt\n-BEGIN-SCOPE=c\n-end-of-options\n-DEF=1\n")
    for words, message in [
            (["+w.txt"], "WARNING : Unexpected -BEGIN-SCOPE: option file w.txt\n\nWARNING : Unexpected -END-SCOPE: option "
             "file w.txt\n\nWARNING : Argument ignored: PrefixLen=9\n          In option file  : w.txt\n\n"
             "WARNING : Argument ignored: +o.txt\n          In option file  : w.txt\n\n"
             "WARNING : -END-SCOPE expected: option file w.txt\n"),
            (["abcdefg", "a.b"], "WARNING : File prefix 'abcdefg' longer than 5 characters.\n          Truncating it to 5 "
             "characters.\n          Check value of the PREFIXLEN option.\n\nERROR : Invalid file prefix: a.b\n"),
            (["-PREFIXLEN=07", "x"], "WARNING : Argument ignored: PREFIXLEN=07\n"), (["+"], ""), (["d"], "")]:
        status, text = tests.run("asn2c", *words, cwd=work)
        tests.equal("asn2c " + " ".join(words), (status, text.lstrip("\n")), (2, message))
    tests.equal("ignored", tests.run("asn2per", "-S=out", "-PREFIXLEN=32", "-prefix=1:a", "app", cwd=work),
                (0, "\nWARNING : Argument ignored: prefix=1:a\n"))
    # What the browser is told of a fault.
    tests.equal("fault", tests.run("asn2c", "-S=out", "-PREFIXLEN=32", "-ADE-PREFIX=b-", "-C=none", "app", cwd=work)[0], 2)
    summary = (work / "b-app.acs").read_text().splitlines()
    tests.equal("summary", (summary[0], summary[-1]), ("[App-Mod]", "FATAL ERROR : Can not open file for writing: none/appcod.c"))
    # A failing run leaves the old file alone.
    before = (work / "out" / "app.stx").read_bytes()
    (work / "app.asn").write_text(app.replace("BOOLEAN", "Missing"))
    tests.equal("failing run", tests.run("mesk", "-S=out", "-A=.", "+o.txt", "app.asn", cwd=work),
                (1, "app.asn(3,10): Error: \"Missing\" is not defined\n"))
    tests.check((work / "out" / "app.stx").read_bytes() == before, "a failing run changed a file")


def limits(tests, _update):
    deep = 100000
    long_name = "a" * 40000
    cases = {
        "types": ("A ::= " + "SEQUENCE OF " * deep + "NULL", "types are nested too deeply"),
        "structures": ("A ::= " + "SEQUENCE { a " * deep + "NULL" + "}" * deep, "types are nested too deeply"),
        "values": ("A ::= SEQUENCE OF A\na A ::= " + "{" * deep + "}" * deep, "values are nested too deeply"),
        "parentheses": ("A ::= INTEGER (" + "(" * deep + "1" + ")" * deep + ")", "constraints are nested too deeply"),
        "exceptions": ("A ::= INTEGER (" + "ALL EXCEPT (" * deep, "constraints are nested too deeply"),
        "choices": ("A ::= CHOICE { a A, b [1] NULL }\na A ::= " + "a : " * deep + "b : NULL", "values are nested too deeply"),
        "syntax": ("C ::= CLASS { &a NULL } WITH SYNTAX { " + "[" * deep, "syntax groups are nested too deeply"),
        "parameters": ("\n".join(f"A{i} {{T}} ::= SEQUENCE {{ a A{i + 1} {{T}}, b A{i + 1} {{T}} }}" for i in range(60)) +
                       "\nA60 {T} ::= SEQUENCE { t T }\nB ::= A0 { NULL }", "grow too large"),
        "components": ("\n".join(f"A{i} ::= SEQUENCE {{ COMPONENTS OF A{i + 1}, COMPONENTS OF A{i + 1} }}"
                                 for i in range(60)) + "\nA60 ::= SEQUENCE { }", "too many components"),
        "references": ("a0 INTEGER ::= 1\n" + "\n".join(f"a{i + 1} INTEGER ::= a{i}" for i in range(5000)), None),
        "references ahead": ("\n".join(f"a{i} INTEGER ::= a{i + 1}" for i in range(5000)) + "\na5000 INTEGER ::= 1", None),
        "narrowed synonyms": ("A0 ::= INTEGER\n" + "\n".join(f"A{i + 1} ::= A{i} (0..{9000 - i})" for i in range(5000)), None),
        "synonyms": ("A0 ::= NULL\n" + "\n".join(f"A{i + 1} ::= A{i}" for i in range(500)), None),
        "named numbers": ("\n".join(f"A{i} ::= INTEGER {{ x{i}(v{i}) }}\nv{i} A{i + 1} ::= x{i + 1}" for i in range(3000)) +
                          "\nA3000 ::= INTEGER { x3000(1) }", "references are nested too deeply"),
        "union": ("A ::= INTEGER (" + "|".join(map(str, range(20000))) + ")", None),
        "enumeration": ("A ::= ENUMERATED {" + ", ".join(f"x{i}" for i in range(20000)) + "}", None),
        "name": (f"A ::= SEQUENCE {{ {long_name} NULL }}", "a name is too long"),
        "string": ('a IA5String ::= "' + "x" * 32001 + '"', "the string is too long"),
        "largest string": ('a IA5String ::= "' + "x" * 32000 + '"', None),
        "bit": ("A ::= BIT STRING { a(2000000000) }\nb A ::= { a }", "the number of the bit is too large"),
    }
    for name, (body, message) in cases.items():
        folder = tests.folder(name, {"M.asn": module("M", body)})
        status, output = tests.run("mesk", "M", cwd=folder)
        tests.equal(f"{name}: status", status, 1 if message else 0)
        tests.check(message in output if message else output == "", f"{name}: {output[:500]}")
        if not message:
            tests.equal(f"{name}: dump", tests.run("mesk", "-DUMP=M.stx", cwd=folder)[0], 0)
    # A hundred errors are enough.
    folder = tests.folder("errors", {"M.asn": module("M", "\n".join(f"A{i} ::= B{i}" for i in range(500)))})
    status, output = tests.run("mesk", "M", cwd=folder)
    tests.equal("a hundred errors", (status, len(output.splitlines()), output.splitlines()[-1]),
                (1, 101, "Error: more than 99 errors, giving up"))
    # A file that isn't text at all.
    (folder / "B.asn").write_bytes(bytes(range(256)) * 40)
    status, output = tests.run("mesk", "B", cwd=folder)
    tests.check(status == 1 and "B.asn(1,1): Error: illegal character\n" in output, output[:300])


def mutate(chance, text):
    """A source with a few faults: bytes or tokens removed, doubled, exchanged."""
    if chance.random() < 0.3:
        data = bytearray(text.encode("utf-8"))
        for _ in range(chance.randint(1, 8)):
            place = chance.randrange(len(data))
            action = chance.randrange(3)
            if action == 0:
                data[place] = chance.randrange(256)
            elif action == 1:
                del data[place:place + chance.randint(1, 30)]
            else:
                data[place:place] = data[max(0, place - chance.randint(1, 60)):place]
        return bytes(data)
    tokens = re.findall(r"--[^\n]*|\"[^\"]*\"|'[^']*'[BH]|[&\w][\w-]*|::=|\.\.\.|\.\.|\[\[|\]\]|\s+|.", text)
    solid = [i for i, token in enumerate(tokens) if not token.isspace()]
    if chance.random() < 0.7:
        # A word or number by another one of its kind: most of these parse, and go wrong later or not at all.
        def kind(token):
            return "A" if token[0].isupper() else "a" if token[0].islower() else "0" if token.isdigit() else token[0]
        words = [i for i in solid if tokens[i][0].isalnum() or tokens[i][0] == "&"]
        for _ in range(chance.randint(1, 3)):
            one = chance.choice(words)
            tokens[one] = tokens[chance.choice([i for i in words if kind(tokens[i]) == kind(tokens[one])])]
        return "".join(tokens).encode("utf-8")
    for _ in range(chance.randint(1, 4)):
        one, other = chance.choice(solid), chance.choice(solid)
        action = chance.randrange(4)
        if action == 0:
            tokens[one] = ""
        elif action == 1:
            tokens[one], tokens[other] = tokens[other], tokens[one]
        elif action == 2:
            tokens[one] = tokens[other]
        else:
            tokens[one] += " " + tokens[other] + " "
    return "".join(tokens).encode("utf-8")


def mutations(tests, _update):
    """Mutated sources must be compiled or refused in order: with messages and status 1, or a file that can be read."""
    sources = {path.name: path.read_text(encoding="utf-8") for path in sorted((HERE / "sources").glob("*.asn"))}
    folder = tests.folder("mutated", sources)
    accepted, has_compiler = 0, (tests.bin / "orvane").exists()
    for seed in range(tests.first_seed, tests.first_seed + tests.rounds):
        chance = random.Random(seed)
        name = chance.choice(sorted(sources))
        (folder / name).write_bytes(mutate(chance, sources[name]))
        status, output = tests.run("mesk", *sorted(sources), cwd=folder, timeout=20)
        messages = [line for line in output.splitlines() if "Error: " in line]
        tests.check(status == (1 if messages else 0), f"seed {seed}: status {status}\n{output[:500]}")
        if status == 0:
            accepted += 1
            for path in folder.glob("*.stx"):
                tests.equal(f"seed {seed}: dump of {path.name}", tests.run("mesk", f"-DUMP={path}")[0], 0)
            if has_compiler:
                status, output = tests.run("orvane", "-F", "-A", *sorted(sources), cwd=folder)
                tests.check(status in (0, 247, 250), f"seed {seed}: orvane: status {status}\n{output[-500:]}")
        # A damaged syntax file is refused by the dump, or printed.
        syntax_files = sorted(folder.glob("*.stx"))
        if syntax_files:
            data = bytearray(chance.choice(syntax_files).read_bytes())
            for _ in range(3):
                data[chance.randrange(len(data))] = chance.randrange(256)
            (tests.out / "damaged.stx").write_bytes(data)
            status, output = tests.run("mesk", "-DUMP=damaged.stx", timeout=20)
            tests.check(status == (1 if "is not a valid syntax file" in output else 0), f"seed {seed}: damaged file")
        (folder / name).write_text(sources[name], encoding="utf-8")
    tests.check(0 < accepted < tests.rounds, f"{accepted} of {tests.rounds} mutations were accepted")


# The words of records that are numbers of records of the same kind, by the kind; and the bytes that hold a main type.
LINKS = {1: (1, 5, 9, 18, 20, 24), 2: (6, 8, 12), 3: (3,), 4: (0, 2, 3), 6: (4,)}
MAIN_TYPE_BYTES = {1: 50, 2: 38}


def damage_syntax_file(chance, data):
    """A syntax file with faults: records that lead elsewhere, to themselves or nowhere, wrong kinds, counts, ends."""
    data = bytearray(data)
    counts = struct.unpack_from("=10i", data, 36)
    starts = [sum(size * count for size, count in zip(RECORD_SIZES[:kind], counts)) for kind in range(8)]
    for _ in range(chance.randint(1, 3)):
        action = chance.random()
        kind = chance.choice([kind for kind in LINKS if counts[kind] > 0])
        number = chance.randrange(counts[kind])
        record = starts[kind] + number * RECORD_SIZES[kind]
        if action < 0.5:
            word = chance.choice(LINKS[kind])
            target = chance.choice([number + 1, chance.randint(1, counts[kind]), chance.randint(1, counts[kind]), 0,
                                    counts[kind] + 1, -1])
            struct.pack_into("=i", data, record + 4 * word, target)
        elif action < 0.65 and kind in MAIN_TYPE_BYTES:
            data[record + MAIN_TYPE_BYTES[kind]] = chance.choice([32, 34, 7, 8, 9, 11, chance.randrange(256)])
        elif action < 0.75:
            struct.pack_into("=i", data, record + 4 * chance.randrange(RECORD_SIZES[kind] // 4),
                             chance.choice([0, 1, 2, -1, 2**31 - 1, -2**31, chance.randrange(200)]))
        elif action < 0.8:
            word = chance.randrange(28)
            struct.pack_into("=i", data, 4 * word, chance.choice([0, 1, 2, -1, 2**31 - 1, chance.randrange(5000)]))
        elif action < 0.85:
            del data[chance.randrange(len(data)):]
            return bytes(data)
        else:
            data[chance.randrange(len(data))] = chance.randrange(256)
    return bytes(data)


# What damaged files brought readers to grief by: kind, record, word and value, and the error.
DAMAGES = [
    ("its own successor", 1, 1, 5, 1, "Syntax tree inconsistent"),
    ("the successor is the one before", 1, 2, 5, 1, "Syntax tree inconsistent"),
    ("a type within itself", 1, 1, 1, 1, "Syntax tree inconsistent"),
    ("no such type", 1, 1, 5, 999, "Syntax tree inconsistent"),
    ("a negative number", 1, 1, 6, -1, "Syntax tree inconsistent"),
    ("a list without an element", 1, 4, 1, 0, "Syntax tree inconsistent"),
    ("a reference to itself", 1, 3, 20, 3, "Internal error"),
    ("a reference to nothing", 1, 3, 20, 0, "Internal error"),
    ("an unknown module", 1, 3, 19, 7, "Syntax tree inconsistent"),
    ("the place of a component", 1, 2, 11, 40, "Syntax tree inconsistent"),
    ("a component around itself", 1, 2, 9, 2, "Syntax tree inconsistent"),
    ("too many types", 0, 1, 10, 1000000, "Not a valid syntax tree"),
    ("fewer than none", 0, 1, 11, -1, "Not a valid syntax tree"),
    ("a version of both halves", 0, 1, 0, 212 << 16 | 212, "Not a valid syntax tree"),
]


def damaged(tests, _update):
    """Readers of damaged syntax files end with status 0 or, after a message, 2."""
    small = tests.folder("small", {"M.asn": module("M", "A ::= SEQUENCE { a INTEGER }\nB ::= A\nC ::= SEQUENCE OF B")})
    tests.equal("small", tests.run("mesk", "M", cwd=small), (0, ""))
    whole = (small / "M.stx").read_bytes()
    counts = struct.unpack_from("=10i", whole, 36)
    types = [struct.unpack_from("=29i", whole, 112 * counts[0] + 116 * i) for i in range(counts[1])]
    main_types = [(whole[112 * counts[0] + 116 * i + 50], types[i][0] != 0) for i in range(counts[1])]
    # The records by what they are: the table counts a definition, its component, a reference, a list.
    places = {1: main_types.index((7, True)), 2: main_types.index((1, True)), 3: main_types.index((32, True)),
              4: main_types.index((8, True))}
    for title, kind, record, word, value, message in DAMAGES:
        data = bytearray(whole)
        number = places[record] if kind == 1 else 0
        if kind == 1 and word in (5, 1, 9, 20) and 0 < value < 5:
            value = places[value] + 1
        struct.pack_into("=i", data, (112 * counts[0] + 116 * number if kind == 1 else 0) + 4 * word, value)
        (small / "M.stx").write_bytes(data)
        for tool in ("asn2c", "asn2per"):
            done = subprocess.run([str(tests.bin / tool), "M"], cwd=small, text=True, stdout=subprocess.PIPE,
                                  stderr=subprocess.PIPE, timeout=20)
            tests.equal(f"{title}: {tool}", (done.returncode, f"\nFATAL ERROR : {message}\n" in done.stderr), (2, True))

    # At random.
    sources = sorted((HERE / "sources").glob("*.asn")) + sorted((HERE / "codecs").glob("*.asn"))
    folder = tests.folder("trees", {source.name: source.read_text(encoding="utf-8") for source in sources})
    names = [source.name for source in sources]
    tests.equal("mkprefil", tests.run("mkprefil", "-OPTION-FILE=p.txt", "-A=.", *names, cwd=folder), (0, ""))
    tests.equal("mesk", tests.run("mesk", "+p.txt", names[0], cwd=folder), (0, ""))
    trees = {path: path.read_bytes() for path in sorted(folder.glob("*.stx"))}
    has_compiler = (tests.bin / "orvane").exists()
    # An installation in which the files come from a tool that does not read sources.
    fake = tests.folder("fake", {"mesk": f"#!/bin/sh\nexec cp {folder}/*.stx .\n"})
    (fake / "mesk").chmod(0o755)
    for tool in ("orvane", "mkprefil", "asn2c", "asn2per") if has_compiler else ():
        shutil.copy(tests.bin / tool, fake / tool)
    compiled = tests.folder("compiled", {})
    refused = 0
    for seed in range(tests.first_seed, tests.first_seed + tests.rounds):
        chance = random.Random(seed)
        path = chance.choice(sorted(trees))
        path.write_bytes(damage_syntax_file(chance, trees[path]))
        results = []
        for tool in ("asn2c", "asn2per"):
            results.append(tests.run(tool, "-PREFIXLEN=32", path.stem, cwd=folder, timeout=20)[0])
            tests.check(results[-1] in (0, 2), f"seed {seed}: {tool} {path.stem}: status {results[-1]}")
        refused += results[0] == 2
        if has_compiler and seed % 4 == 0 and (folder / f"{path.stem}.asn").exists():
            words = [str(fake / "orvane"), "-F", "-A", *[str(folder / name) for name in names]]
            done = subprocess.run(words, cwd=compiled, stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=60)
            tests.check(0 <= done.returncode and done.returncode not in (252, 134, 139),
                        f"seed {seed}: orvane: status {done.returncode}\n{done.stderr[-500:]}")
        path.write_bytes(trees[path])
    tests.check(0 < refused < tests.rounds, f"{refused} of {tests.rounds} damaged files were refused")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--bin", required=True)
    parser.add_argument("--out", required=True)
    parser.add_argument("--update", action="store_true")
    parser.add_argument("part", choices=["golden", "faults", "options", "limits", "mutations", "damaged"])
    parser.add_argument("--rounds", type=int, default=120)
    parser.add_argument("--seed", type=int, default=1)
    arguments = parser.parse_args()
    tests = Tests(arguments.bin, arguments.out)
    tests.rounds, tests.first_seed = arguments.rounds, arguments.seed
    parts = {"golden": golden, "faults": faults, "options": options, "limits": limits, "mutations": mutations,
             "damaged": damaged}
    parts[arguments.part](tests, arguments.update)
    print("\n".join(tests.faults) if tests.faults else f"{tests.checks} checks passed")
    return 1 if tests.faults or tests.checks == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
