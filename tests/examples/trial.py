"""The example host in front of the simulated controller: start both, type, wait for words, end both.

Whoever uses it sets MINIMAL_HOST, CONTROLLER, PLANT and DRIVER (the folder of the driver's library)
in `PLACES` first.
"""
import os
import pathlib
import queue
import re
import signal
import socket
import subprocess
import threading
import time

PLACES = {}
PATIENCE = 30 # seconds, for a machine that is busy with other things


def free_port():
    with socket.create_server(("127.0.0.1", 0)) as listener:
        return listener.getsockname()[1]


class Controller:
    def __init__(self, port, options):
        self.process = subprocess.Popen(
            [PLACES["CONTROLLER"], "--listen", f"127.0.0.1:{port}", *options],
            stdout=subprocess.PIPE, text=True)
        line = self.process.stdout.readline()
        if line != f"listening on 127.0.0.1:{port}\n":
            raise AssertionError(f"the controller said {line!r}")

    def end(self):
        self.process.send_signal(signal.SIGTERM)
        self.process.communicate(timeout=PATIENCE)


class Host:
    """Each line is one of `said`, without its time."""

    def __init__(self, port, driver=None, checks=None, program=None):
        environment = dict(os.environ, LC_ALL="C.UTF-8", LD_LIBRARY_PATH=driver or PLACES["DRIVER"])
        if checks is not None:
            environment["TAVMIR_CHECK"] = f"log:{checks}"
        self.process = subprocess.Popen(
            [program or PLACES["MINIMAL_HOST"], f"127.0.0.1:{port}"], stdin=subprocess.PIPE,
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, env=environment)
        self.said = []
        self.echoes = 0
        self.lines = queue.Queue()
        self.driver = driver or PLACES["DRIVER"]
        self.reader = threading.Thread(target=self.read)
        self.reader.start()

    def read(self):
        for line in self.process.stdout:
            self.lines.put(re.sub(r"^\d\d:\d\d:\d\d\.\d{3} ", "", line.rstrip("\n")))
        self.lines.put(None)

    def type(self, text):
        self.process.stdin.write(text + "\n")
        self.process.stdin.flush()

    def wait_until_taken(self):
        """Until what was typed has been read: what is typed behind it has its answer."""
        self.echoes += 1
        self.type(f"write echo {self.echoes}")
        self.expect(f"write echo {self.echoes}: not a number")

    def expect(self, *all_words):
        """Waits until each of the words was in a line, in any order, from the last line that was
        waited for."""
        end = time.monotonic() + PATIENCE
        missing = list(all_words)
        while missing:
            try:
                line = self.lines.get(timeout=max(0.01, end - time.monotonic()))
            except queue.Empty:
                line = None
            if line is None:
                raise AssertionError(f"{missing} were not said, but:\n" + "\n".join(self.said))
            self.said.append(line)
            missing = [words for words in missing if words not in line]
        maps = pathlib.Path(f"/proc/{self.process.pid}/maps")
        loaded = maps.read_text() if self.process.poll() is None else self.driver
        if f"{os.path.realpath(self.driver)}/libtavmir" not in loaded and loaded != self.driver:
            raise AssertionError(f"the host has not loaded the driver of {self.driver}")

    def end(self):
        """Ends it as an operator would. Returns how long it took."""
        begun = time.monotonic()
        self.process.send_signal(signal.SIGINT)
        status = self.process.wait(timeout=PATIENCE)
        took = time.monotonic() - begun
        self.process.stdin.close()
        self.reader.join()
        self.process.stdout.close()
        if status != 0:
            raise AssertionError(f"the host ended with {status}")
        return took

    def take_what_was_said(self):
        while not self.lines.empty():
            self.said.append(self.lines.get())

    def rest(self):
        """Takes what it said after the last line that was waited for, when it has ended."""
        while (line := self.lines.get()) is not None:
            self.said.append(line)

    def kill(self):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()


def calm_plant(folder):
    """The example plant without its signals: every value is known."""
    import json
    plant = json.loads(pathlib.Path(PLACES["PLANT"]).read_text())
    plant.pop("signals")
    file = pathlib.Path(folder) / "plant.json"
    file.write_text(json.dumps(plant))
    return str(file)
