#!/usr/bin/env python3
"""The parts of the example that lie between marks, as docs/integration.md shows them.

A part begins in the line with `// [name]` and ends in the line with `// [/name]`; the marks
themselves are taken out, with their line when there is nothing else in it.

Run by itself, it writes every part into the page anew.
"""
import pathlib
import re
import textwrap

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
EXAMPLE = ROOT / "examples" / "minimal-host" / "minimal_host.cpp"
PAGE = ROOT / "docs" / "integration.md"
BLOCK = re.compile(r"^```cpp ([\w-]+)\n(.*?)^```$", re.MULTILINE | re.DOTALL)


def names():
    return re.findall(r"// \[([\w-]+)\]", EXAMPLE.read_text())


def without_marks(line):
    """None for a line that is nothing but a mark."""
    cut = re.sub(r" *// \[/?[\w-]+\]$", "", line)
    cut = re.sub(r"// \[/?[\w-]+\] ", "// ", cut)
    return None if line.strip() and not cut.strip() else cut


def part(name):
    lines = EXAMPLE.read_text().split("\n")
    first, = [i for i, line in enumerate(lines) if f"// [{name}]" in line]
    last, = [i for i, line in enumerate(lines) if f"// [/{name}]" in line]
    kept = [without_marks(line) for line in lines[first:last + 1]]
    return textwrap.dedent("\n".join(line for line in kept if line is not None)) + "\n"


def blocks():
    """(name, text) of each part that the page shows."""
    return BLOCK.findall(PAGE.read_text())


if __name__ == "__main__":
    PAGE.write_text(BLOCK.sub(lambda block: f"```cpp {block[1]}\n{part(block[1])}```",
                              PAGE.read_text()))
