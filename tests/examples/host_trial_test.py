#!/usr/bin/env python3
"""The example, built against an installed driver, in front of every fault that the simulated
controller can play, and in each chapter of docs/integration.md: it says what is to be seen, shows
no wrong value as a good one, and ends cleanly; on the driver that checks its host too, without a
report.

Arguments: minimal_host, the same with a structure on its second screen, tavmir-controller,
plant.json, the folders of the driver and of the one that checks its host.
"""
import concurrent.futures
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import time
import unittest

sys.dont_write_bytecode = True
import plays
import trial

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
PARALLEL = 6
# Seconds. Nothing is waited for longer than half of one, the rest is for a machine that is paused; a
# host that waited for what never comes would take as long as a test has patience.
LONGEST_END = 20
TRUE = {"Main.Run": {"1"}, "Main.Setpoint": {"1500", "7"}, "Main.Axis[1].Pos": {"0"},
        "Main.Counts[1]": {"0 0 0 0 0 0"}, "Main.Axis[2].Torque": {"0"}}
READ = ["Main.Run = 1 (good)", "Main.Setpoint = 1500 (good)"]
DONE = ["> write 7", "Main.Setpoint := 7: done", "...", "Main.Setpoint = 7 (good)"]
ENDS = ["> write 7", "Main.Setpoint := 7:"] # done or not, but it ends
TITLE = ["> read", "Main.Title: Filling line 1"]
NOTHING = ["(good)", "(stale)", "(bad", ": done", "Main.Title: Filling"]

# What the controller plays; what is typed and seen; what must never be seen.
FAULTS = [
    ("none", [], READ + DONE + TITLE, ["(bad", "connection:"]),
    ("lose=1", [], ["Main.Setpoint = – (never read: no valid answer)",
                    "> write 7", "Main.Setpoint := 7: unknown: no valid answer"], NOTHING),
    ("lose%3", [], READ + ENDS, []),
    ("drop=1", [], ["Main.Run = – (never read: no valid answer)",
                    "> write 7", "Main.Setpoint := 7: unknown: no valid answer",
                    "> read", "Main.Title: not done: no valid answer"], NOTHING),
    ("drop%3", [], READ + ENDS, []),
    ("delay=1", ["--delay-ms", "300"], READ + DONE + TITLE, ["(bad", "connection:"]),
    ("late=1", ["--late-ms", "700"], READ + DONE + TITLE, []),
    ("late=1", ["--late-ms", "4000"], ["Main.Run = – (never read: no valid answer)"] + ENDS, []),
    ("truncate=1", [], ["Main.Run = – (never read: no "] + ENDS, NOTHING),
    ("oversize=1", [], ["Main.Run = – (never read: no valid answer)",
                        "> write 7", "Main.Setpoint := 7: unknown: no valid answer"], NOTHING),
    ("cut=1", [], ["connection: no whole frame", "Main.Run = – (never read: no whole frame)",
                   "> write 7", "Main.Setpoint := 7: unknown: no whole frame"], NOTHING),
    ("corrupt%2", ["--seed", "5"], READ + ENDS, []),
    ("corrupt=1", [], ["Main.Run = – (never read: no "], ["(good)"]),
    ("garble=1", [], ["Main.Setpoint = "], []),
    ("duplicate=1", [], READ + DONE + TITLE, ["(bad", "connection:"]),
    ("disconnect=1", [], ["connection: closed by the controller",
                          "Main.Run = – (never read: closed by the controller)",
                          "> write 7", "Main.Setpoint := 7: unknown: closed"], NOTHING),
    ("disconnect%4", [], ["connection: closed by the controller"] + READ + ENDS, []),
    ("refuse@6", ["--refuse-ms", "4000"], ["connection: Connection refused", "...",
                                          "Main.Run = 1 (good)"] + DONE, []),
]
# What a controller lacks, and what it takes too much of.
LACKS = [
    (["--refuse", "Main.Setpoint=2"], ["Main.Run = 1 (good)",
                                       "Main.Setpoint = – (never read: refused, code 2)",
                                       "> write 7", "Main.Setpoint := 7: not done: refused, code 2"]
     + TITLE, ["Main.Setpoint = 1500"]),
    (["--stations", "2"], ["Main.Run = – (never read: refused, code 11)",
                           "> write 7", "Main.Setpoint := 7: not done: refused, code 11"], NOTHING),
    (["--stations", "2", "--unknown-stations", "silent"],
     ["Main.Run = – (never read: no valid answer)"], NOTHING),
    (["--max-rate", "3", "--over-rate", "delay"], READ, []),
]


