#!/usr/bin/env python3
"""What a host takes of a processor for the load that the page promises: 1,000 variables that change
ten times a second, without and with the page open, without and with a recording. Prints one line of
JSON. The page's client reads everything and does nothing with it.
Usage: promised_load.py BUILD"""
import json
import pathlib
import re
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tests" / "page"))
import page_interface_test as programs  # noqa: E402

VARIABLES = 1000
SECONDS = 4
WARM_UP = 1
EACH_CHANGE = ["--pass", "50"]  # milliseconds; a value changes each 100


def project(folder):
    words = {"name": "Word", "type": "word", "address": 0,
             "array": {"bounds": [[0, VARIABLES - 1]]}}
    signals = [{"address": f"Many.Word[{i}]", "signal": "counter", "low": 0, "high": 60000,
                "step": 1, "periodMs": 100} for i in range(VARIABLES)]
    file = folder / "many.json"
    file.write_text(json.dumps({
        "labels": [{"name": "Many", "variables": [words]}],
        "polled": [{"address": "Many.Word", "format": "unsigned"}], "signals": signals}))
    return file


class Host:
    def __init__(self, place, options):
        self.process = subprocess.Popen(
            [programs.TOOLS / "host" / "tavmir-host", "run", programs.PROJECT, "--driver",
             programs.DRIVER, "--connect", place, "--interval", "3600000", *EACH_CHANGE, *options],
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)

    def page(self):
        """As the page's client of the tests wants it."""
        for line in self.process.stdout:
            found = re.fullmatch(r"(http://\S+)/#token=([0-9a-f]{32})\n", line)
            if found:
                self.base, self.token = found.groups()
                return self
        raise SystemExit("promised_load.py: the host has told no page")

    def processor(self):
        """Seconds that its threads have had of one."""
        threads = pathlib.Path(f"/proc/{self.process.pid}/task").glob("*/schedstat")
        return sum(int(thread.read_text().split()[0]) for thread in threads) / 1e9

    def end(self):
        """Scans a second, as its statistics have it."""
        self.process.send_signal(signal.SIGINT)
        said = self.process.communicate(timeout=60)[0]
        found = re.search(r"scans per second: ([0-9.]+)", said)
        if self.process.returncode != 0 or not found:
            raise SystemExit(f"promised_load.py: the host ended so: {said}")
        return float(found[1])


class Reader:
    def __init__(self, page):
        self.live = programs.Live(page)
        self.bytes = 0
        threading.Thread(target=self.read, daemon=True).start()

    def read(self):
        try:
            while True:
                self.bytes += len(self.live.receive())
        except (AssertionError, OSError):
            return  # it was closed

    def close(self):
        """Before the host ends, which would wait for it."""
        self.live.socket.shutdown(socket.SHUT_RDWR)


def measured(place, folder, with_page, with_recording):
    options = ["--page"] if with_page else []
    options += ["--record", folder / f"recording-{with_page}"] if with_recording else []
    host = Host(place, options)
    reader = Reader(host.page()) if with_page else None
    time.sleep(WARM_UP)
    began, used, sent = time.monotonic(), host.processor(), reader.bytes if reader else 0
    time.sleep(SECONDS)
    used, sent = host.processor() - used, (reader.bytes if reader else 0) - sent
    seconds = time.monotonic() - began
    if reader:
        reader.close()
    return {"page": with_page, "recording": with_recording, "processor": used / seconds,
            "sentBytes": sent / seconds, "values": VARIABLES * host.end()}


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    programs.TOOLS = build / "tools"
    programs.DRIVER = build / "src" / "libtavmir_kx_tcp.so.1"
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        programs.PROJECT = project(folder)
        controller = programs.Controller()
        try:
            rows = [measured(controller.place, folder, with_page, with_recording)
                    for with_recording in (False, True) for with_page in (False, True)]
        finally:
            controller.end()
    print(json.dumps({"variables": VARIABLES, "seconds": SECONDS, "hosts": rows}))


if __name__ == "__main__":
    main()
