#!/usr/bin/env python3
"""Prints the circles of object files that need each other, and fails when one is larger than it may be.

    check_circles.py [--edges] LIBRARY...     static libraries of a build

A circle is a set of sources each of which calls, directly or by way of others, all the rest. Rooms are measured one by
one: what matters is which files of a room can only be understood together. The table below is the largest circle that
a room may have; a smaller one is reported, so that the table follows.
"""

import subprocess
import sys
from collections import defaultdict
from pathlib import Path

ALLOWED = {"liborvane_core.a": [8, 6, 4, 4, 4, 3, 3, 3, 2, 2], "liblumos.a": [13, 9, 3, 2, 2]}


def symbols_of(library):
    """The sources of a library: name -> (defined symbols, needed symbols)."""
    members = {}
    listing = subprocess.run(["nm", "-A", library], capture_output=True, text=True, check=True).stdout
    for line in listing.splitlines():
        place, _, rest = line.partition(".o:")
        fields = rest.split()
        if len(fields) < 2:
            continue
        kind, symbol = (fields[-2], fields[-1])
        defined, needed = members.setdefault(place.rpartition(":")[2], (set(), set()))
        if kind in "TDBRS":
            defined.add(symbol)
        elif kind == "U":
            needed.add(symbol)
    return members


def edges_of(members):
    home = {symbol: name for name, (defined, _) in members.items() for symbol in defined}
    edges = defaultdict(lambda: defaultdict(set))
    for name, (_, needed) in members.items():
        for symbol in needed:
            if symbol in home and home[symbol] != name:
                edges[name][home[symbol]].add(symbol)
    return edges


def circles_of(names, edges):
    """Strongly connected components of more than one name, by an explicit stack (Tarjan)."""
    index, low, stack, on_stack, found = {}, {}, [], set(), []
    for root in names:
        if root in index:
            continue
        work = [(root, iter(sorted(edges[root])))]
        index[root] = low[root] = len(index)
        stack.append(root)
        on_stack.add(root)
        while work:
            name, rest = work[-1]
            for target in rest:
                if target not in index:
                    index[target] = low[target] = len(index)
                    stack.append(target)
                    on_stack.add(target)
                    work.append((target, iter(sorted(edges[target]))))
                    break
                if target in on_stack:
                    low[name] = min(low[name], index[target])
            else:
                work.pop()
                if work:
                    low[work[-1][0]] = min(low[work[-1][0]], low[name])
                if low[name] == index[name]:
                    circle = []
                    while not circle or circle[-1] != name:
                        circle.append(stack.pop())
                        on_stack.discard(circle[-1])
                    if len(circle) > 1:
                        found.append(sorted(circle))
    return sorted(found, key=lambda circle: (-len(circle), circle))


def room_of(circle, root):
    """The folders that the sources of a circle lie in."""
    folders = {path.parent.relative_to(root).as_posix() for path in root.rglob("*.cpp")
               if path.name in circle and "out" not in path.relative_to(root).parts}
    return ", ".join(sorted(folders))


def main():
    root = Path(__file__).resolve().parent.parent
    failed = False
    for library in sys.argv[1:]:
        name = Path(library).name
        members = symbols_of(library)
        if not members:
            sys.exit(f"check_circles.py: {library} has no members")
        circles = circles_of(sorted(members), edges_of(members))
        for circle in circles:
            print(f"{name}: {len(circle)} sources ({room_of(set(circle), root)}): {' '.join(circle)}")
        sizes = [len(circle) for circle in circles]
        allowed = ALLOWED.get(name, [])
        if sizes != allowed:
            better = len(sizes) <= len(allowed) and all(a <= b for a, b in zip(sizes, allowed))
            print(f"{name}: circles of {sizes}, the table says {allowed}" + ("; let it follow" if better else ""))
            failed = failed or not better
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
