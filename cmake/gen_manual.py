#!/usr/bin/env python3
"""Makes manual pages from the option tables and the documents, and the completion of shells from its pattern.

    gen_manual.py VERSION DATE DOCS FOLDER --suite PROGRAM --orvane PROGRAM [--run PROGRAM] [--completion PATTERN FILE]
                  [--scripts PROGRAM...]

Options of suites are those that the first program describes; those of the programs, what they say of themselves. What
else there is to say stands in the documents.
"""

import argparse
import re
import subprocess
from pathlib import Path

SEE_ALSO = ("orvane (1)", "orvane-run (1)", "orvane-suite (1)", "mcfg (5)")
# Documents that are pages.
PAGES = {"usage.md": "orvane(1)", "results.md": "orvane-suite(1)", "runtime.md": "orvane-suite(1)", "mcfg.md": "mcfg(5)"}


def roff(text):
    text = text.replace("\\", "\\e").replace("-", "\\-")
    text = re.sub(r"\[([^\]]*)\]\(([^)]*)\)", lambda link: PAGES.get(link[2], link[1]), text)
    text = re.sub(r"\*\*([^*]+)\*\*", r"\\fB\1\\fR", text)
    text = re.sub(r"`([^`]*)`", r"\\fB\1\\fR", text)
    return "\\&" + text if text[:1] in ".'" else text


def row_of(line):
    return [cell.strip().replace("\\|", "|") for cell in re.split(r"(?<!\\)\|", line.strip().strip("|"))]


def page_of(markdown):
    """The body of a page: headings, paragraphs, tables as lists, examples as they are."""
    out, paragraph, in_example = [], [], False

    def begin_block():
        if out and not out[-1].startswith(".SH"):
            out.append(".PP")

    for line in markdown.splitlines()[1:] + [""]:
        example = line.startswith("    ") or line.startswith("```")
        if not example and in_example and line.strip():
            out.append(".fi\n.RE")
            in_example = False
        if paragraph and (not line.strip() or example or line.startswith(("#", "|", "- "))):
            begin_block()
            out.append(" ".join(roff(part) for part in paragraph))
            paragraph = []
        if example:
            if not in_example:
                begin_block()
                out.append(".RS 4\n.nf")
            in_example = True
            if line.startswith("    "):
                out.append(roff(line[4:]))
        elif line.startswith("#"):
            out.append(".SH " + roff(line.lstrip("# ").upper()))
        elif line.startswith("|"):
            cells = row_of(line)
            if set("".join(cells)) - set("-: ") and any(cells[1:]):
                out += [".TP", roff(cells[0]), roff(" ".join(cells[1:]))]
        elif line.startswith("- "):
            paragraph = ["\\(bu " + line[2:]]
        elif line.strip():
            paragraph.append(line.strip())
    return "\n".join(out + ([".fi\n.RE"] if in_example else []))


def options_of(program):
    """Letter, word, argument and text of each."""
    lines = subprocess.run([program], capture_output=True, text=True, check=True).stdout.splitlines()
    return [line.split("\t") for line in lines]


def suite_options(program):
    out = []
    for letter, word, argument, text in options_of(program):
        names = ", ".join(([f"`-{letter}`"] if letter else []) + [f"`--{word}`"]) + (f" {argument}" if argument else "")
        out += [".TP", roff(names), roff(text)]
    return "\n".join(out)


def text_of(program, option):
    done = subprocess.run([program, option], capture_output=True, text=True, check=False)
    return done.stdout + done.stderr


def described_options(text):
    """Names, and the argument behind them, of each option in a text of help."""
    rows = []
    for line in re.findall(r"(?m)^ +(-\S.*?)(?:  .*)?$", text):
        words = re.split(r",? ", line)
        names = [word for word in words if word.startswith("-") and word != "--"]
        if names:
            rows.append([*names, "" if words[-1] in names else words[-1]])
    return rows


def help_of(program, option):
    text = re.sub(r"(?m)^.*(Copyright|All rights|without any warranty).*\n", "", text_of(program, option))
    return ".nf\n" + "\n".join(roff(line.replace(program, Path(program).name)) for line in text.splitlines()) + "\n.fi"


