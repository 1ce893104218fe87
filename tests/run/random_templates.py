"""Random templates for random_values.py, and what they match.

A template is a text and a function that binds it: it takes the frame of a program, evaluates all operands, and gives the
predicate that a value then has to hold. A hint is the value that the template is to be tried on, so that it often fits.
"""

import re
from itertools import permutations

from random_types import INT, OMIT, TEXT, DynamicError, Open, Place, checked, complete, part_type, same, shown, values_of

class Template:
    def __init__(self, text, bind, fields=None, any_value=False, value=None):
        self.text, self.bind, self.fields, self.any_value, self.value = text, bind, fields, any_value, value


ANY = Template("?", lambda _: lambda v: v is not OMIT, any_value=True)
ANY_OR_OMIT = Template("*", lambda _: lambda v: True)
OMITTED = Template("omit", lambda _: lambda v: v is OMIT)
STRETCH = object()  # in rows of elements: any number of them


def literal(t, v):
    """The text of a scalar, or None."""
    if v in (None, OMIT) or isinstance(v, dict) or isinstance(v, tuple) and t[0] != "objid" or isinstance(v, float) and "e" in str(v):
        return None
    return shown(t, v)


def paired(tests, values):
    """Whether each test has a value of its own; there are few of them."""
    return len(tests) <= len(values) and any(all(test(v) for test, v in zip(tests, some))
                                             for some in permutations(values, len(tests)))


def row_fits(items, values):
    """Whether elements fit a row of tests, STRETCH with bounds, and permutations of both."""
    if not items:
        return not values
    kind, what = items[0]
    if kind == "one":
        return bool(values) and what(values[0]) and row_fits(items[1:], values[1:])
    if kind == "any":
        low, high = what
        return any(row_fits(items[1:], values[n:]) for n in range(low, min(high, len(values)) + 1))
    tests = [test for test in what if test is not STRETCH]
    top = len(values) if len(tests) < len(what) else len(tests)
    return any(paired(tests, values[:n]) and row_fits(items[1:], values[n:]) for n in range(len(tests), top + 1))


