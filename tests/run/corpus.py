#!/usr/bin/env python3
"""Real modules through the compiler: sets that are closed under imports as a whole, others file by file.

    corpus.py --orvane PROGRAM --corpus FOLDER [--action s|a]

A closed set must end with status 0, but for faults of its own that are known. An object identifier behind a module's
name, which the compiler refuses by a message of its own, is taken out of a copy first. A file of `syntax-only` imports modules that are not there: it must
end with status 0 or, where its imports are missed, -8; a syntax error (-6) is a fault of the compiler. Ends with 77
where the corpus is missing.
"""

import argparse
import concurrent.futures
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

SKIPPED = 77
NORMAL, SYNTAX, IMPORTS_MISSED, ANALYSIS = 0, -6, -8, -9
REFUSAL = "'objid' is currently not supported"
# What is wrong in the modules themselves, by folder: these errors must be reported, and no others.
KNOWN_FAULTS = {"single-BSSGP_Types": ['no declaration for "INT18b_BO_LAST"']}
MODULE_OBJECT_IDENTIFIER = re.compile(rb"^(\s*module\s+\w+)\s*\.\s*objid\s*\{[^}]*\}", re.MULTILINE)


def copy_without_identifier(source, folder):
    """A copy of the file in the folder, the same but for the object identifier of its module."""
    copy = Path(folder) / source.name
    copy.write_bytes(MODULE_OBJECT_IDENTIFIER.sub(rb"\1", source.read_bytes()))
    return str(copy)


def compile_files(orvane, action, files, folder):
    """Status of a run over the files, its errors' texts, and all that it wrote to standard error."""
    command = [orvane, "-v", "1", "-m", "100000", "-" + action, "-F", *files]
    process = subprocess.run(command, cwd=folder, capture_output=True, text=True, errors="replace", timeout=300,
                             check=False)
    status = process.returncode - 256 if process.returncode > 127 else process.returncode
    errors = [line.partition(" : Error       ")[2] for line in process.stderr.split("\n") if " : Error " in line]
    return status, errors, process.stderr


def judge(allowed, known, status, errors):
    """Whether a run over modules without object identifiers ended as it must."""
    if known:
        return status == ANALYSIS and errors == list(known)
    return status in allowed and (status == IMPORTS_MISSED or not errors)


def run(orvane, action, files, allowed, known=()):
    """Fault of a run over the files, or None; the analysis must report the known faults, and nothing else.

    Modules that carry an object identifier are refused for it, each once and for nothing else; the rest of them is
    tried on copies without it.
    """
    refused = [file for file in files if MODULE_OBJECT_IDENTIFIER.search(file.read_bytes())]
    with tempfile.TemporaryDirectory() as folder:
        try:
            status, errors, text = compile_files(orvane, action, [str(file) for file in files], folder)
            if refused:
                if status != SYNTAX or errors != [REFUSAL] * len(refused):
                    return f"as written: status {status}\n" + "\n".join(text.split("\n")[:20])
                copies = [copy_without_identifier(file, folder) for file in files]
                status, errors, text = compile_files(orvane, action, copies, folder)
        except subprocess.TimeoutExpired:
            return "no end within 300 seconds"
    if judge(allowed, known, status, errors):
        return None
    return f"status {status}\n" + "\n".join(text.split("\n")[:20])


def main():
    parser = argparse.ArgumentParser(description="Runs the compiler over real modules.")
    parser.add_argument("--orvane", required=True)
    parser.add_argument("--corpus", required=True)
    parser.add_argument("--action", default="s", choices=["s", "a"])
    arguments = parser.parse_args()
    corpus = Path(os.environ.get("ORVANE_CORPUS") or arguments.corpus).resolve()
    if not corpus.is_dir():
        print(f"skipped: no corpus at {corpus}; ORVANE_CORPUS names another place")
        return SKIPPED
    orvane = os.path.abspath(arguments.orvane)
    jobs = {}
    for folder in sorted(path for path in corpus.iterdir() if path.is_dir()):
        files = sorted(folder.glob("*.ttcn"))
        if folder.name != "syntax-only":
            known = KNOWN_FAULTS.get(folder.name, []) if arguments.action == "a" else []
            jobs[folder.name] = (files, {NORMAL}, known)
        elif arguments.action == "s":
            jobs.update({f"syntax-only/{file.name}": ([file], {NORMAL, IMPORTS_MISSED}) for file in files})
    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        runs = {name: pool.submit(run, orvane, arguments.action, *job) for name, job in jobs.items()}
        faults = {name: future.result() for name, future in runs.items() if future.result()}
    for name, fault in faults.items():
        print(f"FAILED {name}: {fault}")
    print(f"{len(jobs) - len(faults)} passed, {len(faults)} failed")
    return 1 if faults or not jobs else 0


if __name__ == "__main__":
    sys.exit(main())
