"""A small host that speaks the protocol by itself: polls two reads, writes a counting word, repeats
and gives up, reconnects with growing pauses. Every duty can be broken by its name."""
import random
import socket
import struct
import time

REPLY_TIMEOUT = 0.5
ATTEMPTS = 3
PASS = 0.05
FIRST_PAUSE = 0.1
MOST_PAUSE = 2.0
STATION = 1
WRITTEN = 64
REFUSED_PAUSE = 1.0

READ_WORDS, WRITE_WORDS = 102, 103
ENTRY = {READ_WORDS: 6, WRITE_WORDS: 0}


class Lost(Exception):
    """The connection is over."""


class Over(Exception):
    """Nobody judges any more."""


class Host:
    def __init__(self, port, broken, goes_on):
        """goes_on: asked again and again; the host ends when it says no."""
        self.port = port
        self.goes_on = goes_on
        self.broken = set(broken)
        self.socket = None
        self.number = 0
        self.value = 0
        self.pause = FIRST_PAUSE
        self.leaked = []
        self.waiting = b""
        self.refused_in_a_row = 0
        self.used = set()

    def breaks(self, name):
        return name in self.broken

    def once(self, name):
        """A break that happens one time only, so that all else goes on."""
        if name not in self.broken or name in self.used:
            return False
        self.used.add(name)
        return True

    # connections

    def connect(self):
        while self.goes_on():
            try:
                self.socket = socket.create_connection(("127.0.0.1", self.port), timeout=1)
                self.socket.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
                self.waiting = b""
                return
            except OSError:
                self.wait_for_next_attempt()
        raise Over

    def wait_for_next_attempt(self):
        if self.breaks("reconnect-pause"):
            time.sleep(0.005)
            return
        time.sleep(self.pause)
        if not self.breaks("reconnect-grows"):
            self.pause = min(MOST_PAUSE, self.pause * 2)

    def lose(self):
        if self.breaks("one-connection"):
            self.leaked.append(self.socket)
        else:
            self.socket.close()
        self.socket = None
        if self.breaks("reconnect-within"):
            time.sleep(4)
        self.wait_for_next_attempt()

    # frames

    def frame(self, function, count, entries):
        if not self.breaks("id-fresh"):
            self.number = (self.number + 1) % 65536
        station = 9 if self.breaks("station-known") else STATION
        return struct.pack(">HHHBBB", self.number, 0, 3 + len(entries), station, function,
                           count) + entries

    def read(self, address):
        count = 60 if self.breaks("frame-limit") else 1
        request = self.frame(READ_WORDS, count,
                             b"".join(struct.pack(">I", address + 16 * i) for i in range(count)))
        if self.breaks("frame-function"):
            request = request[:7] + b"\x41" + request[8:]
        if self.breaks("frame-count"):
            request = request[:8] + b"\x02" + request[9:]
        if self.once("frame-header"):
            request = request[:3] + b"\x01" + request[4:]
        return request

    def write(self):
        self.value += 2 if self.breaks("write-kept") else 1
        return self.frame(WRITE_WORDS, 1, struct.pack(">IH", WRITTEN, 0)[:4] +
                          struct.pack("<H", self.value))

    def send(self, request):
        self.socket.settimeout(1)
        try:
            if self.once("frame-whole"):
                self.socket.sendall(request[:7])
                time.sleep(1.5)
                request = request[7:]
            self.socket.sendall(request)
        except OSError:
            raise Lost from None

    def receive(self, end):
        """One whole frame, or None when the time is over; Lost behind half a frame."""
        while True:
            if len(self.waiting) >= 6:
                size = 6 + struct.unpack(">H", self.waiting[4:6])[0]
                if not 9 <= size <= 1030 or self.waiting[2:4] != b"\0\0":
                    raise Lost
                if len(self.waiting) >= size:
                    frame, self.waiting = self.waiting[:size], self.waiting[size:]
                    return frame
            left = end - time.monotonic()
            if left <= 0:
                if self.waiting and not self.breaks("cut-closes"):
                    raise Lost
                self.waiting = b""
                return None
            self.socket.settimeout(left)
            try:
                data = self.socket.recv(4096)
            except socket.timeout:
                continue
            except OSError:
                raise Lost from None
            if not data:
                raise Lost
            self.waiting += data

    def is_answer(self, request, reply):
        """True, False for a reply of somebody else, None for one that is no reply at all."""
        if reply[:2] != request[:2]:
            return any([self.once("late-dropped"), self.once("duplicate-dropped"),
                        self.once("foreign-dropped")])
        function = request[7]
        if reply[6:9] != request[6:9]:
            return False
        entry = ENTRY.get(function, 0)
        asked = 9 + entry * request[8]
        if len(reply) < asked and not self.breaks("short-refused"):
            return None
        if len(reply) > asked and not self.breaks("long-refused"):
            return None
        if len(reply) == asked and entry and reply[9:13] != request[9:13]:
            return False
        return True

    # exchanges

    def attempt(self, request):
        """"answer", "exception", "bad" or "nothing"."""
        self.send(request)
        patience = REPLY_TIMEOUT
        if self.breaks("wait-out"):
            patience = 0.15
        end = time.monotonic() + patience
        if self.breaks("slow-patience"):
            end = time.monotonic() + 0.15
        while True:
            reply = self.receive(end)
            if reply is None:
                if self.breaks("slow-patience"):
                    raise Lost
                return "nothing"
            if reply[:2] == request[:2] and reply[6] == request[6] and \
                    reply[7] == request[7] | 0x80:
                return "exception"
            fits = self.is_answer(request, reply)
            if fits is None:
                return "bad"
            if fits:
                return "answer"

    def exchange(self, request):
        """True when it was answered. The same frame, ATTEMPTS times at most."""
        attempts = ATTEMPTS + (1 if self.breaks("attempts") else 0)
        for attempt in range(attempts):
            if self.socket is None:
                self.connect()
            try:
                end = self.attempt(request)
            except Lost:
                self.lose()
                continue
            if end == "answer":
                self.pause = FIRST_PAUSE
                self.refused_in_a_row = 0
                return True
            if end == "exception":
                self.refused()
                return False
            if self.breaks("same-bytes") and attempt == 0:
                request = request[:-1] + bytes([request[-1] ^ 1])
        if self.breaks("recovers"):
            time.sleep(30)
        return False

    def refused(self):
        self.refused_in_a_row += 1
        if self.breaks("exception-keeps-line"):
            self.lose()
        if self.once("exception-goes-on"):
            time.sleep(5)
        if self.refused_in_a_row > 5 and not self.breaks("refused-rate-falls"):
            time.sleep(min(REFUSED_PAUSE, 0.05 * self.refused_in_a_row))

    def run(self):
        try:
            while self.goes_on():
                self.turn()
        except Over:
            pass
        finally:
            for left in self.leaked + [self.socket]:
                if left is not None:
                    left.close()

    def turn(self):
        if not (self.breaks("poll-beside-writes") and self.value > 10):
            self.exchange(self.read(16))
            self.exchange(self.read(32))
        if self.value > 10 and self.once("poll-goes-on"):
            time.sleep(5)
        if self.breaks("one-in-flight") and self.socket is not None:
            self.pipelined()
        if not self.breaks("id-fresh"):
            request = self.write()
            self.exchange(request)
            if self.breaks("write-once"):
                self.exchange(request)
        time.sleep(PASS * random.uniform(0.9, 1.1))

    def pipelined(self):
        """Two requests at once."""
        try:
            first, second = self.read(16), self.read(32)
            self.send(first + second)
            end = time.monotonic() + REPLY_TIMEOUT
            self.receive(end)
            self.receive(end)
        except Lost:
            self.lose()
