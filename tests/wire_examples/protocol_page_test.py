#!/usr/bin/env python3
"""Every frame in docs/protocol.md is one that driver, host and controller really exchange; its
tables are those of the sources.

Arguments: tavmir-host, tavmir-controller, the driver.
"""
import json
import pathlib
import re
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
from exchanges import Controller, host_exchanges, raw_exchange

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
PAGE = (ROOT / "docs" / "protocol.md").read_text()
HOST, CONTROLLER, DRIVER = sys.argv[1:4]
MOST_TRIES = 50


def blocks(kind):
    """(what it shows, request, reply) of each block of a kind."""
    pattern = rf"```{kind} ([^\n]*)\nrequest ([0-9A-F ]+)\nreply +([0-9A-F ]+)\n```"
    return [(title, bytes.fromhex(request), bytes.fromhex(reply))
            for title, request, reply in re.findall(pattern, PAGE)]


def shown(frame):
    return " ".join(f"{byte:02X}" for byte in frame)


class ProtocolPage(unittest.TestCase):
    def setUp(self):
        plant = json.loads((ROOT / "examples" / "plant.json").read_text())
        plant.pop("signals")
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.project = str(pathlib.Path(self.folder.name) / "plant.json")
        pathlib.Path(self.project).write_text(json.dumps(plant))

    def test_every_block_of_frames_is_looked_at(self):
        frames = re.findall(r"^request (?:[0-9A-F]{2} )+", PAGE, re.MULTILINE)
        self.assertEqual(len(frames), len(blocks("example")) + len(blocks("raw")))
        self.assertGreaterEqual(len(blocks("example")), 8)
        self.assertGreaterEqual(len(blocks("raw")), 2)

    def test_examples_are_what_driver_and_controller_exchange(self):
        for title, request, reply in blocks("example"):
            with self.subTest(title):
                said = self.exchanged(title)
                self.assertEqual(said, [(shown(request), shown(reply))])

    def exchanged(self, title):
        """Frames of an example. Reads share a request when they wait together: a cycle that is
        quicker than the second one's asking sends two, and is given another chance."""
        command, *arguments = title.split(" ")
        for _ in range(MOST_TRIES):
            with Controller(CONTROLLER, "--project", self.project) as plant:
                done, exchanges = host_exchanges(HOST, DRIVER, plant,
                                                 [command, self.project, *arguments])
            self.assertEqual(done.returncode, 0, done.stdout)
            if len(exchanges) < 2 or len(arguments) < 2:
                break
        return [(shown(asked), shown(answered)) for asked, answered in exchanges]

    def test_refusals_are_the_controllers(self):
        with Controller(CONTROLLER, "--project", self.project) as plant:
            for title, request, reply in blocks("raw"):
                with self.subTest(title):
                    self.assertEqual(shown(raw_exchange(plant, request)), shown(reply))

    def test_functions_and_exceptions_are_those_of_the_sources(self):
        source = (ROOT / "tools" / "wire" / "frame_layout.cpp").read_text()
        functions = re.findall(
            r"\{(\d+), (?:true|false), ElementClass::\w+, \d+, \d, \"([^\"]+)\"\}", source)
        self.assertEqual(len(functions), 6)
        for code, words in functions:
            self.assertIn(f"| {words} | {code} | `{chr(int(code))}` |", PAGE)
        exceptions = re.findall(r"\{(\d+), \"([^\"]+)\"\},", source)
        self.assertEqual(len(exceptions), 9)
        for code, words in exceptions:
            self.assertIn(f"| {code} | {words} |", PAGE)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
