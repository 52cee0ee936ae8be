#!/usr/bin/env python3
"""Any bytes may come: mutated frames and noise through the dissector raise no Lua error, and every
packet is dissected. Usage: hostile_bytes_test.py [COUNT [SEED]]; 100,000 frames by default."""
import pathlib
import random
import struct
import sys
import tempfile

sys.dont_write_bytecode = True
import tshark
from captures import Capture, Stream, done, frame, read, refused, values, write

FRAMES_A_STREAM = 20


def good_frame(chance):
    function = chance.choice((100, 101, 102, 103, 108, 109))
    width = {0: 1, 1: 1, 2: 2, 3: 2, 8: 4, 9: 4}[function - 100]
    number, count = chance.randrange(4), chance.randint(1, 6)
    addresses = [chance.randrange(2**32) for _ in range(count)]
    pairs = [(address, chance.randrange(256**width)) for address in addresses]
    if chance.random() < 0.1:
        return refused(number, function, chance.randrange(256))
    if function % 2 == 1:
        return write(number, function, width, *pairs) if chance.random() < 0.5 \
            else done(number, function, count)
    return read(number, function, *addresses) if chance.random() < 0.5 \
        else values(number, function, width, *pairs)


def mutated(data, chance):
    data = bytearray(data)
    for _ in range(chance.randint(0, 4)):
        kind = chance.randrange(5)
        if kind == 0 and data:
            data[chance.randrange(len(data))] = chance.randrange(256)
        elif kind == 1 and data:
            data[chance.randrange(len(data))] ^= 1 << chance.randrange(8)
        elif kind == 2:
            del data[chance.randrange(len(data) + 1):]
        elif kind == 3:
            data += bytes(chance.randrange(256) for _ in range(chance.randint(1, 20)))
        elif kind == 4 and len(data) >= 6:
            struct.pack_into(">H", data, 4, chance.choice((0, 1, 2, 3, 1024, 1025, 65535)))
    return bytes(data)


def make(path, count, chance):
    with Capture(path) as capture:
        for i in range(count):
            if i % FRAMES_A_STREAM == 0:
                stream = Stream(capture, chance.choice((5020, 502)),
                                1024 + i // FRAMES_A_STREAM % 60000)
            stream.segment(i, mutated(good_frame(chance), chance) or b"\0",
                           chance.random() < 0.5)


def main():
    count = int(sys.argv[1]) if len(sys.argv) > 1 else 100000
    seed = int(sys.argv[2]) if len(sys.argv) > 2 else 1
    with tempfile.TemporaryDirectory() as folder:
        capture = pathlib.Path(folder) / "hostile.pcap"
        make(capture, count, random.Random(seed))
        lines = 0
        errors = 0
        output, complaints = tshark.run(capture, "-V", preferences=("tavmir.take_502:TRUE",),
                                        timeout=1500)
        for line in output.splitlines():
            lines += line.startswith("Frame ")
            errors += "Lua Error" in line or "Dissector bug" in line
        errors += complaints.count("Lua") + complaints.count("bug")
    print(f"{count} frames, seed {seed}: {lines} packets shown, {errors} errors")
    return 0 if lines == count and errors == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
