"""Turns measurements into the tables of docs/performance.md, its plots, and the planning table of
docs/integration.md.

Usage: report.py RESULTS_FOLDER REPOSITORY MACHINE_FILE
"""
import json
import pathlib
import sys

import measured
import planning
import svg

OURS, LIBMODBUS, QT = "this driver", "libmodbus", "QModbusTcpClient"
READ = "this driver, its feed read"
CAPTURED = "this driver, captured"
TRACED = "this driver, traced"
PAGED = "this driver, its page open"
BARE = "its frames alone"
START, END = "<!-- figures -->", "<!-- end of figures -->"


def table(header, rows):
    lines = ["| " + " | ".join(header) + " |", "|" + " --- |" * len(header)]
    return "\n".join(lines + ["| " + " | ".join(row) + " |" for row in rows])


def time(ns):
    return f"{ns:.0f} ns" if ns < 1000 else f"{ns / 1e3:.2f} µs" if ns < 1e6 else f"{ns / 1e6:.1f} ms"


def client_goals(side):
    """The ratios to the peers: what, goal, measured, whether it is met."""
    def cpu(client):
        return side.cpu_ratio((client, "contiguous", 0), (QT, "contiguous", 0))

    ours = (OURS, "scattered", 0)
    goals = []
    for peer in (LIBMODBUS, QT):
        ratio = side.ratio(ours, (peer, "scattered", 0), "values")
        goals.append((f"scattered values/s over {peer}'s", "≥ 30", f"{ratio:.1f}", ratio >= 30))
    ratio = side.ratio(ours, (LIBMODBUS, "scattered", 0), "requests")
    goals.append(("requests/s over libmodbus's", "≥ 0.9", f"{ratio:.2f}", ratio >= 0.9))
    ratio = cpu(OURS)
    goals.append(("contiguous values per CPU second over QModbusTcpClient's", "≥ 1", f"{ratio:.2f}",
                  ratio >= 1))
    goals.append(("the same, frames alone: nothing of this protocol can do better", "none",
                  f"{cpu(BARE):.2f}", None))
    ratio = side.ratio((READ, "scattered", 0), ours, "values")
    goals.append(("scattered values/s with the feed folded by a reader over without", "≥ 0.97",
                  f"{ratio:.2f}", ratio >= 0.97))
    ratio = side.ratio((CAPTURED, "scattered", 0), (READ, "scattered", 0), "values")
    goals.append(("the same, captured into files too, over read alone", "≥ 0.9", f"{ratio:.2f}",
                  ratio >= 0.9))
    ratio = side.ratio((TRACED, "scattered", 0), (READ, "scattered", 0), "values")
    goals.append(("the same, traced into a file too, over read alone", "≥ 0.9", f"{ratio:.2f}",
                  ratio >= 0.9))
    ratio = side.ratio((PAGED, "scattered", 0), (READ, "scattered", 0), "values")
    goals.append(("the same, its page open in a browser elsewhere, over read alone", "≥ 0.9",
                  f"{ratio:.2f}", ratio >= 0.9))
    ratio = side.cpu_ratio((PAGED, "scattered", 0), (READ, "scattered", 0))
    goals.append(("the same per CPU second, its page open, over read alone", "none", f"{ratio:.2f}", None))
    ratio = side.ratio(ours, (BARE, "scattered", 0), "values")
    goals.append(("scattered values/s over its frames alone", "≥ 0.83", f"{ratio:.2f}", ratio >= 0.83))
    return goals


def page_goal(page):
    """How busy the page's main thread is, with its values in sight and with trends too."""
    def share(view):
        return f"{100 * page[view]['busy']:.0f} %"

    most = max(page[view]["busy"] for view in ("values", "trends"))
    return [f"busy share of the page's main thread, {page['variables']:,} variables changing ten times a second",
            "< 50 %", f"{share('values')}, with four trends {share('trends')}", "yes" if most < 0.5 else "no"]


def page_table(page):
    rows = []
    for view, what in (("values", "values"), ("trends", "values and four trends")):
        its = page[view]
        rows.append([what, f"{100 * its['busy']:.0f} %",
                     f"{100 * its['least']:.0f} – {100 * its['most']:.0f} %",
                     f"{its['changesPerSecond']:.1f}", f"{its['heapMb']:.0f} MB"])
    return table(["in sight", "busy", "spread", "changes/s of one value", "script memory"], rows)


