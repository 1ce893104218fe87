#!/usr/bin/env python3
"""Runs random programs of several components and compares their verdicts with those that a model allows.

    random_components.py --orvane PROGRAM --out FOLDER [--programs N] [--seed N] [--cc COMPILER]

A program has two or three components, some of them alive, that send, call and answer over mixed ports, all with all,
wait in alternatives and interleaves, use timers, defaults and altsteps with parameters, stop, halt, clear and start
ports, connect anew, and start, stop and kill each other. The model below runs it by the operational semantics in all
orders that components may have their turns in, which gives a set of verdicts; the run, in simulated time, must end
with one of them. Prints the seed of each module; the same seed makes the same programs.
"""

import argparse
import random
import re
import subprocess
import sys
from pathlib import Path
from typing import NamedTuple

VERDICTS = ["none", "pass", "inconc", "fail", "error"]
PROGRAMS_IN_A_MODULE = 40
MOST_STATES = 30000
FINISHED = re.compile(r"test case \w+\.TC(\d+) finished with verdict (\w+)")

# A statement is a tuple of its kind and operands; bodies are tuples of statements. ("alt", branches, else_body or None)
# waits, as does ("interleave", bodies), whose bodies begin with the alt of one branch that an operation alone is. A
# branch is (operation, body, repeats, guard), the guard a timer that has to run, or None. An operation takes a message
# ("take", kind, port or "any", number or None, sender or None), or is ("check", ...), ("trigger", ...) likewise,
# ("timeout", timer), ("done", component), ("killed", component), ("altstep", number, argument). The kinds of messages
# are m, and c, r, e for calls, replies and exceptions, which share a queue.
PORTS = ("p", "q", "l")  # the last is mapped, and gives the main component back what it sends


