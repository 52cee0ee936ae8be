#!/usr/bin/env python3
"""The captures that host and controller write themselves, beside tcpdump's of the same run: the same
frames field by field, times within a millisecond, and files that the other tools take.
Usage: own_captures_test.py TOOLS [unittest options]; TOOLS is the build's folder with host/ and
controller/."""
import concurrent.futures
import pathlib
import re
import subprocess
import sys
import unittest

sys.dont_write_bytecode = True
import dissected
import real_run
import tshark

TOOLS = None
SECONDS = 7
EARLY = (3, 7, 10, 14, 20)
# Faults after which each side still gets every byte that the other sent.
CASES = {
    "none": [],
    "late": [*(part for at in EARLY for part in ("--fault", f"late@{at}")), "--late-ms", "900"],
    "duplicate": [part for at in EARLY for part in ("--fault", f"duplicate@{at}")],
    "cut": [part for at in EARLY for part in ("--fault", f"cut@{at}")],
    "oversize": [part for at in EARLY for part in ("--fault", f"oversize@{at}")],
    "disconnect": [part for at in (4, 9, 17) for part in ("--fault", f"disconnect@{at}")],
    "refused address": ["--refuse", "Plant.Total=2"],
}
# What depends on the place in the file and on the clock.
OF_THE_FILE = {"tavmir.request_in", "tavmir.response_in", "tavmir.time"}
# What tshark has to complain about in a capture's packets.
COMPLAINTS = ("tcp.checksum.status == 0 || ip.checksum.status == 0 || "
              "tcp.analysis.retransmission || tcp.analysis.lost_segment || "
              "tcp.analysis.ack_lost_segment || tcp.analysis.out_of_order || "
              "tcp.analysis.window_full")


class Dissected:
    def __init__(self, run):
        read = lambda path: dissected.frames(path, run.port, run.preferences())
        self.captured, self.of_host, self.of_controller = (
            read(path) for path in (run.capture, run.of_host, run.of_controller))
        self.complaints = {path.name: tshark.fields(
            path, "frame.number", "tcp.flags.str", filter=COMPLAINTS,
            preferences=("tcp.check_checksum:TRUE", "ip.check_checksum:TRUE",
                         *run.preferences())) for path in (run.of_host, run.of_controller)}
        self.comments = "\n".join(line[0] for path in (run.of_host, run.of_controller)
                                  for line in tshark.fields(path, "frame.comment",
                                                            filter="frame.comment"))


def made(name):
    run = real_run.run_whole(TOOLS, SECONDS, CASES[name])
    try:
        return run, Dissected(run), accepted(run)
    finally:
        run.leave()


def about(path):
    return subprocess.run(["capinfos", "-M", path], stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, text=True, check=True)


def accepted(run):
    """What capinfos says of the host's file, and of the order of the controller's, and how many
    packets editcap makes of the first."""
    said = about(run.of_host)
    copy = run.folder / "copy.pcapng"
    edited = subprocess.run(["editcap", "-r", run.of_host, copy, "1-5"], stdout=subprocess.PIPE,
                            stderr=subprocess.PIPE, text=True, check=True)
    order = about(run.of_controller).stdout
    return said.stdout, order, said.stderr + edited.stderr, tshark.count(copy, "tcp")


def fields(frames, are_requests):
    return [[field for field in frame.fields if field[0] not in OF_THE_FILE]
            for frame in frames if frame.is_request == are_requests]


def differences(left, right):
    """In seconds, of frames that are the same, one direction after the other."""
    return [abs(one.at - other.at) for are_requests in (True, False)
            for one, other in zip(*([frame for frame in frames if frame.is_request == are_requests]
                                    for frames in (left, right)))]


class OwnCaptures(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        with concurrent.futures.ThreadPoolExecutor(6) as pool:
            cls.made = dict(zip(CASES, pool.map(made, CASES)))

    def test_the_hosts_capture_is_dissected_as_tcpdumps_is(self):
        for name, (_, seen, _) in self.made.items():
            with self.subTest(name):
                self.assertGreater(len(seen.captured), 50)
                for are_requests in (True, False):
                    self.assertEqual(fields(seen.of_host, are_requests),
                                     fields(seen.captured, are_requests))

    def test_the_controllers_capture_is_dissected_as_tcpdumps_is(self):
        for name, (_, seen, _) in self.made.items():
            with self.subTest(name):
                for are_requests in (True, False):
                    self.assertEqual(fields(seen.of_controller, are_requests),
                                     fields(seen.captured, are_requests))

    def test_times_are_those_of_the_line_within_a_millisecond(self):
        for name, (_, seen, _) in self.made.items():
            with self.subTest(name):
                for own in (seen.of_host, seen.of_controller):
                    apart = sorted(differences(own, seen.captured))
                    # The rest: programs that a busy machine let wait.
                    self.assertLess(apart[len(apart) * 3 // 4], 0.001)
                    self.assertLess(apart[-1], 5)

    def test_nothing_is_wrong_with_the_packets(self):
        for name, (_, seen, _) in self.made.items():
            with self.subTest(name):
                self.assertEqual(seen.complaints, {"host.pcapng": [], "controller.pcapng": []})

    def test_capinfos_and_editcap_take_the_file(self):
        for name, (run, seen, (said, of_controller, complaint, copied)) in self.made.items():
            with self.subTest(name):
                self.assertRegex(said, r"File encapsulation: +rawip")
                self.assertRegex(said, r"File timestamp precision: +nanoseconds \(9\)")
                for one in (said, of_controller):
                    self.assertRegex(one, r"Strict time order: +True")
                self.assertRegex(said, r"Capture application: +tavmir-host \d")
                packets = int(re.search(r"Number of packets: +(\d+)", said)[1])
                self.assertGreater(packets, len(seen.of_host))
                self.assertNotIn("cut short", complaint)
                self.assertEqual(copied, 5)

    def test_comments_name_the_fault(self):
        for name, (_, seen, _) in self.made.items():
            with self.subTest(name):
                words = {"none": "", "late": "late: answers request #",
                         "duplicate": "was answered already", "cut": "a reply was cut off",
                         "oversize": "bytes instead of",
                         "disconnect": "the controller closed the connection",
                         "refused address": "exception 2 (illegal data address)"}[name]
                self.assertIn(words, seen.comments)
                if "--fault" in CASES[name]:
                    self.assertIn(f"fault {name}", seen.comments)


if __name__ == "__main__":
    TOOLS = pathlib.Path(sys.argv.pop(1)).resolve()
    unittest.main()
