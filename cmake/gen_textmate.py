#!/usr/bin/env python3
"""Makes the TextMate grammar of editors from the table of tokens: gen_textmate.py tokens.def FILE"""

import json
import sys

TYPES = {"integer", "float", "boolean", "objid", "verdicttype", "bitstring", "hexstring", "octetstring", "charstring",
         "universal", "anytype", "address", "default", "timer", "component", "port", "record", "set", "union", "enumerated"}
VALUES = {"true", "false", "null", "omit", "pass", "fail", "inconc", "none", "error", "infinity", "mtc", "self", "system"}


def rule(name, words):
    return {"name": name, "match": r"\b(?:" + "|".join(sorted(words)) + r")\b"}


def main():
    table, out = sys.argv[1:]
    words, functions = set(), set()
    for line in open(table, encoding="utf-8"):
        fields = line.split()
        if len(fields) == 3 and not line.startswith("#") and fields[1].replace("_", "").isalnum():
            {"word": words, "function": functions}.get(fields[2], set()).add(fields[1])
    patterns = [
        {"name": "comment.line.double-slash.ttcn3", "match": "//.*$"},
        {"name": "comment.block.ttcn3", "begin": r"/\*", "end": r"\*/"},
        {"name": "string.quoted.double.ttcn3", "begin": '"', "end": '"(?!")', "patterns": [
            {"name": "constant.character.escape.ttcn3", "match": '""|\\\\.'}]},
        {"name": "constant.other.bits.ttcn3", "match": "'[0-9A-Fa-f?*\\s]*'[BHO]"},
        {"name": "constant.numeric.ttcn3", "match": r"\b[0-9]+(?:\.[0-9]+(?:[Ee]-?[0-9]+)?)?\b"},
        {"match": r"\b(module|function|testcase|altstep|template|signature|type)\s+(?:\w+\s+)?(\w+)\b",
         "captures": {"1": {"name": "keyword.declaration.ttcn3"}, "2": {"name": "entity.name.ttcn3"}}},
        rule("storage.type.ttcn3", words & TYPES), rule("constant.language.ttcn3", words & VALUES),
        rule("support.function.ttcn3", functions), rule("keyword.other.ttcn3", words - TYPES - VALUES),
    ]
    with open(out, "w", encoding="utf-8") as file:
        json.dump({"name": "TTCN-3", "scopeName": "source.ttcn3", "fileTypes": ["ttcn", "ttcn3"], "patterns": patterns},
                  file, indent=1)


if __name__ == "__main__":
    main()
