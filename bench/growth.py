#!/usr/bin/env python3
"""Measures how processor time, memory and the size of the generated code grow with inputs that are large in one way.

    growth.py --orvane PROGRAM [--filter TEXT] [--scale FACTOR] [--instructions]

Each row is one kind of input in sizes 1, 2, 4 and 8 times its base, compiled with `-c`; the growth of a step is that of
the larger of time and memory behind those of the start of the compiler. FACTOR makes all bases larger. --instructions counts these instead of time, which needs valgrind.
"""

import argparse
import os
import resource
import subprocess
import tempfile
from pathlib import Path

import instructions

SECONDS, MEGABYTES = 20, 3000
SOME_SECONDS, SOME_MEGABYTES = 0.02, 4  # what is less says nothing of growth
STEPS = (1, 2, 4, 8)
HEAD = "module M { type integer T; type component C { port P p; timer t } type port P message { inout integer, charstring }\n"
INPUTS = {}


def row(base):
    """Makes a function one of the rows: for a size, the text of the module M, or the texts of several by name."""
    def note(function):
        INPUTS[function.__name__] = (base, function)
        return function
    return note


def module(text):
    return f"{HEAD}{text} }}\n"


def body(text, before=""):
    return module(f"{before} function f(inout integer a) runs on C {{ {text} }}")


def join(separator, count, make):
    return separator.join(make(i) for i in range(count))


@row(5000)
def concatenations(n):
    return body('var charstring s := "x"; s := ' + " & ".join(["s"] * n))


@row(2500)
def concatenated_literals(n):
    return body('var charstring s := "x"; s := ' + join(" & ", n, lambda i: f'"{i}" & s'))


@row(10000)
def operands(n):
    return body("a := " + " + ".join(["a"] * n))


@row(5000)
def comparisons(n):
    return body("var boolean b := " + join(" or ", n, lambda i: f"a == {i}"))


@row(2000)
def else_ifs(n):
    return body("if (a == 0) { }" + join("", n, lambda i: f" else if (a == {i}) {{ a := 1 }}"))


@row(2000)
def cases(n):
    return body("select (a) {" + join(" ", n, lambda i: f"case ({i}) {{ a := 1 }}") + "}")


@row(2000)
def value_ranges(n):
    return module("type integer R (" + join(",", n, lambda i: f"{i * 10} .. {i * 10 + 5}") + ");")


@row(2000)
def template_lists(n):
    return module("template integer mw := (" + join(",", n, lambda i: f"({i * 10} .. {i * 10 + 5})") + ");")


@row(100)
def nested_blocks(n):
    return body("if (a == 1) { " * n + "a := 2" + " }" * n)


@row(100)
def nested_loops(n):
    return body("while (a < 1) { " * n + "a := 2" + " }" * n)


@row(100)
def nested_parentheses(n):
    return body("a := " + "(a + " * n + "1" + ")" * n)


@row(25)
def nested_alternatives(n):
    return body("alt { [] p.receive(integer:?) { " * n + "a := 2" + " } }" * n)


@row(100)
def nested_records(n):
    types = "type record R0 { integer x }" + join("", n, lambda i: f"type record R{i + 1} {{ R{i} x }}")
    return body(f"var R{n} v := " + "{" * (n + 1) + "a" + "}" * (n + 1), types)


@row(100)
def nested_calls(n):
    return body("a := " + "g(" * n + "a" + ")" * n, "function g(integer x) return integer { return x }")


@row(1)
def interleave(n):
    return body("interleave { " + join(" ", n, lambda i: f"[] p.receive(integer:{i}) {{ a := {i} }}") + " }")


@row(1)
def interleave_with_alternatives(n):
    inner = "alt { [] p.receive(integer:1) { } [] t.timeout { } }; " * n
    return body("interleave { " + join(" ", 2, lambda i: f"[] p.receive(charstring:\"{i}\") {{ {inner} }}") + " }")


@row(500)
def alternatives(n):
    return body("alt { " + join(" ", n, lambda i: f"[] p.receive(integer:{i}) {{ a := {i} }}") + " }")


@row(100)
def import_chain(n):
    return {f"M{i}": f"module M{i} {{ " + (f"import from M{i - 1} all; " if i else "") + f"const integer c{i} := "
            + (f"c{i - 1}" if i else "1") + " }\n" for i in range(n)}


@row(50)
def extension_chain(n):
    return module(join("\n", n, lambda i: f"type component D{i} extends {f'D{i - 1}' if i else 'C'} "
                                          f"{{ var integer v{i} := 1 }}"))


