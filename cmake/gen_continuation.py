#!/usr/bin/env python3
"""Makes what the parser's driver needs beside the LALR tables, from Bison's XML report.

usage: gen_continuation.py REPORT OUTPUT HEADER
OUTPUT gets three tables. The continuation table names for each state the token that a repair inserts there,
so that inserting again and again leads by a short way to the end of the input; where the state's best rule
is complete it holds minus the rule's number, and the driver reduces. The second table lists the reductions
that lost against a shift, where the driver's conditions decide. The third lists the states in which a list
of recipients may begin. HEADER gets the numbers of rules and symbols by name.
"""
import sys
import xml.etree.ElementTree as ET


def main():
    root = ET.parse(sys.argv[1]).getroot()
    rules = {}
    for rule in root.iter("rule"):
        lhs = rule.find("lhs")
        if lhs is not None:
            # the tables count the rules from 1, the report from 0
            rules[int(rule.get("number")) + 1] = (lhs.text, [s.text for s in rule.find("rhs").findall("symbol")])
    terminals = {t.get("name"): int(t.get("symbol-number")) for t in root.iter("terminal")}
    nonterminals = {n.get("name") for n in root.iter("nonterminal")}

    # the length of the shortest text of each symbol, and the rule that gives it
    cost = {t: 1 for t in terminals}
    best = {}
    changed = True
    while changed:
        changed = False
        for number, (lhs, rhs) in rules.items():
            if all(s in cost for s in rhs):
                total = sum(cost[s] for s in rhs)
                if total < cost.get(lhs, 10**9):
                    cost[lhs], best[lhs] = total, number
                    changed = True

    def first_token(symbols):
        """The first token of the shortest text of a row of symbols, or None where it is empty."""
        for symbol in symbols:
            if symbol in terminals:
                return symbol
            token = first_token(rules[best[symbol]][1])
            if token is not None:
                return token
        return None

    def empty_rule(symbols):
        """The rule to reduce first where a row of symbols is to become empty."""
        rule = best[symbols[0]]
        return empty_rule(rules[rule][1]) if rules[rule][1] else rule

    out, lost, recipients = [], [], []
    for state in root.iter("state"):
        choice = None
        for item in state.find("itemset").findall("item"):
            number, point = int(item.get("rule-number")) + 1, int(item.get("dot"))
            lhs, rhs = rules[number]
            if point == 0 and lhs != "$accept":
                continue  # no kernel item
            rest = rhs[point:]
            # growing a list leads nowhere: its own symbol in front is the last thing to choose
            grows = point > 0 and rhs[0] == lhs
            binary = grows and lhs == "expr"
            key = (binary, grows and bool(rest), sum(cost[s] for s in rest), number)
            if choice is None or key < choice[0]:
                choice = (key, rest, number)
        _, rest, number = choice
        token = first_token(rest)
        if token is not None:
            step = terminals[token]
        else:
            step = -(empty_rule(rest) if rest else number)
        out.append((int(state.get("number")), step))
        for reduction in state.iter("reduction"):
            if reduction.get("enabled") == "false":
                lost.append((int(state.get("number")), terminals[reduction.get("symbol")], int(reduction.get("rule")) + 1))
        for step in state.iter("transition"):
            if step.get("symbol") == "address_list":
                recipients.append(int(state.get("number")))
    out.sort()
    with open(sys.argv[2], "w", encoding="ascii") as target:
        target.write("// Made by gen_continuation.py; do not edit.\n")
        target.write('#include "frontend/T3ParserTables.h"\n\nconst short gParserContinuation[] = {\n')
        for _, symbol in out:
            target.write(f"    {symbol},\n")
        target.write("};\n\nconst T3LostReduction gParserLostReductions[] = {\n")
        for state, symbol, rule in lost:
            target.write(f"    {{{state}, {symbol}, {rule}}},\n")
        target.write("};\nconst int gParserLostReductionCount = %d;\n\n" % len(lost))
        target.write("const short gParserRecipientStates[] = {%s, -1};\n" % ", ".join(map(str, recipients)))
    with open(sys.argv[3], "w", encoding="ascii") as target:
        target.write("// Made by gen_continuation.py; do not edit.\n#pragma once\n\n")
        seen = {}
        for number, (lhs, _) in rules.items():
            if lhs.startswith("$"):
                continue
            seen[lhs] = seen.get(lhs, 0) + 1
            target.write(f"inline constexpr int kRule_{lhs}_{seen[lhs]} = {number};\n")
        for name, number in terminals.items():
            if name[0] != "$" and name != "error":
                target.write(f"inline constexpr int kSym_{name} = {number};\n")


main()
