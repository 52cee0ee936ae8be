"""The manual pages: one for each exported entry point, whole, and true to the header.

Usage: manual_pages_test.py SCDOC
"""
import pathlib
import re
import subprocess
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
PAGES = ROOT / "docs" / "man"
SCDOC = sys.argv.pop(1)
SECTIONS = {
    "1": ["NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "EXIT STATUS", "EXAMPLE", "SEE ALSO"],
    "3": ["NAME", "SYNOPSIS", "DESCRIPTION", "RETURN VALUE", "THREAD AND LOCKS", "ERRORS",
          "EXAMPLE", "SEE ALSO"],
    "7": ["NAME", "SYNOPSIS", "DESCRIPTION", "EXAMPLE", "SEE ALSO"],
}

# Sections that only some pages have, behind OPTIONS.
SOME = ["JUDGING A HOST", "JSON", "ENVIRONMENT"]


def pages():
    """Name such as "DataCom.3" and text of each page."""
    return {file.stem: file.read_text(encoding="utf-8") for file in PAGES.glob("*.scd")}


def part(text, section):
    return text.split("\n# %s\n" % section)[1].split("\n# ")[0]


class Pages(unittest.TestCase):
    def test_every_plain_entry_point_has_a_page(self):
        names = (ROOT / "tests/abi/exported-symbols.txt").read_text(encoding="ascii")
        plain = re.findall(r"^T (?!_Z)(\w+)$", names, re.MULTILINE)
        self.assertEqual(len(plain), 16)
        self.assertLessEqual({name + ".3" for name in plain}, set(pages()))

    def test_every_page_is_installed_and_points_to_pages_that_exist(self):
        rules = (PAGES / "CMakeLists.txt").read_text(encoding="ascii")
        self.assertEqual(set(pages()), set(re.findall(r"[\w-]+\.[137]\b", rules)))
        for page, text in pages().items():
            points = re.findall(r"\*([\w-]+)\*\((\d)\)", part(text, "SEE ALSO"))
            self.assertTrue(points, page)
            self.assertLessEqual({"%s.%s" % point for point in points}, set(pages()), page)

    def test_every_page_has_its_title_and_its_sections_in_order(self):
        for page, text in pages().items():
            name, section = page.rsplit(".", 1)
            self.assertTrue(text.startswith('%s(%s) "tavmir_kx_tcp @PROJECT_VERSION@" "' % (name, section)), page)
            found = re.findall(r"^# (.*)$", text, re.MULTILINE)
            self.assertEqual([title for title in found if title not in SOME], SECTIONS[section], page)
            some = [title for title in found if title in SOME]
            self.assertEqual(some, [title for title in SOME if title in some], page)
            if some:
                behind = found.index("OPTIONS") + 1
                self.assertEqual(found[behind:behind + len(some)], some, page)

    def test_synopsis_is_a_declaration_of_the_header(self):
        header = (ROOT / "include/tavmir_kx_tcp/host_interface.h").read_text(encoding="utf-8")
        header = re.sub(r"\s+", " ", header)
        for page, text in pages().items():
            if not page.endswith(".3"):
                continue
            synopsis = part(text, "SYNOPSIS")
            declaration = re.search(r"\n(\w[^;]*\b%s\([^;]*;)" % page[:-2], synopsis)
            self.assertIsNotNone(declaration, page)
            self.assertIn(re.sub(r"\s+", " ", declaration.group(1)).split(";")[-2].strip(), header)

    def test_all_pages_come_out_without_markup_left(self):
        for page, text in pages().items():
            made = subprocess.run([SCDOC], input=text, text=True, check=False, encoding="utf-8",
                                  stdout=subprocess.PIPE, stderr=subprocess.PIPE)
            self.assertEqual(made.returncode, 0, "%s: %s" % (page, made.stderr))
            self.assertIn(".SH SEE ALSO\n", made.stdout, page)
            # A "++" at a line's end would have become a line break.
            self.assertNotIn(".br", made.stdout, page)
            self.assertNotIn("`", made.stdout, page)


if __name__ == "__main__":
    unittest.main()
