#!/usr/bin/env python3
"""A host records a controller that falls silent for a while; then the recording is replayed and asked
as the page asks it. Usage: replay_program_test.py TOOLS DRIVER PROJECT [unittest options]; TOOLS is the
build's folder with host/ and controller/."""
import json
import pathlib
import re
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest
import urllib.error
import urllib.parse
import urllib.request

TOOLS = DRIVER = PROJECT = None
PATIENCE = 60
POSITION = "Main.Axis[0].Pos"


def await_that(condition, what):
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        found = condition()
        if found:
            return found
        time.sleep(0.02)
    raise AssertionError(f"in vain: {what}")


class Page:
    """A program that prints its page's address, as a script sees it."""

    def __init__(self, *arguments):
        self.process = subprocess.Popen([TOOLS / "host" / "tavmir-host", *arguments],
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        line = self.process.stdout.readline().rstrip("\n")
        self.base, self.token = re.fullmatch(
            r"(http://127\.0\.0\.1:[0-9]+)/#token=([0-9a-f]{32})", line).groups()

    def ask(self, what, body=None, **query):
        """Status and body."""
        request = urllib.request.Request(
            f"{self.base}/api/v1/{what}?" + urllib.parse.urlencode(query),
            data=None if body is None else json.dumps(body).encode(),
            headers={"Authorization": "Bearer " + self.token, "Content-Type": "application/json"})
        try:
            with urllib.request.urlopen(request, timeout=PATIENCE) as answer:
                return answer.status, json.loads(answer.read())
        except urllib.error.HTTPError as refused:
            return refused.code, json.loads(refused.read())

    def get(self, what, **query):
        status, body = self.ask(what, **query)
        assert status == 200, body
        return body

    def go_to(self, at):
        status, body = self.ask("replay", {"at": at})
        assert status == 200, body

    def row(self, address=POSITION):
        return self.get("values", address=address)["values"][0]

    def end(self):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGINT)
        self.process.communicate(timeout=PATIENCE)
        return self.process.returncode