def load_table(load):
    rows = []
    for host in load["hosts"]:
        what = "page open, recording" if host["page"] and host["recording"] else \
            "page open" if host["page"] else "recording" if host["recording"] else "neither"
        sent = f"{host['sentBytes'] / 1e3:,.0f} kB/s" if host["page"] else ""
        rows.append([what, f"{host['values']:,.0f}", f"{100 * host['processor']:.1f} %", sent])
    return table(["host with", "values/s", "of one processor", "to the page"], rows)


def goals(micro, side, spread_out, memory, page):
    """What the driver is to reach, and what it reached in this run."""
    def row(what, goal, value, shown):
        return [what, goal, shown, "yes" if value else "no"]

    def turn(n):
        return f"pollingTurn/words38/{n}"

    def last(n):
        return f"getOfMany/last/{n}"

    rows = []
    for alone, both in zip(client_goals(side), client_goals(spread_out)):
        what, goal, shown, met = alone
        rows.append([what, goal, f"{shown} (all processors: {both[2]})",
                     "–" if met is None else "yes" if met else "no"])
    value = micro.median(turn(100))
    rows.append(row("polling turn, 38 words", "≤ 1.0 µs", value <= 1000, time(value)))
    value = micro.counter(turn(100), "allocs")
    rows.append(row("its allocations", "≤ 6", value <= 6, f"{value:.1f}"))
    ratio = micro.ratio(turn(100000), turn(100))
    rows.append(row("100,000 polled entries over 100", "≤ 1.3", ratio <= 1.3, f"{ratio:.2f}"))
    value = micro.median(last(100000))
    rows.append(row("GetRegisterData, last of 100,000 variables", "≤ 250 ns", value <= 250, time(value)))
    ratio = micro.ratio(last(100000), last(100))
    rows.append(row("100,000 variables under the label over 100", "≤ 1.3", ratio <= 1.3, f"{ratio:.2f}"))
    value = micro.per_element("rebuild/100000", 100000)
    rows.append(row("rebuild, per element of 100,000", "≤ 3 µs", value <= 3000, time(value)))
    ratio = micro.ratio("rebuild/100000", "rebuild/1000") / 100
    rows.append(row("rebuild, per element: 100,000 over 1,000", "≤ 2", ratio <= 2, f"{ratio:.2f}"))
    value = micro.per_element("rebuildShuffled/100000", 100000)
    ratio = micro.ratio("rebuildShuffled/100000", "rebuildShuffled/1000") / 100
    rows.append(row("the same, variables shuffled", "≤ 3 µs, ≤ 2", value <= 3000 and ratio <= 2,
                    f"{time(value)}, {ratio:.2f}"))
    ratio = micro.ratio("onceReadsInOneCall", "appendAlone")
    rows.append(row("1,024 one-shot reads in one call over appending alone", "≤ 3", ratio <= 3, f"{ratio:.2f}"))
    ratio = micro.ratio("onceReadsOneByOne", "onceReadIntoEmptyList") / 1024
    rows.append(["1,024 calls of one each over the call without a list to search", "bound by the rule",
                 f"{ratio:.2f}", "–"])
    rows.append(page_goal(page))
    for architecture, numbers in memory.items():
        if numbers:
            most = max(numbers.values())
            rows.append(row(f"bytes per polled element, {architecture}",
                            "≤ 160" if architecture == "armhf" else "none",
                            architecture != "armhf" or most <= 160, str(most)))
    return table(["what", "goal", "measured", "met"], rows)


def micro_table(micro):
    rows = []
    for name in micro.names():
        low, high = micro.spread(name)
        element = micro.counter(name, "per_element")
        allocations = micro.counter(name, "allocs")
        lines = micro.counter(name, "lines")
        rows.append([name, time(micro.median(name)), f"{time(low)} – {time(high)}",
                     "" if element is None else time(1e9 * element),
                     "" if allocations is None else svg.short(round(allocations, 1)),
                     "" if not lines else svg.short(round(lines, 1))])
    return table(["call", "median", "spread", "per element", "allocations", "lines"], rows)


