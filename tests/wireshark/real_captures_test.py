#!/usr/bin/env python3
"""Real captures of host and controller on loopback under each of the controller's faults: what
tshark counts is what the host and the controller counted, and what the host traced; the programs'
own captures are dissected as tcpdump's; names and values are those of the controller's memory. Usage: real_captures_test.py TOOLS [unittest options];
TOOLS is the build's folder with host/ and controller/."""
import collections
import concurrent.futures
import pathlib
import re
import sys
import unittest

sys.dont_write_bytecode = True
import dissected
import real_run

TOOLS = None
SECONDS = 7
# Requests that meet the fault: early, so that the run ends in peace, and not two in a row, so that
# it is the repetition that is answered.
EARLY = (3, 7, 10, 14, 20)


def at_each(kind, numbers=EARLY):
    return [part for number in numbers for part in ("--fault", f"{kind}@{number}")]


CASES = {
    "none": [],
    "lose": at_each("lose"),
    "drop": at_each("drop"),
    "delay": at_each("delay"),
    "late": [*at_each("late"), "--late-ms", "900"],
    "truncate": at_each("truncate"),
    "oversize": at_each("oversize"),
    "cut": at_each("cut"),
    "corrupt": at_each("corrupt"),
    "garble": at_each("garble"),
    "duplicate": at_each("duplicate"),
    "disconnect": at_each("disconnect", (4, 9, 17)),
    "refuse": [*at_each("refuse", (4, 12)), "--refuse-ms", "200"],
    "refused address": ["--refuse", "Plant.Total=2"],
    "unknown station": ["--stations", "9"],
    "rate": ["--max-rate", "30"],
    "all kinds": [part for number, kind in enumerate(
        ("lose", "late", "drop", "duplicate", "cut", "truncate", "disconnect", "oversize"))
        for part in ("--fault", f"{kind}@{3 + 3 * number}")] + ["--late-ms", "900"],
}


class Seen:
    """What tshark shows of a run."""

    def __init__(self, run):
        self.frames = dissected.frames(run.capture, run.port, run.preferences())
        self.kinds = collections.Counter(frame.kind() for frame in self.frames)
        self.unanswered = sum("unanswered" in frame.marks for frame in self.frames)

    def dropped(self):
        """Replies that the host took for none of its requests."""
        return sum(self.kinds[kind] for kind in ("late", "duplicate", "unasked", "unlike"))

    def failed(self):
        """Requests that the host waited for in vain."""
        return self.unanswered + self.kinds["late"] + self.kinds["unlike"]


class Own:
    """What tshark shows of the captures that the programs made themselves."""

    def __init__(self, run):
        self.frames = {who: dissected.frames(path, run.port, run.preferences())
                       for who, path in (("host", run.of_host), ("controller", run.of_controller))}


class Traced:
    """What the host's trace says, by kind of line."""

    def __init__(self, run):
        text = run.trace.read_text()
        self.requests = len(re.findall(r"^\S+ connection \d+ > ", text, re.M))
        self.remarks = collections.Counter(
            re.findall(r"^\S+ connection \d+ < .*\[(late|duplicate|foreign|cut|no frame)\]", text,
                       re.M))
        self.exceptions = len(re.findall(r" < #\d+ station \d+ [a-z ]+: exception \d+ .*\(\+", text))
        self.timeouts = len(re.findall(r"the controller did not answer within", text))


def made(name):
    run = real_run.run_whole(TOOLS, SECONDS, CASES[name])
    try:
        return run, Seen(run), Own(run), Traced(run)
    finally:
        run.leave()


