"""Captures made by hand: TCP segments in IP packets, in a file that every tool reads. No right to
capture is needed, and each byte is the test's own."""
import struct

HOST, CONTROLLER = b"\x7f\x00\x00\x02", b"\x7f\x00\x00\x01"
RAW_IP = 101
FLAGS = {"fin": 1, "syn": 2, "rst": 4, "ack": 16}


class Stream:
    """One connection: counts what each side has sent, as TCP does."""

    def __init__(self, capture, port=5020, host_port=40000):
        self.capture, self.port, self.host_port = capture, port, host_port
        self.sent = {True: 1000, False: 5000}

    def request(self, at, data):
        self.segment(at, data, True)

    def reply(self, at, data):
        self.segment(at, data, False)

    def control(self, at, from_host, flags):
        """A segment without data: "syn", "syn ack", "ack", "fin ack" or "rst"."""
        self.segment(at, b"", from_host, sum(FLAGS[flag] for flag in flags.split()))
        if "syn" in flags or "fin" in flags:
            self.sent[from_host] += 1

    def segment(self, at, data, from_host, flags=0x18):
        ports = (self.host_port, self.port) if from_host else (self.port, self.host_port)
        addresses = HOST + CONTROLLER if from_host else CONTROLLER + HOST
        tcp = struct.pack(">HHIIBBHHH", *ports, self.sent[from_host], self.sent[not from_host],
                          5 << 4, flags, 65535, 0, 0) + data
        ip = struct.pack(">BBHHHBBH", 0x45, 0, 20 + len(tcp), 0, 0, 64, 6, 0) + addresses
        self.sent[from_host] += len(data)
        self.capture.packet(at, ip + tcp)


class Capture:
    def __init__(self, path):
        self.file = open(path, "wb")
        self.file.write(struct.pack("<IHHiIII", 0xA1B23C4D, 2, 4, 0, 0, 262144, RAW_IP))
        self.packets = 0

    def packet(self, at_ms, data):
        ns = int(at_ms * 1e6)
        self.file.write(struct.pack("<IIII", 1000000000 + ns // 10**9, ns % 10**9, len(data),
                                    len(data)) + data)
        self.packets += 1

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.file.close()


def frame(transaction, station, function, count, entries=b"", length=None, protocol=0):
    after = 3 + len(entries) if length is None else length
    return struct.pack(">HHHBBB", transaction, protocol, after, station, function, count) + entries


def read(transaction, function, *addresses, station=1):
    return frame(transaction, station, function, len(addresses),
                 b"".join(struct.pack(">I", address) for address in addresses))


def entries(width, *pairs, order="big"):
    return b"".join(struct.pack(">I", address) + value.to_bytes(width, order)
                    for address, value in pairs)


def values(transaction, function, width, *pairs, station=1):
    return frame(transaction, station, function, len(pairs), entries(width, *pairs))


def write(transaction, function, width, *pairs, station=1):
    return frame(transaction, station, function, len(pairs),
                 entries(width, *pairs, order="little"))


def done(transaction, function, count, station=1):
    return frame(transaction, station, function, count)


def refused(transaction, function, code, station=1):
    return frame(transaction, station, function | 0x80, code)
