#!/usr/bin/env python3
"""Puts what was measured into the table that authors of hosts plan with (docs/integration.md).

Usage: planning.py REPOSITORY
The figures are those of docs/performance.md, each from the first of its rows that is named here.
"""
import pathlib
import sys

START, END = "<!-- measured -->", "<!-- end of measured -->"


def rows(text):
    """The rows of all tables of a page, each a list of its cells."""
    return [[cell.strip() for cell in line.strip("|").split("|")]
            for line in text.splitlines() if line.startswith("| ")]


def figure(page, names, column):
    """The cell in a column of the first row that begins with these names; ValueError without one."""
    for row in page:
        if row[:len(names)] == names and len(row) > column:
            return f"`{row[column]}`"
    raise ValueError(f"no row \"{' | '.join(names)}\" in docs/performance.md")


def table(performance):
    """The planning table for the text of docs/performance.md."""
    page = rows(performance)
    lines = [
        ("what", "figure"),
        ("---", "---"),
        ("heap per polled element, on a 32-bit panel", f"{figure(page, ['word'], 2)} bytes"),
        ("the same on a 64-bit machine", f"{figure(page, ['word'], 1)} bytes"),
        ("elements in a request", "45 bits, 38 words, 28 double words"),
        ("the driver's part of polling 38 words",
         f"{figure(page, ['polling turn, 38 words'], 2)} "
         f"(on 32-bit ARM {figure(page, ['turn_38_words'], 2)} instructions)"),
        ("values a second, round trip 1 ms", figure(page, ["scattered, 1 ms", "this driver"], 2)),
        ("the same, 10 ms", figure(page, ["scattered, 10 ms", "this driver"], 2)),
        ("`GetRegisterData`, of 100,000 variables",
         figure(page, ["GetRegisterData, last of 100,000 variables"], 2)),
        ("a rebuild, for each element",
         f"{figure(page, ['rebuild, per element of 100,000'], 2)}, diagnostic line included"),
        ("one-shot reads that wait", "1,024 at most: what does not fit is dropped"),
    ]
    return "\n".join(f"| {what} | {number} |" for what, number in lines)


def with_table(integration, performance):
    """docs/integration.md with the planning table for this docs/performance.md."""
    before, rest = integration.split(START)
    _, after = rest.split(END)
    return f"{before}{START}\n{table(performance)}\n{END}{after}"


def write(repository):
    performance = (repository / "docs" / "performance.md").read_text(encoding="utf-8")
    document = repository / "docs" / "integration.md"
    document.write_text(with_table(document.read_text(encoding="utf-8"), performance), encoding="utf-8")


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__.strip())
    write(pathlib.Path(sys.argv[1]))
