"""What tshark says of a capture with the dissector loaded."""
import pathlib
import subprocess

DISSECTOR = pathlib.Path(__file__).resolve().parent.parent.parent / "wireshark" / "tavmir.lua"
SEPARATOR = "\t"


def run(capture, *options, preferences=(), timeout=300):
    """Standard output and error. `preferences` as "tavmir.late:100"."""
    settings = [part for preference in preferences for part in ("-o", preference)]
    # The expert marks and both directions of a request need a second look at each frame.
    command = ["tshark", "-2", "-r", str(capture), "-X", f"lua_script:{DISSECTOR}", *settings,
               *options]
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                          timeout=timeout, errors="replace")
    if done.returncode != 0:
        raise AssertionError(f"tshark ended with {done.returncode}: {done.stderr}")
    return done.stdout, done.stderr


def fields(capture, *names, filter="tavmir", preferences=()):
    """A list of values for each packet, each as tshark prints it; several of one field with ","."""
    options = ["-Y", filter, "-T", "fields", "-E", f"separator={SEPARATOR}"]
    for name in names:
        options += ["-e", name]
    output, _ = run(capture, *options, preferences=preferences)
    return [line.split(SEPARATOR) for line in output.splitlines()]


def count(capture, filter, preferences=()):
    return len(fields(capture, "frame.number", filter=filter, preferences=preferences))


def words(capture, preferences=()):
    """The info column of each packet of the protocol."""
    output, _ = run(capture, "-Y", "tavmir", "-T", "fields", "-e", "_ws.col.Info",
                    preferences=preferences)
    return [line.strip() for line in output.splitlines()]
