#!/usr/bin/env python3
"""Makes from src/frontend/tokens.def what depends on the list of tokens.

usage: gen_tokens.py code TOKENS OUTPUT_FOLDER     writes T3Tokens.h and T3TokenTables.inc
       gen_tokens.py grammar TOKENS GRAMMAR OUTPUT puts the token lines into the grammar
       gen_tokens.py dictionary TOKENS OUTPUT      writes the dictionary of the fuzz target
"""
import sys

CLASSES = ("special", "symbol", "word", "function", "macro", "value")
# words that are the two values of one token
BOOLEANS = {"false": 0, "true": 1}
HASH_BITS = 12
MARK = "%{tokens%}"


class Token:
    def __init__(self, number, name, text, token_class):
        self.number, self.name, self.text, self.token_class = number, name, text, token_class


def read(path):
    tokens = []
    with open(path, encoding="ascii") as source:
        for number, line in enumerate(source, 1):
            words = line.split()
            if not words or line.startswith("#"):
                continue
            if len(words) != 3 or words[2] not in CLASSES:
                sys.exit(f"{path}:{number}: malformed token")
            tokens.append(Token(len(tokens), *words))
    return tokens


def keywords(tokens):
    """(text, token, value) of each word that looks like a name."""
    rows = [(t.text, t, 0) for t in tokens if t.token_class in ("word", "function") or t.text == "pattern"]
    boolean = next(t for t in tokens if t.name == "boolean_value")
    return rows + [(text, boolean, value) for text, value in BOOLEANS.items()]


def halves(text):
    """The first and the last eight characters as little-endian numbers, as the scanner loads them."""
    raw = text.encode("ascii")
    first = int.from_bytes(raw[:8], "little")
    return first, int.from_bytes(raw[-8:], "little") if len(raw) > 8 else first


def key(text, factor):
    first, last = halves(text)
    return ((first + 3 * last) * factor & (1 << 64) - 1) >> (64 - HASH_BITS)


def find_factor(rows):
    """A factor for which no two keywords share a place; found by a fixed sequence of trials."""
    factor = 0x9E3779B97F4A7C15
    for _ in range(1000000):
        if len({key(text, factor) for text, _, _ in rows}) == len(rows):
            return factor
        factor = (factor * 6364136223846793005 + 1442695040888963407 | 1) & (1 << 64) - 1
    sys.exit("gen_tokens.py: no perfect hash found")


def write_code(tokens, folder):
    with open(folder + "/T3Tokens.h", "w", encoding="ascii") as out:
        w = out.write
        w("// Made by gen_tokens.py from tokens.def; do not edit.\n#pragma once\n\n")
        w("/// The tokens of the language.\nenum class T3Token : unsigned short {\n")
        w("".join(f"  {t.name} = {t.number},\n" for t in tokens))
        w("};\n\ninline constexpr int kT3TokenCount = %d;\n\n" % len(tokens))
        w("/// The texts of the tokens, by number.\nextern const char* const kT3TokenText[kT3TokenCount];\n\n")
        w("/// How the scanner finds a token, and what its value is.\n")
        w("enum class T3TokenClass : unsigned char {\n")
        w("".join(f"  {c}_token,\n" for c in CLASSES))
        w("};\nextern const T3TokenClass kT3TokenClass[kT3TokenCount];\n")
    rows = keywords(tokens)
    factor = find_factor(rows)
    places = [0] * (1 << HASH_BITS)
    for index, (text, _, _) in enumerate(rows, 1):
        places[key(text, factor)] = index
    with open(folder + "/T3TokenTables.inc", "w", encoding="ascii") as out:
        w = out.write
        w("// Made by gen_tokens.py from tokens.def; do not edit.\n")
        w("const char* const kT3TokenText[kT3TokenCount] = {\n")
        w("".join(f'  "{t.text}",\n' for t in tokens))
        w("};\n\nconst T3TokenClass kT3TokenClass[kT3TokenCount] = {\n")
        w("".join(f"  T3TokenClass::{t.token_class}_token,\n" for t in tokens))
        w("};\n\nnamespace {\n")
        w(f"constexpr size_t kLongestKeyword = {max(len(r[0]) for r in rows)};\n")
        w(f"constexpr size_t kShortestKeyword = {min(len(r[0]) for r in rows)};\n")
        w(f"constexpr int kKeywordHashBits = {HASH_BITS};\n")
        w(f"constexpr uint64_t kKeywordFactor = {factor:#x}u;\n\n")
        w("struct Keyword {\n  uint64_t first;\n  uint64_t last;\n  unsigned short length;\n")
        w("  T3Token token;\n  bool value;\n};\n\n")
        w("// Entry 0 is for places that no keyword has.\nconst Keyword kKeywords[] = {\n")
        w("  {0, 0, 0, T3Token::EndOfFile, false},\n")
        for text, token, value in rows:
            first, last = halves(text)
            flag = "true" if value else "false"
            w(f"  {{{first:#x}u, {last:#x}u, {len(text)}, T3Token::{token.name}, {flag}}},\n")
        w("};\n\nconst unsigned char kKeywordPlace[1 << kKeywordHashBits] = {")
        for place, index in enumerate(places):
            w(("\n  " if place % 32 == 0 else " ") + f"{index},")
        w("\n};\n}  // namespace\n")


def write_grammar(tokens, grammar, path):
    lines = "".join(f'%token {t.name} {t.number} "{t.text}"\n' for t in tokens)
    with open(grammar, encoding="ascii") as source:
        text = source.read()
    if text.count(MARK) != 1:
        sys.exit(f"{grammar}: {MARK} must stand there once")
    head, tail = text.split(MARK)
    with open(path, "w", encoding="ascii") as out:
        out.write(head + lines + tail)


def write_dictionary(tokens, path):
    with open(path, "w", encoding="ascii") as out:
        for t in tokens:
            if t.token_class != "value" and t.number != 0:
                out.write(f'"{t.text}"\n')
        for text in ('true', 'false', "'01'B", "'0F'O", "'0F'H", "'0?*'B", '1.0E-5', '\\"a\\"', 'pattern \\"a\\"',
                     "/*", "*/", "//", "with {encode \\\"x\\\"}", "[] any timer.timeout {}"):
            out.write(f'"{text}"\n')


def main():
    if len(sys.argv) == 4 and sys.argv[1] == "code":
        write_code(read(sys.argv[2]), sys.argv[3])
    elif len(sys.argv) == 5 and sys.argv[1] == "grammar":
        write_grammar(read(sys.argv[2]), sys.argv[3], sys.argv[4])
    elif len(sys.argv) == 4 and sys.argv[1] == "dictionary":
        write_dictionary(read(sys.argv[2]), sys.argv[3])
    else:
        sys.exit(__doc__)


main()