@row(2000)
def record_fields(n):
    return module("type record R { " + join(", ", n, lambda i: f"integer f{i}") + " } function g(inout R r) { r.f0 := 1 }")


@row(5000)
def literals(n):
    return module("type enumerated E { " + join(", ", n, lambda i: f"e{i}") + " }")


@row(500)
def components(n):
    return module(join("\n", n, lambda i: f"type component D{i} extends C {{ var integer w }}"))


@row(100)
def modified_templates(n):
    return module("type record R { integer a } template R t0 := { 1 };"
                  + join("\n", n, lambda i: f"template R t{i + 1} modifies t{i} := {{ a := {i} }};"))


@row(100)
def modified_templates_with_parameters(n):
    return module("type record R { integer a, integer b } template R t0(integer x) := { x, 2 };"
                  + join("\n", n, lambda i: f"template R t{i + 1}(integer x) modifies t{i} := {{ a := x }};"))


@row(100)
def constants_of_a_type_chain(n):
    return module("type record A0 { integer x }"
                  + join("\n", n, lambda i: f"type A{i} A{i + 1}; const A{i + 1} c{i + 1} := {{ {i} }};"))


@row(100)
def type_chain(n):
    return module("type record A0 { integer x }" + join("\n", n, lambda i: f"type A{i} A{i + 1};"))


@row(100)
def labels(n):
    return body(join("\n", n, lambda i: f"label l{i}; if (a == {i}) {{ goto l{i} }}"))


@row(200)
def jumps_out_of_else_ifs(n):
    return body("while (true) { if (a == 0) { break }"
                + join("", n, lambda i: f" else if (a == {i}) {{ continue }}") + " }")


@row(200)
def returns_of_cases(n):
    return module("type enumerated E { " + join(", ", n, lambda i: f"e{i}") + " } function f(E e) return integer { select (e) {"
                  + join(" ", n, lambda i: f"case (e{i}) {{ return {i} }}") + " } return 0 }")


@row(100)
def types_of_a_port(n):
    return module(join(" ", n, lambda i: f"type record R{i} {{ integer x }}") + "type port Q message { inout "
                  + join(", ", n, lambda i: f"R{i}") + " } type component D { port Q q } function f() runs on D { alt { "
                  + join(" ", n, lambda i: f"[] q.receive(R{i}:?) {{ }}") + " } }")


@row(100)
def exceptions_of_a_signature(n):
    return module(join(" ", n, lambda i: f"type record E{i} {{ integer x }}") + "signature S() exception ("
                  + join(", ", n, lambda i: f"E{i}") + "); type port Q procedure { inout S } type component D { port Q q } "
                  + "function f() runs on D { alt { " + join(" ", n, lambda i: f"[] q.catch(S, E{i}:?) {{ }}") + " } }")


@row(200)
def constants_among_ranges(n):
    return module("type integer S (" + join(",", n, lambda i: f"{3 * i} .. {3 * i + 1}") + ");"
                  + join("\n", n, lambda i: f"const S c{i} := {3 * i};"))


@row(100)
def imported_groups(n):
    return {"A": "module A { " + join("\n", n, lambda i: f"group g{i} {{ const integer c{i} := 1 }}") + " }\n",
            "M": "module M { import from A { " + join("; ", n, lambda i: f"group g{i}") + " } }\n"}


@row(100)
def permutations(n):
    return module("type record of integer L; template L m := { " + join(", ", n, lambda i: f"permutation({i}, ?)") + " }")


@row(300)
def parameters(n):
    return module("function g(" + join(", ", n, lambda i: f"integer p{i}") + ") { } function h() { g("
                  + join(", ", n, str) + ") }")


@row(200)
def constants_of_a_subtype_chain(n):
    return module("type integer R0; " + join("\n", n, lambda i: f"type R{i} R{i + 1} (0 .. {99999 - i}); const R{i + 1} c{i} := 1;"))


@row(200)
def literals_without_a_type(n):
    return module(join(" ", n, lambda i: f"type record R{i} {{ integer x{i} }}") + "type port Q message { inout "
                  + join(", ", n, lambda i: f"R{i}") + " } type component D { port Q q } function f() runs on D { "
                  + join(" ", n, lambda i: f"q.send({{ x{i} := 1 }});") + " }")


def asn1(text):
    return {"A.asn": f"A DEFINITIONS AUTOMATIC TAGS ::= BEGIN\n{text}\nEND\n",
            "M": "module M { import from A all; type port P message { inout T } }\n"}


