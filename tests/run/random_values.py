#!/usr/bin/env python3
"""Random well-typed programs, whose results are compared with those of an evaluator of its own.

    random_values.py --orvane PROGRAM --out FOLDER [--cc tcc] [--seed N] [--programs N] [--modules N]

A program is a test case with functions and variables of a component: it works on numbers, strings, enumerations, records,
lists, arrays and unions, passes them in all modes, tries templates on them, sends and logs them. What it does is generated
and evaluated as a tree of closures; the lines that it has to log, and whether it ends with a dynamic error, are known
before it runs. Each module holds many programs.
The seed of a module is printed when something differs: --seed with it and --modules 1 makes it again.
"""

import argparse
import random
import re
import shutil
import subprocess
import sys
from contextlib import contextmanager, nullcontext
from pathlib import Path

from random_templates import Templates
from random_types import (BITS, BOOL, COLOUR, FLOAT, HEXES, INT, LIMIT, OCTETS, OMIT, TEXT, WIDE, WORD, Discard, DynamicError,
                          Open, Place, blank, checked, complete, make_types, part_type, read, root, same, shown, values_of)


class Loop(Exception):
    pass


# ---- Programs: each piece is (text, closure of a frame)

class Generator(Templates):
    def __init__(self, rng, types):
        self.rng, self.types = rng, types
        self.names, self.templates, self.frame, self.owned = 0, [], {}, []
        self.functions, self.taken, self.calls, self.shared, self.constants = [], None, True, [], {}
        self.favourites = [INT, TEXT, rng.choice(types), rng.choice(types)]  # so that calls find arguments and uses

    def name(self, prefix):
        self.names += 1
        return f"{prefix}{self.names}"

    def type(self):
        return self.rng.choice(self.favourites if self.rng.random() < 0.8 else self.types)

    # -- references: text, type, optional, closure that gives (place, path)

    def reference(self, scope, wanted=None, roots=None):
        roots = values_of(roots or scope)
        for _ in range(12 if roots else 0):
            name, t = self.rng.choice(roots)
            text, keys, optional = name, [], False
            while t[0] in ("record", "list", "array", "union") and (t != wanted or self.rng.random() < 0.3):
                if not wanted and self.rng.random() < 0.25:
                    break
                if t[0] in ("record", "union"):
                    key = self.rng.choice(t[2])[0]
                    text, keys = f"{text}.{key}", keys + [lambda _, key=key: key]
                else:
                    index, value = self.index(scope, t)
                    text, keys = f"{text}[{index}]", keys + [value]
                    key = None
                t, optional = part_type(t, key)
            if not wanted or root(wanted) == root(t):
                return text, t, optional, lambda frame: (frame[name], tuple(key(frame) for key in keys))
        return None

    def index(self, scope, t):
        top, low = (t[3], t[4]) if t[0] == "array" else (4, 0)
        if self.rng.random() < 0.85:
            i = self.rng.randrange(top)
            return str(i + low), lambda _: i
        with self.without_calls():  # an index to the left of := may be evaluated before or behind what is to the right
            text, value = self.plain(INT, scope, 1)
        return f"same_integer({text})", lambda frame: value(frame) - low

    @contextmanager
    def without_calls(self):
        before, self.calls = self.calls, False
        yield
        self.calls = before

    # -- expressions

    def expression(self, t, scope, depth=2):
        rng = self.rng
        called = self.calls and depth > 0 and rng.random() < 0.4 and self.invocation(scope, t)
        if called:
            return called
        known = [row for row in self.templates if row[1] == t and row[3].value] if rng.random() < 0.1 else []
        if known:
            with self.without_calls():
                text, inner, _ = self.called(row := rng.choice(known), scope)
            return f"valueof({text})", lambda frame: row[3].value(inner(frame))
        if self.constants.get(t) and rng.random() < 0.2:
            return rng.choice(self.constants[t])
        if t[0] in ("record", "list", "array", "union") and (depth <= 0 or rng.random() < 0.5):
            found = scope and rng.random() < 0.7 and self.reference(scope, t)
            return self.reading(found) if found else self.compound(t, scope, depth)
        if t[0] in ("record", "list", "array", "union"):
            return self.compound(t, scope, depth)
        if scope and rng.random() < 0.45:
            found = self.reference(scope, t)
            if found:
                return self.reading(found)
        if depth <= 0 or rng.random() < 0.3:
            return self.literal(t)
        return self.operation(t, scope, depth)

    def reading(self, found):
        text, t, _, place = found

        def value(frame):
            root, path = place(frame)
            return read(root.t, root.get(), path)
        return text, value

    def plain(self, t, scope, depth):
        return self.given(self.expression(t, scope, depth))

    def given(self, operand):
        """An operand, which has a value."""
        text, value = operand

        def evaluate(frame):
            v = value(frame)
            if v is None or v is OMIT:
                raise DynamicError
            return v
        return text, evaluate

    def literal(self, t):
        rng = self.rng
        if t[0] == "charstring":
            v = "".join(rng.choice("abcxyz ") for _ in range(rng.randrange(4)))
            return f'"{v}"', lambda _: v
        if t[0] in ("wide", "verdict"):
            v = "".join(rng.choice("abÄß€ ") for _ in range(rng.randrange(4))) if t is WIDE else rng.choice(("none", "pass", "fail"))
            return f'"{v}"' if t is WIDE else v, lambda _: v
        if t[0] == "objid":
            v = (rng.randrange(3), rng.randrange(40), *(rng.choice((0, 127, 128, 70000)) for _ in range(rng.randrange(3))))
            return shown(t, v), lambda _: v
        if t[0] == "bits":
            v = "".join(rng.choice("01" if t is BITS else "09AF") for _ in range(rng.randrange(5) * t[2]))
            return shown(t, v), lambda _: v
        if t[0] == "enum":
            v = rng.choice(t[2])
            return v, lambda _: v
        v = {"integer": rng.randint(0, 9), "sub": rng.randint(0, 9), "boolean": rng.random() < 0.5,
             "float": rng.randrange(64) / 8}[t[0]]
        return (str(v).lower() if t[0] == "boolean" else str(v)), lambda _: v

    def operation(self, t, scope, depth):
        rng = self.rng
        if t[0] == "boolean":
            return self.condition(scope, depth)
        if t[0] == "charstring":
            text, x = self.text(scope, depth)
            return (f"same_charstring({text})" if t is WORD else text), x  # faults of constants are found by the compiler
        if t[0] in ("bits", "wide"):
            return self.digits(t, scope, depth)
        if t[0] in ("enum", "verdict", "objid"):
            return self.literal(t)
        if t[0] == "float":
            op = rng.choice("+-*/")
        else:
            op = rng.choice(("+", "-", "*", "/", "mod", "rem", "size", "size"))
            if op == "size":
                return self.size(scope, depth)
            t = INT
        (a, x), (b, y) = self.plain(t, scope, depth - 1), self.plain(t, scope, depth - 1)
        # Faults of constants are found by the compiler.
        if b[0].isdigit() or b[0] == "k":
            b = f"same_{t[1]}({b})"
        return f"({a} {op} {b})", lambda frame: arithmetic(op, x(frame), y(frame))

    def digits(self, t, scope, depth):
        """An operation on strings of digits or universal characters; faults of constants are found by the compiler."""
        rng, wide = self.rng, t is WIDE
        op, n, m = rng.choice(("&", "<@", "@>", "substr", "replace") if wide else sorted(DIGIT_OPERATIONS)), rng.randrange(4), rng.randrange(3)
        (a, x), (b, y) = self.plain(t, scope, depth - 1), self.plain(t, scope, depth - 1)
        first, same_b = f"same_{t[1]}({a})" if wide or op in ("substr", "replace") else a, f"same_{t[1]}({b})"
        text = (f"(not4b {a})" if op == "not4b" else f"substr({first}, {n}, {m})" if op == "substr" else
                f"replace({first}, {n}, {m}, {same_b if wide else b})" if op == "replace" else
                f"({first} {op} {same_b if op in ('and4b', 'or4b', 'xor4b', '&') else n})")

        def value(frame):
            elements = lambda v: list(v) if wide else [int(v[i:i + t[2]], 16) for i in range(0, len(v), t[2])]
            p, q = elements(x(frame)), elements(y(frame)) if op in ("and4b", "or4b", "xor4b", "&", "replace") else []
            v = DIGIT_OPERATIONS[op](p, q, n, m, 0 if wide else t[3] - 1)
            return "".join(v if wide else (f"{e:X}".zfill(t[2]) for e in v)) if len(v) < 40 else discard()
        return text, value

    def size(self, scope, depth):
        lists = [t for t in self.types if t[0] == "list"]
        found = self.reference(scope, self.rng.choice(lists)) if scope else None
        if not found:
            of = self.rng.choice((TEXT, WIDE, BITS, HEXES, OCTETS))
            a, x = self.plain(of, scope, depth - 1)
            return f"lengthof({a})", lambda frame: len(x(frame)) // (2 if of is OCTETS else 1)
        text, value = self.given(self.reading(found))
        return f"{self.rng.choice(('lengthof', 'sizeof'))}({text})", lambda frame: len(value(frame))

    def text(self, scope, depth):
        rng = self.rng
        if rng.random() < 0.5:
            t = rng.choice((INT, BITS, HEXES, OCTETS))
            a, x = self.plain(t, scope, depth - 1)
            return f"{'int' if t is INT else t[1][:3]}2str({a})", lambda frame: str(x(frame))
        found = self.reference(scope, TEXT) if scope and rng.random() < 0.3 else None
        if found and not found[0].endswith(".charstring"):
            (a, x), (b, y) = self.given(self.reading(found)), self.plain(INT, scope, 0)
            return f"{a}[same_integer({b})]", lambda frame: (lambda v, i: v[i] if 0 <= i < len(v) else no_value())(x(frame), y(frame))
        (a, x), (b, y) = self.plain(TEXT, scope, depth - 1), self.plain(TEXT, scope, depth - 1)
        return f"({a} & {b})", lambda frame: (lambda v: v if len(v) < 200 else discard())(x(frame) + y(frame))

    def condition(self, scope, depth):
        rng = self.rng
        kind = rng.randrange(6)
        if kind < 2:
            t = rng.choice((INT, FLOAT, COLOUR))
            op = rng.choice(("<", ">", "<=", ">="))
            (a, x), (b, y) = self.plain(t, scope, depth - 1), self.plain(t, scope, depth - 1)
            compare = {"<": lambda p, q: p < q, ">": lambda p, q: p > q, "<=": lambda p, q: p <= q,
                       ">=": lambda p, q: p >= q}[op]
            rank = dict(zip(*COLOUR[2:])).get if t is COLOUR else lambda v: v
            if t is COLOUR and {a, b} <= set(COLOUR[2]):
                return self.literal(BOOL)  # literals alone have no type
            return f"({a} {op} {b})", lambda frame: compare(rank(x(frame)), rank(y(frame)))
        if kind == 2 and values_of(scope):
            found = self.reference(scope)
            other = self.reference(scope, found[1])
            if other:
                (a, x), (b, y) = self.reading(found), self.reading(other)
                return f"({a} == {b})", lambda frame: same(found[1], x(frame), y(frame))
        if kind == 3 and values_of(scope):
            found = self.reference(scope)
            text, value = self.reading(found)
            if found[2] and rng.random() < 0.4:
                return f"ispresent({text})", lambda frame: asked(value, frame) is not None
            if found[1][0] == "union" and rng.random() < 0.6:
                name = rng.choice(found[1][2])[0]
                return f"ischosen({text}.{name})", lambda frame: (asked(value, frame) or discard())[0] == name
            if "[" not in text:  # what stands below something that is not there is no value
                return f"isvalue({text})", lambda frame: complete(found[1], asked(value, frame, lambda: None))
        if kind == 4:
            op = rng.choice(("and", "or"))
            (a, x), (b, y) = self.plain(BOOL, scope, depth - 1), self.plain(BOOL, scope, depth - 1)
            return f"({a} {op} {b})", lambda frame: (x(frame) and y(frame)) if op == "and" else (x(frame) or y(frame))
        a, x = self.plain(BOOL, scope, depth - 1)
        return f"(not {a})", lambda frame: not x(frame)

    def compound(self, t, scope, depth):
        rng = self.rng
        if t[0] == "union":
            name, at = rng.choice(t[2])
            a, x = self.expression(at, scope, depth - 1)
            return f"{{ {name} := {a} }}", lambda frame: (name, checked(at, x(frame)))
        if t[0] == "record":
            parts = [(f, ft, o, ("omit", lambda _: OMIT) if o and rng.random() < 0.4 or depth < -3 and o
                      else self.expression(ft, scope, depth - 1)) for f, ft, o in t[2]]
            named = t[3] == "set" or rng.random() < 0.5
            if named:
                rng.shuffle(parts)

            def record(frame):
                value = {}
                for f, ft, o, (_, x) in parts:
                    v = x(frame)
                    value[f] = v if o and v is OMIT else checked(ft, v)
                return value
            return "{ " + ", ".join(f"{f} := {x[0]}" if named else x[0] for f, _, _, x in parts) + " }", record
        count = t[3] if t[0] == "array" else rng.randint(0, (t[3] or (0, 4))[1]) if depth >= 0 else 0
        items = [self.expression(t[2], scope, depth - 1) for _ in range(count)]

        def row(frame):
            return checked(t, tuple(checked(t[2], x(frame)) for _, x in items))
        return ("{ " + ", ".join(a for a, _ in items) + " }") if items else "{}", row

    # -- statements: lines, closure

    def block(self, scope, functions, depth, count, loop=False):
        scope, pieces = list(scope), []
        for _ in range(count):
            pieces.append(self.statement(scope, functions, depth, loop))
        lines = [line for piece in pieces for line in piece[0]]

        def run(frame):
            for _, step in pieces:
                step(frame)
        return lines, run

    def statement(self, scope, functions, depth, loop):
        rng = self.rng
        kind = rng.randrange(26)
        if not values_of(scope) or kind < 3:
            return self.declaration(scope)
        if kind < 9:
            return self.assignment(scope)
        if kind < 12 and functions:
            return self.call(scope, functions)
        if kind < 14 and depth:
            return self.branch(scope, functions, depth, loop)
        if kind < 16 and depth:
            return self.loop(scope, functions, depth)
        if kind == 16 and loop:
            word = rng.choice(("break", "continue"))
            a, x = self.plain(BOOL, scope, 1)

            def leave(frame):
                if x(frame):
                    raise Loop(word)
            return [f"if ({a}) {{ {word}; }}"], leave
        if kind > 18:
            return self.tried(scope)
        return self.log(scope)

    def declaration(self, scope):
        name, t = self.name("v"), self.type()
        if self.rng.random() < 0.2:
            scope.append((name, t))
            return [f"var {t[1]} {name};"], lambda frame: frame.__setitem__(name, Place(t))
        a, x = self.expression(t, scope)

        def declare(frame):
            frame[name] = Place(t)
            frame[name].set((), x(frame))
        scope.append((name, t))
        return [f"var {t[1]} {name} := {a};"], declare

    def assignment(self, scope):
        text, t, optional, place = self.reference(scope)
        if optional and self.rng.random() < 0.3:
            a, x = "omit", lambda _: OMIT
        else:
            with self.without_calls() if "same_integer" in text else nullcontext():
                a, x = self.expression(t, scope)

        sent = not optional and t[1] and "same_integer" not in text and self.rng.random() < 0.1

        def assign(frame):
            where, path = place(frame)
            v = x(frame)
            where.set(path, v if not sent else checked(t, v) if complete(t, v) else no_value())
        return [f"p.send({t[1]}:{a}); alt {{ [] p.receive({t[1]}:?) -> value {text} {{ }} }}" if sent else f"{text} := {a};"], assign

    def branch(self, scope, functions, depth, loop):
        a, x = self.plain(BOOL, scope, 2)
        yes, run_yes = self.block(scope, functions, depth - 1, self.rng.randint(1, 3), loop)
        no, run_no = self.block(scope, functions, depth - 1, self.rng.randint(1, 2), loop)
        return [f"if ({a}) {{", *yes, "} else {", *no, "}"], lambda frame: (run_yes if x(frame) else run_no)(frame)

    def loop(self, scope, functions, depth):
        name, count = self.name("i"), self.rng.randint(1, 4)
        a, x = self.plain(BOOL, scope, 2) if self.rng.random() < 0.4 else ("true", lambda _: True)
        kind = self.rng.choice(("for", "while", "do", "goto"))
        body, run = self.block(scope + [(name, INT)], functions, depth - 1, self.rng.randint(1, 4), kind != "goto")
        last = kind in ("do", "goto")
        guard = f"{name} < {count} and {a}" if a != "true" else f"{name} < {count}"

        def rounds(frame):
            frame[name] = Place(INT, 0)
            fuel = 50
            while last or (frame[name].get() < count and x(frame)):
                fuel = fuel - 1 or discard()
                try:
                    if kind != "for":
                        frame[name].set((), frame[name].get() + 1)
                    run(frame)
                except Loop as leave:
                    if leave.args[0] == "break":
                        break
                if kind == "for":
                    frame[name].set((), frame[name].get() + 1)
                if last and not (frame[name].get() < count and x(frame)):
                    break
        if kind == "for":
            return [f"for (var integer {name} := 0; {guard}; {name} := {name} + 1) {{", *body, "}"], rounds
        step = f"{name} := {name} + 1;"
        if kind == "while":
            return [f"var integer {name} := 0;", f"while ({guard}) {{", step, *body, "}"], rounds
        if kind == "goto":
            return [f"var integer {name} := 0;", f"label l{name};", step, *body, f"if ({guard}) {{ goto l{name}; }}"], rounds
        return [f"var integer {name} := 0;", "do {", step, *body, f"}} while ({guard});"], rounds

    def log(self, scope):
        name, t = self.rng.choice(values_of(scope))

        def log(frame):
            v = frame[name].get()
            frame["log"].append("#" + shown(t, v, True) if complete(t, v) and v is not OMIT else "#-")
        # Whether a value is complete is asked first: what is unset has no one text.
        return [f'if (isvalue({name})) {{ log("#", {name}); }} else {{ log("#-"); }}'], log

    # -- functions

    def function(self, functions):
        rng, name = self.rng, self.name("f")
        formals = [(rng.choice(("in", "in", "inout", "out")), ("template", t) if rng.random() < 0.15 else t, self.name("p"))
                   for t in [self.type() for _ in range(rng.randint(1, 4))]]
        result = self.type() if rng.random() < 0.8 else None
        scope = [(p, t) for mode, t, p in formals if mode != "out"] + self.owned
        self.shared += [(p, t) for mode, t, p in formals if mode == "inout"]
        starts = []
        for mode, t, p in formals:
            if mode == "out":
                value = self.template(t[1], scope, 1) if t[0] == "template" else None
                starts.append((p, value.text, value.bind) if value else (p, *self.expression(t, scope)))
                scope.append((p, t))
        body, run = self.block(scope, functions, 1, rng.randint(1, 5))
        back = self.expression(result, scope) if result else None
        head = ", ".join(f"{mode} {f'template {t[1][1]}' if t[0] == 'template' else t[1]} {p}" for mode, t, p in formals)
        lines = [f"function {name}({head}) runs on C_{f' return {result[1]}' if result else ''} {{",
                 *(f"{p} := {text};" for p, text, _ in starts), *body, *([f"return {back[0]};"] if back else []), "}"]

        def call(frame):
            for p, _, x in starts:
                frame[p].set((), x(frame))
            run(frame)
            return checked(result, back[1](frame)) if back else None
        return lines, (name, formals, result, call)

    def invocation(self, scope, wanted):
        """A call of a function, which may write variables of the caller and of the component; None where none fits."""
        fitting = [row for row in self.functions if row[2] == wanted]
        if not fitting:
            return None
        name, formals, _, run = self.rng.choice(fitting)
        outermost = self.taken is None
        if outermost:
            self.taken = set()
        actuals = [self.argument(mode, t, scope) for mode, t, _ in formals]
        if outermost:
            self.taken = None
        if None in actuals:
            return None

        def call(frame):
            inner = {"log": frame["log"], **{name: frame[name] for name, _ in self.owned}}
            for (mode, t, p), (_, x) in zip(formals, actuals):
                if t[0] == "template":
                    inner[p] = Place(t, x(frame)) if mode == "in" else x(frame)
                elif mode == "in":
                    v = x(frame)
                    inner[p] = Place(t, checked(t, None if blank(t, v) else v))
                else:
                    inner[p] = Place(t, None, *x(frame))
                    if mode == "inout" and inner[p].get() in (None, OMIT):
                        raise Discard
            return run(inner)
        return f"{name}({', '.join(a for a, _ in actuals)})", call

    def argument(self, mode, t, scope):
        if t[0] == "template":
            return self.template_argument(mode, t[1], scope)
        if mode == "in":
            return self.expression(t, scope, 1)
        # No two parameters by reference share a variable, those of calls in arguments among them: what one changes
        # would be open. Nor is it a part of one of the component, which the function may replace as a whole, or may be
        # such a variable and be unset by the call.
        free = [row for row in values_of(scope) if row[0] not in self.taken and (mode == "inout" or row not in self.owned + self.shared)]
        found = self.reference(scope, t, free) if free else None
        if not found or found[1] != t or any(found[0] != c and re.match(rf"{c}\b", found[0]) for c, _ in self.owned):
            return None
        self.taken.add(re.match(r"\w+", found[0]).group())
        return found[0], found[3]

    def call(self, scope, functions):
        target, made = self.reference(scope) if scope else None, None
        if target and "same_integer" not in target[0] and self.rng.random() < 0.7:
            made = self.invocation(scope, target[1])
        if made:
            def assign(frame):
                v = made[1](frame)
                root, path = target[3](frame)
                root.set(path, v)
            return [f"{target[0]} := {made[0]};"], assign
        text, run = self.invocation(scope, None) or (None, None)
        return ([f"{text};"], run) if text else self.assignment(scope)

    def program(self, number):
        self.frame = frame = {"log": []}
        lines, functions = [f"type component C_ extends C {{ {self.variables(frame)}"], self.functions
        for _ in range(self.rng.randint(1, 5)):
            more, function = self.function(functions)
            lines += more
            functions.append(function)
        for _ in range(self.rng.randint(0, 3)):
            lines += self.declared()
        lines += [f"testcase TC_{number}() runs on C_ system S {{", "connect(self:p, self:p);"]
        scope, verdict = list(self.owned), "pass"
        for _ in range(self.rng.randint(8, 24)):
            piece, verdict = self.step(frame, scope, functions)
            lines += piece
            if verdict == "error":
                break
        return [*lines, "setverdict(pass);", "}"], frame["log"], verdict

    def variables(self, frame):
        """Variables of the component, which its functions see, and constants behind it."""
        text, constants = "", ""
        for _ in range(self.rng.randint(0, 3)):
            name, t = self.name("c"), self.type()
            a, x = self.expression(t, [], 1)
            try:
                frame[name] = Place(t, checked(t, x(frame)))
            except DynamicError:
                continue
            self.owned.append((name, t))
            text += f"var {t[1]} {name} := {a}; "
            constant, v = self.name("k"), frame[name].get()
            if complete(t, v):
                constants += f"const {t[1]} {constant} := {shown(t, v)}; "
                self.constants.setdefault(t, []).append((constant, lambda _, v=v: v))
        return f"{text}}} {constants}"

    def step(self, frame, scope, functions):
        """A statement, which is executed; few of those that end with an error are taken."""
        while True:
            inner = list(scope)
            piece, run = self.statement(inner, functions, 2, False)
            saved = {name: place.value for name, place in frame.items() if name != "log"}, len(frame["log"])
            try:
                run(frame)
                scope[:] = inner
                return piece, "pass"
            except DynamicError as error:
                if not isinstance(error, Open) and self.rng.random() < 0.06:
                    return piece, "error"
            del frame["log"][saved[1]:]
            for name in [name for name in frame if name != "log"]:
                if name in saved[0]:
                    frame[name].value = saved[0][name]
                else:
                    del frame[name]


