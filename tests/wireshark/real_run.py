"""The real programs on loopback while tcpdump looks on: what host and controller counted, and the
captures of it, tcpdump's and their own."""
import contextlib
import json
import pathlib
import re
import signal
import subprocess
import tempfile
import time

from programs import WITH_ROOM

PATIENCE = 60  # seconds

CONNECTION = {"host": "127.0.0.1", "port": 5020, "station": 1, "connectTimeoutMs": 5000,
              "replyTimeoutMs": 600, "reconnectMinMs": 50, "reconnectMaxMs": 100, "retryLimit": 3,
              "passMs": 80}
# Class, address, and how the value is shown, by name.
VARIABLES = {
    "Plant.Run": ("bit", 100, "bit"),
    "Plant.Fault": ("bit", 101, "bit"),
    "Plant.Level": ("word", 1600, "unsigned"),
    "Plant.Offset": ("word", 1616, "signed"),
    "Plant.Total": ("dword", 3200, "unsigned"),
    "Plant.Temperature": ("real", 3232, "float"),
}
INITIAL = {"Plant.Run": 1, "Plant.Level": 40000, "Plant.Offset": -12, "Plant.Total": 4000000000,
           "Plant.Temperature": -2.5}
REQUESTS_A_PASS = 3  # one for each class
# How the host waits in vain for each of the controller's faults; a reply that is corrupt may be none.
ENDS_IN_A_TIMEOUT = ("lose", "drop", "late", "cut")
ENDS_WITH_THE_CONNECTION = ("disconnect", "refuse")


def write_project(path):
    variables = [{"name": name.split(".")[1], "type": kind, "address": address, "format": shown}
                 for name, (kind, address, shown) in VARIABLES.items()]
    path.write_text(json.dumps({
        "connection": CONNECTION,
        "labels": [{"name": "Plant", "variables": variables}],
        "polled": [{"address": name} for name in VARIABLES],
        "initial": [{"address": name, "value": value} for name, value in INITIAL.items()]}))


def write_names(tools, project, path):
    """The names file of the dissector."""
    with path.open("w") as names:
        subprocess.run([tools / "host" / "tavmir-host", "explain", project, "--names"],
                       stdout=names, check=True, timeout=PATIENCE)


def first_line(stream, wanted):
    """The match of the first line that has it."""
    for line in stream:
        found = re.search(wanted, line)
        if found:
            return found
    raise AssertionError(f"the program ended without saying {wanted}")


class Program:
    """Ended by a signal, and waited for."""

    def __init__(self, *command, signal_number=signal.SIGTERM):
        self.signal_number = signal_number
        self.process = subprocess.Popen([str(part) for part in command], stdout=subprocess.PIPE,
                                        stderr=subprocess.PIPE, text=True)

    def end(self):
        if self.process.poll() is None:
            self.process.send_signal(self.signal_number)
        return self.process.communicate(timeout=PATIENCE)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.process.kill()
            self.process.communicate()


class Controller(Program):
    def __init__(self, tools, project, *options):
        super().__init__(tools / "controller" / "tavmir-controller", "--listen", "127.0.0.1:0",
                         "--project", project, *options)
        self.port = int(first_line(self.process.stdout, r"listening on 127\.0\.0\.1:(\d+)")[1])

    def statistics(self):
        """Ends it."""
        output, _ = self.end()
        return {name: int(number) for name, number in re.findall(r"^(.+): (\d+)$", output, re.M)}


class Capture(Program):
    """tcpdump on loopback. What it cannot do is an error, with its own words."""

    def __init__(self, path, port):
        super().__init__("tcpdump", "-i", "lo", "-n", "--immediate-mode", "-U", *WITH_ROOM,
                         "--time-stamp-precision=nano", "-w", path, f"tcp port {port}",
                         signal_number=signal.SIGINT)
        said = []
        for line in self.process.stderr:
            said.append(line)
            if "listening on" in line:
                return
        raise AssertionError("tcpdump cannot capture on loopback: " + "".join(said))

    def end_and_count_lost(self):
        time.sleep(0.2)  # for what is on its way to it
        _, errors = self.end()
        return int(re.search(r"(\d+) packets? dropped by kernel", errors)[1])