def row(fault, options, said, never):
    return f"{fault} {' '.join(options)}", (["--fault", fault] if fault != "none" else []) + options, \
        said, never


TRIALS = [row(*fault) for fault in FAULTS] + \
    [(" ".join(options), options, said, never) for options, said, never in LACKS]


def wrong_good_values(said):
    wrong = []
    for line in said:
        shown = re.match(r"(Main\.\S+) = (.*) \(good\)", line)
        if shown and shown[2] not in TRUE[shown[1]]:
            wrong.append(line)
    return wrong


def tried(options, said, never, plant, driver, checks):
    port = trial.free_port()
    controller = trial.Controller(port, ["--project", plant, *options])
    host = trial.Host(port, driver, checks)
    try:
        for step in plays.grouped(said):
            if isinstance(step, list):
                host.expect(*step)
            else:
                host.type(step[2:])
        took = host.end()
        host.rest()
    finally:
        host.kill()
        controller.end()
    if took > LONGEST_END:
        raise AssertionError(f"the host took {took:.1f} s to end")
    for words in never:
        for line in host.said:
            if words in line:
                raise AssertionError(f"never {words!r}, but: {line}")
    if "garble=1" not in options: # nothing in the protocol can tell
        wrong = wrong_good_values(host.said)
        if wrong:
            raise AssertionError(f"wrong values, shown as good: {wrong}")


def once_more(function, checks):
    """Again when it failed: a machine that pauses for seconds makes other faults than those played. What
    the checked driver found stays, be it in the first."""
    try:
        function(checks)
    except AssertionError as failed:
        print(f"once more: {failed}", file=sys.stderr)
        function(checks)


class Trials(unittest.TestCase):
    """Some at once: each of them waits most of its time."""
    driver = None
    is_checked = False

    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.plant = trial.calm_plant(self.folder.name)

    def run_all(self, work):
        """work: {title: function of the file for reports}"""
        with concurrent.futures.ThreadPoolExecutor(PARALLEL) as threads:
            running = {}
            for number, (title, function) in enumerate(work.items()):
                checks = f"{self.folder.name}/checks-{number}" if self.is_checked else None
                running[title] = (threads.submit(once_more, function, checks), checks)
            for title, (result, checks) in running.items():
                with self.subTest(title):
                    result.result()
                    if checks is not None and pathlib.Path(checks).exists():
                        self.assertEqual(pathlib.Path(checks).read_text(), "")

    def test_faults(self):
        self.run_all({title: lambda checks, o=options, s=said, n=never:
                      tried(o, s, n, self.plant, self.driver, checks)
                      for title, options, said, never in TRIALS})

    def test_chapters(self):
        self.run_all({title: lambda checks, t=text:
                      plays.Player(trial.PLACES["PLANT"], self.driver, checks).play(*plays.plays(t))
                      for title, text in plays.chapters()})


class TrialsOnTheCheckedDriver(Trials):
    is_checked = True

    def test_it_is_the_checked_driver(self):
        reports = pathlib.Path(self.folder.name) / "reports"
        script = f"import ctypes; ctypes.CDLL('{self.driver}/libtavmir_kx_tcp.so.1').AddListWriteVar(0)"
        subprocess.run([sys.executable, "-c", script], stderr=subprocess.DEVNULL, timeout=60,
                       env=dict(os.environ, TAVMIR_CHECK=f"log:{reports}"))
        self.assertIn("null-argument", reports.read_text())


class Table(unittest.TestCase):
    def test_every_kind_of_fault_is_tried(self):
        source = (ROOT / "tools" / "controller" / "fault_kinds.h").read_text()
        kinds = set(re.findall(r'\{FaultKind::\w+, "(\w+)",', source))
        self.assertGreaterEqual(len(kinds), 13)
        self.assertEqual({re.split("[=%@]", fault)[0] for fault, *_ in FAULTS}, kinds)