def discard():
    raise Discard


def each(op):
    return lambda p, q, n, m, top: [op(a, b, top) for a, b in zip(p, q)] if len(p) == len(q) else no_value()


def no_value():
    raise DynamicError


# Of two rows of elements, two numbers, and the greatest element.
DIGIT_OPERATIONS = {
    "and4b": each(lambda a, b, _: a & b), "or4b": each(lambda a, b, _: a | b), "xor4b": each(lambda a, b, _: a ^ b),
    "&": lambda p, q, n, m, top: p + q, "not4b": lambda p, q, n, m, top: [top - a for a in p],
    "<<": lambda p, q, n, m, top: p[n:] + [0] * min(n, len(p)), ">>": lambda p, q, n, m, top: ([0] * n + p)[:len(p)],
    "<@": lambda p, q, n, m, top: p[n % len(p):] + p[:n % len(p)] if p else p,
    "@>": lambda p, q, n, m, top: p[-(n % len(p)):] + p[:-(n % len(p))] if p and n % len(p) else p,
    "substr": lambda p, q, n, m, top: p[n:n + m] if n + m <= len(p) else no_value(),
    "replace": lambda p, q, n, m, top: p[:n] + q + p[n + m:] if n + m <= len(p) else no_value()}


def asked(value, frame, otherwise=lambda: discard()):
    try:  # what stands below something that is not there need not be there, nor be a fault
        v = value(frame)
    except DynamicError:
        return otherwise()
    return None if v is OMIT else v


