#!/usr/bin/env python3
"""docs/wireshark.md: each of its filters answers the question it stands behind, its preferences
and fields are the dissector's, and its calls work as they stand there."""
import pathlib
import re
import shlex
import struct
import subprocess
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
import tshark
from captures import Capture, Stream, done, entries, frame, read, refused, values, write

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
PAGE = (ROOT / "docs" / "wireshark.md").read_text()
SETPOINT, TEMPERATURE = 3016, 5000
NAMES = "word\t3016\t*\tunsigned\tMain.Setpoint\ndword\t5000\t*\tfloat\tMain.Temp\n"

# The frames of the story below that each question is about.
ANSWERS = {
    "Where does this variable occur?": [4, 5, 6, 8, 9, 10],
    "Who wrote it?": [6],
    "Which requests got no reply?": [8],
    "Which replies came too late?": [16],
    "What did the controller refuse, and with which code?": [12],
    "Which replies took longer than 100 ms?": [14, 16],
    "Which replies did nobody wait for?": [17, 18],
    "Which replies do not fit their request?": [20],
    "Was there a temperature above 80?": [14],
    "When did the connection come and go?": [1, 2, 21],
}


def real(number):
    return struct.unpack(">I", struct.pack(">f", number))[0]


def tell_story(path):
    """A line with one of each fault; the frame's number stands behind each of them."""
    with Capture(path) as capture:
        line = Stream(capture)
        line.control(0, True, "syn")  # 1
        line.control(0.1, False, "syn ack")  # 2
        line.control(0.2, True, "ack")  # 3
        line.request(1, read(1, 102, SETPOINT))  # 4
        line.reply(2, values(1, 102, 2, (SETPOINT, 40)))  # 5
        line.request(3, write(2, 103, 2, (SETPOINT, 50)))  # 6
        line.reply(4, done(2, 103, 1))  # 7
        line.request(5, read(3, 102, SETPOINT))  # 8: never answered
        line.request(600, read(4, 102, SETPOINT))  # 9
        line.reply(601, values(4, 102, 2, (SETPOINT, 50)))  # 10
        line.request(602, read(5, 102, 77))  # 11
        line.reply(603, refused(5, 102, 2))  # 12
        line.request(604, read(6, 108, TEMPERATURE))  # 13
        line.reply(754, values(6, 108, 4, (TEMPERATURE, real(95.5))))  # 14: 150 ms
        line.request(800, read(7, 108, TEMPERATURE + 64))  # 15
        late = values(7, 108, 4, (TEMPERATURE + 64, 1))
        line.reply(1500, late)  # 16: 700 ms
        line.reply(1501, late)  # 17: again
        line.reply(1502, values(99, 102, 2, (1600, 1)))  # 18: of no request
        line.request(1503, read(8, 102, 1600, 1616))  # 19
        line.reply(1504, values(8, 102, 2, (1600, 1)))  # 20: one of two
        line.control(1505, False, "fin ack")  # 21


class Page(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.path = pathlib.Path(cls.folder.name)
        cls.capture = cls.path / "line.pcapng"
        tell_story(cls.capture)
        (cls.path / "plant.names").write_text(NAMES)
        cls.preferences = (f"tavmir.names:{cls.path}/plant.names",)

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def test_each_filter_answers_its_question(self):
        section = PAGE.split("## Ten filters")[1].split("\n## ")[0]
        rows = dict(re.findall(r"^\| (.+\?) \| `(.+)` \|$", section, re.MULTILINE))
        self.assertEqual(list(rows), list(ANSWERS))
        self.assertEqual(len(rows), 10)
        for question, written in rows.items():
            with self.subTest(question):
                frames = tshark.fields(self.capture, "frame.number",
                                       filter=written.replace(r"\|", "|"),
                                       preferences=self.preferences)
                self.assertEqual([int(row[0]) for row in frames], ANSWERS[question])

    def test_fields_and_preferences_are_the_dissectors(self):
        script = tshark.DISSECTOR.read_text()
        known = set(re.findall(r'ProtoField\.\w+\("tavmir(\.[a-z._]+)"', script))
        section = PAGE.split("## Fields")[1].split("\n## ")[0]
        named = set(re.findall(r"`(?:tavmir)?(\.[a-z._]+)`", section))
        self.assertEqual(named, known - {".entry", ".rest"})
        preferences = dict(re.findall(r'tavmir\.prefs\.(\w+) = Pref\.\w+\("[^"]+", ("?[\w]*"?),',
                                      script))
        section = PAGE.split("## Preferences")[1].split("\n## ")[0]
        told = dict(re.findall(r"^\| `tavmir\.(\w+)` \| ?(\w*) \|", section, re.MULTILINE))
        self.assertEqual(told, {name: {"false": "off"}.get(value, value.strip('"'))
                                for name, value in preferences.items()})

    def test_its_calls_of_tshark_work_as_they_stand_there(self):
        calls = re.findall(r"^tshark .+$", PAGE, re.MULTILINE)
        self.assertEqual(len(calls), 2)
        for call in calls:
            with self.subTest(call):
                words = shlex.split(call.replace("wireshark/tavmir.lua", str(tshark.DISSECTOR)))
                ended = subprocess.run(words, cwd=self.path, stdout=subprocess.PIPE,
                                       stderr=subprocess.PIPE, text=True, timeout=60)
                self.assertEqual(ended.returncode, 0, ended.stderr)
                self.assertNotIn("Lua", ended.stderr)
                self.assertIn("tavmir", ended.stdout.lower())


if __name__ == "__main__":
    unittest.main()