class Templates:
    """What a generator of programs needs to make templates: a part of it, which asks it for expressions."""

    def template(self, t, scope, depth, hint=None, optional=False, item=False):
        rng = self.rng
        if optional and rng.random() < (0.7 if hint is OMIT else 0.1):
            return rng.choice((OMITTED, ANY_OR_OMIT, self.if_present(self.template(t, scope, depth))))
        hint = None if hint is OMIT else hint
        kind = rng.random()
        if kind < 0.12:
            return ANY
        if kind < 0.27 and depth > 0:
            return self.alternatives(t, scope, depth, hint, optional)
        known = self.known(t, scope) if kind < 0.42 else None
        found = known or self.form(t, scope, depth, hint)
        if (t[0] in ("charstring", "list") or t[0] == "bits" and t[2] == 1) and not item and rng.random() < 0.15 and not known:
            found = self.of_length(t, ANY if rng.random() < 0.5 else found, hint)
        return self.if_present(found) if optional and rng.random() < 0.15 and not known else found

    def if_present(self, inner):
        def bind(frame):
            test = inner.bind(frame)
            return lambda v: v is OMIT or test(v)
        return Template(f"{inner.text} ifpresent", bind) if inner.text.split()[-1] != "ifpresent" else inner

    def of_length(self, t, inner, hint):
        low = max(0, len(hint or ()) - self.rng.randint(0, 1))
        high = low + self.rng.randint(0, 2)
        if " length" in inner.text:
            return inner

        def bind(frame):
            test = inner.bind(frame)
            return lambda v: v is not OMIT and low <= len(v) <= high and test(v)
        return Template(f"{inner.text} length({low} .. {high})", bind)

    def alternatives(self, t, scope, depth, hint, optional):
        without = not optional and self.rng.random() < 0.3
        items = [self.template(t, scope, depth - 1, None if without and i else hint) for i in range(self.rng.randint(2, 3))]

        def bind(frame):
            tests = [item.bind(frame) for item in items]
            return lambda v: v is not OMIT and without != any(test(v) for test in tests)
        return Template(f"{'complement' if without else ''}({', '.join(item.text for item in items)})", bind)

    def known(self, t, scope):
        """A template variable or parameter, or a template of the program with its arguments."""
        named = [name for name, kind in scope if kind == ("template", t)]
        declared = [row for row in self.templates if row[1] == t]
        if named and (not declared or self.rng.random() < 0.5):
            name = self.rng.choice(named)
            text = self.rng.choice((name, name, f"same_template_{t[1]}({name})"))
            return Template(text, lambda frame: frame[name].value if name in frame and frame[name].value else opened())
        if not declared:
            return None
        row = self.rng.choice(declared)
        text, inner, _ = self.called(row, scope)
        body = row[3]
        return Template(text, lambda frame: body.bind(inner(frame)), value=body.value and (lambda frame: body.value(inner(frame))))

    def called(self, row, scope):
        """Text of a template with arguments, its frame, and the fields of its body."""
        name, _, formals, body, defaults = row
        given = len(formals)
        while given and defaults[given - 1] and self.rng.random() < 0.7:
            given -= 1
        actuals = [Template("", None, value=lambda _, v=v: int(v)) if i >= given else
                   self.specific(t, scope, None) if mode == "value" else self.template(t, scope, 0)
                   for i, ((mode, t, _), v) in enumerate(zip(formals, defaults))]

        def inner(frame):
            return {p: Place(t, actual.value(frame) if mode == "value" else actual.bind(frame))
                    for (mode, t, p), actual in zip(formals, actuals)}
        given = ", ".join(actual.text for actual in actuals[:given])
        return f"{name}({given})" if given or name[0] == "f" else name, inner, body.fields

    def instance(self, t, scope, depth, hint):
        """A template for a statement: it may modify one in line, which tells its type."""
        parents = [row for row in self.templates if row[1] == t and row[3].fields]
        if not parents or self.rng.random() < 0.7:
            body = self.template(t, scope, depth, hint)
            return f"{t[1]}:{body.text}", body
        called, inner, fields = self.called(self.rng.choice(parents), scope)
        kept = {f: Template("", lambda frame, part=part: part.bind(inner(frame)), any_value=part is ANY,
                            value=part.value and (lambda frame, part=part: part.value(inner(frame))))
                for f, part in fields.items()}
        kept = {f: OMITTED if fields[f] is OMITTED else ANY if part.any_value else part for f, part in kept.items()}
        text, body = self.modification(t, Template("", None, kept), scope)
        body.text = f"modifies {called} := {text}"
        return body.text, body

    # -- forms of their own

    def form(self, t, scope, depth, hint):
        kind = self.rng.random()
        if t[0] in ("record", "union", "list", "array"):
            return self.composite(t, scope, depth - 1, hint)
        if kind < 0.4 and t[0] in ("integer", "float", "sub"):
            return self.bounds(t, hint)
        if kind < 0.5 and t[0] == "charstring":
            return self.pattern(scope, hint)
        if kind < 0.5 and t[0] == "bits":
            return self.digit_pattern(t, hint)
        return self.specific(t, scope, hint)

    def specific(self, t, scope, hint):
        text = literal(t, hint) if self.rng.random() < 0.8 else None
        x = lambda _: hint
        if text is None:
            with self.without_calls():  # how often, and when, it is evaluated is not told here
                text, x = self.expression(t, scope, 1)

        def value(frame):
            try:
                v = x(frame)
            except DynamicError:
                v = None
            if v is OMIT or not complete(t, v):
                raise Open
            try:
                return checked(t, v)
            except DynamicError:
                raise Open from None

        def bind(frame):
            v = value(frame)
            return lambda w: w is not OMIT and same(t, w, v)
        return Template(text, bind, value=value)

    def bounds(self, t, hint):
        one = 1 if t[0] != "float" else 0.5
        middle = hint if literal(t, hint) else one * self.rng.randint(0, 9)
        low, high = (self.rng.choice((None, middle, middle - one)), self.rng.choice((None, middle, middle + one)))
        if t[0] == "sub":
            low, high = max(low or 0, t[2]), min(t[3], high if high is not None else t[3])
            if low > high:
                return ANY
        fits = lambda v: v is not OMIT and (low is None or low <= v) and (high is None or v <= high)
        return Template(f"({'-infinity' if low is None else low} .. {'infinity' if high is None else high})",
                        lambda _: fits)

    def pattern(self, scope, hint):
        text, parts = "", []
        for c in (hint if isinstance(hint, str) and self.rng.random() < 0.8 else "abcx"[:self.rng.randint(0, 4)]):
            kind = self.rng.randrange(9) if c.isalpha() else 9
            piece, meaning = ((c, c), ("?", "."), ("*", ".*"), ("[a-c]", "[a-c]"), ("[^ab]", "[^ab]"), (f"{c}#(1,2)", f"{c}{{1,2}}"),
                              (f"({c}|zz)", f"({c}|zz)"), (f"{c}+", f"{c}+"), (None, None), (c, re.escape(c)))[kind]
            names = [name for name, t in scope if t == TEXT]
            if piece is None:
                piece, meaning = (f"{{{names[0]}}}", names[0:1]) if names else (c, c)
            text += piece
            parts.append(meaning)

        def bind(frame):
            expression = "".join(re.escape(self.given_text(frame, part[0])) if isinstance(part, list) else part for part in parts)
            return lambda v: v is not OMIT and re.fullmatch(expression, v, re.DOTALL) is not None
        return Template(f'pattern "{text}"', bind)

    def digit_pattern(self, t, hint):
        digits = hint if hint is not None and self.rng.random() < 0.8 else "01" * self.rng.randint(0, 2)
        elements = [self.rng.choice((digits[i:i + t[2]], digits[i:i + t[2]], "?", "*")) for i in range(0, len(digits), t[2])]
        expression = "".join({"?": "." * t[2], "*": f"({'.' * t[2]})*"}.get(e, e) for e in elements)
        return Template(shown(t, "".join(elements)), lambda _: lambda v: v is not OMIT and re.fullmatch(expression, v) is not None)

    def given_text(self, frame, name):
        v = frame[name].get() if name in frame else None
        return v if isinstance(v, str) and re.fullmatch(r"[\w ]*", v) else opened()

    def composite(self, t, scope, depth, hint):
        rng = self.rng
        if t[0] == "union":
            name, at = hint[:1] + (part_type(t, hint[0])[0],) if hint and rng.random() < 0.8 else rng.choice(t[2])
            return self.chosen(name, self.template(at, scope, depth, hint[1] if hint and hint[0] == name else None))
        if t[0] == "record":
            fields = {f: self.template(ft, scope, depth, (OMIT if hint[f] is None else hint[f]) if hint else None, o)
                      for f, ft, o in t[2]}
            return self.record(fields, t[3] == "set" or rng.random() < 0.5)
        if t[0] == "array":
            hints = hint or (None,) * t[3]
            return self.row(t, [("one", self.template(t[2], scope, depth, h, item=True)) for h in hints])
        return self.elements(t, scope, depth, list(hint) if hint is not None else [None] * rng.randint(0, 3))

    def chosen(self, name, inner):
        def bind(frame):
            test = inner.bind(frame)
            return lambda v: v is not OMIT and v[0] == name and test(v[1])
        return Template(f"{{ {name} := {inner.text} }}", bind,
                        value=inner.value and (lambda frame: (name, inner.value(frame))))

    def record(self, fields, named):
        def bind(frame):
            tests = {f: inner.bind(frame) for f, inner in fields.items()}
            return lambda v: v is not OMIT and all(test(OMIT if v[f] is None else v[f]) for f, test in tests.items())
        whole = all(inner.value or inner is OMITTED for inner in fields.values())
        value = (lambda frame: {f: OMIT if inner is OMITTED else inner.value(frame) for f, inner in fields.items()})
        return Template("{ " + ", ".join(f"{f} := {inner.text}" if named else inner.text for f, inner in fields.items()) + " }",
                        bind, fields, value=value if whole else None)

    def elements(self, t, scope, depth, hints):
        rng, items = self.rng, []
        make = lambda h: self.template(t[2], scope, depth, h, item=True)
        unordered = t[4] == "set"
        if unordered:
            rng.shuffle(hints)
            if rng.random() < 0.4 and hints:
                items = [self.known(t[2], scope) if rng.random() < 0.3 else None for _ in hints]
                items = [item or self.specific(t[2], scope, h) for item, h in zip(items, hints)]
                return self.sets(t, items, rng.choice(("subset", "superset")))
        while hints or rng.random() < 0.15:
            kind = rng.random()
            if kind < 0.15:
                n = rng.randint(0, len(hints))
                bounds = (n, n + rng.randint(0, 1)) if rng.random() < 0.4 and not unordered else None
                items.append(("any", bounds))
                hints = hints[n:]
            elif kind < 0.35 and len(hints) > 1 and not unordered:
                n = rng.randint(2, len(hints))
                drop = rng.random() < 0.3
                inner = [make(h) for h in rng.sample(hints[:n], n - drop)]
                items.append(("permutation", inner + [STRETCH] * drop))
                hints = hints[n:]
            else:
                items.append(("one", make(hints[0] if hints else None)))
                hints = hints[1:]
        if sum(len(what) if kind == "permutation" else 1 for kind, what in items) > (t[3] or (0, 4))[1]:
            return ANY
        return self.row(t, items)

    def row(self, t, items):
        texts = {"one": lambda x: x.text, "any": lambda x: "*" if x is None else f"* length({x[0]} .. {x[1]})",
                 "permutation": lambda x: f"permutation({', '.join('*' if y is STRETCH else y.text for y in x)})"}
        meanings = {"one": lambda x, frame: x.bind(frame), "any": lambda x, _: x or (0, 99),
                    "permutation": lambda x, frame: [y if y is STRETCH else y.bind(frame) for y in x]}
        unordered = t[0] == "list" and t[4] == "set"

        def bind(frame):
            tests = [(kind, meanings[kind](x, frame)) for kind, x in items]
            if unordered:
                tests = [("permutation", [STRETCH if kind == "any" else x for kind, x in tests])]
            return lambda v: v is not OMIT and row_fits(tests, v)
        whole = all(kind == "one" and x.value for kind, x in items)
        text = ", ".join(texts[kind](x) for kind, x in items)
        return Template(f"{{ {text} }}" if items else "{}", bind,
                        value=(lambda frame: checked(t, tuple(x.value(frame) for _, x in items))) if whole else None)

    def sets(self, t, items, word):
        def bind(frame):
            tests = [item.bind(frame) for item in items]
            if word == "superset":
                return lambda v: v is not OMIT and paired(tests, v)
            return lambda v: v is not OMIT and paired([lambda i, w=w: tests[i](w) for w in v], range(len(tests)))
        return Template(f"{word}({', '.join(item.text for item in items)})", bind)

    # -- declarations and statements

    def declared(self):
        """A template of the program, or one that modifies another; lines."""
        rng, name = self.rng, self.name("tp")
        parents = [row for row in self.templates if row[3].fields]
        if parents and rng.random() < 0.5:
            parent, t, formals, body, _ = rng.choice(parents)
            more = [("value", rng.choice((INT, TEXT)), self.name("p"))] if rng.random() < 0.5 and formals else []
            formals, suffix = formals + more, f" modifies {parent}"
            text, body = self.modification(t, body, self.formal_scope(formals))
        else:
            t, suffix = self.type(), ""
            formals = [(mode, INT if i == 0 else self.type(), self.name("p"))
                       for i, mode in enumerate(("value", rng.choice(("value", "template")), "template")[:rng.randint(0, 3)])]
            body = self.template(t, self.formal_scope(formals), 2)
            text = body.text
            if rng.random() < 0.25:  # the same as a function, which nothing modifies
                suffix, name, body = "function", "f" + name, Template(text, body.bind)
        defaults = [self.literal(ft)[0] if mode == "value" and ft == INT and rng.random() < 0.5 else None for mode, ft, p in formals]
        self.templates.append((name, t, formals, body, defaults))
        head = ", ".join(f"{'template ' if mode == 'template' else ''}{ft[1]} {p}{f' := {v}' if v else ''}"
                         for (mode, ft, p), v in zip(formals, defaults))
        if suffix == "function":
            return [f"function {name}({head}) return template {t[1]} {{ return {text}; }}"]
        return [f"template {t[1]} {name}{f'({head})' if formals else ''}{suffix} := {text};"]

    def formal_scope(self, formals):
        return [(p, t if mode == "value" else ("template", t)) for mode, t, p in formals]

    def modification(self, t, body, scope):
        """Text of some fields, and the template of all of them."""
        fields = body.fields or {f: ANY for f, _, _ in t[2]}
        some, texts = dict(fields), []
        for f, ft, optional in self.rng.sample(t[2], self.rng.randint(1, len(t[2]))):
            if ft[0] == "record" and (fields[f].fields or fields[f].any_value) and self.rng.random() < 0.6:
                text, some[f] = self.modification(ft, fields[f], scope)
            # What is written of both would be merged.
            elif ft[0] in ("list", "array", "union") or ft[0] == "record" and not fields[f].any_value:
                some[f] = ANY_OR_OMIT if optional and self.rng.random() < 0.5 else ANY
                text = some[f].text
            else:
                some[f] = self.template(ft, scope, 1, None, optional)
                text = some[f].text
            texts.append(f"{f} := {text}")
        return "{ " + ", ".join(texts) + " }", self.record(some, True)

    def tried(self, scope):
        """A statement that tries a template on a variable, declares a template variable, or takes a template's value."""
        rng = self.rng
        kind = rng.randrange(8)
        if kind == 0:
            return self.template_variable(scope)
        name, t = rng.choice(values_of(scope))
        hint = self.frame[name].get() if name in self.frame else None
        hint = hint if complete(t, hint) else None
        typed, body = self.instance(t, scope, 2, hint)
        if kind == 2:  # what is logged of templates is nobody's concern here, that it can be is
            return [f'log("-", {typed});'], body.bind
        if kind == 1 and body.value:
            def assign(frame):
                frame[name].set((), body.value(frame))
            return [f"{name} := valueof({body.text});"], assign
        more = self.template(t, scope, 1, hint)
        text = (f'if (match({name}, {body.text})) {{ log("#1"); }} else {{ log("#2"); }}',
                f'select ({name}) {{ case ({more.text}) {{ log("#1"); }} case ({body.text}) {{ log("#2"); }} case else {{ log("#3"); }} }}',
                f'if (match_{t[1]}({body.text}, {name})) {{ log("#1"); }} else {{ log("#2"); }}',
                f'p.send({name}); alt {{ [] p.receive({t[1]}:{more.text}) {{ log("#1"); }} [] p.receive({typed}) '
                '{ log("#2"); } [] p.receive { log("#3"); } }')[way := rng.randrange(4)]

        def run(frame):
            v = frame[name].get()
            if v is OMIT or not complete(t, v):
                return
            tests = [body.bind(frame)] if way in (0, 2) else [more.bind(frame), body.bind(frame)]
            frame["log"].append(f"#{next((i for i, test in enumerate(tests) if test(v)), len(tests)) + 1}")
        return [f"if (isvalue({name})) {{ {text} }}"], run

    def template_variable(self, scope):
        """Declares a template variable, or assigns to one or to a parameter."""
        known = [row for row in scope if row[1][0] == "template"]
        name, (_, t) = self.rng.choice(known) if known and self.rng.random() < 0.5 else (self.name("vt"), (None, self.type()))
        body, is_new = self.template(t, scope, 2), (name, ("template", t)) not in known

        def assign(frame):
            v = body.bind(frame)
            frame[name] = Place(("template", t)) if is_new else frame[name]
            frame[name].value = v
        if is_new:
            scope.append((name, ("template", t)))
        return [f"{f'var template {t[1]} ' if is_new else ''}{name} := {body.text};"], assign

    def template_argument(self, mode, t, scope):
        """An actual for a template parameter: its text, and what gives the template or, for `out` and `inout`, its place."""
        if mode == "in":
            body = self.template(t, scope, 1)
            return body.text, body.bind
        free = [name for name, kind in scope if kind == ("template", t) and name not in self.taken]
        if not free:
            return None
        name = self.rng.choice(free)
        self.taken.add(name)
        return name, lambda frame: frame[name] if mode == "out" or frame[name].value else opened()


def opened():
    raise Open