@row(200)
def asn1_structures(n):
    return asn1(join("\n", n, lambda i: f"T{i} ::= SEQUENCE {{ a INTEGER, b T{i + 1} OPTIONAL }}") + f" T{n} ::= NULL T ::= T0")


@row(500)
def asn1_names_of_types(n):
    return asn1(join("\n", n, lambda i: f"T{i} ::= T{i + 1} (0..{i})") + f" T{n} ::= INTEGER T ::= T0")


@row(1000)
def asn1_components(n):
    return asn1("T ::= SEQUENCE { " + join(", ", n, lambda i: f"a{i} INTEGER OPTIONAL") + " } t T ::= { "
                + join(", ", n, lambda i: f"a{i} {i}") + " }")


@row(1000)
def asn1_values_of_an_enumeration(n):
    return asn1("T ::= ENUMERATED { " + join(", ", n, lambda i: f"e{i}") + " }" + join("\n", n, lambda i: f"v{i} T ::= e{i}"))


@row(200)
def asn1_object_sets(n):
    return asn1("C ::= CLASS { &id INTEGER UNIQUE, &Type } WITH SYNTAX { &id &Type } T ::= T0 " + join("\n", n, lambda i:
                f"S{i} C ::= {{ {{ {i} NULL }} }} T{i} ::= SEQUENCE {{ id C.&id ({{S{i}}}), v C.&Type ({{S{i}}}{{@id}}) }}"))


def written(folder, modules):
    """Writes the modules into the folder; the words of the command line for them, ASN.1 in front."""
    for name, text in modules.items():
        (Path(folder) / (name if name.endswith(".asn") else f"{name}.ttcn")).write_text(text)
    return [word for name in modules for word in (["-A", name] if name.endswith(".asn") else ["-T", f"{name}.ttcn"])]


def limit():
    resource.setrlimit(resource.RLIMIT_CPU, (SECONDS, SECONDS))
    resource.setrlimit(resource.RLIMIT_AS, (MEGABYTES << 20, MEGABYTES << 20))


def measure(orvane, modules):
    """Seconds, megabytes and bytes of generated text, or what went wrong."""
    with tempfile.TemporaryDirectory() as folder:
        if isinstance(modules, str):
            modules = {"M": modules}
        (Path(folder) / "out").mkdir()
        command = [orvane, "-v", "1", "-c", "-d", "out", "-F", *written(folder, modules)]
        with open(Path(folder) / "errors", "w+", encoding="utf-8", errors="replace") as errors:
            process = subprocess.Popen(command, cwd=folder, stdout=errors, stderr=errors, preexec_fn=limit)
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
            if process.returncode != 0:
                errors.seek(0)
                return f"status {process.returncode} {errors.read().strip()[-80:]}"
        size = sum(path.stat().st_size for path in (Path(folder) / "out").iterdir())
        return usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024, size


def counted(orvane, modules):
    """Like measure, with instructions in place of seconds."""
    found = measure(orvane, modules)
    if isinstance(found, str):
        return found
    with tempfile.TemporaryDirectory() as folder:
        files = written(folder, {"M": modules} if isinstance(modules, str) else modules)
        number = instructions.count([str(orvane), "-v", "1", "-c", "-F", *files], folder)
    return "was not counted" if number is None else (number, *found[1:])


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--orvane", required=True, type=Path)
    parser.add_argument("--filter", default="")
    parser.add_argument("--scale", type=float, default=1)
    parser.add_argument("--instructions", action="store_true")
    options = parser.parse_args()
    orvane = options.orvane.resolve()
    take, unit = (counted, "instructions") if options.instructions else (measure, "s")
    start = take(orvane, "module M {}\n")
    for name, (base, function) in INPUTS.items():
        if options.filter not in name:
            continue
        rows, before = [], None
        for step in STEPS:
            found = take(orvane, function(max(1, int(base * step * options.scale))))
            if isinstance(found, str):
                rows.append(found)
                break
            growth = ""
            if before:
                least = (0 if options.instructions else SOME_SECONDS, SOME_MEGABYTES)
                factors = [f"{(now - base) / (old - base):.1f}" if old - base > enough else "-"
                           for now, old, base, enough in zip(found[:2], before[:2], start[:2], least)]
                growth = " x" + "/".join(factors)
            cost = f"{found[0]:,}" if options.instructions else f"{found[0]:.2f}"
            rows.append(f"{cost} {unit} {found[1]:.0f} MB {found[2] / 1e6:.2f} MB{growth}")
            before = found
        print(f"{name:22} {int(base * options.scale):6}  " + " | ".join(rows), flush=True)


main()
