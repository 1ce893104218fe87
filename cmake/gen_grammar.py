#!/usr/bin/env python3
"""Puts the tokens of the token table into the grammar.

usage: gen_grammar.py GRAMMAR TOKENS OUTPUT
Replaces @TOKENS@ in GRAMMAR by one declaration for each token, in the order of the table, so that Bison's
numbers follow the scanner's. Fails where an action reads $1 behind what sets $$, which lies in its place.
"""
import re
import sys

names = []
with open(sys.argv[2], encoding="ascii") as table:
    for line in table:
        words = line.split()
        if words and not words[0].startswith("#"):
            names.append(words[0])
with open(sys.argv[1], encoding="ascii") as grammar:
    text = grammar.read()
for late in re.finditer(r"\$\$(\.\w+)? = [^{}]*?;[^{}]*?\$1\.", text):
    sys.exit(f"gen_grammar.py: $1 is read behind $$: {late[0]}")
with open(sys.argv[3], "w", encoding="ascii") as out:
    out.write(text.replace("@TOKENS@", "\n       ".join(names[1:])))
