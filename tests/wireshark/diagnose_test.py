#!/usr/bin/env python3
"""`tavmir-host diagnose` on real captures: host and controller on loopback under each fault that
the controller plays, taken with tcpdump. It names the variable, the request and the fault.

Usage: diagnose_test.py TOOLS [unittest arguments]: the folder of the built programs. Needs the right
to capture.
"""
import json
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
import real_run
from programs import ROOT, Controller, Recording, project_with

TOOLS = pathlib.Path(sys.argv.pop(1)).resolve()
HOST = TOOLS / "host" / "tavmir-host"
CONTROLLER = TOOLS / "controller" / "tavmir-controller"
TABLE = ROOT / "tools" / "controller" / "fault_kinds.h"
TRIES = 4


class Counted(real_run.Run):
    """What host and controller counted in a run."""

    def __init__(self, host, controller):
        self.host, self.controller, self.lost = host, controller, 0

    def is_undisturbed(self):
        """No time-out but those that the controller meant: the last may be under way at the end."""
        return self.host["timeOuts"] <= self.faults((*real_run.ENDS_IN_A_TIMEOUT, "corrupt"))


class Diagnosing(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.capture = self.folder / "capture.pcapng"
        self.project = project_with(folder.name, replyTimeoutMs=400, passMs=20)

    def diagnose(self, *options):
        done = subprocess.run([HOST, "diagnose", str(self.capture), *options], text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=60)
        self.assertEqual(done.stderr, "")
        return done.returncode, done.stdout

    def record(self, *faults, is_useful=Counted.is_undisturbed, **how):
        """What a run of the host and the controller leaves: exit status and the report as JSON. Runs
        again when a busy machine made it useless. The host's own count stays in self.statistics."""
        for _ in range(TRIES):
            counted = self.record_once(*faults, **how)
            if is_useful(counted):
                self.statistics = counted.host
                status, said = self.diagnose(str(self.project), "--json")
                return status, json.loads(said)
        raise AssertionError(f"none of {TRIES} runs was undisturbed: {counted.host}, "
                             f"{counted.controller}")

    def record_once(self, *faults, seconds=3, stdin="", options=()):
        with Controller(CONTROLLER, *faults, project=self.project) as controller:
            with Recording(self.capture, controller.port, *options) as recording:
                ran = subprocess.run([HOST, "run", str(self.project), "--connect",
                                      f"127.0.0.1:{controller.port}", "--duration", str(seconds),
                                      "--format", "json", "--stdin"], input=stdin, text=True,
                                     stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, timeout=60)
            self.assertEqual(recording.dropped, 0)
        return Counted(json.loads(ran.stdout.splitlines()[-1])["statistics"], controller.statistics)

    def the_only_one(self, report):
        self.assertEqual(len(report["conversations"]), 1, report)
        return report["conversations"][0]

    def find(self, report, kind):
        found = [finding for conversation in report["conversations"]
                 for finding in conversation["findings"] if finding["kind"] == kind]
        self.assertTrue(found, f"no {kind} in {json.dumps(report, indent=1)}")
        return found[0]

    def faulty(self, kind, rule, *options, seconds=3):
        status, report = self.record("--fault", rule, *options, seconds=seconds)
        finding = self.find(report, kind)
        self.assertEqual(status, 0 if finding["remark"] else 1)
        first = finding["occurrences"][0]
        # When, which request, and which variables it was about.
        self.assertRegex(first, r"^\d{4}-\d\d-\d\dT[\d:.]+Z")
        return finding, report

    def assert_names_a_request(self, finding):
        self.assertRegex(finding["occurrences"][0], r" #\d+ station 1 (read|write) [\w ]+: Main\.")
        self.assertRegex(finding["requests"][0]["what"], r"^station 1 read [\w ]+: Main\.")

    def test_a_good_run_is_well(self):
        status, report = self.record(
            is_useful=lambda counted: counted.is_undisturbed() and counted.is_whole())
        self.assertEqual(status, 0, json.dumps(report, indent=1))
        conversation = self.the_only_one(report)
        self.assertFalse(report["wrong"])
        self.assertEqual([one for one in conversation["findings"] if not one["remark"]], [])
        self.assertGreater(conversation["replies"], 100)
        self.assertEqual(conversation["replies"], conversation["attempts"])
        self.assertTrue(18 < conversation["passMs"] < 100, conversation["passMs"])
        status, said = self.diagnose()
        self.assertEqual(status, 0)
        self.assertRegex(said, "(all is well|nothing is wrong)")

    def test_lose_and_drop_are_requests_without_a_reply(self):
        for rule in ("lose%50", "drop%50"):
            finding, report = self.faulty("requestsWithoutAReply", rule, seconds=4)
            self.assert_names_a_request(finding)
            self.assertEqual(finding["rhythm"], "every 50th request")
            waits = self.the_only_one(report)["hostWaitsForAReplyMs"]
            # A busy machine adds to it; a second attempt in it would double it.
            self.assertTrue(390 < waits < 790, waits)

    def test_delay_is_a_slow_reply(self):
        finding, _ = self.faulty("slowReplies", "delay%50", "--delay-ms", "80")
        self.assert_names_a_request(finding)
        # A busy machine has slow replies of its own, be it the first one.
        self.assertRegex("\n".join(finding["occurrences"]),
                         r"answered after (8\d|9\d|1\d\d)\.\d ms")

    def test_late_names_the_time_out_that_would_have_caught_it(self):
        finding, _ = self.faulty("lateReplies", "late%50", "--late-ms", "900", seconds=5)
        self.assert_names_a_request(finding)
        wanted = int(re.search(r"time-out of (\d+) ms would", finding["advice"]).group(1))
        self.assertTrue(900 < wanted < 1200, finding["advice"])

    def test_a_late_reply_behind_answered_repetitions_is_told_with_its_own_time(self):
        finding, _ = self.faulty("lateReplies", "late%10", "--late-ms", "2000", seconds=6)
        self.assertEqual(finding["times"], self.statistics["lateOrForeignFramesDropped"])
        wanted = int(re.search(r"time-out of (\d+) ms would", finding["advice"]).group(1))
        self.assertTrue(2000 <= wanted < 2400, finding["advice"])

    def test_truncate_and_oversize_are_wrong_lengths(self):
        for rule, sign in (("truncate%20", "<"), ("oversize%20", ">")):
            finding, _ = self.faulty("repliesOfWrongLength", rule)
            self.assert_names_a_request(finding)
            came, wanted = re.search(r": (\d+) bytes instead of (\d+)",
                                     finding["occurrences"][0]).groups()
            self.assertEqual(int(came) < int(wanted), sign == "<")

    def test_cut_is_a_cut_reply(self):
        finding, _ = self.faulty("cutReplies", "cut%20", seconds=4)
        self.assert_names_a_request(finding)
        self.assertRegex(finding["occurrences"][0], r": \d+ (of \d+ )?bytes")

    def test_corrupt_damages_a_header(self):
        self.project = project_with(self.folder, replyTimeoutMs=150, passMs=20)
        status, report = self.record("--fault", "corrupt%10", seconds=8)
        self.assertEqual(status, 1)
        damaged = {"repliesOfAnotherTransaction", "bytesThatAreNoFrame", "cutReplies",
                   "repliesOfAnotherStation", "repliesOfAnotherFunction", "repliesOfWrongCount",
                   "repliesOfWrongLength", "requestsWithoutAReply", "lateReplies", "duplicateReplies"}
        kinds = {one["kind"]: one for one in self.the_only_one(report)["findings"]
                 if not one["remark"]}
        self.assertLessEqual(set(kinds), damaged)
        self.assertGreaterEqual(len(set(kinds) & damaged), 4, kinds.keys())
        for kind in ("repliesOfAnotherStation", "bytesThatAreNoFrame"):
            self.assert_names_a_request(kinds[kind])

    def test_garble_is_a_value_that_stands_out(self):
        finding, _ = self.faulty("valuesThatStandOut", "garble%40")
        self.assertTrue(finding["remark"])
        self.assertRegex(finding["variables"][0]["what"], r"^Main\.")
        self.assertRegex(finding["occurrences"][0], r": Main\.\S+ \(.*\) was .* instead of ")

    def test_a_garbled_write_is_read_otherwise(self):
        _, report = self.record("--fault", "garble=1", stdin="Main.Setpoint=7\n")
        finding = self.find(report, "valuesReadOtherwiseThanWritten")
        self.assertIn("Main.Setpoint", finding["variables"][0]["what"])

    def test_duplicate_is_a_duplicate(self):
        finding, _ = self.faulty("duplicateReplies", "duplicate%50")
        self.assert_names_a_request(finding)
        self.assertEqual(finding["rhythm"], "every 50th request")

    def test_disconnect_is_told_with_who_closed_and_when_it_was_back(self):
        finding, report = self.faulty("connectionsClosedInsteadOfAReply", "disconnect%50")
        self.assert_names_a_request(finding)
        self.assertRegex(finding["occurrences"][0],
                         r"the controller closed \((FIN|RST)\) [\d.]+ m?s after the request; "
                         r"connected again [\d.]+ m?s later")
        self.assertGreater(self.the_only_one(report)["connections"], 1)

    def test_refuse_is_told_with_its_refused_connections(self):
        finding, report = self.faulty("refusedConnections", "refuse@60", "--refuse-ms", "800")
        self.assertGreater(finding["times"], 1)
        lost = self.find(report, "connectionsClosedInsteadOfAReply")
        self.assert_names_a_request(lost)

    def test_a_refused_address_is_named(self):
        status, report = self.record("--refuse", "Main.Setpoint=2")
        self.assertEqual(status, 1)
        finding = self.find(report, "exceptions")
        self.assertEqual(finding["code"], 2)
        self.assertEqual([re.match(r"[\w.]+", one["what"]).group()
                          for one in finding["variables"]], ["Main.Setpoint"])
        self.assertIn("by itself, too", finding["variables"][0]["what"])

    def test_an_unknown_station_is_refused_or_silent(self):
        _, report = self.record("--stations", "9")
        self.assertEqual(self.find(report, "exceptions")["code"], 11)
        _, report = self.record("--stations", "9", "--unknown-stations", "silent",
                                is_useful=lambda _: True)
        self.assertEqual(self.the_only_one(report)["silentStations"], [1])
        self.assertTrue(self.the_only_one(report)["neverAnswered"])

    def test_a_rate_is_an_exception_of_a_busy_controller(self):
        _, report = self.record("--max-rate", "20")
        self.assertEqual(self.find(report, "exceptions")["code"], 6)

    def test_every_fault_of_the_table_has_a_test(self):
        faults = re.findall(r'\{FaultKind::\w+, "(\w+)"', TABLE.read_text())
        source = pathlib.Path(__file__).read_text()
        for fault in faults:
            if fault != "none":
                self.assertRegex(source, rf'"{fault}[%@=]')

    def test_packets_cut_by_the_capture_are_not_judged(self):
        # Link, IP and TCP headers are 66 bytes: short frames are whole, long ones are not.
        status, report = self.record(options=("-s", "130"))
        conversation = self.the_only_one(report)
        self.assertGreater(conversation["bytesThatTheCaptureLacks"], 0)
        self.assertIn("are missing in the capture", conversation["notes"][0])
        self.assertEqual([one for one in conversation["findings"] if not one["remark"]], [])
        self.assertEqual(status, 0)
        self.assertIn("packets are not whole in it", report["notes"][0])


if __name__ == "__main__":
    unittest.main()