class Replay(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        """Good for some seconds, silent until values are stale, good again."""
        cls.temporary = tempfile.TemporaryDirectory()
        cls.folder = pathlib.Path(cls.temporary.name) / "recording"
        controller = subprocess.Popen(
            [TOOLS / "controller" / "tavmir-controller", "--listen", "127.0.0.1:0", "--project",
             PROJECT], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        place = re.fullmatch(r"listening on (.*)\n", controller.stdout.readline())[1]
        run = ["run", PROJECT, "--driver", DRIVER, "--connect", place, "--page", "--interval", "60000",
               "--record", cls.folder]
        try:
            live = Page(*run)
            is_good = lambda: live.row()[3] == "good"
            await_that(is_good, "the value is good")
            time.sleep(4) # for the good moment below, however late a busy machine stops the other
            controller.send_signal(signal.SIGSTOP)
            await_that(lambda: live.row()[3] != "good", "the value is not good")
            time.sleep(0.5)
            controller.send_signal(signal.SIGCONT)
            await_that(is_good, "the value is good again")
            time.sleep(1)
            while_recording = Page("replay", cls.folder, "--page")
            cls.growth = [while_recording.get("status")["replay"]["to"]]
            await_that(lambda: while_recording.get("status")["replay"]["to"] > cls.growth[0] + 500,
                       "what is covered grows")
            assert while_recording.end() == 0
            assert live.end() == 0, live.process.returncode
        finally:
            controller.send_signal(signal.SIGCONT)
            controller.terminate()
            controller.communicate(timeout=PATIENCE)
        cls.page = Page("replay", cls.folder, "--page")
        covered = cls.page.get("status")["replay"]
        gaps = cls.page.get("history", address=POSITION,
                            **{"from": covered["from"], "to": covered["to"]})["gaps"]
        begin, end, _ = next(gap for gap in gaps if "answer" in gap[2])
        cls.times = {"good": begin - 2500, "stale": (begin + end) // 2, "back": end + 500}

    @classmethod
    def tearDownClass(cls):
        status = cls.page.end()
        cls.temporary.cleanup()
        assert status == 0, status

    def test_values_at_a_moment_are_those_of_then(self):
        self.page.go_to(self.times["good"])
        row = self.page.row()
        self.assertEqual(row[3], "good")
        self.assertLessEqual(row[5], self.times["good"])
        self.page.go_to(self.times["stale"])
        stale = self.page.row()
        self.assertIn(stale[3], ("stale", "bad"))
        self.assertRegex(stale[4], r"^since 20.*Z: ")
        self.page.go_to(self.times["back"])
        self.assertEqual(self.page.row()[3], "good")
        self.assertNotEqual(self.page.row()[1], stale[1], "it moved on")

    def test_the_strip_is_that_of_the_moment(self):
        self.page.go_to(self.times["stale"])
        status = self.page.get("status")
        self.assertEqual(status["link"]["state"], "silent")
        self.assertGreater(status["lastMinute"]["timeouts"] + status["total"]["timeouts"], 0)
        self.assertFalse(status["writes"]["allowed"])
        self.assertAlmostEqual(status["replay"]["at"], self.times["stale"], delta=2)
        self.page.go_to(self.times["back"])
        self.assertEqual(self.page.get("status")["link"]["state"], "connected")

    def test_why_says_what_was_the_matter_then(self):
        self.page.go_to(self.times["stale"])
        why = self.page.get("explain", address=POSITION)
        self.assertRegex(why["conclusion"], r"^At this moment it was (stale|bad) because .*answer")
        self.assertEqual([step["step"] for step in why["steps"]],
                         ["resolved", "polled", "station", "exchange", "value", "age"])
        self.page.go_to(self.times["good"])
        self.assertRegex(self.page.get("explain", address=POSITION)["conclusion"],
                         r"^At this moment it was good: ")

    def test_a_trend_has_the_values_and_a_gap(self):
        history = self.page.get("history", address=POSITION, points=2000,
                                **{"from": self.times["good"] - 2000, "to": self.times["back"]})
        self.assertEqual(history["source"], "recording")
        self.assertGreater(len(history["t"]), 10)
        self.assertEqual(history["t"], sorted(set(history["t"])))
        self.assertTrue(any(begin <= self.times["stale"] <= end for begin, end, _ in history["gaps"]))
        self.assertFalse(any(begin <= self.times["good"] < end for begin, end, _ in history["gaps"]))

    def test_events_until_the_moment_and_no_frames(self):
        self.page.go_to(self.times["good"])
        kinds = [event["kind"] for event in self.page.get("events")["events"]]
        self.assertIn("connected", kinds)
        self.assertNotIn("gaveUp", kinds)
        self.page.go_to(self.times["stale"])
        self.assertIn("gaveUp", [event["kind"] for event in self.page.get("events")["events"]])
        self.assertEqual(self.page.get("frames")["frames"], [])
        status, answer = self.page.ask("capture.pcapng")
        self.assertEqual(status, 503)
        self.assertIn("frames are in captures", answer["error"])

    def test_played_it_goes_on_and_stops_at_the_end(self):
        end = self.page.get("status")["replay"]["to"]
        status, answer = self.page.ask("replay", {"at": end - 1000, "playing": True, "speed": 2})
        self.assertEqual((status, answer["playing"]), (200, True))
        stopped = await_that(lambda: (lambda replay: not replay["playing"] and replay)(
            self.page.get("status")["replay"]), "it stops")
        await_that(lambda: self.page.get("status")["replay"]["at"] == end, "the end is shown")
        self.assertEqual(stopped["to"], end)

    def test_nothing_can_be_written(self):
        status, answer = self.page.ask("write", {"address": POSITION, "value": "1"})
        self.assertEqual((status, answer["error"]), (403, "a recording cannot be written"))

    def test_a_port_that_is_taken_is_refused(self):
        with socket.create_server(("127.0.0.1", 0)) as taken:
            place = f"127.0.0.1:{taken.getsockname()[1]}"
            ended = subprocess.run(
                [TOOLS / "host" / "tavmir-host", "replay", self.folder, f"--page={place}"], text=True,
                stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=PATIENCE, check=False)
        self.assertEqual(ended.returncode, 2)
        self.assertRegex(ended.stderr, f"^tavmir-host: --page: {place} cannot be listened on: .*\n$")


class Refusals(unittest.TestCase):
    def refused(self, *arguments):
        ended = subprocess.run([TOOLS / "host" / "tavmir-host", "replay", *arguments], text=True,
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=PATIENCE,
                               check=False)
        self.assertEqual((ended.returncode, ended.stdout), (2, ""))
        self.assertEqual(ended.stderr.count("\n"), 1, ended.stderr)
        return ended.stderr.rstrip("\n")

    def test_a_folder_that_is_none(self):
        self.assertEqual(self.refused("/nowhere", "--page"),
                         "tavmir-host: /nowhere: No such file or directory")

    def test_a_folder_without_a_recording(self):
        with tempfile.TemporaryDirectory() as folder:
            (pathlib.Path(folder) / "recording-00000001-20260101T000000000Z.sqlite").write_text("no")
            self.assertEqual(self.refused(folder, "--page"), f"tavmir-host: {folder}: holds no recording")

    def test_without_the_page(self):
        self.assertEqual(self.refused("/nowhere"),
                         "tavmir-host: a recording is shown in the browser only: add --page")


if __name__ == "__main__":
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    TOOLS, DRIVER, PROJECT = (pathlib.Path(argument).resolve() for argument in sys.argv[1:4])
    unittest.main(argv=[sys.argv[0], *sys.argv[4:]])
