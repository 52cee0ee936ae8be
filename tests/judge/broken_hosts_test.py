#!/usr/bin/env python3
"""A host that breaks one rule is told this rule and no other, for each rule; one that breaks none
passes the standard script, in which every rule is judged.

Argument: tavmir-controller.
"""
import concurrent.futures
import re
import sys
import unittest

sys.dont_write_bytecode = True
from judged import ROOT, STANDARD, Judged, rules_of
from plain_host import Host

CONTROLLER = sys.argv[1]
AT_ONCE = 8
MOST_SECONDS = 120

KNOWN = """reply-timeout 500ms
attempts 3
poll-within 10s
reconnect-within 10s
stations 1
writes counting word 64
"""
# Of the hosts that break one of these times, and only of them: elsewhere a busy machine may take its time.
TIMES = {
    "exception-goes-on": {"poll-within 10s": "poll-within 1s"},
    "poll-goes-on": {"poll-within 10s": "poll-within 1s"},
    "poll-beside-writes": {"poll-within 10s": "poll-within 1s"},
    "recovers": {"poll-within 10s": "poll-within 1s"},
    "reconnect-within": {"reconnect-within 10s": "reconnect-within 2s"},
}
# What is played so that a break is seen.
PLAYED = {
    "wait-out": "drop times=2 every=4",
    "same-bytes": "drop times=2 every=4",
    "attempts": "silent for=3s",
    "slow-patience": "slow times=2 by=250ms",
    "late-dropped": "late times=2 every=4",
    "duplicate-dropped": "duplicate times=2 every=4",
    "foreign-dropped": "foreign times=2 every=4",
    "short-refused": "short times=4 every=2 of=reads",
    "long-refused": "long times=4 every=2 of=reads",
    "cut-closes": "cut times=1 every=4",
    "exception-keeps-line": "exception times=2 every=4",
    "exception-goes-on": "exception times=2 every=4",
    "refused-rate-falls": "refuse-all for=4s",
    "one-connection": "cut times=1 every=4\ncalm for=2s",
    "reconnect-within": "disconnect times=1 every=4",
    "reconnect-pause": "disconnect times=5 every=4",
    "reconnect-grows": "rejected for=2s",
    "recovers": "silent for=2s",
    "poll-goes-on": "calm for=6s",
    "poll-beside-writes": "calm for=5s",
}
STANDARD_PLAY = "calm for=2s"


def judged(script, broken):
    """(exit status, report, text) of a host with these breaks."""
    judge = Judged(CONTROLLER, script)
    try:
        Host(judge.port, broken, judge.is_running).run()
        return judge.wait(MOST_SECONDS)
    finally:
        judge.close()


def known_of(rule):
    known = KNOWN
    for calm, strict in TIMES.get(rule, {}).items():
        known = known.replace(calm, strict)
    return known


def rules():
    table = (ROOT / "tools" / "judge" / "rule_table.h").read_text()
    return re.findall(r"\{Rule::\w+, \"([a-z-]+)\",", table)


class BrokenHosts(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        with concurrent.futures.ThreadPoolExecutor(AT_ONCE) as pool:
            right = pool.submit(judged, KNOWN + situations_of(STANDARD.read_text()), [])
            each = {rule: pool.submit(judged, known_of(rule) + PLAYED.get(rule, STANDARD_PLAY) +
                                      "\n", [rule]) for rule in rules()}
            cls.right = right.result()
            cls.each = {rule: run.result() for rule, run in each.items()}

    def test_there_is_a_host_for_each_rule(self):
        self.assertGreaterEqual(len(self.each), 30)

    def test_each_is_told_its_rule_and_no_other(self):
        for rule, (status, report, text) in self.each.items():
            with self.subTest(rule):
                self.assertEqual(rules_of(report, "broken"), {rule}, text)
                self.assertEqual(status, 1)
                self.assertIn(f"\n{rule}: ", text)

    def test_a_right_one_keeps_every_rule(self):
        status, report, text = self.right
        self.assertEqual(rules_of(report, "broken"), set(), text)
        self.assertEqual(rules_of(report, "not judged"), set(), text)
        self.assertEqual(status, 0)
        self.assertIn("result: kept (30 kept, 0 broken, 0 not judged)", text)


def situations_of(script):
    """The part of a script that is played."""
    lines = [line.partition("#")[0] for line in script.splitlines()]
    first = next(i for i, line in enumerate(lines) if line.startswith("calm"))
    return "\n".join(lines[first:]) + "\n"


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