def arithmetic(op, a, b):
    if op in ("/", "mod", "rem") and b == 0:
        raise DynamicError
    if isinstance(a, float):
        v = {"+": a + b, "-": a - b, "*": a * b, "/": a / b if b else 0}[op]
    else:
        quotient = abs(a) // abs(b) * (1 if (a < 0) == (b < 0) else -1) if b else 0
        v = {"+": a + b, "-": a - b, "*": a * b, "/": quotient, "mod": a % abs(b) if b else 0,
             "rem": a - b * quotient}[op]
    if abs(v) > LIMIT:
        raise Discard
    return v


# ---- Running

def module(seed, programs):
    rng = random.Random(seed)
    imported = rng.random() < 0.4  # all but the test cases stand in a module of their own
    types, lines = make_types(rng, imported)
    expected, cases = [], []
    while len(expected) < programs:
        try:
            text, log, verdict = Generator(rng, types).program(len(expected))
        except (Discard, RecursionError):
            continue
        # Functions and templates are of the module: each program has its own names.
        text = [re.sub(r"\b(f(?=\d+\()|f?tp(?=\d)|k(?=\d)|C(?=_))", rf"\g<1>{len(expected)}_", line) for line in text]
        start = next(i for i, line in enumerate(text) if line.startswith("testcase"))
        lines += text[:start]
        cases += text[start:]
        expected.append((log, verdict))
    control = [f"execute(TC_{i}());" for i in range(programs)]
    head = ["type port P message { inout all }", "type component C { port P p }", "type component S { }"]
    between = ["}", "module Random language \"TTCN-3:2005\" { import from Shared all;"] * imported
    return [f'module {"Shared" if imported else "Random"} language "TTCN-3:2005" {{', *head, *lines, *between, *cases, "control {",
            *control, "}", "}"], expected


