#!/usr/bin/env python3
"""Compiles a set of real modules and sends random values of all their encoded types through their codecs and back.

    round_trips.py --orvane PROGRAM --driver LIBRARY --corpus FOLDER --out FOLDER SET=ROOT=FAULTS...

SET is a folder of the corpus, FAULTS how many of the values may come back otherwise: their types say too little.
"""

import argparse
import re
import shutil
import subprocess
import sys
from pathlib import Path

OBJECT_IDENTIFIER = re.compile(rb"^(\s*module\s+\w+)\s*\.\s*objid\s*\{[^}]*\}", re.MULTILINE)


# A type that the modules name and none of them has.
MODULE = re.compile(rb"^(\s*module\s+\w+[^{]*\{)", re.MULTILINE)
INT18 = b' type integer INT18b_BO_LAST (0..262143) with { encode "RAW"; variant "FIELDLENGTH(18), BYTEORDER(last)" } '


def run(command, folder, fails=True):
    process = subprocess.run([str(word) for word in command], cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                             text=True, timeout=600, check=False)
    if fails and process.returncode:
        sys.exit(f"{command[0]}: status {process.returncode}\n{process.stdout[-4000:]}")
    return process.stdout


def write_modules(corpus, folder):
    """A set's modules as they can be compiled: without object identifiers, and with the type that none of them has."""
    for source in corpus.glob("*.ttcn"):
        text = OBJECT_IDENTIFIER.sub(rb"\1", source.read_bytes())
        if source.stem == "General_Types":
            text = MODULE.sub(rb"\1" + INT18, text, count=1)
        (folder / source.name).write_bytes(text)


def trips(arguments, name, root, allowed):
    folder = arguments.out / name
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    write_modules(arguments.corpus / name, folder)
    run([arguments.orvane, "-v", "2", "-c", "-r", root, "-F", *sorted(folder.glob("*.ttcn"))], folder)
    libraries = arguments.orvane.parent.parent / "lib"
    run(["cc", "-std=c11", "-O0", "-w", f"-I{libraries.parent / 'include'}", "-c", *sorted(folder.glob("*.c"))], folder)
    run(["c++", f"-Wl,--defsym=suite_register=vexa_{root}_register", *sorted(folder.glob("*.o")), arguments.driver,
         f"-L{libraries}", "-llumos", "-lm", "-lpthread", "-o", "trips"], folder)
    output = run(["./trips", "1", "5"], folder, fails=False)
    told = re.search(r"^(\d+) trips, (\d+) faults", output, re.MULTILINE)
    if not told or not int(told[1]) or int(told[2]) > allowed:
        print(output[-6000:])
        return False
    print(name, output.strip().split("\n")[-1])
    return True


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    for name in ("orvane", "driver", "corpus", "out"):
        parser.add_argument(f"--{name}", required=True, type=lambda text: Path(text).resolve())
    parser.add_argument("sets", nargs="+")
    arguments = parser.parse_args()
    if not arguments.corpus.is_dir():
        return 77
    results = [trips(arguments, name, root, int(faults)) for name, root, faults in (s.split("=") for s in arguments.sets)]
    return 0 if all(results) else 1


if __name__ == "__main__":
    sys.exit(main())
