#!/usr/bin/env python3
"""Makes what the parser's driver needs beside the LALR tables, from Bison's XML report.

usage: gen_continuation.py REPORT OUTPUT HEADER
OUTPUT gets the tables that T3ParserTables.h declares. The continuation table names for each state the token that a repair inserts there,
so that inserting again and again leads by a short way to the end of the input; where the state's best rule
is complete it holds minus the rule's number, and the driver reduces. The second table lists the reductions
that lost against a shift, where the driver's conditions decide. The third tells where those of a state
begin, the others what the conditions ask of a state. HEADER gets the numbers of rules and symbols by name.
"""
import sys
import xml.etree.ElementTree as ET


def write_by_state(target, name, values):
    target.write(f"const {name}[] = {{\n")
    for at in range(0, len(values), 24):
        target.write("    %s,\n" % ", ".join(map(str, values[at:at + 24])))
    target.write("};\n\n")


def prove(root, rules, terminals, steps):
    """Follows the table from a shortest stack of each state; fails where it does not lead to the end."""
    goto, default, shifts, reduce = {}, {}, {}, {}
    for state in root.iter("state"):
        number = int(state.get("number"))
        goto[number], shifts[number], reduce[number] = {}, {}, {}
        for step in state.iter("transition"):
            table = shifts if step.get("symbol") in terminals else goto
            table[number][step.get("symbol")] = int(step.get("state"))
        for item in state.iter("reduction"):
            if item.get("enabled") == "true" and item.get("rule") != "accept":
                if item.get("symbol") == "$default":
                    default[number] = int(item.get("rule")) + 1
                else:
                    reduce[number][terminals[item.get("symbol")]] = int(item.get("rule")) + 1
    names = {number: name for name, number in terminals.items()}
    stacks, queue = {0: [0]}, [0]
    for number in queue:
        for target in list(shifts[number].values()) + list(goto[number].values()):
            if target not in stacks:
                stacks[target] = stacks[number] + [target]
                queue.append(target)
    for start, stack in stacks.items():
        stack = list(stack)
        for _ in range(1000):
            step = steps[stack[-1]]
            if step == 0:
                break
            if step > 0 and names[step] in shifts[stack[-1]]:
                stack.append(shifts[stack[-1]][names[step]])
                continue
            rule = -step if step < 0 else reduce[stack[-1]].get(step, default.get(stack[-1], 0))
            if rule == 0:
                sys.exit(f"gen_continuation.py: nothing to do with {names[step]} in state {stack[-1]}")
            lhs, rhs = rules[rule]
            if lhs == "$accept":
                break
            if rhs:
                del stack[-len(rhs):]
            if lhs == "goal":
                break
            stack.append(goto[stack[-1]][lhs])
        else:
            sys.exit(f"gen_continuation.py: no way to the end from state {start}")


def places_of_return(root, rules, goto):
    """For each state and item in it the states to which the item's reduction goes back."""
    returns = {}
    for state in root.iter("state"):
        start = int(state.get("number"))
        for item in state.find("itemset").findall("item"):
            if int(item.get("dot")) != 0:
                continue
            number, place = int(item.get("rule-number")) + 1, start
            for point, symbol in enumerate(rules[number][1] + [None]):
                returns.setdefault((place, number, point), set()).add(start)
                if symbol not in goto[place]:
                    break  # the end, or where precedence has the rule before it reduced
                place = goto[place][symbol]
    return returns


def behind(lhs, goto, places, far):
    """The least number of tokens that lead to the end when a symbol has been reduced in one of some states."""
    if lhs in ("goal", "$accept"):
        return 0
    return min(far[goto[place][lhs]] for place in places)


def distances(rules, cost, goto, returns):
    """For each state the least number of tokens that lead from it to the end."""
    kernels = {}
    for (place, number, point), places in returns.items():
        lhs, rhs = rules[number]
        if lhs == "goal" and rhs != ["source_file"]:
            continue  # the other goals are those of trials
        if (point > 0 or lhs == "$accept") and all(s in cost for s in rhs[point:]):
            kernels.setdefault(place, []).append((lhs, sum(cost[s] for s in rhs[point:]), places))
    far = {place: 10**9 for place in goto}
    changed = True
    while changed:
        changed = False
        for place, items in kernels.items():
            best = min(rest + behind(lhs, goto, places, far) for lhs, rest, places in items)
            if best < far[place]:
                far[place], changed = best, True
    return far


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
            if lhs == "goal" and rhs != ["source_file"]:
                continue  # the other goals are those of trials
            if all(s in cost for s in rhs):
                total = sum(cost[s] for s in rhs)
                if total < cost.get(lhs, 10**9):
                    cost[lhs], best[lhs] = total, number
                    changed = True

    # for each state the least number of tokens that lead from it to the end
    goto = {}
    for state in root.iter("state"):
        steps = state.iter("transition")
        goto[int(state.get("number"))] = {step.get("symbol"): int(step.get("state")) for step in steps}
    returns = places_of_return(root, rules, goto)
    far = distances(rules, cost, goto, returns)

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

    out, lost = [], []
    recipients, alternatives, behind_dot = set(), set(), set()
    for state in root.iter("state"):
        choice, here = None, int(state.get("number"))
        for item in state.find("itemset").findall("item"):
            number, point = int(item.get("rule-number")) + 1, int(item.get("dot"))
            lhs, rhs = rules[number]
            if point == 0 and lhs != "$accept":
                continue  # no kernel item
            rest = rhs[point:]
            # growing a list leads nowhere: its own symbol in front is the last thing to choose
            grows = point == 1 and rhs[0] == lhs
            key = (grows, sum(cost[s] for s in rest) + behind(lhs, goto, returns[here, number, point], far), number)
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
                recipients.add(int(state.get("number")))
            if step.get("symbol") == "any_guard_op":
                alternatives.add(int(state.get("number")))
            if step.get("symbol") == "Dot":
                behind_dot.add(int(step.get("state")))
    out.sort()
    prove(root, rules, terminals, [step for _, step in out])
    with open(sys.argv[2], "w", encoding="ascii") as target:
        target.write("// Made by gen_continuation.py; do not edit.\n")
        target.write('#include "frontend/T3ParserTables.h"\n\nconst short gParserContinuation[] = {\n')
        for _, symbol in out:
            target.write(f"    {symbol},\n")
        target.write("};\n\nconst T3LostReduction gParserLostReductions[] = {\n")
        for state, symbol, rule in lost:
            target.write(f"    {{{state}, {symbol}, {rule}}},\n")
        target.write("    {-1, -1, 0},\n};\n\n")
        first_lost = {}
        for place, (state, _, _) in enumerate(lost):
            first_lost.setdefault(state, place)
        write_by_state(target, "short gParserFirstLost", [first_lost.get(state, -1) for state, _ in out])
        for name, chosen in (("Recipient", recipients), ("Alternative", alternatives), ("BehindDot", behind_dot)):
            values = ["true" if state in chosen else "false" for state, _ in out]
            write_by_state(target, f"bool gParser{name}", values)
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
