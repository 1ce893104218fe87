"""Writes the module that holds every pair of the types in compatibility.ttcn, with the faults that are due.

A row `// A B <- A C` says that A and C go to A and to B; one without a right side, that its types go to one another.
"""

import re
import sys

NO_VARIABLES = ("timer", "Prt", "Pru", "Sig", "Sih")


def read_rows(path):
    """The legal sources of each type, in the order of the table."""
    legal = {}
    for left, right in re.findall(r"(?m)^// (\w[\w ]*) <-([\w ]*)$", open(path).read()):
        legal.update((target, (right or left).split()) for target in left.split())
    return legal


def name(word):
    return word.replace("universal_", "universal ")


def formal(word):
    return f"{'inout' if word in ('Prt', 'Pru') else '' if word == 'timer' else 'template'} {name(word)}".strip()


def pair(target, source, legal):
    """The statement that brings a source to a target, and what is wrong with it."""
    assigned = target not in NO_VARIABLES and source not in ("Sig", "Sih")
    text = f"x := y_{source};" if assigned else f"of_{target}(y_{source});"
    if source in legal:
        return text
    column = 10 if assigned else 9 + len(target)
    fault = (f'the type of "y_{source}" is not correct' if assigned else
             "the type of the actual parameter does not match the declared formal parameter")
    return f"{text}  // expect-error@:{column} {{{{{fault}}}}}"


def main():
    rows = read_rows(sys.argv[1])
    variables = [f"var {name(word)} y_{word};" for word in rows if word not in NO_VARIABLES]
    lines = ["module pairs {", "import from compatibility_types all;", "type component All {", *variables,
             "timer y_timer; port Prt y_Prt; port Pru y_Pru;", "}"]
    for target, legal in rows.items():
        own = [] if target in NO_VARIABLES else [f"inout {name(target)} x"]
        lines.append(f"function of_{target}({formal(target)} x) {{ }}")
        lines.append(f"function to_{target}({', '.join(own + ['template Sig y_Sig', 'template Sih y_Sih'])}) "
                     "runs on All {")
        lines += ["    " + pair(target, source, legal) for source in rows]
        lines.append("}")
    print("\n".join(lines + ["}"]))


if __name__ == "__main__":
    main()
