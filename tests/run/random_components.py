#!/usr/bin/env python3
"""Runs random programs of several components and compares their verdicts with those that a model allows.

    random_components.py --orvane PROGRAM --out FOLDER [--programs N] [--seed N] [--cc COMPILER] [--keep]

A program has two or three components that send, wait in alternatives and interleaves, use timers, defaults and
altsteps, and start, stop and kill each other. The model below runs it by the operational semantics in all orders
that components may have their turns in, which gives a set of verdicts; the run, in simulated time, must end with one
of them. Prints the seed of each module; the same seed makes the same programs.
"""

import argparse
import random
import re
import subprocess
import sys
from pathlib import Path

VERDICTS = ["none", "pass", "inconc", "fail", "error"]
PROGRAMS_IN_A_MODULE = 40
MOST_STATES = 30000
FINISHED = re.compile(r"test case \w+\.TC(\d+) finished with verdict (\w+)")

# A statement is a tuple: ("send", port, number), ("verdict", v), ("start", timer, tenths), ("stop", timer),
# ("alt", branches, else_body or None), ("interleave", bodies), ("activate", altstep), ("deactivate",), ("halt",),
# ("run", component), ("kill", component). A branch is (operation, body, repeats), an operation ("receive", port,
# number or None), ("timeout", timer), ("done", component), ("altstep", number). Bodies of an interleave begin with
# the alt of one branch that an operation standing alone is.


class Maker:
    """Makes a program: `bodies` of the components, the first of which is the main one's, and `altsteps`."""

    def __init__(self, rng):
        self.rng = rng
        self.count = rng.choice([2, 2, 3])
        # Most components are watched: what waits for more than a second goes on.
        self.watched = rng.random() < 0.9
        self.altsteps = [self.altstep() for _ in range(2)] + [((("timeout", 2), (("start", 2, 10),), False),)]
        self.bodies = [self.main_body()] + [self.body(i, rng.randint(2, 5)) for i in range(1, self.count)]

    def ports(self, owner):
        return ["p%d%d" % (min(owner, i), max(owner, i)) for i in range(self.count) if i != owner]

    def verdict(self):
        return ("verdict", self.rng.choice([1, 2, 3]))

    def quiet(self):
        choice = self.rng.randint(0, 3)
        timer = self.rng.randint(0, 1)
        if choice == 0:
            return ("start", timer, self.rng.randint(1, 3))
        return ("stop", timer) if choice == 1 else ("verdict", 1)

    def operation(self, owner, altsteps=True):
        choice = self.rng.randint(0, 9)
        if choice < 6:
            return ("receive", self.rng.choice(self.ports(owner)), self.rng.choice([None, 0, 1, 2]))
        if choice < 8 or not altsteps:
            return ("timeout", self.rng.randint(0, 1))
        if choice == 8 or owner != 0:
            return ("altstep", self.rng.randint(0, 1))
        return ("done", self.rng.randint(1, self.count - 1))

    def branch(self, owner, altsteps=True):
        operation = self.operation(owner, altsteps)
        repeats = operation[0] in ("receive", "timeout") and self.rng.random() < 0.3
        body = [self.rng.choice([self.quiet, self.verdict])() for _ in range(self.rng.randint(0 if altsteps else 1, 1))]
        if not repeats and altsteps and self.rng.random() < 0.3:
            body.append(self.statement(owner, False))
        return operation, tuple(body), repeats

    def altstep(self):
        return tuple(self.branch(self.rng.randint(0, self.count - 1), False) for _ in range(self.rng.randint(1, 2)))

    def alone(self, owner):
        return ("alt", ((self.operation(owner), (), False),), None)

    def interleave(self, owner):
        def body():
            steps = [("alt", ((self.operation(owner, False), (), False),), None)]
            for _ in range(self.rng.randint(0, 2)):
                steps.append(self.rng.choice([self.quiet, lambda: self.send(owner)])())
            if self.rng.random() < 0.4:
                steps.append(("alt", ((self.operation(owner, False), (), False),), None))
            return tuple(steps)

        return ("interleave", tuple(body() for _ in range(self.rng.randint(2, 3))))

    def send(self, owner):
        return ("send", self.rng.choice(self.ports(owner)), self.rng.randint(0, 2))

    def statement(self, owner, nested=True):
        choice = self.rng.randint(0, 19)
        if choice < 6:
            return self.send(owner)
        if choice < 7:
            return self.quiet()
        if choice < 9:
            return ("activate", self.rng.randint(0, 1))
        if choice == 9:
            return self.rng.choice([("deactivate",), ("halt",), self.quiet()])
        if choice < 12 or not nested:
            return self.alone(owner)
        if choice == 12:
            return self.interleave(owner)
        branches = tuple(self.branch(owner) for _ in range(self.rng.randint(1, 3)))
        is_else = self.rng.random() < 0.2
        return ("alt", branches, (self.verdict(),) if is_else else None)

    def body(self, owner, length):
        watch = (("activate", 2), ("start", 2, 10)) if self.watched else ()
        if self.rng.random() < 0.4:
            watch += tuple(("activate", k) for k in self.rng.sample([0, 1], 2))
        return watch + (("verdict", 1), ("start", 0, self.rng.randint(1, 3))) + tuple(
            self.statement(owner) for _ in range(length))

    def main_body(self):
        body = list(self.body(0, self.rng.randint(2, 5)))
        for i in range(1, self.count):
            body.insert(self.rng.randint(0, 2), ("run", i))
            end = self.rng.random()
            if end < 0.6:
                body.append(("alt", ((("done", i), (), False),), None))
            elif end < 0.7:
                body.append(("kill", i))
        return tuple(body)


