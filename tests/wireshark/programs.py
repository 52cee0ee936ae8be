"""The programs, and captures of what they say to each other on loopback."""
import json
import pathlib
import re
import signal
import subprocess
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
PLANT = ROOT / "examples" / "plant.json"
# tcpdump's buffer has a place of the longest packet's size for each packet: 4,000 of them, so that it
# may be kept waiting for seconds.
WITH_ROOM = ("-s", "8192", "-B", "32768")


class Controller:
    """The simulated controller on a free port of loopback."""

    def __init__(self, program, *options, project=PLANT):
        self.process = subprocess.Popen(
            [program, "--listen", "127.0.0.1:0", "--project", str(project), *options],
            stdout=subprocess.PIPE, text=True)
        line = self.process.stdout.readline()
        self.port = int(re.fullmatch(r"listening on 127\.0\.0\.1:(\d+)\n", line).group(1))
        self.statistics = {}

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.end()

    def end(self):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
            said, _ = self.process.communicate(timeout=30)
            self.statistics = {name: int(number)
                               for name, number in re.findall(r"^(.+): (\d+)$", said, re.M)}


class Recording:
    """tcpdump on loopback, of one port. What it drops is looked at in the end."""

    def __init__(self, path, port, *options):
        self.path, self.dropped = path, 0
        self.process = subprocess.Popen(
            ["tcpdump", "-i", "lo", "-U", "--immediate-mode", *WITH_ROOM, "-w", str(path),
             *options, f"tcp port {port}"], stderr=subprocess.PIPE, text=True)
        for line in self.process.stderr:
            if "listening on" in line:
                return
        raise AssertionError("tcpdump does not listen")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        time.sleep(0.3)  # the last packets on their way into the file
        self.process.send_signal(signal.SIGINT)
        _, said = self.process.communicate(timeout=30)
        self.dropped = int(re.search(r"(\d+) packets dropped by kernel", said).group(1))


def project_with(folder, **connection):
    """The example plant, its signals standing still, with other connection settings."""
    plant = json.loads(PLANT.read_text())
    plant.pop("signals", None)
    plant["connection"].update(connection)
    path = pathlib.Path(folder) / "plant.json"
    path.write_text(json.dumps(plant))
    return path
