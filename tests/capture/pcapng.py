"""A pcapng file of raw IP packets read block by block, as far as tests of the programs need it."""
import collections
import ipaddress
import pathlib
import struct

Packet = collections.namedtuple(
    "Packet", "at outbound comment source destination flags sequence payload")
SYN, FIN, RESET = 0x02, 0x01, 0x04


PAGE_BYTES = 4096


def blocks(data, killed=False):
    """Type and body of each; an error where there is no whole block.

    killed: the program that wrote it was killed, which can cut its last write at the end of a page.
    """
    at = 0
    while at < len(data):
        kind, size = struct.unpack_from("<II", data, at) if at + 8 <= len(data) else (0, 12)
        if killed and at + size > len(data) and len(data) % PAGE_BYTES == 0:
            return
        if size < 12 or at + size > len(data):
            raise ValueError(f"half a block at {at} of {len(data)}")
        if struct.unpack_from("<I", data, at + size - 4)[0] != size:
            raise ValueError(f"a block's two sizes differ at {at}")
        yield kind, data[at + 8:at + size - 4]
        at += size


def options(body, at):
    found = {}
    while at < len(body):
        code, size = struct.unpack_from("<HH", body, at)
        if code == 0:
            break
        found[code] = body[at + 4:at + 4 + size]
        at += 4 + (size + 3) // 4 * 4
    return found


def packet(body):
    _, high, low, size, _ = struct.unpack_from("<IIIII", body)
    ip = body[20:20 + size]
    said = options(body, 20 + (size + 3) // 4 * 4)
    version = ip[0] >> 4
    start, ends = (20, (ip[12:16], ip[16:20])) if version == 4 else (40, (ip[8:24], ip[24:40]))
    source_port, destination_port, sequence = struct.unpack_from(">HHI", ip, start)
    source, destination = (str(ipaddress.ip_address(end)) for end in ends)
    return Packet((high << 32 | low) / 1e9, said[2][0] == 2, said.get(1, b"").decode(),
                  (source, source_port), (destination, destination_port), ip[start + 13], sequence,
                  ip[start + 4 * (ip[start + 12] >> 4):])


def packets(path, killed=False):
    found = list(blocks(pathlib.Path(path).read_bytes(), killed))
    if [kind for kind, _ in found[:2]] != [0x0A0D0D0A, 1]:
        raise ValueError("no header")
    return [packet(body) for kind, body in found if kind == 6]


def sent(found, outbound):
    """All bytes that went one way."""
    return b"".join(one.payload for one in found if one.outbound == outbound)


def comments(found):
    return [one.comment for one in found if one.comment]