class Maker:
    """Makes a program: `bodies` of the components, the first of which is the main one's, and `altsteps`."""

    def __init__(self, rng):
        self.rng = rng
        self.count = rng.choice([2, 2, 3])
        self.alive = [False] + [rng.random() < 0.4 for _ in range(1, self.count)]
        # Most components are watched: what waits for more than a second goes on.
        self.watched = rng.random() < 0.9
        self.altsteps = [self.altstep() for _ in range(2)]
        self.altsteps.append(((("timeout", 2), (("start", 2, 10),), False, None),))
        self.bodies = [self.main_body()] + [self.body(i, rng.randint(2, 5)) for i in range(1, self.count)]

    def other(self, owner):
        return self.rng.choice([i for i in range(self.count) if i != owner])

    def one_of(self, *weighted):
        """The statement that one of the functions makes; a number before a function is its weight."""
        return self.rng.choices(weighted[1::2], weighted[::2])[0]()

    def timer(self):
        return self.rng.randint(0, 1)

    def number(self):
        return self.rng.randint(0, 2)

    def port(self, owner=None):
        return self.rng.choice(PORTS[:2] * 4 + PORTS[2:] * (owner == 0))

    def verdict(self):
        return ("verdict", self.rng.choice([1, 2, 3]))

    def quiet(self):
        return self.one_of(2, lambda: ("start", self.timer(), self.rng.randint(1, 3)), 1, lambda: ("stop", self.timer()),
                           2, lambda: ("verdict", 1))

    def message(self, owner):
        kind = self.rng.choice("mmmmcre")
        port = "any" if self.rng.random() < 0.1 else self.port(owner if kind == "m" else None)
        number = self.number() if port == "any" or self.rng.random() < 0.7 else None
        sender = self.other(owner) if owner is not None and self.rng.random() < 0.2 else None
        return kind, port, number, sender

    def operation(self, owner, nested=True):
        def ended():
            kind = self.rng.choice(["done", "done", "killed"])
            return (kind, self.rng.choice([*range(1, self.count), "any", "all"]))

        return self.one_of(12, lambda: ("take", *self.message(owner)), 4, lambda: ("timeout", self.timer()),
                           2 if nested else 0, lambda: ("altstep", self.rng.randint(0, 1), self.number()),
                           1 if nested and owner == 0 else 0, ended)

    def branch(self, owner, nested=True):
        operation = self.operation(owner, nested)
        body = [self.one_of(1, self.quiet, 1, self.verdict) for _ in range(self.rng.randint(0 if nested else 1, 1))]
        repeats = operation[0] in ("take", "timeout") and self.rng.random() < 0.3
        if operation[:2] == ("take", "c") and operation[2] != "any":
            body.insert(0, ("answer", operation[2], self.rng.choice("rre"), self.number()))
        elif operation[0] == "take" and operation[2] != "any" and operation[1] == "m":
            operation = (self.rng.choices(["take", "trigger", "check"], [6, 1, 0 if repeats else 1])[0], *operation[1:])
        if not repeats and nested and self.rng.random() < 0.3:
            body.append(self.statement(owner, False))
        guard = self.timer() if operation[0] != "altstep" and self.rng.random() < 0.15 else None
        return operation, tuple(body), repeats, guard

    def altstep(self):
        return tuple(self.branch(None, False) for _ in range(self.rng.randint(1, 2)))

    def alone(self, owner, nested=True):
        return ("alt", ((self.operation(owner, nested), (), False, None),), None)

    def alternatives(self, owner):
        branches = tuple(self.branch(owner) for _ in range(self.rng.randint(1, 3)))
        return ("alt", branches, (self.verdict(),) if self.rng.random() < 0.2 else None)

    def interleave(self, owner):
        def body():
            steps = [self.alone(owner, False)]
            for _ in range(self.rng.randint(0, 2)):
                steps.append(self.one_of(1, self.quiet, 1, lambda: self.send(owner)))
            return tuple(steps + [self.alone(owner, False)] * (self.rng.random() < 0.4))

        return ("interleave", tuple(body() for _ in range(self.rng.randint(2, 3))))

    def send(self, owner):
        kind, to = self.rng.choice("mmmmmmc"), "all" if self.rng.random() < 0.1 else self.other(owner)
        port = self.port(owner if kind == "m" else None)
        return ("send", kind, port, owner if port == "l" else to, self.number())

    def call(self, owner):
        port, kinds = self.port(), self.rng.choices("re", k=self.rng.randint(1, 2))
        branches = [(("take", kind, port, self.rng.choice([None, self.number()]), None), (self.quiet(),),
                     self.rng.random() < 0.2, None) for kind in kinds]
        limit = self.rng.randint(1, 3) if self.rng.random() < 0.8 else None
        if limit:
            branches.append((("timeout", "call"), (self.verdict(),), False, None))
        return ("call", port, self.other(owner), self.number(), limit, tuple(branches))

    def port_statement(self):
        port = "all" if self.rng.random() < 0.1 else self.port()
        return ("port", self.rng.choice(["stop", "halt", "clear", "start", "start"]), port)

    def statement(self, owner, nested=True):
        deep = 1 if nested else 0
        return self.one_of(
            12, lambda: self.send(owner), 3 * deep, lambda: self.call(owner), 2, self.quiet, 2, self.port_statement,
            4, lambda: ("activate", self.rng.randint(0, 1), self.number(), self.rng.randint(0, 1)),
            1, lambda: ("deactivate", self.rng.choice([0, 1, None])), 1, lambda: ("halt",),
            2, lambda: ("sleep", self.rng.randint(1, 2)), 3, lambda: self.alone(owner),
            2, lambda: ("if", self.rng.choice(["running", "verdict"]), self.timer(), (self.quiet(),)),
            2 * deep, lambda: self.interleave(owner), 8 * deep, lambda: self.alternatives(owner))

    def body(self, owner, length):
        watch = (("activate", 2, 0, None), ("start", 2, 10)) if self.watched else ()
        if self.rng.random() < 0.4:
            watch += tuple(("activate", k, self.number(), k) for k in self.rng.sample([0, 1], 2))
        return watch + (("verdict", 1), ("start", 0, self.rng.randint(1, 3))) + tuple(
            self.statement(owner) for _ in range(length))

    def main_body(self):
        body = list(self.body(0, self.rng.randint(2, 5)))
        for i in range(1, self.count):
            body.insert(self.rng.randint(0, 2), ("run", i))
            if self.rng.random() < 0.2:
                at, port = self.rng.randint(3, len(body)), self.port()
                body.insert(at, ("disconnect", port, i))
                if self.rng.random() < 0.7:
                    body.insert(self.rng.randint(at + 1, len(body)), ("connect", port, i))
            body.append(self.one_of(5, lambda: ("alt", ((("done", i), (), False, None),), None), 1, lambda: ("kill", i),
                                    1, lambda: ("end", i), 1, lambda: ("kill", "all"), 2, self.quiet))
            if self.alive[i] and self.rng.random() < 0.6:
                body.append(("run", i))
                body.append(("alt", ((("done", self.rng.choice([i, "all"])), (), False, None),), None))
        return tuple(body)