def main():
    parser = argparse.ArgumentParser()
    for name in ("version", "date", "docs", "folder"):
        parser.add_argument(name)
    for name in ("--suite", "--orvane", "--run"):
        parser.add_argument(name)
    parser.add_argument("--completion", nargs=2, type=Path)
    parser.add_argument("--scripts", nargs="*", type=Path, default=[])
    options = parser.parse_args()
    docs, folder = Path(options.docs), Path(options.folder)
    folder.mkdir(parents=True, exist_ok=True)

    def write(name, section, title, *parts):
        head = f'.TH "{name.upper()}" {section} "{options.date}" "Orvane {options.version}"\n.SH NAME\n{name} \\- {title}\n'
        others = [f".BR {page}" for page in SEE_ALSO if not page.startswith(f"{name} ")]
        others[-1] += "\n.PP\nOther documents, and examples, lie in\n.I share/doc/orvane\nof the installation."
        page = folder / f"man{section}" / f"{name}.{section}"
        page.parent.mkdir(exist_ok=True)
        page.write_text("\n".join([head + parts[0], *parts[1:], ".SH SEE ALSO", ",\n".join(others)]) + "\n", encoding="utf-8")

    def document(name, chapter=None, without=()):
        """The body of a page: the document, or one chapter of it, which begin with a line of heading."""
        chapters = re.split(r"(?m)^(?=## )", (docs / name).read_text(encoding="utf-8"))
        heads = [text.split("\n")[0].lstrip("# ") for text in chapters]
        if chapter:
            return page_of(chapters[heads.index(chapter)])
        left = [text for head, text in zip(heads, chapters) if head not in without]
        assert len(left) + len(without) == len(chapters), name
        return page_of("".join(left))

    def command_of(name, chapter):
        """The first example of a chapter."""
        return ".SH SYNOPSIS\n" + roff(re.search(r"(?m)^    (.*)$", (docs / name).read_text(encoding="utf-8").split(f"## {chapter}\n")[1])[1])

    run, line = "From sources to verdicts: orvane-run", "The command line"

    write("orvane", 1, "compiler from TTCN\\-3 to C", command_of("usage.md", line), ".SH DESCRIPTION\nCompiles modules of TTCN\\-3 and ASN.1 to C.",
          document("usage.md", without=(run, line)), ".SH OPTIONS", help_of(options.orvane, "-h"))
    write("orvane-suite", 1, "executable test suites", ".SH SYNOPSIS\n.I suite\n[options]\n.SH OPTIONS",
          suite_options(options.suite), ".SH RESULTS", document("results.md"), ".SH DESCRIPTION", document("runtime.md"))
    for script in options.scripts:
        title, *rest = text_of(str(script), "--help").strip().split("\n")
        write(script.name, 1, roff(title[:1].lower() + title[1:].rstrip(".")), ".SH DESCRIPTION", page_of("\n".join(["", *rest])))
    write("mcfg", 5, "how orvane builds test suites", ".SH DESCRIPTION", document("mcfg.md"))
    if options.completion:
        pattern, made = options.completion
        suite = [([f"-{letter}"] if letter else []) + [f"--{word}", argument]
                 for letter, word, argument, _ in options_of(options.suite)]
        text = pattern.read_text(encoding="utf-8").replace("@ORVANE_OPTIONS@", " ".join(sorted(set(
            re.findall(r"(?m)^\t *(-\S) ", text_of(options.orvane, "-h"))))))
        for name, table in ("SUITE", suite), ("RUN", described_options(text_of(options.run, "--help"))):
            text = text.replace(f"@{name}_OPTIONS@", " ".join(word for row in table for word in row[:-1]))
            text = text.replace(f"@{name}_VALUES@", " ".join(f"{word}:{row[-1]}" for row in table if row[-1] for word in row[:-1]))
        made.parent.mkdir(parents=True, exist_ok=True)
        made.write_text(text, encoding="utf-8")
    if options.run:
        write("orvane-run", 1, "compile, build and run a test suite", command_of("usage.md", run), ".SH DESCRIPTION",
              document("usage.md", run), ".SH OPTIONS", help_of(options.run, "--help"))


if __name__ == "__main__":
    main()
