#!/usr/bin/env python3
"""The dissector: fields, names, replies beside requests, and a mark for each thing that is wrong.
Captures are made byte by byte; tshark reads them."""
import pathlib
import re
import struct
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
import tshark
from captures import (Capture, Stream, done, entries, frame, read, refused, values, write)

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent


class Dissector(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.path = self.folder / "capture.pcap"

    def capture(self, *segments, port=5020):
        """Segments of one stream: (ms, "request" or "reply", bytes)."""
        with Capture(self.path) as capture:
            stream = Stream(capture, port)
            for at, side, data in segments:
                stream.segment(at, data, side == "request")

    def marks(self, mark, **options):
        return [int(row[0]) for row in
                tshark.fields(self.path, "frame.number", filter=f"tavmir.{mark}", **options)]

    def names_file(self, *lines):
        path = self.folder / "plant.names"
        path.write_text("".join(line + "\n" for line in lines))
        return (f"tavmir.names:{path}",)

    # Fields

    def test_a_read_and_its_reply_are_shown_field_by_field(self):
        self.capture((0, "request", read(258, 102, 100, 116, station=3)),
                     (1.25, "reply", values(258, 102, 2, (100, 4660), (116, 65535), station=3)))
        self.assertEqual(
            tshark.fields(self.path, "tavmir.transaction", "tavmir.protocol", "tavmir.length",
                          "tavmir.station", "tavmir.function", "tavmir.count", "tavmir.address",
                          "tavmir.value", "tavmir.value.signed", "tavmir.request_in",
                          "tavmir.response_in", "tavmir.time"),
            [["258", "0", "11", "3", "102", "2", "100,116", "", "", "", "2", ""],
             ["258", "0", "15", "3", "102", "2", "100,116", "4660,65535", "4660,-1", "1", "",
              "0.001250000"]])

    def test_values_are_big_endian_in_replies_and_little_endian_in_requests(self):
        real = struct.unpack(">I", struct.pack(">f", 20.5))[0]
        self.capture((0, "request", write(0, 103, 2, (16, 1234))),
                     (1, "reply", done(0, 103, 1)),
                     (2, "request", write(1, 109, 4, (32, real), (64, 0xFFFFFFFE))),
                     (3, "reply", done(1, 109, 2)),
                     (4, "request", read(2, 108, 32)),
                     (5, "reply", values(2, 108, 4, (32, real))))
        rows = tshark.fields(self.path, "tavmir.value", "tavmir.value.signed",
                             "tavmir.value.float", filter="tavmir.value")
        self.assertEqual(rows[0], ["1234", "1234", ""])
        self.assertEqual(rows[1][:2], [f"{real},4294967294", f"{real},-2"])
        self.assertEqual(rows[1][2].split(",")[0], "20.5")
        self.assertEqual(rows[2], [str(real), str(real), "20.5"])

    def test_bits_have_values_without_sign_and_float(self):
        self.capture((0, "request", write(0, 101, 1, (7, 1), (8, 0))),
                     (1, "reply", done(0, 101, 2)))
        self.assertEqual(
            tshark.fields(self.path, "tavmir.value", "tavmir.value.signed", "tavmir.value.float"),
            [["1,0", "", ""], ["", "", ""]])

    def test_the_info_column_says_it_in_words(self):
        self.capture((0, "request", read(7, 102, 100, 116)),
                     (1, "reply", values(7, 102, 2, (100, 1), (116, 2))),
                     (2, "request", write(8, 101, 1, (5, 1))),
                     (3, "reply", done(8, 101, 1)),
                     (4, "request", read(9, 108, 64)),
                     (5, "reply", refused(9, 108, 2)))
        self.assertEqual(tshark.words(self.path), [
            "request #7 station 1 read words: 100, 116",
            "reply #7 station 1 read words: 100=1, 116=2",
            "request #8 station 1 write bits: 5=1",
            "reply #8 station 1 write bits: 1 done",
            "request #9 station 1 read double words: 64",
            "reply #9 station 1 read double words: exception 2 (illegal data address)"])

    def test_long_lists_are_cut_in_the_info_column_only(self):
        self.capture((0, "request", read(0, 100, *range(45))))
        self.assertEqual(tshark.words(self.path)[0],
                         "request #0 station 1 read bits: 0, 1, 2, 3, 4, 5, 6, 7 and 37 more"
                         " [unanswered]")
        addresses = tshark.fields(self.path, "tavmir.address")[0][0].split(",")
        self.assertEqual(addresses, [str(i) for i in range(45)])

    def test_functions_and_exceptions_are_those_of_the_tools(self):
        source = (ROOT / "tools" / "wire" / "frame_layout.cpp").read_text()
        script = tshark.DISSECTOR.read_text()
        functions = re.findall(r"\{(\d+), (true|false), ElementClass::\w+, \d+, (\d), "
                               r"\"([^\"]+)\"\}", source)
        self.assertEqual(len(functions), 6)
        for code, writes, width, words in functions:
            self.assertRegex(script, rf"\[{code}\] = \{{ write = {writes}, class = \w+, "
                                     rf"width = {width}, words = \"{words}\" \}}")
        exceptions = re.findall(r"\{(\d+), \"([^\"]+)\"\},", source)
        self.assertEqual(len(exceptions), 9)
        for code, words in exceptions:
            self.assertIn(f'[{code}] = "{words}",', script)

    # Names

    def test_names_and_formats_come_out_of_the_names_file(self):
        names = self.names_file("word\t100\t1\tsigned\tMain.Level", "dword\t64\t*\tfloat\tMain.T",
                                "word\t116\t2\tunsigned\tOther station", "no line of names")
        real = struct.unpack(">I", struct.pack(">f", -1.5))[0]
        self.capture((0, "request", read(0, 102, 100, 116)),
                     (1, "reply", values(0, 102, 2, (100, 65535), (116, 65535))),
                     (2, "request", read(1, 108, 64, 100, station=9)),
                     (3, "reply", values(1, 108, 4, (64, real), (100, 3), station=9)))
        self.assertEqual([row[0] for row in
                          tshark.fields(self.path, "tavmir.name", preferences=names)],
                         ["Main.Level", "Main.Level", "Main.T", "Main.T"])
        self.assertEqual(tshark.words(self.path, preferences=names)[1::2],
                         ["reply #0 station 1 read words: Main.Level=-1, 116=65535",
                          "reply #1 station 9 read double words: Main.T=-1.5, 100=3"])
        self.assertEqual(tshark.count(self.path, 'tavmir.name == "Main.T" && tavmir.value.float < 0',
                                      preferences=names), 1)

    def test_without_its_names_file_addresses_are_numbers(self):
        self.capture((0, "request", read(0, 102, 100)))
        for file in (self.folder / "none", self.folder):
            _, errors = tshark.run(self.path, preferences=(f"tavmir.names:{file}",))
            self.assertNotIn("Lua", errors)
            self.assertIn("read words: 100", tshark.words(
                self.path, preferences=(f"tavmir.names:{file}",))[0])

    # Replies beside requests

    def test_a_good_exchange_has_no_mark(self):
        self.capture((0, "request", read(0, 102, 100)),
                     (499, "reply", values(0, 102, 2, (100, 1))))
        self.assertEqual(tshark.count(self.path, "_ws.expert"), 0)

    def test_a_reply_behind_the_limit_is_late(self):
        self.capture((0, "request", read(0, 102, 100)),
                     (600, "reply", values(0, 102, 2, (100, 1))))
        self.assertEqual(self.marks("late"), [2])
        self.assertEqual(self.marks("late", preferences=("tavmir.late:700",)), [])

    def test_a_request_without_a_reply_is_unanswered(self):
        self.capture((0, "request", read(0, 102, 100)),
                     (500, "request", read(1, 102, 100)),
                     (501, "reply", values(1, 102, 2, (100, 1))))
        self.assertEqual(self.marks("unanswered"), [1])

    def test_a_reply_answers_the_last_attempt_and_the_next_one_an_earlier(self):
        request = read(0, 102, 100)
        reply = values(0, 102, 2, (100, 1))
        self.capture((0, "request", request), (200, "request", request), (300, "reply", reply),
                     (310, "reply", reply), (320, "reply", reply))
        self.assertEqual(tshark.fields(self.path, "frame.number", "tavmir.request_in",
                                       filter="tavmir.request_in"),
                         [["3", "2"], ["4", "1"], ["5", "2"]])
        self.assertEqual(self.marks("late"), [4])
        self.assertEqual(self.marks("duplicate"), [5])
        self.assertEqual(self.marks("unanswered"), [])

    def test_a_second_reply_is_a_duplicate(self):
        reply = values(0, 102, 2, (100, 1))
        self.capture((0, "request", read(0, 102, 100)), (1, "reply", reply), (2, "reply", reply))
        self.assertEqual(self.marks("duplicate"), [3])
        self.assertEqual(self.marks("unasked"), [])

    def test_a_reply_that_nobody_asked_for_is_unasked(self):
        self.capture((0, "request", read(0, 102, 100)),
                     (1, "reply", values(5, 102, 2, (100, 1))),
                     (2, "reply", values(0, 102, 2, (100, 1), station=2)))
        self.assertEqual(self.marks("unasked"), [2, 3])
        self.assertEqual(self.marks("unanswered"), [1])

    def test_a_number_used_again_is_another_request(self):
        self.capture((0, "request", read(0, 102, 100)),
                     (1, "request", read(0, 102, 116)),
                     (2, "reply", values(0, 102, 2, (116, 1))),
                     (3, "reply", values(0, 102, 2, (116, 1))))
        self.assertEqual(self.marks("unanswered"), [1])
        self.assertEqual(self.marks("duplicate"), [4])

    def test_streams_have_numbers_of_their_own(self):
        with Capture(self.path) as capture:
            one, other = Stream(capture), Stream(capture, host_port=40001)
            one.request(0, read(0, 102, 100))
            other.request(1, read(0, 102, 100))
            one.reply(2, values(0, 102, 2, (100, 1)))
        self.assertEqual(self.marks("unanswered"), [2])

    def test_an_exception_is_marked_and_has_its_code(self):
        self.capture((0, "request", read(0, 102, 100)), (1, "reply", refused(0, 102, 11)))
        self.assertEqual(tshark.fields(self.path, "tavmir.exception", "tavmir.request_in",
                                       filter="tavmir.refused"), [["11", "1"]])

    def test_another_function_is_marked(self):
        self.capture((0, "request", read(0, 102, 100)),
                     (1, "reply", values(0, 108, 4, (100, 1))))
        self.assertEqual(self.marks("wrong_function"), [2])

    def test_another_count_is_marked(self):
        self.capture((0, "request", read(0, 102, 100, 116)),
                     (1, "reply", values(0, 102, 2, (100, 1))))
        self.assertEqual(self.marks("wrong_count"), [2])
        self.assertEqual(self.marks("wrong_length"), [])

    def test_other_addresses_are_marked(self):
        self.capture((0, "request", read(0, 102, 100, 116)),
                     (1, "reply", values(0, 102, 2, (100, 1), (117, 1))))
        self.assertEqual(self.marks("wrong_addresses"), [2])

    def test_a_length_unlike_the_count_is_marked(self):
        self.capture(
            (0, "request", read(0, 102, 100)),
            (1, "reply", frame(0, 1, 102, 1, entries(2, (100, 1)) + b"\0")),
            (2, "request", write(1, 103, 2, (100, 1))),
            (3, "reply", frame(1, 1, 103, 1, b"\0\0")),
            (4, "request", frame(2, 1, 102, 2, b"\0\0\0\1")),
            (5, "reply", frame(2, 1, 102 | 0x80, 3, b"\0")))
        self.assertEqual(self.marks("wrong_length"), [2, 4, 5, 6])

    def test_an_unknown_function_is_marked(self):
        self.capture((0, "request", frame(0, 1, 65, 1, b"abc")))
        self.assertEqual(self.marks("unknown_function"), [1])

    # Streams

    def test_frames_in_pieces_and_several_in_one_segment(self):
        frames = read(0, 102, 100) + read(1, 102, 116) + read(2, 102, 132)
        self.capture((0, "request", frames[:4]), (1, "request", frames[4:20]),
                     (2, "request", frames[20:]))
        transactions = [value for row in tshark.fields(self.path, "tavmir.transaction")
                        for value in row[0].split(",")]
        self.assertEqual(transactions, ["0", "1", "2"])

    def test_what_is_no_frame_is_marked_and_the_next_segment_read_again(self):
        self.capture((0, "request", b"GET / HTTP/1.1\r\n\r\n"), (1, "request", read(0, 102, 100)))
        self.assertEqual(self.marks("broken_stream"), [1])
        self.assertEqual(tshark.count(self.path, "tavmir.transaction == 0"), 1)

    def test_a_length_that_no_frame_has_is_marked_at_once_and_only_once(self):
        for length in (0, 1, 1025, 0x8009):
            with self.subTest(length):
                broken = frame(0, 1, 102, 1, b"\0" * 40, length=length)
                self.capture((0, "reply", broken), (1, "request", read(0, 102, 100)))
                self.assertEqual(self.marks("broken_stream"), [1])
                self.assertEqual(tshark.fields(self.path, "tavmir.rest", filter="tavmir.rest"),
                                 [[broken.hex()]])

    def test_other_ports_are_preferences(self):
        self.capture((0, "request", read(0, 102, 100)),
                     (1, "reply", values(0, 102, 2, (100, 7))), port=6001)
        self.assertEqual(tshark.count(self.path, "tavmir"), 0)
        ports = ("tavmir.ports:5020,6000-6002",)
        self.assertEqual(tshark.fields(self.path, "tavmir.value", preferences=ports),
                         [[""], ["7"]])

    def test_a_range_may_hold_the_hosts_port_too(self):
        self.capture((0, "request", read(0, 102, 100)),
                     (1, "reply", values(0, 102, 2, (100, 7))))
        every = ("tavmir.ports:1-65535",)
        self.assertEqual(self.marks("request_in", preferences=every), [2])
        self.assertEqual(self.marks("unanswered", preferences=every), [])

    def test_port_502_is_shared_with_the_built_in_dissector(self):
        modbus = struct.pack(">HHHBBHH", 1, 0, 6, 1, 3, 0, 2)
        self.capture((0, "request", read(0, 102, 100)), (1, "request", modbus), port=502)
        self.assertEqual(tshark.count(self.path, "tavmir"), 0)
        shared = ("tavmir.take_502:TRUE",)
        self.assertEqual(self.marks("transaction", preferences=shared), [1])
        self.assertEqual(tshark.fields(self.path, "frame.number", filter="mbtcp",
                                       preferences=shared), [["2"]])

    def test_frames_in_pieces_are_put_together_on_port_502_too(self):
        frames = read(0, 102, 100) + read(1, 102, 116)
        self.capture((0, "request", frames[:5]), (1, "request", frames[5:20]),
                     (2, "request", frames[20:]), port=502)
        rows = tshark.fields(self.path, "tavmir.transaction",
                             preferences=("tavmir.take_502:TRUE",))
        self.assertEqual([value for row in rows for value in row[0].split(",")], ["0", "1"])


if __name__ == "__main__":
    unittest.main()
