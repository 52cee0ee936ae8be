"""The simulated controller as a judge, and what it says."""
import json
import pathlib
import re
import subprocess
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
STANDARD = ROOT / "examples" / "check-host" / "standard.script"


class Judged:
    """A judge on a free port of loopback, with a script. `port`, then wait()."""

    def __init__(self, program, script, *options):
        self.folder = tempfile.TemporaryDirectory()
        folder = pathlib.Path(self.folder.name)
        file = folder / "the.script"
        file.write_text(script)
        self.report = folder / "report.json"
        self.errors = open(folder / "errors", "w+")
        self.process = subprocess.Popen(
            [program, "--listen", "127.0.0.1:0", "--check-host", str(file), "--json",
             str(self.report), *options],
            stdout=subprocess.PIPE, stderr=self.errors, text=True)
        line = self.process.stdout.readline()
        self.port = int(re.fullmatch(r"listening on 127\.0\.0\.1:(\d+)\n", line).group(1))

    def is_running(self):
        return self.process.poll() is None

    def wait(self, seconds):
        """(exit status, report, text)"""
        text, _ = self.process.communicate(timeout=seconds)
        return self.process.returncode, json.loads(self.report.read_text()), text

    def close(self):
        if self.is_running():
            self.process.kill()
            self.process.wait()
        self.errors.close()
        self.folder.cleanup()


def rules_of(report, verdict):
    return {rule["rule"] for rule in report["rules"] if rule["verdict"] == verdict}


def calm_plant(folder):
    """The example plant without its signals."""
    plant = json.loads((ROOT / "examples" / "plant.json").read_text())
    plant.pop("signals")
    file = pathlib.Path(folder) / "plant.json"
    file.write_text(json.dumps(plant))
    return str(file)


class StandardTrial:
    """The standard script in front of a program that takes commands on its standard input, with
    writes of Main.Setpoint, station 1, going on."""
    KNOWN = "stations 1\nwrites counting word 3016\n"
    MOST_SECONDS = 200

    def __init__(self, controller):
        self.folder = tempfile.TemporaryDirectory()
        self.plant = calm_plant(self.folder.name)
        self.judge = Judged(controller, self.KNOWN + STANDARD.read_text(), "--project",
                            self.plant)
        self.port = self.judge.port

    def run(self, command, write, pause, environment=None):
        """(exit status, report, text). `write`: a line with {} for the value, typed each `pause`
        seconds."""
        host = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.DEVNULL,
                                stderr=subprocess.DEVNULL, text=True, env=environment)
        try:
            end = time.monotonic() + self.MOST_SECONDS
            value = 0
            while self.judge.is_running() and time.monotonic() < end:
                value += 1
                host.stdin.write(write.format(value) + "\n")
                host.stdin.flush()
                time.sleep(pause)
            return self.judge.wait(self.MOST_SECONDS)
        finally:
            host.kill()
            host.communicate()

    def close(self):
        self.judge.close()
        self.folder.cleanup()
