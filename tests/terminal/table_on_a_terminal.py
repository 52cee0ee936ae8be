"""`tavmir-host run` on a terminal, worked by keys, against the real controller.

Usage: table_on_a_terminal.py HOST CONTROLLER
"""
import fcntl
import json
import os
import pathlib
import re
import signal
import struct
import subprocess
import sys
import tempfile
import termios
import time
import unittest

from pty_program import PATIENCE, PtyProgram

HOST, CONTROLLER = sys.argv[1:3]
WORDS = 40

PROJECT = {
    "connection": {"host": "127.0.0.1", "port": 5020, "station": 1, "connectTimeoutMs": 20000,
                   "replyTimeoutMs": 20000, "reconnectMinMs": 20, "reconnectMaxMs": 100,
                   "retryLimit": 2, "writeMode": "controller"},
    "types": [],
    "labels": [{"name": "Main", "variables": [
        {"name": "Level", "type": "word", "address": 1000, "array": {"bounds": [[1, WORDS]]}},
        {"name": "Zone", "type": "word", "address": 20000},
        {"name": "Alpha", "type": "word", "address": 20016}]}],
    "polled": [{"address": "Main.Level", "format": "unsigned"},
               {"address": "Main.Zone", "format": "unsigned", "name": "Zone 温度"},
               {"address": "Main.Alpha", "format": "unsigned", "name": "A\u0301 first"}],
}


class Controller:
    """The simulated controller; comes back where it was when it is started again."""

    def __init__(self, project):
        self.project = project
        self.place = "127.0.0.1:0"
        self.process = None
        self.start()

    def start(self):
        self.process = subprocess.Popen(
            [CONTROLLER, "--listen", self.place, "--project", self.project],
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL, text=True)
        first = self.process.stdout.readline()
        assert first.startswith("listening on "), first
        self.place = first.split()[-1]

    def stop(self):
        self.process.kill()
        self.process.wait()
        self.process.stdout.close()


def first_value_row(lines):
    """The place of the heading, and what stands below it."""
    for place, line in enumerate(lines):
        if "ADDRESS" in line:
            return lines[place + 1]
    return ""


def contains(text):
    return lambda lines: any(text in line for line in lines)


