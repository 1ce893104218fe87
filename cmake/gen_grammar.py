#!/usr/bin/env python3
"""Puts the tokens of the token table into the grammar.

usage: gen_grammar.py GRAMMAR TOKENS OUTPUT
Replaces @TOKENS@ in GRAMMAR by one declaration for each token, in the order of the table, so that Bison's
numbers follow the scanner's.
"""
import sys

names = []
with open(sys.argv[2], encoding="ascii") as table:
    for line in table:
        words = line.split()
        if words and not words[0].startswith("#"):
            names.append(words[0])
with open(sys.argv[1], encoding="ascii") as grammar:
    text = grammar.read()
with open(sys.argv[3], "w", encoding="ascii") as out:
    out.write(text.replace("@TOKENS@", "\n       ".join(names[1:])))
