"""What the build files say once, and what a machine without the tests' tools can configure."""
import json
import pathlib
import re
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent


def text(name):
    return (ROOT / name).read_text(encoding="utf-8")


def configure(folder, *options):
    return subprocess.run(["cmake", "-S", str(ROOT), "-B", folder, *options], text=True, check=False,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT)


class BuildFiles(unittest.TestCase):
    def test_the_minimum_of_cmake_is_that_of_the_presets(self):
        presets = json.loads(text("CMakePresets.json"))["cmakeMinimumRequired"]
        wanted = "%d.%d" % (presets["major"], presets["minor"])
        self.assertIn("cmake_minimum_required(VERSION %s)\n" % wanted, text("CMakeLists.txt"))
        self.assertIn("CMake %s or newer" % wanted, text("docs/panel.md"))

    def test_the_version_stands_in_the_change_log_alone(self):
        version = re.match(r"tavmir-kx-tcp \(([\d.]+)-\d+\)", text("packaging/changelog")).group(1)
        for folder in ("CMakeLists.txt", "CMakePresets.json", "cmake", "src", "include", "scripts",
                       "packaging", "tools", "tests/package", "docs/man", "docs/panel.md"):
            place = ROOT / folder
            files = [place] if place.is_file() else [f for f in place.rglob("*") if f.is_file()]
            for file in files:
                if file.name in ("changelog", "package-lock.json") or file.suffix == ".pyc":
                    continue
                if "node_modules" in file.parts:
                    continue
                said = version in file.read_text(encoding="utf-8", errors="replace")
                self.assertFalse(said, file)

    def test_without_googletest_everything_but_the_tests_is_configured(self):
        with tempfile.TemporaryDirectory() as folder:
            done = configure(folder, "-DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON")
            self.assertEqual(done.returncode, 0, done.stdout)
            self.assertIn("GoogleTest not found: TAVMIR_BUILD_TESTS is OFF", done.stdout)
            self.assertFalse(pathlib.Path(folder, "tests").exists())


if __name__ == "__main__":
    unittest.main()
