"""Types and values of random programs: what reading, writing and comparing them gives, and how they are logged."""

import re
from functools import cache

OMIT = object()
LIMIT = 10 ** 15


class DynamicError(Exception):
    pass


class Open(DynamicError):
    """Whether this is evaluated, and so is a fault, is open."""


class Discard(Exception):
    """The program does something that the language leaves open."""


# A type is (kind, name, ...): scalars; ("charstring", name, bounds of the length); ("record", name, ((field, type, optional), ...), word); ("list", name, element, bounds, word);
# ("bits", name, digits of an element, values of one); ("array", name, element, length, first index); ("union", name, ((alternative, type), ...)); ("sub", name, low, high);
# ("enum", name, literals, their numbers); ("wide", name), of universal characters, ("verdict", name), and ("objid", name), a tuple of numbers.
INT, FLOAT, BOOL, TEXT = ("integer", "integer"), ("float", "float"), ("boolean", "boolean"), ("charstring", "charstring", None)
SUB, WORD = ("sub", "Small", -20, 20), ("charstring", "Word", (0, 3))
COLOUR = ("enum", "Colour", ("red", "green", "blue"), (4, 0, 9))
WIDE, VERDICT, OBJID = ("wide", "Wide"), ("verdict", "verdicttype"), ("objid", "objid")
ANY_TYPE = ("union", "anytype", (("integer", INT), ("charstring", TEXT), ("Colour", COLOUR), ("Small", SUB), ("octetstring", ("bits", "octetstring", 2, 256))))
BITS, HEXES, OCTETS = ("bits", "bitstring", 1, 2), ("bits", "hexstring", 1, 16), ("bits", "octetstring", 2, 256)


def make_types(rng, imported):
    types = [WIDE, VERDICT, OBJID, INT, FLOAT, BOOL, TEXT, SUB, COLOUR, BITS, HEXES, OCTETS, WORD] + [ANY_TYPE] * (not imported)
    lines = ["type integer Small (-20 .. 20);", "type charstring Word length(0 .. 3);", "type universal charstring Wide;",
             f"type enumerated Colour {{ {', '.join(f'{name}({n})' for name, n in zip(*COLOUR[2:]))} }}"]
    lines += [f"function same_{t[1]}({t[1]} p) return {t[1]} {{ return p; }}" for t in (INT, FLOAT, TEXT, WIDE, BITS, HEXES, OCTETS)]
    for i in range(12):
        kind = ("list", "record", "union", "array", "record", "list")[i % 6]
        name = f"{kind.capitalize()}{i}"
        pick = lambda: rng.choice(types if rng.random() < 0.6 else [INT, TEXT, SUB, WIDE])
        if kind == "list":
            bounds = rng.choice((None, None, (0, 4)))
            word, element = ("record", pick()) if i < 11 else ("set", rng.choice((INT, TEXT, SUB)))
            types.append((kind, name, element, bounds, word))
            lines.append(f"type {word} {f'length({bounds[0]} .. {bounds[1]}) ' if bounds else ''}of {element[1]} {name};")
        elif kind == "array":
            element, length, rows = pick(), rng.randint(1, 3), rng.choice((0, 0, 2))
            low, lowest = rng.choice((0, 0, 2)), rng.choice((0, 1))
            inner = (kind, "" if rows else name, element, length, low)
            types.append((kind, name, inner, rows, lowest) if rows else inner)
            outer = f"[{lowest} .. {lowest + rows - 1}]" if rows else ""
            lines.append(f"type {element[1]} {name}{outer}[{f'{low} .. {low + length - 1}' if low else length}];")
        elif kind == "record":
            fields = tuple((f"f{k}", pick(), rng.random() < 0.4) for k in range(rng.randint(1, 4)))
            word = rng.choice(("record", "record", "set"))
            types.append((kind, name, fields, word))
            body = ", ".join(f"{t[1]} {f}{' optional' if o else ''}" for f, t, o in fields)
            lines.append(f"type {word} {name} {{ {body} }}")
        else:
            alternatives = tuple((f"a{k}", pick()) for k in range(rng.randint(2, 4)))
            types.append((kind, name, alternatives))
            lines.append(f"type union {name} {{ {', '.join(f'{t[1]} {a}' for a, t in alternatives)} }}")
        if kind in ("record", "list") and rng.random() < 0.4:  # another type, which is compatible
            other = (kind, f"Other{i}", *types[-1][2:])
            types.append(other if kind == "record" else (*other[:3], (0, 2), other[4]))
            lines.append(lines[-1].replace(name, other[1]) if kind == "record" else f"type {name} {other[1]} length(0 .. 2);")
    for t in types:
        lines += [f"function match_{t[1]}(template {t[1]} p, {t[1]} v) return boolean {{ return match(v, p); }}",
                  f"function same_template_{t[1]}(template {t[1]} p) return template {t[1]} {{ return p; }}"]
    return types, lines