def side_table(side):
    rows = []
    for key in side.keys():
        client, layout, delay = key
        rates = side.median(key)
        low, high = side.spread(key)
        missed = side.missed(key)
        name = f"{client} (missed {missed:,} entries)" if missed else client
        rows.append([f"{layout}, {delay} ms", name, f"{rates.values:,.0f}",
                     f"{low:,.0f} – {high:,.0f}", f"{rates.requests:,.0f}",
                     f"{rates.user:.2f}", f"{rates.system:.2f}"])
    order = {key: i for i, key in enumerate(("scattered, 0 ms", "contiguous, 0 ms", "scattered, 1 ms",
                                             "contiguous, 1 ms", "scattered, 10 ms", "contiguous, 10 ms"))}
    rows.sort(key=lambda row: order[row[0]])
    return table(["values, added round trip", "client", "values/s", "spread", "requests/s",
                  "user µs/value", "system µs/value"], rows)


def number_table(title, by_architecture):
    names = list(next((numbers for numbers in by_architecture.values() if numbers), {}))
    rows = [[name] + [str(numbers.get(name, "–")) for numbers in by_architecture.values()]
            for name in names]
    return table([title] + list(by_architecture), rows)


def write_plots(micro, side, folder):
    folder.mkdir(parents=True, exist_ok=True)
    sizes = {"polling turn, 38 words": ("pollingTurn/words38/{}", (100, 10000, 100000)),
             "read by address": ("getOfMany/last/{}", (100, 1000, 10000, 100000)),
             "parse an address": ("parse/last/{}", (100, 1000, 10000, 100000)),
             "rebuild, per element": ("rebuild/{}", (1000, 10000, 100000))}
    series = {}
    for label, (pattern, counts) in sizes.items():
        series[label] = [(n, micro.median(pattern.format(n)) / (n if "rebuild" in pattern else 1))
                         for n in counts]
    (folder / "cost-by-size.svg").write_text(
        svg.line_chart("Cost of a call against the size of the project", "variables or entries",
                       "ns", series), encoding="utf-8")
    groups = {}
    for layout in ("scattered", "contiguous"):
        for delay in (0, 1, 10):
            groups[f"{layout}\n{delay} ms"] = {client: side.median((client, layout, delay)).values
                                               for client in (LIBMODBUS, QT, OURS)}
    (folder / "values-per-second.svg").write_text(
        svg.bar_chart("16-bit values kept fresh", "values/s", groups), encoding="utf-8")


def main():
    results, repository, machine = (pathlib.Path(argument) for argument in sys.argv[1:])
    micro = measured.Micro(results / "micro.json")
    side = measured.SideBySide(results / "side_by_side.jsonl")
    committed = repository / "benchmarks"
    spread_out = measured.SideBySide(results / "all_processors.jsonl")
    memory = {"amd64": measured.pairs(results / "memory.txt"),
              "armhf": measured.pairs(committed / "memory" / "armhf.txt")}
    instructions = {"amd64": measured.pairs(results / "instructions.txt"),
                    "armhf": measured.pairs(committed / "instructions" / "armhf.txt")}
    page = json.loads((results / "page.json").read_text(encoding="utf-8"))
    load = json.loads((results / "promised_load.json").read_text(encoding="utf-8"))
    summary = goals(micro, side, spread_out, memory, page)
    print(summary)
    figures = "\n\n".join([
        START, machine.read_text(encoding="utf-8").strip(), "### Goals", summary,
        "### Single calls", micro_table(micro),
        f"### Side by side on one processor ({side.rounds()} rounds)", side_table(side),
        f"### Side by side on all processors ({spread_out.rounds()} rounds)", side_table(spread_out),
        f"### The page, {page['variables']:,} variables changing ten times a second, "
        f"Chromium {page['browser']}, {page['rounds']} rounds of {page['seconds']} s", page_table(page),
        f"### A host, {load['variables']:,} variables changing ten times a second, {load['seconds']} s each",
        load_table(load),
        "### Heap bytes per polled element", number_table("type", memory),
        "### Instructions per call", number_table("call", instructions), END])
    document = repository / "docs" / "performance.md"
    text = document.read_text(encoding="utf-8")
    before, after = text.split(START)[0], text.split(END)[1]
    document.write_text(before + figures + after, encoding="utf-8")
    planning.write(repository)
    write_plots(micro, side, repository / "docs" / "plots")


if __name__ == "__main__":
    main()
