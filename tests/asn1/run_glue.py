#!/usr/bin/env python3
"""Tests the conversions, checks and wrappers that the compiler writes for an ASN.1 module.

    run_glue.py --orvane PROGRAM --out FOLDER [--update]

What is written for glue/Glue-Forms.asn is compared, one function of each kind, with glue/functions.txt, where line breaks
don't count and `@` stands for the prefix of a type, `~` for that of a function; --update writes the functions that are there
anew. With other codecs and options the files are compiled, and pieces of them are looked for. CC names the C compiler.
"""

import argparse
import difflib
import os
import re
import shutil
import subprocess
import sys
import textwrap
from pathlib import Path

GLUE = Path(__file__).resolve().parent / "glue"
C_FLAGS = ["-std=c11", "-Wall", "-Werror", "-Wno-unused", "-fsyntax-only"]
OPTIONS = "VEXA-ASN-1-compilation-options.txt"

# Name, arguments of the compiler, lines of the option file, and texts of the source, the header, the module's own source
# and the output that must be there or, with "!" in front, must not.
CASES = [
    ("ber", ["-C", "BER:1997"], [], {"c": ["codg.asnuti", 'Formscod.ext"', '"zabcd")', "#define GLUE_FORMSBI_TYP", "!bicod", "!per.ext"],
                                      "module": ["assign_vector_element_partial(vexa_loc_const_Glue_Forms_omits, 2, lumo_omit"]}),
    ("ber-indefinite", ["-C", "BER:1997-length-form-3"], [],
     {"c": ['Formsbicod.ext"', "!#define GLUE_FORMSBI_TYP", "_ber_bi_encode_"]}),
    ("per-aligned", ["-C", "PER-BASIC-ALIGNED:1997"], [], {"c": ['per.ext"', "!pec.ext", "_per_al_encode_"]}),
    ("per-unaligned", ["-C", "PER-BASIC-UNALIGNED:1997"], [], {"c": ["pec.ext", "pdc.ext", "!per.ext", "_per_ua_decode_"]}),
    ("no-translation", ["-C", "no-translation"], [],
     {"c": ["_chck_", "_consof_", "!_trans_asn_to_t3_", "!_dest_", "!_register_codecs", "!codg"]}),
    ("old-style", [], ["-ANSI-C=NO"],
     {"h": ["lumo_codecs_result_t t3asn_Glue_Forms_ber_encode_t3_Glue_FormsSelf(/*lumo_value_t value,", "ctx*/);"],
      "c": ["t3asn_Glue_Forms_ber_encode_t3_Glue_FormsSelf(value, encoded_data, ctx)\n  lumo_value_t value;\n",
            "ASNG_DEF(ASNUTIG *asnutigPtr)\n"]}),
    ("module-codec", [], ["-ASN2C_CODEC=PER"], {"c": ["!cod.ext\"", "per_al_encode", "!_ber_encode_", "!per_ua_encode"]}),
    ("indefinite", [], ["-ASN2C_CODEC=BER_INDEFINITE"], {"c": ["_ber_bi_encode_", "!_ber_encode_", "!per_al_encode"]}),
    ("type-codec", [], ["-ASN2C_CODEC=PER", "-BEO=ASN2T3=Number:ASN2C_CODEC=BER"],
     {"c": ["_ber_encode_t3_Glue_FormsNumber", "!_ber_encode_t3_Glue_FormsSelf", "_per_al_encode_t3_Glue_FormsNumber"]}),
    ("own-function", [], ["-OWNI=own.h", "-BEO=ASN2T3=OWNF=t3-Glue-FormsList"],
     {"c": ['#include "own.h"\n\nint ', "!lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsList ",
            "t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsList (("]}),
    ("no-headers", [], ["-NOHEADERS", "-OWNI=all.h"], {"c": ["!#include <limits.h>", '#include "all.h"']}),
    ("entries", [], ["-GENERATE=ENTRIES"],
     {"c": ["_trans_asn_to_t3_t3_Glue_FormsSelf", "!_trans_asn_to_t3_t3_Glue_FormsBag", "_chck_t3_Glue_FormsBag"]}),
    ("quiet", [], ["-BEO=ASN2T3=VERBOSE=QUIET", "-LOGFILE=glue.log"], {"out": ["!>>> generating"], "log": [
        "Glue_Forms.stx: Glue_Formst3asn.c Glue_Formst3asn.h"]}),
    ("faulty", [], ["-BEO=ASN2T3=ENTRYTAG=7", "-BEO=ASN2T3=Self:NOTHING"],
     {"out": ["WARNING : Option ignored: BEO=ASN2T3=ENTRYTAG=7", "Warning     Unrecognized back-end option: NOTHING"]}),
]
OWN_HEADER = """#include "Glue_Forms.typ"
lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsList(t3_Glue_FormsList *, lumo_alloc_strategy_t,
                                                                 lumo_context_t);
void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsList(ASNUTIG *, lumo_value_t, t3_Glue_FormsList *, lumo_context_t);
"""
NOT_COMPILED = ("no-headers",)