# ---- The model. A state is (clock, cut connections, components). The continuation of a component is None before its
# start, "idle" behind a behaviour of one that is alive, and "ended" at its end; queues, timers and the states of ports
# are sorted tuples of pairs, defaults are (altstep, argument, number), the slots hold their numbers. The state of a
# port is "stopped", or how many messages and how many others a halted one still gives.


class Part(NamedTuple):
    goes: object = None
    queues: tuple = ()
    timers: tuple = ()
    defaults: tuple = ()
    verdict: int = 0
    ports: tuple = ()
    slots: tuple = (0, 0)
    caller: int = -1


class Model:
    def __init__(self, program):
        self.program = program

    def verdicts(self):
        """All verdicts that the program may end with; None if there are too many states."""
        start = [Part(self.program.bodies[0])] + [Part()] * (self.program.count - 1)
        open_states, seen, found = [(0, (), tuple(start))], set(), set()
        while open_states:
            state = open_states.pop()
            if state in seen:
                continue
            seen.add(state)
            if len(seen) > MOST_STATES:
                return None
            for item in self.following(state):
                found.add(item) if isinstance(item, int) else open_states.append(item)
        return found

    def following(self, state):
        clock, cuts, parts = state
        if parts[0].goes == "ended":
            return [max(part.verdict for part in parts)]
        steps = [step for i in range(len(parts)) for step in self.step(state, i)]
        if steps:
            return steps
        times = [at for part in parts if isinstance(part.goes, tuple) for _, at in part.timers if at > clock]
        return [(min(times), cuts, parts)] if times else [4]

    def over(self, i, part, killed=False):
        """A component whose behaviour has ended."""
        if self.program.alive[i] and not killed:
            kept = tuple(pair for pair in part.timers if isinstance(pair[0], int))
            return part._replace(goes="idle", timers=kept, defaults=())
        return Part("ended", verdict=part.verdict)

    def step(self, state, i):
        """The states behind the next step of a component; empty where it waits or does not run."""
        clock, cuts, parts = state
        me = parts[i]
        if not isinstance(me.goes, tuple):
            return []
        changed, cut = list(parts), set(cuts)

        def become(**fields):
            changed[i] = changed[i]._replace(**fields)
            return [(clock, tuple(sorted(cut)), tuple(changed))]

        if not me.goes or me.goes[0][0] == "halt":
            changed[i] = self.over(i, me)
            return [(clock, cuts, tuple(changed))]
        (kind, *given), rest = me.goes[0], me.goes[1:]
        if kind == "verdict":
            return become(goes=rest, verdict=max(me.verdict, given[0]))
        if kind in ("start", "stop"):
            at = clock + given[1] if kind == "start" else None
            return become(goes=rest, timers=put(me.timers, given[0], at))
        if kind == "sleep":
            key = "sleep%d" % len(me.timers)
            wait = ("alt", ((("timeout", key), (), False, None),), None)
            return become(goes=(wait, ("stop", key)) + rest, timers=put(me.timers, key, clock + given[0]))
        if kind == "if":
            runs = dict(me.timers).get(given[1], -1) > clock if given[0] == "running" else me.verdict == 1
            return become(goes=given[2] + rest if runs else rest)
        if kind == "activate":
            number = max([n for _, _, n in me.defaults] + list(me.slots)) + 1
            slots = me.slots if given[2] is None else tuple(number if k == given[2] else s for k, s in enumerate(me.slots))
            return become(goes=rest, defaults=me.defaults + ((given[0], given[1], number),), slots=slots)
        if kind == "deactivate":
            gone = {n for _, _, n in me.defaults} if given[0] is None else {me.slots[given[0]]}
            return become(goes=rest, defaults=tuple(d for d in me.defaults if d[2] not in gone))
        if kind == "run":
            goes = parts[given[0]].goes
            if isinstance(goes, tuple) or goes == "ended":
                return [4]
            changed[given[0]] = parts[given[0]]._replace(goes=self.program.bodies[given[0]])
            return become(goes=rest)
        if kind in ("kill", "end"):
            for k in range(1, self.program.count) if given[0] == "all" else given[:1]:
                if isinstance(parts[k].goes, tuple):
                    changed[k] = self.over(k, parts[k], kind == "kill")
                elif kind == "kill" or not self.program.alive[k]:
                    changed[k] = Part("ended", verdict=parts[k].verdict)
            return become(goes=rest)
        if kind in ("disconnect", "connect"):
            if kind == "connect" and parts[given[1]].goes == "ended":
                return [4]
            (cut.add if kind == "disconnect" else cut.discard)((given[0], 0, given[1]))
            return become(goes=rest)
        if kind == "port":
            for port in PORTS if given[1] == "all" else given[1:]:
                changed[i] = self.operate(given[0], port, changed[i])
            return become(goes=rest)
        if kind in ("send", "call", "answer"):
            if kind == "send":
                what, port, to, number = given
            elif kind == "call":
                what, (port, to, number, limit, branches) = "c", given
                waits = ("alt", branches, "call")
                rest = (waits, ("stop", "call")) + rest
            else:
                what, port, to, number = given[1], given[0], me.caller, given[2]
            reached = [k for k in range(self.program.count) if k != i and parts[k].goes != "ended" and
                       (port, min(i, k), max(i, k)) not in cut] if port != "l" else [i]
            if port in dict(me.ports) or not reached or (to != "all" and to not in reached):
                return [4]
            for k in reached if to == "all" else [to]:
                key = port + ("m" if what == "m" else "c")
                queue = dict(parts[k].queues).get(key, ()) + ((what, i if port != "l" else -1, number),)
                if dict(parts[k].ports).get(port) != "stopped":
                    changed[k] = parts[k]._replace(queues=put(parts[k].queues, key, queue))
            if kind == "call" and limit:
                return become(goes=rest, timers=put(me.timers, "call", clock + limit))
            return become(goes=rest)
        return [step for behind in self.chosen(kind, given, rest, state, i) for step in become(**behind)]

    @staticmethod
    def operate(what, port, part):
        queues = dict(part.queues)
        lengths = len(queues.get(port + "m", ())), len(queues.get(port + "c", ()))
        now = dict(part.ports).get(port)
        if what in ("start", "clear"):
            part = part._replace(queues=put(put(part.queues, port + "m", None), port + "c", None))
            now = None if what == "start" or now is None else "stopped"
        else:
            now = lengths if what == "halt" and sum(lengths) else "stopped"
        return part._replace(ports=put(part.ports, port, now))

    def chosen(self, kind, given, rest, state, i):
        """What the first alternative that is successful changes in the component, in all ways that it may be."""
        me = state[2][i]
        statement = (kind, *given)
        if kind == "alt":
            branches, otherwise = given
            candidates = list(self.flat(branches, statement, rest))
        else:
            bodies, otherwise = given[0], None
            candidates = [(body[0][1][0][0], self.interleaved(body[1:], bodies[:k] + bodies[k + 1:]) + rest, None)
                          for k, body in enumerate(bodies)]
        if otherwise is None:
            for number, argument, _ in reversed(me.defaults):
                candidates += self.flat(self.given(number, argument), statement, rest)
        for operation, behind, guard in candidates:
            if guard is not None and dict(me.timers).get(guard, -1) <= state[0]:
                continue
            taken = self.take(operation, state, i)
            if taken:
                return [dict(t, goes=behind) for t in taken]
        return [{"goes": otherwise + rest}] if isinstance(otherwise, tuple) else []

    def given(self, number, argument):
        """The branches of an altstep: the number 2 stands for its parameter."""
        for operation, *more in self.program.altsteps[number]:
            if operation[0] in ("take", "check", "trigger") and operation[3] == 2:
                operation = operation[:3] + (argument,) + operation[4:]
            yield (operation, *more)

    def flat(self, branches, statement, rest):
        """Operations, what is done behind them, and guards, with those of altsteps in their place; an altstep that
        repeats skips the branch's body. A trigger takes what does not fit, and repeats."""
        for operation, body, repeats, guard in branches:
            if operation[0] == "altstep":
                for inner, behind, inner_guard in self.flat(self.given(*operation[1:]), None, ()):
                    again = behind and behind[-1] is None
                    yield inner, behind[:-1] + (statement,) + rest if again else behind + body + rest, inner_guard
                continue
            yield operation, body + ((statement,) if repeats else ()) + rest, guard
            if operation[0] == "trigger":
                yield ("take", "m", operation[2], None, None), (statement,) + rest, guard

    @staticmethod
    def interleaved(behind, others):
        """What follows in an interleave: a body goes on to its next operation, which then waits with the others."""
        at = next((k for k, statement in enumerate(behind) if statement[0] == "alt"), len(behind))
        left = others + ((behind[at:],) if at < len(behind) else ())
        return behind[:at] + ((("interleave", left),) if left else ())

    def take(self, operation, state, i):
        """What the operation changes in the component when it is successful, in each way that it may be."""
        clock, _, parts = state
        me = parts[i]
        kind, what = operation[:2]
        if kind in ("done", "killed"):
            others = parts[1:] if what in ("any", "all") else [parts[what]]
            if kind == "killed":
                fits = [part.goes == "ended" for part in others]
            elif what == "all":
                fits = [not isinstance(part.goes, tuple) for part in others]
            else:
                fits = [part.goes in ("ended", "idle") for part in others]
            return [{}] if (any if what == "any" else all)(fits) else []
        if kind == "timeout":
            at = dict(me.timers).get(what)
            return [{"timers": put(me.timers, what, None)}] if at is not None and at <= clock else []
        found = []
        for port in PORTS if operation[2] == "any" else [operation[2]]:
            key, now = port + ("m" if what == "m" else "c"), dict(me.ports).get(port)
            queue = dict(me.queues).get(key, ())
            if not queue or now == "stopped" or (now and not now[what != "m"]) or queue[0][0] != what:
                continue
            if operation[3] not in (None, queue[0][2]) or operation[4] not in (None, queue[0][1]):
                continue
            change = {"caller": queue[0][1]} if what == "c" else {}
            if kind != "check":
                change["queues"] = put(me.queues, key, queue[1:])
                if now:
                    now = (now[0] - (what == "m"), now[1] - (what != "m"))
                    change["ports"] = put(me.ports, port, now if sum(now) else "stopped")
            found.append(change)
        return found


