"""A program on a terminal of its own, and what that terminal shows."""
import fcntl
import os
import pty
import select
import signal
import struct
import termios
import time

import pyte

PATIENCE = 60


class PtyProgram:
    """Runs on a terminal of `columns` x `lines`; `reads` False: nobody reads that terminal."""

    def __init__(self, arguments, columns=80, lines=24, environment=None, reads=True):
        self.screen = pyte.Screen(columns, lines)
        self.stream = pyte.ByteStream(self.screen)
        self.raw = b""
        self.status = None
        self.reads = reads
        settings = {"TERM": "linux", "LC_ALL": "C.UTF-8", "PATH": os.environ["PATH"]}
        settings.update({name: value for name, value in os.environ.items()
                         if name.endswith("SAN_OPTIONS") or name == "LD_PRELOAD" or name == "TZ"})
        settings.update(environment or {})
        self.pid, self.master = pty.fork()
        if self.pid == 0:
            self._set_size(0, columns, lines)
            os.execve(arguments[0], arguments, settings)
        self._set_size(self.master, columns, lines)

    @staticmethod
    def _set_size(descriptor, columns, lines):
        fcntl.ioctl(descriptor, termios.TIOCSWINSZ, struct.pack("HHHH", lines, columns, 0, 0))

    def resize(self, columns, lines):
        self.screen.resize(lines, columns)
        self._set_size(self.master, columns, lines)

    def type(self, keys):
        os.write(self.master, keys.encode())

    def lines(self):
        return [line.rstrip() for line in self.screen.display]

    def _read(self, seconds):
        ready, _, _ = select.select([self.master], [], [], seconds)
        if not ready:
            return
        try:
            got = os.read(self.master, 65536)
        except OSError:  # its end was closed
            time.sleep(seconds)
            return
        self.raw += got
        self.stream.feed(got)

    def ended(self):
        if self.status is None:
            pid, status = os.waitpid(self.pid, os.WNOHANG)
            if pid:
                self.status = os.waitstatus_to_exitcode(status)
        return self.status is not None

    def shows(self, wanted):
        """Waits until `wanted` is true of the lines shown; False: it never was."""
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end:
            if wanted(self.lines()):
                return True
            self._read(0.05)
        return False

    def wait(self):
        """The exit status, when all that was written has been read; None: it did not end."""
        end = time.monotonic() + PATIENCE
        while not self.ended() and time.monotonic() < end:
            if self.reads:
                self._read(0.02)
            else:
                time.sleep(0.02)
        if self.reads:
            while select.select([self.master], [], [], 0)[0]:
                before = len(self.raw)
                self._read(0.01)
                if len(self.raw) == before:
                    break
        return self.status

    def signal(self, number):
        os.kill(self.pid, number)

    def close(self):
        if not self.ended():
            self.signal(signal.SIGKILL)
            os.waitpid(self.pid, 0)
        os.close(self.master)
