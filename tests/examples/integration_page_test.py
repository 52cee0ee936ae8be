#!/usr/bin/env python3
"""docs/integration.md shows the example as it is, and each of its chapters ends with a fault to play;
the example is as small as the page says, and its README names the commands that are tried."""
import pathlib
import re
import sys
import unittest

sys.dont_write_bytecode = True
import marks
import plays

ROOT = marks.ROOT
sys.path.insert(0, str(ROOT / "benchmarks" / "report"))
import planning

MOST_LINES = 400
CHAPTERS = ["First value", "Labels and addresses", "The cycle, and who waits where",
            "Threads, locks, callbacks", "Writes and how they end",
            "Failures, and what an operator must see", "Replies: what to compare", "Stations",
            "Rebuilding while it runs", "Reconnecting", "Unloading",
            "Memory and time to plan for", "From Qt 5 on the desk to Qt 4.8 on the panel"]


class Example(unittest.TestCase):
    def test_is_small(self):
        lines = marks.EXAMPLE.read_text().split("\n")
        self.assertLessEqual(len(lines) - 1, MOST_LINES)
        self.assertLessEqual(max(map(len, lines)), 100)

    def test_marks_come_in_pairs(self):
        text = marks.EXAMPLE.read_text()
        self.assertEqual(marks.names(), re.findall(r"// \[/([\w-]+)\]", text))
        self.assertEqual(len(marks.names()), len(set(marks.names())))

    def test_knows_nothing_but_the_installed_header(self):
        included = re.findall(r"#include [<\"]([^>\"]+)", marks.EXAMPLE.read_text())
        for name in included:
            self.assertRegex(name, r"^(tavmir_kx_tcp/host_interface\.h|QtCore/\w+|[a-z/]+(\.h)?)$")
        self.assertNotIn('#include "', marks.EXAMPLE.read_text())


class Page(unittest.TestCase):
    def test_shows_the_example_as_it_is(self):
        for name, text in marks.blocks():
            with self.subTest(name):
                self.assertEqual(text, marks.part(name))

    def test_shows_no_other_code(self):
        fences = re.findall(r"^```(\S.*)$", marks.PAGE.read_text(), re.MULTILINE)
        known = {f"cpp {name}" for name in marks.names()} | {"play"}
        self.assertEqual(set(fences) - known, set())
        self.assertEqual(len([fence for fence in fences if fence != "play"]), len(marks.blocks()))

    def test_shows_all_that_is_the_drivers(self):
        shown = [name for name, _ in marks.blocks()]
        self.assertEqual(set(marks.names()) - set(shown), {"display"})
        self.assertEqual(len(shown), len(set(shown)))

    def test_chapters_end_with_a_fault_to_play(self):
        self.assertEqual([title for title, _ in plays.chapters()], CHAPTERS)
        for title, text in plays.chapters():
            with self.subTest(title):
                self.assertTrue(text.rstrip().endswith("```"), "something stands behind the play")
                steps, = plays.plays(text)
                self.assertRegex(text, r"(?m)^Fault to play")
                seen = [step for step in steps if not step.startswith(("$", ">", "^", "never "))]
                self.assertTrue(seen, "nothing is to be seen")
                self.assertIn("$ minimal_host", steps)

    def test_figures_are_those_that_were_measured(self):
        measured = (ROOT / "docs" / "performance.md").read_text()
        shown = marks.PAGE.read_text()
        self.assertEqual(planning.with_table(shown, measured), shown)
        self.assertGreaterEqual(len(re.findall(r"`[^`]+`", planning.table(measured))), 9)

    def test_a_figure_that_was_not_measured_is_missed(self):
        measured = (ROOT / "docs" / "performance.md").read_text().replace("| turn_38_words |", "| turn |")
        with self.assertRaisesRegex(ValueError, "turn_38_words"):
            planning.table(measured)

    def test_links_lead_somewhere(self):
        for page in [marks.PAGE, ROOT / "examples" / "minimal-host" / "README.md"]:
            for link in re.findall(r"\]\(([^)#:]+)\)", page.read_text()):
                self.assertTrue((page.parent / link).exists(), f"{page.name}: {link}")


if __name__ == "__main__":
    unittest.main()
