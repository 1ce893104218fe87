#!/usr/bin/env python3
"""Tries each example of docs/codecs.md: encodes its value, compares the octets, decodes and encodes them again.

    examples.py PAGE FOLDER ARGUMENT...     writes a suite into the folder and gives it to run_suite.py with the arguments

Lines of the page's blocks that begin with `type` declare types, deeper ones go on; others are values of the type before, and
their octets, or text, behind two blanks or more. Each word that the library knows, and each of ../shared/encodings.md where
that is there, must occur in an example.
"""

import re
import shutil
import subprocess
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent


def octets_of(section, text):
    if section == "RAW":
        return bytes.fromhex(text)
    if section == "TEXT":
        text = text.strip('"').replace("\\r", "\r").replace("\\n", "\n")
    return text.encode()


def read_page(page):
    """Declarations in groups, and rows of line, type, value and octets."""
    declarations, rows, section, name = [], [], None, None
    for number, line in enumerate(page.split("\n"), 1):
        if line.startswith("## "):
            declarations += [f'}} with {{ encode "{section}" }}'] if section else []
            section = line[4:].partition('"')[0] if line.startswith('## "') else None
            declarations += [f"group {section} {{"] if section else []
        elif section and line.startswith("    "):
            value, _, octets = re.fullmatch(r"    (.*?)(\s{2,}(\S.*))?", line).groups()
            if line.startswith(("    type ", "     ")):
                declarations.append(line)
                name = re.match(r"    type\s+(?:universal |(?:record|set) of )?\w+\s+(\w+)", line + " ")[1] if line[4] != " " else name
            else:
                rows.append((number, name, value, octets_of(section, octets).hex().upper()))
    return "\n".join(declarations), rows


def suite_of(declarations, rows):
    tests = [f"""testcase TC_{line}() runs on C {{
  var {name} v; var bitstring b := oct2bit('{octets}'O);
  if (encvalue({name}:{value}) != b) {{ setverdict(fail, encvalue({name}:{value})) }}
  if (decvalue(b, v) == 0 and encvalue(v) == oct2bit('{octets}'O)) {{ setverdict(pass) }} else {{ setverdict(fail, "back") }}
}}""" for line, name, value, octets in rows]
    return "\n".join(['module Page language "TTCN-3:2005" {', declarations, "type component C { }", *tests, "}"])


def missing_words(declarations):
    source = HERE.parents[1]
    texts = "".join((source / "runtime/src/codec" / name).read_text() for name in ("raw_words.cpp", "text_plan.cpp"))
    words = re.findall(r'^    \{"([A-Z]\w+)"|word.name == "(\w+)"', texts, re.MULTILINE)
    told = source.parent / "shared" / "encodings.md"
    words = [a or b for a, b in words] + re.findall(r"`([A-Z_]{3,})\(", told.read_text() if told.exists() else "")
    words += ["name as", "omit as null", "default", "as value", "escape as usi"]
    return [word for word in words if not re.search(rf"(?<!\w){word}(?!\w)", declarations)]


def main():
    page, folder = Path(sys.argv[1]), Path(sys.argv[2])
    declarations, rows = read_page(page.read_text())
    missing = missing_words(declarations)
    if missing or len(rows) < 80:
        sys.exit(f"{len(rows)} examples; words without one: {missing}")
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    shutil.copy(HERE / "suites" / "wire" / "keys.mcfg", folder)
    (folder / "Page.ttcn").write_text(suite_of(declarations, rows))
    (folder / "VERDICTS").write_text("ROOT: Page\n" + "".join(f"VERDICT: TC_{row[0]} pass\n" for row in rows))
    return subprocess.call([sys.executable, HERE / "run_suite.py", *sys.argv[3:], folder])


if __name__ == "__main__":
    sys.exit(main())
