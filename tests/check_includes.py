#!/usr/bin/env python3
"""Holds the direction of includes between the rooms of the source, and the tidiness of the text.

    check_includes.py ROOT      prints each offending line as file:line: text, and fails if there is one
"""

import re
import sys
from pathlib import Path

INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"')
RAW_STRING = re.compile(r'R"(\w*)\(.*?\)\1"', re.DOTALL)  # text for a generated file

# Room of a file: the first row whose pattern matches its path. The interface of the diagnostics is its headers;
# their implementation also reads the error limit from the options and writes trees to report files. So it is with the
# evaluation of a module: its headers say what a rule and a stage are, its sources know all of them.
ROOMS = [
    (r"src/driver/diagnostics/\w+\.h", "diagnostics"),
    (r"src/driver/diagnostics/", "diagnostics sources"),
    (r"src/driver/controller/", "controller"),
    (r"src/driver/", "driver services"),
    (r"src/main\.cpp", "main"),
    (r"src/analysis/walk/\w+\.h", "analysis interface"),
    (r"src/(analysis|generator)/(\w+)/", r"\1 \2"),
    (r"src/asn1/integration/", "asn1 integration"),
    (r"src/asn1/front/(Records\.h|MainTypes\.def)", "asn1 records"),
    (r"src/asn1/(front|model)/", "asn1 model"),
    (r"src/(support|frontend|FileAPI|asn1|build)/", r"\1"),
    (r"runtime/src/template/pattern_program\.", "patterns"),
    (r"runtime/src/(value|template|text|codec)/", "runtime values"),
    (r"runtime/src/report/", "runtime report"),
    (r"runtime/src/(run|ports|transport)/", "runtime run"),
    (r"runtime/src/suite/", "runtime suite"),
    (r"runtime/json/", "runtime json"),
    (r"(runtime|tools)/", r"\1"),
    (r"tests/unit/", "unit tests"),
    (r"(bench|fuzz)/", r"\1"),
]

BASE = {"support", "diagnostics"}
SERVICES = BASE | {"driver services", "frontend", "asn1 integration"}


def layers(below, names):
    """Rooms that lie one above the other, the lowest first: each knows itself and what is below it."""
    allowed, known = {}, set(below)
    for name in names:
        known = known | {name}
        allowed[name] = known
    return allowed


ANALYSIS_LAYERS = layers(SERVICES | {"patterns"}, ["analysis interface"] + ["analysis " + room for room in (
    "names", "types", "inference", "constants", "flow", "templates", "rules", "walk")])
ANALYSIS = ANALYSIS_LAYERS["analysis walk"]
GENERATOR_LAYERS = layers(ANALYSIS | {"FileAPI"}, ["generator " + room for room in (
    "text", "expressions", "templates", "types", "behaviour", "module")])
GENERATOR = GENERATOR_LAYERS["generator module"]
ALLOWED = {
    "support": {"support"},
    "diagnostics": BASE,
    "diagnostics sources": SERVICES,
    "driver services": SERVICES,
    "frontend": SERVICES,
    **ANALYSIS_LAYERS,
    "FileAPI": BASE | {"FileAPI"},
    **GENERATOR_LAYERS,
    "asn1 records": {"asn1 records"},
    "asn1 model": {"support", "asn1 records", "asn1 model"},  # the tools link it, without the compiler
    "asn1": GENERATOR | {"asn1 records", "asn1 model", "asn1"},
    "asn1 integration": GENERATOR | {"asn1 records", "asn1 model", "asn1"},
    "build": GENERATOR | {"build"},
    "controller": GENERATOR | {"asn1", "asn1 model", "build", "controller"},
    "main": {"controller"},
    "runtime": {"runtime"},
    "patterns": {"patterns"},  # the compiler links it as well
    **layers({"runtime", "patterns"}, ["runtime values", "runtime report", "runtime run", "runtime suite"]),
    "runtime json": {"runtime", "runtime values", "runtime json"},
    "tools": {"support", "asn1 records", "asn1 model", "tools", "runtime"},
}

TIDY_FOLDERS = ["src", "runtime", "tools", "tests/unit", "tests/run", "bench", "fuzz", "cmake", "docs", "examples",
                "scripts"]
TIDY_SUFFIXES = {".h", ".cpp", ".c", ".py", ".md", ".txt", ".cmake", ".ttcn", ".desc", ".y", ""}


def room_of(path):
    for pattern, room in ROOMS:
        match = re.match(pattern, path)
        if match:
            return match.expand(room)
    return None


def included_path(root, source, name):
    """The file of the project that an include line names, or None for a generated or a foreign one."""
    candidates = [root / "src" / name, source.parent / name, root / "runtime" / "include" / name,
                  root / "runtime" / "src" / name,
                  root / "tools" / name]
    return next((path.resolve().relative_to(root).as_posix() for path in candidates if path.is_file()), None)


def include_faults(root, source):
    room = room_of(source.relative_to(root).as_posix())
    if room not in ALLOWED:
        return
    text = source.read_text(encoding="utf-8", errors="replace")
    text = RAW_STRING.sub(lambda match: "\n" * match.group(0).count("\n"), text)
    for number, line in enumerate(text.split("\n"), 1):
        match = INCLUDE.match(line)
        target = match and included_path(root, source, match.group(1))
        if not target:
            continue
        if room_of(target) not in ALLOWED[room]:
            yield f"{source.relative_to(root)}:{number}: {room} must not include {room_of(target)}: {line.strip()}"


def text_faults(root, path):
    text = path.read_text(encoding="utf-8", errors="replace")
    name = path.relative_to(root)
    for number, line in enumerate(text.split("\n"), 1):
        if "\t" in line:
            yield f"{name}:{number}: tab"
        if line != line.rstrip():
            yield f"{name}:{number}: blank at the end of the line"
    if text and not text.endswith("\n"):
        yield f"{name}: no newline at the end of the file"


def main():
    root = Path(sys.argv[1]).resolve()
    sources = sorted(path for folder in ("src", "runtime", "tools") for path in (root / folder).rglob("*")
                     if path.suffix in (".h", ".cpp", ".c", ".y"))
    texts = sorted(path for folder in TIDY_FOLDERS for path in (root / folder).rglob("*")
                   if path.is_file() and path.suffix in TIDY_SUFFIXES and "__pycache__" not in path.parts)
    faults = [fault for source in sources for fault in include_faults(root, source)]
    faults += [fault for path in texts for fault in text_faults(root, path)]
    print("\n".join(faults) if faults else f"{len(sources)} sources include in one direction")
    return 1 if faults or not sources else 0


if __name__ == "__main__":
    sys.exit(main())
