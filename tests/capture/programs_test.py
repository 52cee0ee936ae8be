#!/usr/bin/env python3
"""The programs with their captures on, on loopback: what each sent is what the other received, also
under faults; a killed host leaves a file that can be read; a ring keeps its limit.
Usage: programs_test.py TOOLS DRIVER [unittest options]; TOOLS is the build's folder with host/,
controller/ and probe/."""
import json
import pathlib
import re
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import time
import unittest

sys.dont_write_bytecode = True
import pcapng

TOOLS = DRIVER = None
PATIENCE = 120
MIB = 1 << 20
LONGEST_REPLY = 17  # bytes, of the project below: a word of 32 bits behind its address

PROJECT = {
    "connection": {"host": "127.0.0.1", "port": 5020, "station": 1,
                   "replyTimeoutMs": 20000,  # never reached, be the machine as busy as it may
                   "reconnectMinMs": 20, "reconnectMaxMs": 40, "retryLimit": 3, "passMs": 20},
    "labels": [{"name": "Plant", "variables": [
        {"name": "Run", "type": "bit", "address": 100},
        {"name": "Level", "type": "word", "address": 1600},
        {"name": "Total", "type": "dword", "address": 3200}]}],
    "polled": [{"address": "Plant.Run"}, {"address": "Plant.Level"}, {"address": "Plant.Total"}]}


class Controller:
    def __init__(self, *options, listen="127.0.0.1:0"):
        self.process = subprocess.Popen(
            [TOOLS / "controller" / "tavmir-controller", "--listen", listen, *map(str, options)],
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        line = self.process.stdout.readline()
        self.place = re.fullmatch(r"listening on (.*)\n", line)[1]

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.end()

    def end(self):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
            self.process.communicate(timeout=PATIENCE)


def host(command, project, *options):
    return [TOOLS / "host" / "tavmir-host", command, project, "--driver", DRIVER,
            *map(str, options)]


def run(command):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                          timeout=PATIENCE)


def wait_until(condition, what):
    end = time.monotonic() + PATIENCE
    while not condition():
        if time.monotonic() > end:
            raise AssertionError(f"waited in vain until {what}")
        time.sleep(0.02)


def packets_so_far(path):
    """Those of a file that is being written; none when its last block is not whole now."""
    try:
        return pcapng.packets(path)
    except (FileNotFoundError, ValueError, struct.error):
        return []