# ---- The model. A state is (clock, components); a component (continuation, queues, timers, defaults, verdict), the
# continuation None before its start and "ended" behind its end; queues and timers are sorted tuples of pairs.


class Model:
    def __init__(self, program):
        self.program = program

    def verdicts(self):
        """All verdicts that the program may end with; None if there are too many states."""
        start = [(None, (), (), (), 0)] * self.program.count
        start[0] = (self.program.bodies[0], (), (), (), 0)
        open_states, seen, found = [(0, tuple(start))], set(), set()
        while open_states:
            state = open_states.pop()
            if state in seen:
                continue
            seen.add(state)
            if len(seen) > MOST_STATES:
                return None
            following = self.following(state)
            for item in following:
                found.add(item) if isinstance(item, int) else open_states.append(item)
        return found

    def following(self, state):
        clock, components = state
        if components[0][0] == "ended":
            return [max(c[4] for c in components)]
        steps = [step for i in range(len(components)) for step in self.step(state, i)]
        if steps:
            return steps
        times = [at for c in components if isinstance(c[0], tuple) for _, at in c[2] if at > clock]
        return [(min(times), components)] if times else [4]

    def step(self, state, i):
        """The state behind the next step of a component, as a list; empty where it waits or does not run."""
        clock, components = state
        continuation, queues, timers, defaults, verdict = components[i]
        if not isinstance(continuation, tuple):
            return []
        changed = list(components)

        def become(continuation, queues=queues, timers=timers, defaults=defaults, verdict=verdict):
            changed[i] = (continuation, queues, timers, defaults, verdict)
            return [(clock, tuple(changed))]

        if not continuation:
            return become("ended", (), (), ())
        statement, rest = continuation[0], continuation[1:]
        kind = statement[0]
        if kind == "verdict":
            return become(rest, verdict=max(verdict, statement[1]))
        if kind == "start":
            return become(rest, timers=put(timers, statement[1], clock + statement[2]))
        if kind == "stop":
            return become(rest, timers=put(timers, statement[1], None))
        if kind == "activate":
            return become(rest, defaults=defaults + (statement[1],))
        if kind == "deactivate":
            return become(rest, defaults=())
        if kind == "halt":
            return become("ended", (), (), ())
        if kind == "run":
            other = statement[1]
            changed[other] = (self.program.bodies[other],) + components[other][1:]
            return become(rest)
        if kind == "kill":
            changed[statement[1]] = ("ended", (), (), ()) + components[statement[1]][4:]
            return become(rest)
        if kind == "send":
            other = sum(map(int, statement[1][1:])) - i
            if components[other][0] == "ended":
                return [4]
            continuation2, queues2, *more = components[other]
            queue = dict(queues2).get(statement[1], ()) + (statement[2],)
            changed[other] = (continuation2, put(queues2, statement[1], queue), *more)
            return become(rest)
        if kind == "alt":
            branches, otherwise = statement[1], statement[2]
            candidates = [(branch, body + ((statement,) if repeats else ()) + rest)
                          for branch, body, repeats in self.flat(branches, statement, rest)]
        else:
            bodies, otherwise = statement[1], None
            candidates = [(body[0][1][0][0], self.interleaved(body[1:], bodies[:k] + bodies[k + 1:]) + rest)
                          for k, body in enumerate(bodies)]
        if otherwise is None:
            candidates += [(operation, body + ((statement,) if repeats else ()) + rest)
                           for number in reversed(defaults)
                           for operation, body, repeats in self.program.altsteps[number]]
        for operation, behind in candidates:
            taken = self.take(operation, state, i)
            if taken is not None:
                return become(behind, queues=taken[0], timers=taken[1])
        return [] if otherwise is None else become(otherwise + rest)

    def flat(self, branches, statement, rest):
        """The branches with those of altsteps in their place; an altstep that repeats skips the branch's body."""
        for operation, body, repeats in branches:
            if operation[0] != "altstep":
                yield operation, body, repeats
                continue
            for inner, inner_body, inner_repeats in self.program.altsteps[operation[1]]:
                yield inner, inner_body if inner_repeats else inner_body + body, inner_repeats

    @staticmethod
    def interleaved(behind, others):
        """What follows in an interleave: a body goes on to its next operation, which then waits with the others."""
        at = next((k for k, statement in enumerate(behind) if statement[0] == "alt"), len(behind))
        left = others + ((behind[at:],) if at < len(behind) else ())
        return behind[:at] + ((("interleave", left),) if left else ())

    def take(self, operation, state, i):
        """The queues and timers when the operation is successful, else None."""
        clock, components = state
        _, queues, timers, _, _ = components[i]
        if operation[0] == "done":
            return (queues, timers) if components[operation[1]][0] == "ended" else None
        if operation[0] == "timeout":
            at = dict(timers).get(operation[1])
            return (queues, put(timers, operation[1], None)) if at is not None and at <= clock else None
        queue = dict(queues).get(operation[1], ())
        if not queue or operation[2] not in (None, queue[0]):
            return None
        return put(queues, operation[1], queue[1:]), timers