def run(command, folder, seed, statuses=(0,), seconds=120):
    try:
        process = subprocess.run(command, cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                 stderr=subprocess.STDOUT, timeout=seconds, check=False)
    except subprocess.TimeoutExpired:
        sys.exit(f"seed {seed}: {command[0]}: no end within {seconds} seconds")
    output = process.stdout.decode("utf-8", errors="replace")
    if process.returncode not in statuses:
        sys.exit(f"seed {seed}: {' '.join(map(str, command))}: status {process.returncode}\n{what_is_wrong(output)}")
    return output


def what_is_wrong(output):
    return "\n".join(line for line in output.split("\n") if "Warning" not in line)[-3000:]


def found_results(output):
    results, log = [], []
    for line in output.split("\n"):
        logged = re.match(r"ttcn3 \S+ \S+ (#.*)$", line)
        finished = re.match(r"info .*test case \S+ finished with verdict (\w+)", line)
        if logged:
            log.append(logged.group(1).replace("{ Random.", "{ "))  # so are fields of anytype told
        if finished:
            results.append((log, finished.group(1)))
            log = []
    return results


def check_module(arguments, seed):
    folder = arguments.out.resolve()
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    lines, expected = module(seed, arguments.programs)
    (folder / "Random.ttcn").write_text("\n".join(lines) + "\n", encoding="utf-8")
    home = arguments.orvane.resolve().parent.parent
    run([arguments.orvane.resolve(), "-v", "2", "-K", "-r", "Random", "-f", home / "share/orvane/make_linux.mcfg", "-F",
         "Random.ttcn"], folder, seed)
    for source in sorted(folder.glob("*.c")):
        run([*arguments.cc.split(), "-c", "-I", home / "include", source], folder, seed)
    sanitize = [f"-fsanitize={arguments.sanitize}"] if arguments.sanitize else []
    run(["c++", *sanitize, "-o", "Random", *sorted(folder.glob("*.o")), home / "lib/liblumos.a", "-lm", "-lpthread"],
        folder, seed)
    found = found_results(run(["./Random", "-n", "-v", "info,ttcn3"], folder, seed, (0, 1)))
    for i, (want, have) in enumerate(zip(expected, found)):
        if want != have:
            sys.exit(f"seed {seed}: TC_{i} differs\n expected {want}\n found    {have}")
    if len(found) != len(expected):
        sys.exit(f"seed {seed}: {len(found)} of {len(expected)} programs ended")
    return sum(verdict == "error" for _, verdict in expected)


def main():
    parser = argparse.ArgumentParser(description="Compares random programs with an evaluator.")
    parser.add_argument("--orvane", required=True, type=Path)
    parser.add_argument("--out", required=True, type=Path)
    parser.add_argument("--cc", default="tcc" if shutil.which("tcc") else "cc -O0 -w")
    parser.add_argument("--sanitize", default="")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--programs", type=int, default=100, help="programs in a module")
    parser.add_argument("--modules", type=int, default=2)
    arguments = parser.parse_args()
    errors = sum(check_module(arguments, arguments.seed + i) for i in range(arguments.modules))
    print(f"seeds {arguments.seed} to {arguments.seed + arguments.modules - 1}: "
          f"{arguments.programs * arguments.modules} programs as expected, {errors} with dynamic errors")


if __name__ == "__main__":
    main()