class Programs(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)
        self.project = self.folder / "plant.json"
        self.write_project()
        self.of_host = self.folder / "host.pcapng"
        self.of_controller = self.folder / "controller.pcapng"

    def write_project(self, **connection):
        self.project.write_text(json.dumps(
            {**PROJECT, "connection": {**PROJECT["connection"], **connection}}))

    def captured(self, is_enough, *faults):
        """Both captures and the host's statistics of a run, which ends when the controller's capture
        is enough."""
        with Controller("--capture", self.of_controller, *faults) as controller:
            process = subprocess.Popen(
                host("run", self.project, "--connect", controller.place, "--format", "json",
                     "--capture", self.of_host), stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                text=True)
            try:
                wait_until(lambda: is_enough(packets_so_far(self.of_controller)), "it is enough")
            finally:
                process.send_signal(signal.SIGTERM)
                output, said = process.communicate(timeout=PATIENCE)
            self.assertEqual(process.returncode, 0, said)
            wait_until(self.has_seen_the_end, "the controller has seen the host's last byte")
            controller.end()
        statistics = json.loads(output.splitlines()[-1])["statistics"]
        self.assertEqual(statistics["eventsMissedByTheseStatistics"], 0)
        return pcapng.packets(self.of_host), pcapng.packets(self.of_controller), statistics

    def has_seen_the_end(self):
        """Of the host's last connection."""
        last = [one.source for one in pcapng.packets(self.of_host) if one.flags == pcapng.SYN][-1]
        return any(last in (one.source, one.destination)
                   for one in packets_so_far(self.of_controller)
                   if one.flags & (pcapng.FIN | pcapng.RESET))

    def check_both(self, of_host, of_controller, statistics):
        self.assertEqual(len(pcapng.sent(of_host, True)), statistics["bytesSent"])
        self.assertEqual(len(pcapng.sent(of_host, False)), statistics["bytesReceived"])
        self.assertEqual(pcapng.sent(of_host, True), pcapng.sent(of_controller, False))
        for found in (of_host, of_controller):
            opened = [one for one in found if one.flags == pcapng.SYN]
            closed = [one for one in found if one.flags & (pcapng.FIN | pcapng.RESET)]
            self.assertGreaterEqual(len(opened), statistics["connects"])
            self.assertTrue(closed)
            self.assertEqual(len({one.source for one in opened}), len(opened))
        ends = {(one.source, one.destination) for one in of_host if one.flags == pcapng.SYN}
        self.assertEqual({(one.source, one.destination) for one in of_controller
                          if one.flags == pcapng.SYN}, ends)

    def test_what_one_side_sent_the_other_received(self):
        of_host, of_controller, statistics = self.captured(
            lambda found: len([one for one in found if one.outbound and one.payload]) > 200)
        self.check_both(of_host, of_controller, statistics)
        received, sent = pcapng.sent(of_host, False), pcapng.sent(of_controller, True)
        self.assertEqual(received, sent[:len(received)])
        # The host's end may come between a request and its reply.
        under_way = statistics["attempts"] - statistics["replies"]
        self.assertIn(under_way, (0, 1))
        self.assertLessEqual(len(sent) - len(received), under_way * LONGEST_REPLY)
        self.assertGreater(statistics["replies"], 20)
        self.assertEqual(pcapng.comments(of_host), [])
        self.assertEqual(pcapng.comments(of_controller), [])
        times = [one.at for one in of_host]
        self.assertEqual(times, sorted(times))
        self.assertLess(abs(times[-1] - time.time()), 60)

    def test_under_faults_every_byte_is_there_and_says_what_was_wrong(self):
        # The late reply comes before the next fault: it would be taken for the rest of a cut one.
        faults = {"late": 5, "cut": 130, "duplicate": 135, "drop": 140, "disconnect": 145,
                  "oversize": 150, "lose": 155}
        options = [part for kind, at in faults.items() for part in ("--fault", f"{kind}@{at}")]
        self.write_project(replyTimeoutMs=300)
        of_host, of_controller, statistics = self.captured(
            lambda found: "fault lose" in pcapng.comments(found), *options, "--late-ms", 450)
        self.check_both(of_host, of_controller, statistics)
        for kind in faults:
            self.assertIn(f"fault {kind}", pcapng.comments(of_controller), kind)
        said = "\n".join(pcapng.comments(of_host))
        for words in ("late: answers request #", "duplicate: request #", "no whole frame",
                      "a reply was cut off", "did not answer within 300 ms",
                      "the controller closed the connection", "attempt 2", "bytes instead of"):
            self.assertIn(words, said)

    def test_reads_and_writes_are_captured(self):
        with Controller("--refuse", "word:1600=2") as controller:
            connect = ("--connect", controller.place, "--capture", self.of_host)
            done = run(host("write", self.project, "Plant.Total=7", *connect))
            self.assertEqual(done.returncode, 0, done.stderr)
            self.assertEqual(len([one for one in pcapng.packets(self.of_host) if one.payload]), 2)
            done = run(host("read", self.project, "Plant.Level", *connect))
            self.assertEqual(done.returncode, 1)
            self.assertIn("exception 2 (illegal data address)",
                          "\n".join(pcapng.comments(pcapng.packets(self.of_host))))

    def test_nobody_there_is_an_attempt_and_a_refusal(self):
        with Controller() as controller:
            place = controller.place
        done = run(host("read", self.project, "Plant.Level", "--connect", place, "--capture",
                        self.of_host))
        self.assertEqual(done.returncode, 1)
        found = pcapng.packets(self.of_host)
        self.assertEqual(found[0].flags, pcapng.SYN)
        self.assertEqual(found[0].comment, "no connection: Connection refused")
        self.assertEqual(found[1].flags & pcapng.RESET, pcapng.RESET)

    def test_a_killed_host_leaves_a_file_that_can_be_read(self):
        with Controller() as controller:
            process = subprocess.Popen(
                host("run", self.project, "--connect", controller.place, "--format", "csv", "--pass",
                     0, "--capture", self.of_host), stdout=subprocess.DEVNULL,
                stderr=subprocess.DEVNULL)
            wait_until(lambda: self.of_host.exists() and self.of_host.stat().st_size >= 20000,
                       "something is captured")
            process.kill()
            process.wait()
        found = pcapng.packets(self.of_host, killed=True)
        self.assertGreater(len([one for one in found if one.payload]), 20)

    def test_a_ring_keeps_its_limit(self):
        ring = self.folder / "ring"
        ring.mkdir()
        with Controller() as controller:
            process = subprocess.Popen(
                host("run", self.project, "--connect", controller.place, "--format", "csv", "--pass",
                     0, "--capture", ring / "line.pcapng", "--capture-limit", 1, "--capture-files",
                     3), stdout=subprocess.DEVNULL,
                stderr=subprocess.DEVNULL)
            end = time.monotonic() + PATIENCE
            highest = 0
            while time.monotonic() < end and highest < 6:
                names = sorted(path.name for path in ring.iterdir())
                self.assertLessEqual(len(names), 3)
                self.assertLessEqual(self.sizes(ring), MIB)
                highest = int(names[-1][5:10]) if names else 0
                time.sleep(0.02)
            process.send_signal(signal.SIGTERM)
            process.wait(PATIENCE)
        self.assertGreaterEqual(highest, 6)
        for path in ring.iterdir():
            self.assertTrue(pcapng.packets(path), path.name)

    @staticmethod
    def sizes(folder):
        total = 0
        for path in folder.iterdir():
            try:
                total += path.stat().st_size
            except FileNotFoundError:
                pass # the oldest went just now
        return total

    def test_over_the_sixth_version_too(self):
        with Controller("--capture", self.of_controller, listen="[::1]:0") as controller:
            done = run(host("read", self.project, "Plant.Level", "--connect", controller.place,
                            "--capture", self.of_host))
            self.assertEqual(done.returncode, 0, done.stderr)
            controller.end()
        of_host, of_controller = pcapng.packets(self.of_host), pcapng.packets(self.of_controller)
        self.assertEqual({of_host[0].source[0], of_host[0].destination[0]}, {"::1"})
        self.assertEqual(pcapng.sent(of_host, True), pcapng.sent(of_controller, False))
        self.assertEqual(pcapng.sent(of_host, False), pcapng.sent(of_controller, True))

    def test_a_file_that_cannot_be_written_ends_each_program_at_once(self):
        missing = self.folder / "missing" / "line.pcapng"
        commands = {
            "host": host("run", self.project, "--capture", missing),
            "controller": [TOOLS / "controller" / "tavmir-controller", "--listen", "127.0.0.1:0",
                           "--capture", missing],
            "probe": [TOOLS / "probe" / "tavmir-probe", "--connect", "127.0.0.1:1", "--read",
                      "word:0", "--capture", missing]}
        for name, command in commands.items():
            done = run(command)
            self.assertEqual(done.returncode, 2, name)
            self.assertEqual(done.stderr, f"tavmir-{name}: cannot write a capture to {missing}: "
                                          "No such file or directory\n")
            self.assertEqual(done.stdout, "", name)

    def test_a_project_file_is_never_taken_for_a_capture(self):
        done = run(host("run", self.project, "--capture", self.project))
        self.assertEqual(done.returncode, 2)
        self.assertEqual(json.loads(self.project.read_text()), PROJECT)

    def test_the_probes_read_is_captured(self):
        with Controller("--capture", self.of_controller) as controller:
            done = run([TOOLS / "probe" / "tavmir-probe", "--library", DRIVER, "--connect",
                        controller.place, "--read", "word:1600:3", "--capture", self.of_host])
            self.assertEqual(done.returncode, 0, done.stdout)
            controller.end()
        of_probe, of_controller = pcapng.packets(self.of_host), pcapng.packets(self.of_controller)
        self.assertEqual(pcapng.sent(of_probe, True), pcapng.sent(of_controller, False))
        self.assertEqual(pcapng.sent(of_probe, False), pcapng.sent(of_controller, True))
        self.assertEqual(len(pcapng.sent(of_probe, True)), 9 + 3 * 4)
        self.assertEqual(of_probe[0].flags, pcapng.SYN)

    def test_a_client_that_sends_half_a_request_is_captured(self):
        with Controller("--capture", self.of_controller) as controller:
            place, port = controller.place.rsplit(":", 1)
            with socket.create_connection((place, int(port))) as client:
                client.sendall(b"\0\1\0\0\0")
            wait_until(lambda: self.of_controller.stat().st_size >= 600, "its end is captured")
            controller.end()
        found = pcapng.packets(self.of_controller)
        self.assertEqual(pcapng.sent(found, False), b"\0\1\0\0\0")
        self.assertEqual(pcapng.comments(found), ["no whole request"])


if __name__ == "__main__":
    TOOLS = pathlib.Path(sys.argv.pop(1)).resolve()
    DRIVER = pathlib.Path(sys.argv.pop(1)).resolve()
    unittest.main()
