"""Reads what the benchmark programs printed."""
import collections
import json
import statistics


class Micro:
    """Google Benchmark's repetitions: the median CPU time of each benchmark in nanoseconds."""

    UNITS = {"ns": 1, "us": 1e3, "ms": 1e6}

    def __init__(self, path):
        with open(path, encoding="utf-8") as file:
            runs = json.load(file)["benchmarks"]
        self._times = collections.defaultdict(list)
        self._counters = {}
        for run in runs:
            if run["run_type"] != "iteration":
                continue
            name = run["run_name"]
            self._times[name].append(run["cpu_time"] * self.UNITS[run["time_unit"]])
            self._counters[name] = run

    def names(self):
        return sorted(self._times)

    def median(self, name):
        return statistics.median(self._times[name])

    def spread(self, name):
        return min(self._times[name]), max(self._times[name])

    def counter(self, name, counter):
        return self._counters[name].get(counter)

    def per_element(self, name, elements):
        return self.median(name) / elements

    def ratio(self, name, other):
        """Of the fastest repetitions: what else runs on the machine only ever adds."""
        return self.spread(name)[0] / self.spread(other)[0]


Rates = collections.namedtuple("Rates", "values requests user system")


class SideBySide:
    """Rounds of the comparison, by (client, layout, delay)."""

    def __init__(self, path):
        self._rounds = collections.defaultdict(list)
        self._missed = collections.Counter()
        with open(path, encoding="utf-8") as file:
            for line in file:
                if not line.startswith("{"):
                    continue
                row = json.loads(line)
                key = (row["client"], row["layout"], row["delay_ms"])
                self._rounds[key].append(Rates(
                    row["values"] / row["seconds"], row["requests"] / row["seconds"],
                    1e6 * row["user"] / row["values"], 1e6 * row["system"] / row["values"]))
                self._missed[key] += row["missed"]

    def keys(self):
        return list(self._rounds)

    def missed(self, key):
        """Entries of the feed that readers missed in all its rounds."""
        return self._missed[key]

    def rounds(self):
        return min(len(rounds) for rounds in self._rounds.values())

    def median(self, key):
        return Rates(*(statistics.median(column) for column in zip(*self._rounds[key])))

    def spread(self, key):
        values = [rates.values for rates in self._rounds[key]]
        return min(values), max(values)

    def ratio(self, key, other, field):
        """The median of the rounds' own ratios: a round's neighbours saw the same machine."""
        return statistics.median(getattr(a, field) / getattr(b, field)
                                 for a, b in zip(self._rounds[key], self._rounds[other]))

    def cpu_ratio(self, key, other):
        """Values per CPU second of one over those of another."""
        return statistics.median((b.user + b.system) / (a.user + a.system)
                                 for a, b in zip(self._rounds[key], self._rounds[other]))


def pairs(path):
    """Lines "NAME NUMBER"; no file, no lines."""
    try:
        with open(path, encoding="utf-8") as file:
            rows = [line.split() for line in file]
    except FileNotFoundError:
        return {}
    return {row[0]: int(row[1]) for row in rows if len(row) == 2 and row[1].isdigit()}
