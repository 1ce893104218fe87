#!/usr/bin/env python3
"""Writes the C of ASN.1 modules for the tests of the codecs, and a table of their types.

    generate.py --bin FOLDER --out FOLDER SOURCE.asn...

The modules' prefixes are the names of their files; the C types of a module have its prefix in front.
"""

import argparse
import re
import subprocess
import sys
from pathlib import Path


def run(folder, *words):
    done = subprocess.run([str(folder / words[0]), *map(str, words[1:])], text=True, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT)
    if done.returncode != 0:
        sys.exit(f"{' '.join(map(str, words))}: status {done.returncode}\n{done.stdout}")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--bin", type=Path, required=True)
    parser.add_argument("--out", type=Path, required=True)
    parser.add_argument("sources", type=Path, nargs="+")
    arguments = parser.parse_args()
    out, tools = arguments.out, arguments.bin
    out.mkdir(parents=True, exist_ok=True)
    prefixes = [source.stem for source in arguments.sources]
    folders = [f"-A={folder}" for folder in dict.fromkeys(source.resolve().parent for source in arguments.sources)]
    names = [source.name for source in arguments.sources]
    run(tools, "mkprefil", f"-OPTION-FILE={out / 'prefixes.txt'}", *folders, *names)
    run(tools, "mesk", f"-S={out}", *folders, f"+{out / 'prefixes.txt'}", names[0])
    (out / "names.txt").write_text("".join(
        f"-BEGIN-SCOPE={prefix}\n-TPREF={re.sub('-', '_', prefix)}_\n-C={out}\n-H={out}\n-END-SCOPE\n"
        for prefix in prefixes))
    run(tools, "asn2c", f"-S={out}", "-PREFIXLEN=32", f"+{out / 'names.txt'}", *prefixes)
    types, type_names = [], []
    for prefix in prefixes:
        for symbol, name in re.findall(r"^extern const asn_type (\w+); /\* (\w+) ",
                                       (out / f"{prefix}cod.ext").read_text(), re.M):
            types.append(symbol)
            type_names.append(f"{prefix}.{name.replace('_', '-')}")
    (out / "types.c").write_text(
        '#include "asncodec.ext"\n\n' + "".join(f"extern const asn_type {name};\n" for name in types) +
        "\nextern const asn_type *const asn_all_types[];\nconst asn_type *const asn_all_types[] = {\n" +
        "".join(f"  &{name},\n" for name in types) + "  NULL,\n};\n"
        "\nextern const char *const asn_all_names[];\nconst char *const asn_all_names[] = {\n" +
        "".join(f'  "{name}",\n' for name in type_names) + "};\n")


main()