class Tests:
    def __init__(self, orvane, out):
        self.orvane, self.out, self.faults = orvane.resolve(), out.resolve(), []
        shutil.rmtree(self.out, ignore_errors=True)

    def generate(self, name, arguments, options):
        """The texts of source, header and output of one run."""
        folder = self.out / name
        folder.mkdir(parents=True)
        (folder / "own.h").write_text(OWN_HEADER)
        if options:
            (folder / OPTIONS).write_text("".join(line + "\n" for line in options))
        mcfg = self.orvane.parent.parent / "share" / "orvane" / "make_linux.mcfg"
        command = [str(self.orvane), "-K", "-f", str(mcfg), "-r", "Glue", *arguments, "-F", str(GLUE / "Glue.ttcn"), "-A",
                   str(GLUE / "Glue-Forms.asn")]
        done = subprocess.run(command, cwd=folder, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
        if done.returncode != 0:
            self.faults.append(f"{name}: status {done.returncode}\n{done.stdout[-3000:]}")
            return {}
        texts = {kind: (folder / f"Glue_Formst3asn.{kind}").read_text() for kind in ("c", "h")}
        texts["module"] = (folder / "Glue_Forms.c").read_text()
        log = folder / "glue.log"
        return {**texts, "out": done.stdout, "log": log.read_text() if log.exists() else ""}

    def compile(self, name):
        include = self.orvane.parent.parent / "include"
        command = [os.environ.get("CC", "cc"), *C_FLAGS, "-I.", f"-I{include}", "Glue_Formst3asn.c"]
        done = subprocess.run(command, cwd=self.out / name, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              check=False)
        if done.returncode != 0:
            self.faults.append(f"{name}: the C compiler complains\n{done.stdout[:3000]}")

    def look_for(self, name, texts, wanted):
        for kind, pieces in wanted.items():
            for piece in pieces:
                unwanted = piece.startswith("!")
                if (piece.lstrip("!") in texts[kind]) == unwanted:
                    self.faults.append(f"{name}: {'' if not unwanted else 'no '}{piece.lstrip('!')!r} expected in {kind}")

    def compare(self, texts, update):
        path = GLUE / "functions.txt"
        found = functions_of(texts["c"])
        expected = path.read_text().split("\n\n")
        names = [re.search(r"(\S+) ?\(", function).group(1) for function in expected]
        if update:
            path.write_text("\n\n".join(found.get(name, function) for name, function in zip(names, expected)) + "\n")
        for name, function in zip(names, expected):
            self.faults += difflib.unified_diff(function.strip().split("\n"), found.get(name, "").split("\n"),
                                                f"{path}: {name}", "found", lineterm="")


def functions_of(text):
    """The functions of a source by their names, without its line breaks, filled to lines of an even length."""
    functions = {}
    for item in re.split(r"\n\n(?=\S)", text):
        item = " ".join(item.split()).replace("t3asn_Glue_Forms_", "~").replace("t3_Glue_Forms", "@")
        name = re.search(r"(\S+) ?\(", re.sub(r"/\*.*?\*/|#\w+ \w+", "", item))
        if name:
            functions[name.group(1)] = textwrap.fill(item, 118, break_long_words=False, break_on_hyphens=False)
    return functions


def main():
    parser = argparse.ArgumentParser(description="Tests what is generated for ASN.1 modules.")
    parser.add_argument("--orvane", required=True, type=Path)
    parser.add_argument("--out", required=True, type=Path)
    parser.add_argument("--update", action="store_true")
    arguments = parser.parse_args()
    tests = Tests(arguments.orvane, arguments.out)
    texts = tests.generate("all", [], [])
    if texts:
        tests.compare(texts, arguments.update)
        tests.compile("all")
    for name, words, options, wanted in CASES:
        texts = tests.generate(name, words, options)
        if not texts:
            continue
        tests.look_for(name, texts, wanted)
        if name not in NOT_COMPILED:
            tests.compile(name)
    print("\n".join(tests.faults) or f"{len(CASES) + 1} runs as expected")
    return 1 if tests.faults else 0


if __name__ == "__main__":
    sys.exit(main())