def put(pairs, key, value):
    changed = {k: v for k, v in pairs if k != key}
    if value not in (None, ()):
        changed[key] = value
    return tuple(sorted(changed.items(), key=lambda pair: str(pair[0])))


# ---- The program as text

OPERATIONS = {"m": "receive", "c": "getcall", "r": "getreply", "e": "catch"}


class Writer:
    def __init__(self, program, number):
        self.program, self.number = program, number
        self.parameter = False

    def value(self, number):
        """A number in an altstep, where the last one stands for the parameter."""
        return "p_n" if self.parameter and number == 2 else str(number)

    def taken(self, operation):
        kind, what, port, number, sender = operation
        value = "?" if number is None else self.value(number)
        content = {"m": f"integer:{value}", "c": f"S:{{ {value} }}", "r": f"S:{{ - }} value {value}",
                   "e": f"S, integer:{value}"}[what]
        source = "" if sender is None else f" from vc_c{sender}"
        back = " -> sender vc_s" if what == "c" else ""
        if kind == "check":
            return f"{port}.check(receive({content}){source})"
        bare = number is None and what in "mr" and kind == "take"
        name = "trigger" if kind == "trigger" else OPERATIONS[what]
        return f"{'any port' if port == 'any' else port}.{name}{'' if bare else '(' + content + ')'}{source}{back}"

    def operation(self, operation):
        kind, what = operation[:2]
        if kind in ("take", "check", "trigger"):
            return self.taken(operation)
        if kind == "timeout":
            return "CALLED.catch(timeout)" if what == "call" else f"t{what}.timeout"
        if kind == "altstep":
            return f"a{self.number}_{what}({operation[2]})"
        return (f"{what} component" if isinstance(what, str) else f"vc_c{what}") + "." + kind

    def statement(self, statement):
        kind, *given = statement
        if kind == "alt":
            branches, otherwise = given
            if len(branches) == 1 and otherwise is None and not any(branches[0][1:]) and branches[0][3] is None:
                return self.operation(branches[0][0])
            return "alt { " + self.branches(branches, otherwise) + " }"
        if kind == "interleave":
            texts = [f"[] {self.statement(body[0])} {self.block(body[1:])}" for body in given[0]]
            return "interleave { " + " ".join(texts) + " }"
        if kind == "call":
            port, to, number, limit, branches = given
            text = f"{port}.call(S:{{ {number} }}{f', {limit / 10}' if limit else ''}) to vc_c{to} "
            return text + "{ " + self.branches(branches).replace("CALLED", port) + " }"
        return {
            "send": lambda what, port, to, number: f"{port}." + (
                f"send(integer:{number})" if what == "m" else f"call(S:{{ {number} }}, nowait)") + (
                    "" if port == "l" else " to all component" if to == "all" else f" to vc_c{to}"),
            "answer": lambda port, what, number: f"{port}." + (
                f"reply(S:{{ - }} value {number})" if what == "r" else
                f"raise(S, integer:{number})") + " to vc_s",
            "activate": lambda number, argument, slot: ("" if slot is None else f"d{slot} := ") +
                                                       f"activate(a{self.number}_{number}({argument}))",
            "deactivate": lambda slot: "deactivate" + ("" if slot is None else f"(d{slot})"),
            "if": lambda what, timer, body: "if ({}) {}".format(
                f"t{timer}.running" if what == "running" else "getverdict == pass", self.block(body)),
            "connect": lambda port, i: f"connect(self:{port}, vc_c{i}:{port})",
            "disconnect": lambda port, i: f"disconnect(self:{port}, vc_c{i}:{port})",
            "verdict": lambda verdict: f"setverdict({VERDICTS[verdict]})",
            "start": lambda timer, tenths: f"t{timer}.start({tenths / 10})",
            "stop": lambda timer: f"t{timer}.stop",
            "sleep": lambda tenths: f"{{ timer t := {tenths / 10}; t.start; t.timeout }}",
            "halt": lambda: "stop",
            "run": lambda i: f"vc_c{i}.start(f{self.number}_{i}(vc_c0, vc_c1, vc_c2))",
            "kill": lambda i: ("all component" if i == "all" else f"vc_c{i}") + ".kill",
            "end": lambda i: f"vc_c{i}.stop",
            "port": lambda what, port: ("all port" if port == "all" else port) + "." + what,
        }[kind](*given)

    def block(self, body, repeats=False):
        texts = [self.statement(statement) for statement in body] + (["repeat"] if repeats else [])
        return "{ " + "; ".join(texts) + " }"

    def branches(self, branches, otherwise=None):
        texts = [f"[{'' if guard is None else f't{guard}.running'}] {self.operation(operation)} {self.block(body, repeats)}"
                 for operation, body, repeats, guard in branches]
        return " ".join(texts + ([f"[else] {self.block(otherwise)}"] if isinstance(otherwise, tuple) else []))

    def text(self):
        n, count = self.number, self.program.count
        self.parameter = True
        lines = [f"  altstep a{n}_{k}(integer p_n) runs on C {{ {self.branches(altstep)} }}"
                 for k, altstep in enumerate(self.program.altsteps)]
        self.parameter = False
        lines += [f"  function f{n}_{i}(C c0, C c1, C c2) runs on C {{ vc_c0 := c0; vc_c1 := c1; vc_c2 := c2; "
                  f"{self.block(self.program.bodies[i])} }}" for i in range(1, count)]
        setup = ["vc_c0 := self", "vc_c2 := null", "map(self:l, system:l)"]
        setup += [f"vc_c{i} := C.create{' alive' * self.program.alive[i]}" for i in range(1, count)]
        setup += [f"connect(vc_c{i}:{port}, vc_c{j}:{port})" for port in PORTS[:2] for i in range(count)
                  for j in range(i + 1, count)]
        body = [self.statement(statement) for statement in self.program.bodies[0]]
        lines.append(f"  testcase TC{n}() runs on C system C {{ " + "; ".join(setup + body) + " }")
        return "\n".join(lines)