class Run:
    """What one run of the host left: statistics (JSON), the controller's, the captures, the trace."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder)
        self.capture = self.folder / "loopback.pcap"
        self.of_host = self.folder / "host.pcapng"
        self.of_controller = self.folder / "controller.pcapng"
        self.trace = self.folder / "trace.txt"
        self.names = self.folder / "plant.names"
        self.project = self.folder / "plant.json"
        self.host, self.controller, self.port, self.lost = {}, {}, 0, 0
        write_project(self.project)

    def preferences(self):
        return (f"tavmir.ports:{self.port}", f"tavmir.names:{self.names}",
                f"tavmir.late:{CONNECTION['replyTimeoutMs']}")

    def faults(self, kinds):
        return sum(self.controller.get(f"faults {kind}", 0) for kind in kinds)

    def is_undisturbed(self):
        """The host waited in vain where the controller meant it to, and nowhere because the machine
        was busy."""
        by_faults = self.faults(ENDS_IN_A_TIMEOUT)
        return (by_faults <= self.host["timeOuts"] <= by_faults + self.faults(("corrupt",))
                and self.host["requestsLostWithAConnection"] ==
                self.faults(ENDS_WITH_THE_CONNECTION))

    def is_whole(self):
        """Nothing missed by the capture or the statistics, and no request under way at the end."""
        host = self.host
        ended = sum(host[key] for key in (
            "replies", "exceptionReplies", "repliesOfWrongLength", "timeOuts",
            "requestsLostWithAConnection", "requestsThatNeverLeft"))
        return (self.lost == 0 and host["eventsMissedByTheseStatistics"] == 0
                and host["attempts"] == ended)


class TemporaryRun(Run):
    """A controller, and tcpdump beside it, until finish()."""

    def __init__(self, tools, *controller_options):
        self.tools, self.options = tools, controller_options
        self.temporary = tempfile.TemporaryDirectory()
        super().__init__(self.temporary.name)

    def start(self):
        write_names(self.tools, self.project, self.names)
        with contextlib.ExitStack() as stack:
            stack.enter_context(self.temporary)
            self.server = stack.enter_context(
                Controller(self.tools, self.project, "--capture", self.of_controller,
                           *self.options))
            self.port = self.server.port
            self.tcpdump = stack.enter_context(Capture(self.capture, self.port))
            self.stack = stack.pop_all()
        return self

    def leave(self):
        self.stack.close()

    def __enter__(self):
        return self.start()

    def __exit__(self, *_):
        self.leave()

    def host_does(self, command, *arguments):
        """The objects that it prints, where it prints JSON."""
        done = subprocess.run(
            [self.tools / "host" / "tavmir-host", command, self.project, "--connect",
             f"127.0.0.1:{self.port}", *arguments],
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, timeout=PATIENCE)
        if done.returncode != 0:
            raise AssertionError(f"tavmir-host ended with {done.returncode}: {done.stderr}")
        return [json.loads(line) for line in done.stdout.splitlines() if line.startswith("{")]

    def finish(self):
        self.lost = self.tcpdump.end_and_count_lost()
        self.controller = self.server.statistics()


def run_once(tools, seconds, controller_options, host_options):
    run = TemporaryRun(tools, *controller_options)
    run.start()
    try:
        said = run.host_does("run", "--format", "json", "--duration", str(seconds),
                             f"--trace={run.trace}", "--capture", str(run.of_host), *host_options)
        run.host = said[-1]["statistics"]
        run.finish()
    except BaseException:
        run.leave()
        raise
    return run


def run_whole(tools, seconds, controller_options, host_options=(), tries=4):
    """The run, again when a busy machine made it useless. Whoever has it leaves it."""
    for _ in range(tries):
        run = run_once(tools, seconds, controller_options, host_options)
        if run.is_whole() and run.is_undisturbed():
            return run
        run.leave()
    raise AssertionError(f"none of {tries} runs was whole and undisturbed: {run.lost} packets lost, "
                         f"{run.host}, {run.controller}")