class RealCaptures(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        # They mostly wait.
        with concurrent.futures.ThreadPoolExecutor(6) as pool:
            cls.made = dict(zip(CASES, pool.map(made, CASES)))

    def test_tshark_counts_what_the_host_counted(self):
        for name, (run, seen, _, _) in self.made.items():
            host = run.host
            with self.subTest(name):
                self.assertEqual(
                    {"requests": seen.kinds["request"],
                     "replies": seen.kinds["good"],
                     "exceptions": seen.kinds["refused"],
                     "wrong length": seen.kinds["wrong_length"],
                     "dropped": seen.dropped(),
                     "in vain": seen.failed()},
                    {"requests": host["attempts"] - host["requestsThatNeverLeft"],
                     "replies": host["replies"],
                     "exceptions": host["exceptionReplies"],
                     "wrong length": host["repliesOfWrongLength"],
                     "dropped": host["lateOrForeignFramesDropped"],
                     "in vain": host["timeOuts"] + host["requestsLostWithAConnection"]})

    def test_tshark_counts_what_the_controller_counted(self):
        for name, (run, seen, _, _) in self.made.items():
            controller = run.controller
            with self.subTest(name):
                self.assertEqual(
                    {"requests": seen.kinds["request"],
                     "exceptions": seen.kinds["refused"],
                     "duplicates": seen.kinds["duplicate"],
                     "late": seen.kinds["late"]},
                    {"requests": controller["requests"],
                     "exceptions": sum(count for label, count in controller.items()
                                       if label.startswith("exceptions of code")),
                     "duplicates": controller.get("faults duplicate", 0),
                     "late": controller.get("faults late", 0)})
                if name == "corrupt":
                    continue # which byte it hits decides whether there is a reply
                self.assertEqual(seen.unanswered, sum(
                    controller.get(f"faults {kind}", 0)
                    for kind in ("lose", "drop", "disconnect", "refuse", "cut")))
                self.assertEqual(seen.kinds["wrong_length"], sum(
                    controller.get(f"faults {kind}", 0) for kind in ("truncate", "oversize")))

    def test_each_fault_happened(self):
        for name, (run, _, _, _) in self.made.items():
            with self.subTest(name):
                kinds = {option.partition("@")[0] for option in CASES[name] if "@" in option}
                for kind in kinds:
                    asked = sum(option.startswith(kind + "@") for option in CASES[name])
                    self.assertEqual(run.controller[f"faults {kind}"], asked)

    def test_the_trace_says_what_tshark_counts(self):
        for name, (run, seen, _, traced) in self.made.items():
            with self.subTest(name):
                self.assertEqual(
                    {"requests": traced.requests, "exceptions": traced.exceptions,
                     "late": traced.remarks["late"], "duplicate": traced.remarks["duplicate"],
                     "dropped": sum(traced.remarks[remark]
                                    for remark in ("late", "duplicate", "foreign"))},
                    {"requests": seen.kinds["request"], "exceptions": seen.kinds["refused"],
                     "late": seen.kinds["late"], "duplicate": seen.kinds["duplicate"],
                     "dropped": seen.dropped()})
                self.assertLessEqual(traced.timeouts, run.host["timeOuts"])

    def test_the_programs_own_captures_are_dissected_as_the_one_of_the_line(self):
        for name, (_, seen, own, _) in self.made.items():
            line = dissected.exchanged(seen.frames)
            for who, frames in own.frames.items():
                with self.subTest(name, own=who):
                    self.assertEqual(dissected.exchanged(frames), line)

    def test_a_good_line_has_no_mark(self):
        _, seen, _, _ = self.made["none"]
        self.assertEqual([sorted(frame.marks) for frame in seen.frames if frame.marks], [])
        self.assertGreater(seen.kinds["good"], 100)

    def test_requests_name_their_replies_and_replies_their_requests(self):
        _, seen, _, _ = self.made["none"]
        requests = {frame.number: frame for frame in seen.frames if frame.is_request}
        for reply in seen.frames:
            if reply.is_request:
                continue
            request = requests[int(reply.all("tavmir.request_in")[0])]
            self.assertEqual(request.all("tavmir.response_in"), [str(reply.number)])
            self.assertEqual(request.all("tavmir.name"), reply.all("tavmir.name"))

    def test_values_by_name_are_those_of_the_memory(self):
        """The controller's initial values, and what a host wrote, read back from it."""
        written = {"Plant.Run": "0", "Plant.Level": "65535", "Plant.Offset": "-32768",
                   "Plant.Total": "4294967295", "Plant.Temperature": "1.5"}
        with real_run.TemporaryRun(TOOLS) as run:
            run.host_does("read", *real_run.VARIABLES)
            run.host_does("write", *(f"{name}={value}" for name, value in written.items()))
            memory = {row["name"]: row["value"] for row in run.host_does(
                "read", *real_run.VARIABLES, "--format", "json")}
            run.finish()
            frames = dissected.frames(run.capture, run.port, run.preferences())
        self.assertEqual({name: float(value) for name, value in memory.items()},
                         {"Plant.Fault": 0, **{name: float(value)
                                               for name, value in written.items()}})
        requests = [values for frame in frames if frame.is_request for values in named(frame)]
        replies = [values for frame in frames if not frame.is_request for values in named(frame)]
        count = len(real_run.VARIABLES)
        first, last = dict(replies[:count]), dict(replies[count:])
        self.assertEqual(first, {"Plant.Fault": 0, **real_run.INITIAL})
        self.assertEqual(last, {name: float(value) for name, value in memory.items()})
        self.assertEqual(dict(requests), {name: float(value) for name, value in written.items()})


def named(frame):
    """(name, value as its format shows it) of each entry that has a value."""
    pairs = []
    for name, entry in frame.entries():
        kind = real_run.VARIABLES[name][2]
        field = {"signed": "tavmir.value.signed", "float": "tavmir.value.float"}.get(
            kind, "tavmir.value")
        if field in entry:
            pairs.append((name, float(entry[field])))
    return pairs


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    TOOLS = pathlib.Path(sys.argv.pop(1)).resolve()
    unittest.main()