def make_programs(seed, count):
    """Programs with the verdicts that the model allows them."""
    rng = random.Random(seed)
    programs = []
    while len(programs) < count:
        program = Maker(rng)
        allowed = Model(program).verdicts()
        if allowed and (allowed != {4} or rng.random() < 0.1):
            programs.append((program, allowed))
    return programs


def module_text(programs):
    head = """module Random language "TTCN-3:2005" {
  signature S(in integer n) return integer exception (integer);
  type port P mixed { inout integer, S }
  type component C {
    port P p, q, l; timer t0, t1, t2; var default d0 := null; var default d1 := null; var C vc_c0, vc_c1, vc_c2, vc_s
  }
"""
    texts = [Writer(program, n).text() for n, (program, _) in enumerate(programs)]
    calls = "\n".join(f"    execute(TC{n}())" for n in range(len(programs)))
    return head + "\n".join(texts) + "\n  control {\n" + calls + "\n  }\n}\n"


def run_module(arguments, seed, count):
    """The number of programs whose verdict is none that the model allows."""
    programs = make_programs(seed, count)
    folder = arguments.out / f"seed{seed}"
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "Random.ttcn").write_text(module_text(programs), encoding="utf-8")
    mcfg = arguments.orvane.parent.parent / "share" / "orvane" / "make_linux.mcfg"
    make = ["make", "-s", "CFLAGS=-std=c11 -O0"] + ([f"CC={arguments.cc}"] if arguments.cc else [])
    for command in ([arguments.orvane, "-v", "1", "-K", "-f", mcfg, "-r", "Random", "-F", "Random.ttcn"], make):
        done = subprocess.run(list(map(str, command)), cwd=folder, capture_output=True, text=True, timeout=300,
                              check=False)
        if done.returncode:
            sys.exit(f"seed {seed}: {done.stdout[-4000:]}{done.stderr[-4000:]}")
    done = subprocess.run(["./Random", "--simulated-time", "--loopback"], cwd=folder, capture_output=True, text=True, timeout=300,
                          check=False)
    got = dict(FINISHED.findall(done.stdout + done.stderr))
    wrong = 0
    for n, (_, allowed) in enumerate(programs):
        names = [VERDICTS[v] for v in sorted(allowed)]
        if got.get(str(n)) not in names:
            wrong += 1
            print(f"seed {seed}, TC{n}: {got.get(str(n))}, allowed {names} in {folder}")
    single = sum(len(allowed) == 1 for _, allowed in programs)
    print(f"seed {seed}: {len(programs)} programs, {single} with one possible verdict, {wrong} wrong", flush=True)
    return wrong


def main():
    parser = argparse.ArgumentParser(description="Compares random component programs with a model.")
    parser.add_argument("--orvane", required=True, type=Path)
    parser.add_argument("--out", required=True, type=Path)
    parser.add_argument("--programs", type=int, default=PROGRAMS_IN_A_MODULE)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--cc", default="")
    arguments = parser.parse_args()
    arguments.orvane, arguments.out = arguments.orvane.resolve(), arguments.out.resolve()
    left, seed, wrong = arguments.programs, arguments.seed, 0
    while left > 0:
        wrong += run_module(arguments, seed, min(left, PROGRAMS_IN_A_MODULE))
        left, seed = left - PROGRAMS_IN_A_MODULE, seed + 1
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
