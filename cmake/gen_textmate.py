#!/usr/bin/env python3
"""Makes the TextMate grammar of editors from the table of tokens: gen_textmate.py tokens.def FILE"""

import json
import sys

TYPES = {"integer", "float", "boolean", "objid", "verdicttype", "bitstring", "hexstring", "octetstring", "charstring",
         "universal", "anytype", "address", "default", "timer", "component", "port", "record", "set", "union", "enumerated"}
VALUES = {"true", "false", "null", "omit", "pass", "fail", "inconc", "none", "error", "infinity", "mtc", "self", "system"}


def rule(name, words):
    return {"name": name, "match": r"\b(?:" + "|".join(sorted(words)) + r")\b"}


# What stands between "type" or "template" and the name that is declared.
TYPE = r"((?:(?:record|set)\s+(?:length\s*\([^)]*\)\s*)?of\s+)*(?:universal\s+)?[\w.]+\s+)"


def declaration(before, head, typed=False):
    """The name that a declaration gives; lists of imports name others, and parameters are no declarations of their own."""
    captures = {"1": {"name": "keyword.declaration.ttcn3"}, "2": {"name": "entity.name.ttcn3"}}
    if typed:
        captures.update({"2": {"patterns": [{"include": "#words"}]}, "3": captures["2"]})
    return {"match": before + head + r"(?!all\b)" + (TYPE if typed else "") + r"(?!(?:of|length)\b)(\w+)\b", "captures": captures}


def string(begin, escape, captures=None):
    return {"name": "string.quoted.double.ttcn3", "begin": begin, "end": '"(?!")', **({"beginCaptures": captures} if captures else {}),
            "patterns": [{"name": "constant.character.escape.ttcn3", "match": escape}]}


def main():
    table, out = sys.argv[1:]
    kinds = {"word": {"pattern"}, "function": set(), "macro": set()}
    for line in open(table, encoding="utf-8"):
        fields = line.split()
        if len(fields) == 3 and not line.startswith("#") and fields[1].replace("_", "").isalnum():
            kinds.get(fields[2], set()).add(fields[1])
    words = kinds["word"]
    patterns = [
        {"name": "comment.line.double-slash.ttcn3", "match": "//.*$"},
        {"include": "#comment"},
        # A backslash means something in patterns only.
        string(r'\b(pattern)\s*"', r'""|\\.', {"1": {"name": "keyword.other.ttcn3"}}),
        string('"', '""'),
        {"name": "constant.other.bits.ttcn3", "match": r"'[0-9A-Fa-f?*\s]*'[BHO]"},
        declaration(r"\b", r"(module|function|testcase|altstep|signature|group)\s+"),
        declaration(r"\b", r"(type)\s+", True),
        declaration(r"(?<!in )(?<!out )(?<!var )\b", r"(template)\b\s*(?:\(\s*\w+\s*\)\s*)?", True),
        {"include": "#words"}]
    # The compiler has comments in comments.
    comment = {"name": "comment.block.ttcn3", "begin": r"/\*", "end": r"\*/", "patterns": [{"include": "#comment"}]}
    colours = [
        {"name": "constant.numeric.ttcn3", "match": r"\b[0-9]+(?:\.[0-9]+)?(?:[Ee]-?[0-9]+)?\b"},
        rule("storage.type.ttcn3", words & TYPES), rule("constant.language.ttcn3", VALUES),
        rule("support.function.ttcn3", kinds["function"]), rule("keyword.other.ttcn3", words - TYPES - VALUES),
        rule("constant.other.macro.ttcn3", kinds["macro"])]
    with open(out, "w", encoding="utf-8") as file:
        json.dump({"name": "TTCN-3", "scopeName": "source.ttcn3", "fileTypes": ["ttcn", "ttcn3", "3mp"], "patterns": patterns,
                   "repository": {"words": {"patterns": colours}, "comment": comment}}, file, indent=1)


if __name__ == "__main__":
    main()