class Silence(unittest.TestCase):
    def test_writes_behind_one_that_is_given_up_are_told(self):
        port = trial.free_port()
        controller = trial.Controller(port, ["--fault", "drop=1"])
        host = trial.Host(port)
        written = 0
        try:
            while not any("dropped behind another" in line for line in host.said) and written < 60:
                written += 1
                host.type(f"write {written}")
                host.wait_until_taken()
                time.sleep(1) # as an operator, who gives the driver time to give one up
                host.take_what_was_said()
            host.end()
            host.rest()
        finally:
            host.kill()
            controller.end()
        self.assertTrue(any("dropped behind another" in line for line in host.said), host.said)
        for number in range(1, written + 1):
            ends = [line for line in host.said if f":= {number}: " in line]
            self.assertEqual(len(ends), 1, host.said)


class RefusedAddress(unittest.TestCase):
    def test_stays_out_of_the_rebuild(self):
        port = trial.free_port()
        controller = trial.Controller(port, [])
        host = trial.Host(port, program=trial.PLACES["HOST_WITH_STRUCTURE"])
        try:
            for step in ["> screen 2", ["Main.Axis[2] = – (never read"], "> write 7",
                         ["Main.Setpoint := 7: done"], "> screen 1", ["Main.Setpoint = "]]:
                if isinstance(step, list):
                    host.expect(*step)
                else:
                    host.type(step[2:])
            self.assertLess(host.end(), LONGEST_END)
        finally:
            host.kill()
            controller.end()


class Typed(unittest.TestCase):
    def test_what_a_word_cannot_hold_is_refused_and_never_written(self):
        port = trial.free_port()
        with tempfile.TemporaryDirectory() as folder:
            controller = trial.Controller(port, ["--project", trial.calm_plant(folder)])
            host = trial.Host(port)
            try:
                host.expect("Main.Setpoint = 1500 (good)")
                for text in ["70000", "65536", "-1", "abc", "7x", ""]:
                    host.type(f"write {text}")
                    host.expect(f"write {text}: not a number from 0 to 65535")
                host.type("write 65535")
                host.expect("Main.Setpoint := 65535: done", "Main.Setpoint = 65535 (good)")
                host.end()
                host.rest()
            finally:
                host.kill()
                controller.end()
        self.assertEqual([line for line in host.said if ":=" in line],
                         ["Main.Setpoint := 65535: done"])
        shown = {line.split(",")[0] for line in host.said if line.startswith("Main.Setpoint = ")}
        self.assertLessEqual({line.split(" (")[0] for line in shown} - {"Main.Setpoint = –"},
                             {"Main.Setpoint = 1500", "Main.Setpoint = 65535"})


class NoController(unittest.TestCase):
    def test_command_lines_that_make_no_sense_are_refused(self):
        for arguments, status in [([], 2), (["127.0.0.1"], 2), (["nobody.invalid:5020"], 2),
                                  (["a:1", "b"], 2), (["--help"], 0)]:
            done = subprocess.run([trial.PLACES["MINIMAL_HOST"], *arguments], capture_output=True,
                                  text=True, timeout=60,
                                  env={"LD_LIBRARY_PATH": trial.PLACES["DRIVER"]})
            self.assertEqual((done.returncode, "Usage" in done.stderr), (status, True), arguments)

    def test_what_was_asked_for_ends_with_the_host(self):
        host = trial.Host(trial.free_port())
        host.expect("connection: Connection refused")
        for number in range(1, 4):
            host.type(f"write {number}")
        host.wait_until_taken()
        self.assertLess(host.end(), LONGEST_END)
        host.rest()
        ends = [line for line in host.said if ":=" in line]
        host.kill()
        self.assertEqual(len(ends), len(set(ends)))
        for number in range(1, 4):
            self.assertEqual(len([line for line in ends if f":= {number}: " in line]), 1, ends)


def main():
    names = ["MINIMAL_HOST", "HOST_WITH_STRUCTURE", "CONTROLLER", "PLANT", "DRIVER"]
    trial.PLACES.update(zip(names, sys.argv[1:6]))
    suite = unittest.TestSuite()
    load = unittest.defaultTestLoader.loadTestsFromTestCase
    suite.addTests([load(case) for case in
                    [Table, NoController, Typed, Silence, RefusedAddress, Trials]])
    TrialsOnTheCheckedDriver.driver = sys.argv[6]
    suite.addTests(load(TrialsOnTheCheckedDriver))
    sys.exit(not unittest.TextTestRunner(verbosity=2).run(suite).wasSuccessful())


main()
