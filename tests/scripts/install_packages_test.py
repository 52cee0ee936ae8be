"""scripts/install-packages and the --no-install of ./test and ./demo, with stand-ins for the programs
that they call."""
import os
import pathlib
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
INSTALL = str(ROOT / "scripts" / "install-packages")
BUSY = "E: Could not get lock /var/lib/dpkg/lock-frontend. It is held by process 1 (apt-get)"

# Each stand-in writes how it was called into the file "calls".
STAND_INS = {
    "apt-get": 'echo "apt-get DEBIAN_FRONTEND=${DEBIAN_FRONTEND-} $*" >>"$STAND_INS/calls"\n'
               'left=$(cat "$STAND_INS/failures" 2>/dev/null || echo 0)\n'
               '[ "$left" -gt 0 ] || exit 0\n'
               'echo $((left - 1)) >"$STAND_INS/failures"\n'
               'cat "$STAND_INS/reason" >&2\nexit 100\n',
    "dpkg-query": 'echo "dpkg-query" >>"$STAND_INS/calls"\nexit 1\n',
    # As sudo does: nothing of the caller's environment but the path.
    "sudo": 'echo "sudo" >>"$STAND_INS/calls"\n'
            'exec env -i PATH="$PATH" STAND_INS="$STAND_INS" "$@"\n',
    "id": "echo 1000\n",
    "sleep": 'echo "sleep" >>"$STAND_INS/calls"\n',
    # What ./test and ./demo would do once everything is installed.
    "cmake": 'echo "cmake" >>"$STAND_INS/calls"\nexit 3\n',
}


class InstallPackages(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)
        for name, body in STAND_INS.items():
            program = self.folder / name
            program.write_text("#!/bin/bash\n" + body)
            program.chmod(0o755)

    def run_it(self, *command, failures=0, reason=BUSY, **variables):
        (self.folder / "failures").write_text(str(failures))
        (self.folder / "reason").write_text(reason)
        environment = dict(os.environ, PATH="%s:%s" % (self.folder, os.environ["PATH"]),
                           STAND_INS=str(self.folder), **variables)
        environment.pop("DEBIAN_FRONTEND", None)
        return subprocess.run(command, cwd=str(ROOT), env=environment, text=True, check=False,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def calls(self):
        file = self.folder / "calls"
        return file.read_text().splitlines() if file.exists() else []

    def test_missing_packages_are_installed(self):
        self.assertEqual(self.run_it(INSTALL, "one", "two").returncode, 0)
        called = [call for call in self.calls() if call.startswith("apt-get")]
        self.assertEqual(len(called), 2)
        self.assertTrue(called[1].endswith(" one two"), called)

    def test_nothing_is_asked_behind_sudo(self):
        self.run_it(INSTALL, "one")
        self.assertIn("sudo", self.calls())
        for call in self.calls():
            if call.startswith("apt-get"):
                self.assertIn("DEBIAN_FRONTEND=noninteractive", call)

    def test_a_busy_package_manager_is_waited_for(self):
        self.assertEqual(self.run_it(INSTALL, "one", failures=3).returncode, 0)
        self.assertEqual(self.calls().count("sleep"), 3)

    def test_another_failure_ends_it_at_once_with_its_reason(self):
        ended = self.run_it(INSTALL, "one", failures=1, reason="E: Unable to fetch some archives")
        self.assertNotEqual(ended.returncode, 0)
        self.assertIn("Unable to fetch", ended.stderr)
        self.assertEqual(self.calls().count("sleep"), 0)

    def test_a_package_manager_that_stays_busy_ends_it(self):
        # The stand-in's sleep takes ten minutes of bash's own clock.
        (self.folder / "clock").write_text("sleep() { SECONDS=$((SECONDS + 301)); }\nexport -f sleep\n")
        ended = self.run_it("bash", "-c", '. "$STAND_INS/clock"; exec "$0" one', INSTALL, failures=9)
        self.assertNotEqual(ended.returncode, 0)
        self.assertIn("Could not get lock", ended.stderr)
        self.assertEqual(len([call for call in self.calls() if call.startswith("apt-get")]), 3)

    def test_told_to_install_nothing_no_package_manager_is_called(self):
        for command in (["./test", "--no-install"], ["./test", "default", "--no-install"],
                        ["./demo", "--no-install"]):
            ended = self.run_it(*command)
            self.assertEqual(ended.returncode, 3, command)
            self.assertEqual(set(self.calls()), {"cmake"}, command)


if __name__ == "__main__":
    unittest.main()