# ---- Values: None is unset; a record is a dict, a union (alternative, value), lists and arrays are tuples.

def part_type(t, key):
    if t[0] == "record":
        return next((ft, o) for f, ft, o in t[2] if f == key)
    return (dict(t[2])[key] if t[0] == "union" else t[2]), False


def complete(t, v):
    if v is None:
        return False
    if t[0] == "record":
        return all(v[f] == OMIT or (o and v[f] is None) or complete(ft, v[f]) for f, ft, o in t[2])
    if t[0] in ("list", "array"):
        return all(complete(t[2], x) for x in v)
    return complete(part_type(t, v[0])[0], v[1]) if t[0] == "union" else True


def blank(t, v):
    """Whether neither the value nor a part of it is there."""
    if t[0] == "record" and v not in (None, OMIT):
        return bool(v) and all(v[f] is None or (v[f] is not OMIT and blank(ft, v[f])) for f, ft, _ in t[2])
    return v is None or (t[0] == "array" and all(blank(t[2], x) for x in v))


def checked(t, v):
    """The value, if it belongs to its type."""
    if v is OMIT or v is None:
        raise DynamicError
    within(t, v)
    return v


def within(t, v):
    """Holds a value and its parts, as far as they are there, to the bounds of their types."""
    if v is OMIT or v is None:
        return
    bounds = t[2] if t[0] == "charstring" else t[3] if t[0] == "list" else None
    if bounds and not bounds[0] <= len(v) <= bounds[1] or t[0] == "sub" and not t[2] <= v <= t[3]:
        raise DynamicError
    if t[0] in ("integer", "float") and abs(v) > LIMIT:
        raise Discard
    parts = {"record": v.items if t[0] == "record" else None, "union": lambda: [v],
             "list": lambda: enumerate(v), "array": lambda: enumerate(v)}
    for key, part in parts[t[0]]() if t[0] in parts else ():
        within(part_type(t, key)[0], part)


@cache
def root(t):
    """What types have in common whose values may be assigned to each other."""
    if t[0] == "record":
        return "record", tuple((f, root(ft), o) for f, ft, o in t[2]), t[3]
    if t[0] in ("list", "array"):
        return t[0], root(t[2]), t[4] if t[0] == "list" else t[3:]
    return INT if t[0] == "sub" else TEXT if t[0] == "charstring" else t


def read(t, v, path):
    """The part at the path and its type; omit where it is an omitted field."""
    for key in path:
        # Of what has no value yet, the fields and elements have none either; optional fields are omitted.
        if t[0] == "record" and v is None:
            v = dict.fromkeys(f for f, _, _ in t[2])
        if t[0] in ("list", "array") and v is None:
            v = ()
        if v is None or v is OMIT:
            raise DynamicError
        if t[0] == "union":
            if v[0] != key:
                raise DynamicError
            v = v[1]
        elif t[0] == "record":
            ft, optional = part_type(t, key)
            v = OMIT if optional and v[key] is None else v[key]
        else:
            if key < 0 or t[0] == "array" and key >= t[3]:
                raise DynamicError
            v = v[key] if key < len(v) else None
        t = part_type(t, key)[0]
    return v


