#!/usr/bin/env python3
"""Makes the tables of the parser from Bison's XML report.

usage: gen_parser_tables.py REPORT ACTIONS OUTPUT
ACTIONS lists the numbers of the rules that have an action. OUTPUT gets the tables of states, actions and
gotos that T3ParserTables.h declares.

A rule of one symbol that has no action exchanges one state for another. Where a state does that whatever
follows, and nothing else, the steps into it lead at once to the state behind it.
"""
import sys
import xml.etree.ElementTree as ET


class Automaton:
    def __init__(self, report, actions):
        root = ET.parse(report).getroot()
        self.tokens = {t.get("name"): int(t.get("symbol-number")) for t in root.iter("terminal")}
        first = min(int(n.get("symbol-number")) for n in root.iter("nonterminal"))
        lefts = {n.get("name"): int(n.get("symbol-number")) - first for n in root.iter("nonterminal")}
        # the tables count the rules from 1, the report from 0
        self.rules = {}
        for rule in root.find("grammar").find("rules").findall("rule"):
            number = int(rule.get("number")) + 1
            self.rules[number] = (lefts[rule.find("lhs").text], len(rule.find("rhs").findall("symbol")))
        plain = {number for number, (_, length) in self.rules.items() if length == 1 and number not in actions}
        self.shifts, self.gotos, self.reductions, self.sole, self.exchange = [], [], [], [], []
        for state in root.iter("state"):
            steps = list(state.iter("transition"))
            self.shifts.append({self.tokens[s.get("symbol")]: int(s.get("state")) for s in steps
                                if s.get("symbol") in self.tokens})
            self.gotos.append({lefts[s.get("symbol")]: int(s.get("state")) for s in steps
                               if s.get("symbol") in lefts})
            rules = {r.get("symbol"): 1 if r.get("rule") == "accept" else int(r.get("rule")) + 1
                     for r in state.iter("reduction") if r.get("enabled") == "true"}
            self.sole.append(rules.pop("$default", None))
            if self.sole[-1] is not None and (rules or self.shifts[-1]):
                sys.exit("gen_parser_tables.py: a state with a default reduction waits for tokens")
            self.reductions.append({self.tokens[symbol]: rule for symbol, rule in rules.items()})
            self.exchange.append(self.sole[-1] if self.sole[-1] in plain else None)

    def end(self, below, state):
        """Where a step to `state` leads in the end, when `below` lies under it."""
        while self.exchange[state] is not None:
            state = self.gotos[below][self.rules[self.exchange[state]][0]]
        return state

    def actions(self, state):
        """What a state does before each token: the state to shift to, or minus the rule to reduce."""
        row = {token: -rule for token, rule in self.reductions[state].items()}
        row.update((token, self.end(state, target)) for token, target in self.shifts[state].items())
        return row

    def steps(self, state):
        """The state that follows the reduction to each left symbol."""
        return {left: self.end(state, target) for left, target in self.gotos[state].items()}


def lay(rows):
    """Lays rows over each other so that no two want one place: their beginnings, and what stands where."""
    size = 2 * sum(map(len, rows)) + 4096
    free, table, begins = (1 << size) - 1, {}, {}
    for row in sorted({tuple(sorted(row.items())) for row in rows}, key=lambda row: (-len(row), row)):
        fits, mask = free, 0
        for column, _ in row:
            fits &= free >> column
            mask |= 1 << column
        # a row is known by its beginning where another's entry of the same column could be met
        begin = (fits & -fits).bit_length() - 1
        while begin in begins.values():
            fits &= fits - 1
            begin = (fits & -fits).bit_length() - 1
        begins[row] = begin
        free &= ~(mask << begin)
        table.update((begin + column, (column, value)) for column, value in row)
    return [begins[tuple(sorted(row.items()))] for row in rows], table


def write(target, head, values):
    target.write(f"{head} = {{\n")
    for at in range(0, len(values), 12):
        target.write("    %s,\n" % ", ".join(values[at:at + 12]))
    target.write("};\n")


def main():
    with open(sys.argv[2], encoding="ascii") as listed:
        automaton = Automaton(sys.argv[1], {int(word) for word in listed.read().split()})
    states = range(len(automaton.shifts))
    action_rows, actions = lay([automaton.actions(state) for state in states])
    goto_rows, gotos = lay([automaton.steps(state) for state in states])
    width = len(automaton.tokens) + 1
    last = max(max(action_rows) + width, max(actions)) + 1
    rows = [(action_rows[state] if automaton.sole[state] is None else -automaton.sole[state], goto_rows[state])
            for state in states]
    if last > 32767:
        sys.exit("gen_parser_tables.py: the table has grown too large")
    with open(sys.argv[3], "w", encoding="ascii") as target:
        target.write("// Made by gen_parser_tables.py; do not edit.\n")
        target.write('#include "frontend/T3ParserTables.h"\n\n')
        write(target, "const T3StateRow gParserStates[]", ["{%d, %d}" % row for row in rows])
        write(target, "const T3TableEntry gParserTable[]",
              ["{%d, %d}" % actions.get(at, (-1, 0)) for at in range(last)])
        write(target, "const short gParserGotos[]",
              [str(gotos.get(at, (0, 0))[1]) for at in range(max(gotos) + 1)])


main()