class TableOnATerminal(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.project = os.path.join(cls.folder.name, "plant.json")
        pathlib.Path(cls.project).write_text(json.dumps(PROJECT), encoding="utf-8")
        cls.controller = Controller(cls.project)

    @classmethod
    def tearDownClass(cls):
        cls.controller.stop()
        cls.folder.cleanup()

    def run_host(self, *options, **settings):
        program = PtyProgram([HOST, "run", self.project, "--connect", self.controller.place,
                              "--interval", "100", "--pass", "20", *options], **settings)
        self.addCleanup(program.close)
        return program

    def expect(self, program, wanted, what):
        self.assertTrue(program.shows(wanted), what + "\n" + "\n".join(program.lines()))

    def table(self, *options, **settings):
        """A run whose first values are to be seen."""
        program = self.run_host(*options, **settings)
        self.expect(program, lambda lines: re.search(r"Main\.Level\[1\] +\d", first_value_row(lines)),
                    "values")
        return program

    def test_a_trace_on_the_terminal_takes_the_tables_place(self):
        program = self.run_host("--trace", "--interval", "60000")
        self.expect(program, contains("Z connection 1 > #"), "trace")
        self.assertNotIn(b"? keys", program.raw)

    def test_a_trace_in_a_file_leaves_the_table(self):
        file = os.path.join(self.folder.name, "trace.txt")
        program = self.table("--trace=" + file)
        self.expect(program, lambda lines: lines[-1].endswith("? keys"), "place")
        program.type("q")
        self.assertEqual(program.wait(), 0)
        self.assertIn("read words: Main.Level[1]=", pathlib.Path(file).read_text())

    def test_the_table_has_state_figures_values_and_place(self):
        program = self.table()
        self.expect(program, lambda lines: lines[0].startswith("connected to 127.0.0.1:") and
                    lines[0].endswith(" UTC"), "state")
        self.expect(program, lambda lines: re.match(
            r"pass [\d.]+ ms  round trip [\d.]+ ms  last minute: no failures$", lines[1]), "figures")
        self.expect(program, lambda lines: lines[-1].startswith("1-19 of 42") and
                    lines[-1].endswith("? keys"), "place")

    def test_a_filter_shows_fewer_rows_while_it_is_typed(self):
        program = self.table()
        program.type("/level[1")
        self.expect(program, lambda lines: lines[-1].startswith("/level[1") and
                    "1-11 of 11" in lines[-1], "filter")
        self.expect(program, lambda lines: not contains("Level[2]")(lines), "rows")
        program.type("\x1b")
        self.expect(program, lambda lines: lines[-1].startswith("1-19 of 42"), "all rows again")

    def test_sorting_is_shown_and_the_other_way_round_too(self):
        program = self.table()
        program.type("/main.a\n")
        self.expect(program, contains("1-1 of 1 "), "only one")
        program.type("\x1bn")
        self.expect(program, lambda lines: contains("NAME^")(lines) and
                    "Main.Alpha" in first_value_row(lines), "by name")
        program.type("n")
        self.expect(program, lambda lines: contains("NAMEv")(lines) and
                    "Main.Zone" in first_value_row(lines), "the other way")
        program.type("a")
        self.expect(program, contains("AGE^"), "by age")
        program.type("w")
        self.expect(program, lambda lines: lines[2].startswith("^"), "by quality")

    def test_scrolling_goes_to_the_end_and_back(self):
        program = self.table()
        program.type("\x1b[B")
        self.expect(program, lambda lines: "Main.Level[2]" in first_value_row(lines), "one down")
        program.type("\x1b[6~")
        self.expect(program, lambda lines: lines[-1].startswith("20-38 of 42"), "a page down")
        program.type("\x1b[4~")
        self.expect(program, lambda lines: lines[-1].startswith("24-42 of 42"), "the end")
        program.type("\x1b[1~")
        self.expect(program, lambda lines: lines[-1].startswith("1-19 of 42"), "the start")

    def test_wide_and_combining_characters_keep_their_columns(self):
        program = self.table()
        program.type("\x1b[4~")
        self.expect(program, contains("Main.Alpha"), "the end")
        columns = set()
        for line in program.screen.buffer.values():
            text = "".join(line[place].data or "" for place in range(80))
            if "Main." not in text:
                continue
            columns.add(next(place for place in range(80) if line[place].data == "M" and
                             "".join(line[place + more].data for more in range(5)) == "Main." and
                             place > 10))
        self.assertEqual(1, len(columns), columns)

    def test_forty_columns_and_eight_lines_still_show_values(self):
        program = self.table(columns=80, lines=24)
        program.resize(40, 8)
        self.expect(program, lambda lines: len(lines) == 8 and
                    re.search(r"Main\.Level\[1\] +\d+ +\d", first_value_row(lines)), "small")
        program.resize(100, 30)
        self.expect(program, lambda lines: lines[-1].startswith("1-25 of 42"), "large")

    def test_help_names_the_keys(self):
        program = self.table()
        program.type("?")
        self.expect(program, contains("filter by name or address"), "help")
        program.type("?")
        self.expect(program, lambda lines: "Main.Level[1]" in first_value_row(lines), "back")

    def test_q_ends_it_with_the_last_picture_and_the_statistics_once(self):
        program = self.table(environment={"TERM": "xterm"})
        before = program.raw
        self.assertIn(b"\x1b[?1049h", before)
        program.type("q")
        self.assertEqual(0, program.wait())
        after = program.raw[program.raw.rindex(b"\x1b[?1049l"):].decode()
        self.assertEqual(1, len(re.findall(r"^\W*Main\.Level\[1\] .*$", after, re.M)), after)
        self.assertEqual(1, after.count("statistics of "), after)
        self.assertIn("connected to 127.0.0.1:", after)
        self.assertIn("23 more", after)
        self.assertLess(len(after), 6000)

    def test_the_terminal_is_as_it_was_before(self):
        for keys in ("q", "\x03"):
            program = self.table()
            self.assertFalse(self.local_modes(program) & (termios.ICANON | termios.ECHO))
            program.type(keys)
            self.assertEqual(0, program.wait())
            both = termios.ICANON | termios.ECHO
            self.assertEqual(both, self.local_modes(program) & both, keys)

    @staticmethod
    def local_modes(program):
        return termios.tcgetattr(program.master)[3]

    def test_a_typed_line_is_a_command_and_its_result_a_message(self):
        program = self.table("--stdin")
        program.type(":Main.Zone=77\n")
        self.expect(program, contains("Main.Zone = 77: written"), "written")
        program.type(":Main.Zone\n")
        self.expect(program, contains("Main.Zone = 77: read"), "read")
        program.type("q")
        self.assertEqual(0, program.wait())
        end = program.raw.decode(errors="replace")
        self.assertIn("Main.Zone = 77: written", end[end.rindex("ADDRESS"):])

    def test_quality_when_the_controller_stops_and_comes_back(self):
        program = self.table()
        self.controller.stop()
        self.expect(program, lambda lines: lines[0].startswith("not connected to 127.0.0.1:") and
                    "refused" in lines[0], "the reason")
        self.expect(program, lambda lines: first_value_row(lines).startswith("~ ") and
                    "stale: " in first_value_row(lines), "a mark and a reason")
        program.type("w")
        self.expect(program, lambda lines: lines[2].startswith("^ "), "the worst first")
        self.controller.start()
        self.expect(program, lambda lines: lines[0].startswith("connected to "), "back")
        self.expect(program, lambda lines: re.match(r"  .* \d+ ms$", first_value_row(lines)),
                    "good again")

    def test_colours_only_where_they_are_wanted(self):
        for refused, expected in (("", True), ("1", False)):
            program = self.run_host("--connect", "127.0.0.1:1", environment={"NO_COLOR": refused})
            self.expect(program, contains("not connected"), "state")
            self.assertEqual(expected, b"\x1b[31m" in program.raw or b";31m" in program.raw, refused)

    def test_an_unknown_terminal_gets_plain_text(self):
        program = self.run_host("--duration", "0.5", environment={"TERM": "dumb"})
        self.assertEqual(0, program.wait())
        self.assertNotIn(b"\x1b", program.raw)
        self.assertIn(b"statistics of ", program.raw)

    def test_in_the_c_locale_everything_is_ascii_while_it_runs(self):
        program = self.run_host(environment={"LC_ALL": "C"})
        self.expect(program, contains("Main.Level[1]"), "values")
        program.type("\x1b[4~")
        self.expect(program, contains("Zone ??"), "replaced")
        self.assertTrue(program.raw.isascii())

    def test_a_terminal_that_nobody_reads_does_not_hold_up_the_end(self):
        program = self.run_host("--interval", "5", columns=300, lines=100, reads=False)
        self.wait_until_full(program)
        program.signal(signal.SIGINT)
        self.assertEqual(1, program.wait(), "parts of the output are missing")

    def wait_until_full(self, program):
        """Until what waits to be read does not grow any more."""
        waiting, since = -1, time.monotonic()
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end:
            now = struct.unpack("i", fcntl.ioctl(program.master, termios.FIONREAD, b"1234"))[0]
            if now != waiting:
                waiting, since = now, time.monotonic()
            elif now > 0 and time.monotonic() > since + 1.5:
                return
            time.sleep(0.02)
        self.fail("it is never full")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[3:], verbosity=2)