def write(t, v, path, new):
    """The value with another part at the path: what is missing on the way comes into being."""
    if not path:
        return checked(t, new)
    key, rest = path[0], path[1:]
    if t[0] == "union":
        return key, write(part_type(t, key)[0], v[1] if v and v[0] == key else None, rest, new)
    if t[0] == "record":
        whole = dict(v) if v else {f: None for f, _, _ in t[2]}
        ft, optional = part_type(t, key)
        if not rest and new is OMIT:
            if not optional:
                raise DynamicError
            whole[key] = OMIT
        else:
            whole[key] = write(ft, None if whole[key] is OMIT else whole[key], rest, new)
        return whole
    size = t[3] if t[0] == "array" else LIMIT
    if not 0 <= key < size:
        raise DynamicError
    parts = list(v or ())
    parts += [None] * (max(key + 1, size if t[0] == "array" else 0) - len(parts))
    parts[key] = write(t[2], parts[key], rest, new)
    if t[0] == "list" and t[3] and len(parts) > t[3][1]:
        raise DynamicError
    return tuple(parts)


def same(t, a, b):
    if a is None or b is None:
        raise DynamicError
    if a is OMIT or b is OMIT:
        return a is b
    if t[0] == "record":
        norm = lambda v, f, o: OMIT if o and v[f] is None else v[f]
        return all(same(ft, norm(a, f, o), norm(b, f, o)) for f, ft, o in t[2])
    if t[0] == "union":
        return a[0] == b[0] and same(part_type(t, a[0])[0], a[1], b[1])
    if t[0] == "list" and t[4] == "set":
        if not complete(t, a) or not complete(t, b):
            raise Open
        return same_set(t[2], a, list(b))
    if t[0] in ("list", "array"):
        return len(a) == len(b) and all(same(t[2], x, y) for x, y in zip(a, b))
    return a == b


def same_set(t, a, rest):
    for x in a:
        i = next((i for i, y in enumerate(rest) if same(t, x, y)), None)
        if i is None:
            return False
        rest.pop(i)
    return not rest


def shown(t, v, top=False):
    if v is OMIT:
        return "omit"
    if t[0] == "record":
        return "{ " + ", ".join(f"{f} := {shown(ft, OMIT if v[f] is None else v[f])}" for f, ft, _ in t[2]) + " }"
    if t[0] == "union":
        return f"{{ {v[0]} := {shown(part_type(t, v[0])[0], v[1])} }}"
    if t[0] in ("list", "array"):
        return "{ " + ", ".join(shown(t[2], x) for x in v) + " }" if v else "{}"
    if t[0] == "bits":
        return f"'{v}'{t[1][0].upper()}"
    if t[0] == "objid":
        return f"objid {{ {' '.join(map(str, v))} }}"
    if t[0] == "wide" and not top and v:  # characters that are no ASCII stand by themselves
        return " & ".join(f'"{part}"' if part < "\x7f" else f"char(0, 0, {ord(part) >> 8}, {ord(part) & 255})"
                          for part in re.findall(r"[ -~]+|[^ -~]", v))
    if t[0] in ("charstring", "wide"):
        return v if top else f'"{v}"'
    if t[0] == "float" and v and abs(v) < 1e-4:
        raise Discard
    return str(v).lower() if t[0] == "boolean" else str(v)


class Place:
    """A variable, or what a parameter by reference stands for: a part of the caller's variable."""

    def __init__(self, t, value=None, whole=None, path=()):
        self.t, self.value, self.whole, self.path = t, value, whole, path

    def get(self):
        return read(self.whole.t, self.whole.get(), self.path) if self.whole else self.value

    def set(self, path, new):
        if self.whole:
            self.whole.set(self.path + path, new)
            within(self.t, self.get())
        else:
            self.value = write(self.t, self.value, path, new)


def values_of(scope):
    """The entries that are no template variables or parameters."""
    return [row for row in scope if row[1][0] != "template"]
