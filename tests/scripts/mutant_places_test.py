#!/usr/bin/env python3
"""Every break in the two lists still has its place: its text stands in its file exactly once, and
what replaces it is another text. The breaks themselves are applied by scripts/mutants."""
import pathlib
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.dont_write_bytecode = True
sys.path.insert(0, str(ROOT / "scripts"))
from mutant_parts import read_mutants


class Places(unittest.TestCase):
    def check(self, name, folder):
        mutants = read_mutants(ROOT / "tests" / "mutants" / name)
        self.assertTrue(mutants)
        for mutant in mutants:
            with self.subTest(list=name, mutant=mutant["name"]):
                text = (ROOT / folder / mutant["file"]).read_text()
                self.assertEqual(text.count(mutant["from"]), 1)
                self.assertNotEqual(mutant["from"], mutant["to"])
                self.assertTrue(mutant["rule"])
        names = [mutant["name"] for mutant in mutants]
        self.assertEqual(len(names), len(set(names)))

    def test_of_the_driver(self):
        self.check("mutants.txt", "src")

    def test_of_the_tools(self):
        self.check("tools.txt", "tools")


if __name__ == "__main__":
    unittest.main()
