"""The frames of a capture as the dissector shows them, one by one: several may share a packet."""
import xml.etree.ElementTree

import tshark

MARKS = ("refused", "unasked", "duplicate", "unanswered", "late", "wrong_length", "wrong_count",
         "wrong_addresses", "wrong_function", "unknown_function", "broken_stream")
# What makes a reply another than the host waits for.
UNLIKE = {"wrong_count", "wrong_addresses", "wrong_function"}


class Frame:
    def __init__(self, packet, proto, port):
        self.at = float(packet.find("proto[@name='geninfo']/field[@name='timestamp']").get("value"))
        self.number = int(packet.find("proto[@name='frame']/field[@name='frame.number']").get("show"))
        self.is_request = int(
            packet.find("proto[@name='tcp']/field[@name='tcp.dstport']").get("show")) == port
        self.proto = proto
        self.fields = [(field.get("name"), field.get("show")) for field in proto.iter("field")
                       if field.get("name", "").startswith("tavmir.")]
        self.marks = {name[len("tavmir."):] for name, _ in self.fields
                      if name[len("tavmir."):] in MARKS}

    def all(self, name):
        return [show for field, show in self.fields if field == name]

    def entries(self):
        """(name, its other fields) of each entry."""
        for entry in self.proto.iter("field"):
            if entry.get("name") == "tavmir.entry":
                fields = {field.get("name"): field.get("show") for field in entry.iter("field")}
                yield fields.get("tavmir.name"), fields

    def kind(self):
        """The one thing that the frame is to the host."""
        if self.is_request:
            return "request"
        for mark in ("broken_stream", "unasked", "duplicate", "late"):
            if mark in self.marks:
                return mark
        if self.marks & UNLIKE or {"refused", "wrong_length"} <= self.marks:
            return "unlike"
        for mark in ("wrong_length", "refused"):
            if mark in self.marks:
                return mark
        return "good"


def exchanged(frames):
    """What the dissector says of each frame, requests and replies apart: what two captures of the
    same bytes must agree in. Frames that another one names are counted in their direction."""
    ways = {way: [frame for frame in frames if frame.is_request == way] for way in (True, False)}
    places = {}
    for way in ways.values():
        for place, frame in enumerate(way):
            places.setdefault((frame.is_request, str(frame.number)), place)

    def told(frame, name, show):
        if name in ("tavmir.request_in", "tavmir.response_in"):
            return name, places[(name == "tavmir.request_in", show)]
        return name, show

    return {way: [[told(frame, *field) for field in frame.fields if field[0] != "tavmir.time"]
                  for frame in several] for way, several in ways.items()}


def frames(capture, port, preferences):
    output, errors = tshark.run(capture, "-Y", "tavmir", "-T", "pdml", preferences=preferences)
    if "Lua" in errors:
        raise AssertionError(errors)
    return [Frame(packet, proto, port)
            for packet in xml.etree.ElementTree.fromstring(output).iter("packet")
            for proto in packet.findall("proto[@name='tavmir']")]
