"""The manual pages: one for each exported entry point, and a generator that refuses wrong ones."""
import importlib.machinery
import importlib.util
import os
import re
import subprocess
import sys
import tempfile
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
GENERATOR = os.path.join(ROOT, "scripts", "make-man")
PAGES = os.path.join(ROOT, "docs", "man")


def load_generator():
    sys.dont_write_bytecode = True
    loader = importlib.machinery.SourceFileLoader("make_man", GENERATOR)
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader("make_man", loader))
    loader.exec_module(module)
    return module


make_man = load_generator()

SECTIONS = "".join("\n## %s\n\ntext\n" % title for title in make_man.SECTIONS["3"])


def render(body):
    return make_man.render("# X(3)\n" + body, "X", "3", "1.0.0", "2026-01-01")


class Pages(unittest.TestCase):
    def test_every_plain_entry_point_has_a_page(self):
        with open(os.path.join(ROOT, "tests", "abi", "exported-symbols.txt"), encoding="ascii") as names:
            plain = re.findall(r"^T (?!_Z)(\w+)$", names.read(), re.MULTILINE)
        self.assertEqual(len(plain), 16)
        for name in plain:
            self.assertTrue(os.path.exists(os.path.join(PAGES, name + ".3.md")), name)

    def test_every_page_is_installed_and_points_to_pages_that_exist(self):
        with open(os.path.join(PAGES, "CMakeLists.txt"), encoding="ascii") as rules:
            installed = set(re.findall(r"[\w-]+\.[137]\b", rules.read()))
        pages = {name[:-3] for name in os.listdir(PAGES) if name.endswith(".md")}
        self.assertEqual(pages, installed)
        for page in pages:
            with open(os.path.join(PAGES, page + ".md"), encoding="utf-8") as file:
                see_also = file.read().split("## See also")[1]
            for name, section in re.findall(r"`([\w-]+)`\((\d)\)", see_also):
                self.assertIn("%s.%s" % (name, section), pages, page)

    def test_synopsis_is_a_declaration_of_the_header(self):
        with open(os.path.join(ROOT, "include", "tavmir_kx_tcp", "host_interface.h"),
                  encoding="utf-8") as file:
            header = re.sub(r"\s+", " ", file.read())
        for page in sorted(os.listdir(PAGES)):
            if not page.endswith(".3.md"):
                continue
            with open(os.path.join(PAGES, page), encoding="utf-8") as file:
                synopsis = file.read().split("## Synopsis")[1].split("## ")[0]
            declaration = re.search(r"\n    (\w[^;]*\b%s\([^;]*;)" % page[:-5], synopsis)
            self.assertIsNotNone(declaration, page)
            self.assertIn(re.sub(r"\s+", " ", declaration.group(1)).split(";")[-2].strip(), header)

    def test_all_pages_come_out(self):
        with tempfile.TemporaryDirectory() as folder:
            pages = [os.path.join(PAGES, p) for p in os.listdir(PAGES) if p.endswith(".md")]
            subprocess.run([GENERATOR, folder, "1.0.0", "2026-01-01"] + pages, check=True)
            self.assertEqual(len(os.listdir(folder)), len(pages))


class Generator(unittest.TestCase):
    def test_marks_code_and_emphasis_and_escapes(self):
        page = render(SECTIONS.replace("text", "`a-b` and *c* in C:\\d", 1))
        self.assertIn("\\fBa\\-b\\fR and \\fIc\\fR in C:\\ed", page)

    def test_a_line_that_begins_with_a_dot_is_text(self):
        self.assertIn("\n\\&.profile is", render(SECTIONS.replace("text", ".profile is", 1)))

    def test_a_page_without_a_section_is_refused(self):
        with self.assertRaises(make_man.PageError):
            render(SECTIONS.replace("## Errors", "## Faults"))

    def test_a_page_with_another_title_is_refused(self):
        with self.assertRaises(make_man.PageError):
            render("# Y(3)\n" + SECTIONS)

    def test_unknown_markdown_is_refused(self):
        for wrong in ("| a | b |", "1. first", "> quoted", "a ` alone"):
            with self.assertRaises(make_man.PageError, msg=wrong):
                render(SECTIONS.replace("text", wrong, 1))


if __name__ == "__main__":
    unittest.main()