def put(pairs, key, value):
    changed = {k: v for k, v in pairs if k != key}
    if value not in (None, ()):
        changed[key] = value
    return tuple(sorted(changed.items()))


# ---- The program as text


class Writer:
    def __init__(self, program, number):
        self.program, self.number = program, number

    def operation(self, operation):
        kind = operation[0]
        if kind == "receive":
            what = "?" if operation[2] is None else operation[2]
            return f"{operation[1]}.receive(integer:{what})"
        if kind == "timeout":
            return f"t{operation[1]}.timeout"
        return f"vc_c{operation[1]}.done" if kind == "done" else f"a{self.number}_{operation[1]}()"

    def statement(self, statement):
        kind = statement[0]
        if kind == "alt":
            branches, otherwise = statement[1], statement[2]
            if len(branches) == 1 and otherwise is None and not branches[0][1] and not branches[0][2]:
                return self.operation(branches[0][0])
            return "alt { " + self.branches(branches, otherwise) + " }"
        if kind == "interleave":
            texts = [f"[] {self.statement(body[0])} {self.block(body[1:])}" for body in statement[1]]
            return "interleave { " + " ".join(texts) + " }"
        return {
            "send": lambda: f"{statement[1]}.send(integer:{statement[2]})",
            "verdict": lambda: f"setverdict({VERDICTS[statement[1]]})",
            "start": lambda: f"t{statement[1]}.start({statement[2] / 10})",
            "stop": lambda: f"t{statement[1]}.stop",
            "activate": lambda: f"activate(a{self.number}_{statement[1]}())",
            "deactivate": lambda: "deactivate",
            "halt": lambda: "stop",
            "run": lambda: f"vc_c{statement[1]}.start(f{self.number}_{statement[1]}())",
            "kill": lambda: f"vc_c{statement[1]}.kill",
        }[kind]()

    def block(self, body, repeats=False):
        texts = [self.statement(statement) for statement in body] + (["repeat"] if repeats else [])
        return "{ " + "; ".join(texts) + " }"

    def branches(self, branches, otherwise=None):
        texts = [f"[] {self.operation(operation)} {self.block(body, repeats)}" for operation, body, repeats in branches]
        return " ".join(texts + ([f"[else] {self.block(otherwise)}"] if otherwise is not None else []))

    def text(self):
        n, count = self.number, self.program.count
        lines = [f"  altstep a{n}_{k}() runs on C {{ {self.branches(altstep)} }}"
                 for k, altstep in enumerate(self.program.altsteps)]
        lines += [f"  function f{n}_{i}() runs on C {self.block(self.program.bodies[i])}" for i in range(1, count)]
        setup = [f"vc_c{i} := C.create" for i in range(1, count)]
        setup += [f"connect({self.component(i)}:p{i}{j}, {self.component(j)}:p{i}{j})"
                  for i in range(count) for j in range(i + 1, count)]
        body = [self.statement(statement) for statement in self.program.bodies[0]]
        lines.append(f"  testcase TC{n}() runs on C system C {{ " + "; ".join(setup + body) + " }")
        return "\n".join(lines)

    @staticmethod
    def component(i):
        return f"vc_c{i}" if i else "self"


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
  type port P message { inout integer }
  type component C { port P p01, p02, p12; timer t0, t1, t2; var C vc_c1, vc_c2 }
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
    done = subprocess.run(["./Random", "--simulated-time"], cwd=folder, capture_output=True, text=True, timeout=300,
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
