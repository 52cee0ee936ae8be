"""Programs that record, and what stands in their folders: for the tests of the recording."""
import csv
import io
import json
import pathlib
import re
import signal
import sqlite3
import subprocess
import time

PATIENCE = 120
MIB = 1 << 20
MICROS = 1000000


class Programs:
    """Where the build has its programs."""
    tools = None
    driver = None


def project(variables, signals=(), initial=(), pass_ms=2):
    """A project's text; variables: name, type and further keys of each."""
    listed, address = [], 0
    for name, kind, keys in variables:
        listed.append({"name": name, "type": kind, "address": address, **keys})
        address += 1024
    return json.dumps({
        "connection": {"host": "127.0.0.1", "port": 5020, "station": 1,
                       "replyTimeoutMs": 20000,  # never reached, be the machine as busy as it may
                       "reconnectMinMs": 20, "reconnectMaxMs": 40, "passMs": pass_ms},
        "labels": [{"name": "Plant", "variables": listed}],
        "polled": [{"address": f"Plant.{name}"} for name, _, _ in variables],
        "initial": list(initial), "signals": list(signals)})


def counter(name, period_ms=5):
    return {"address": f"Plant.{name}", "signal": "counter", "low": 0, "high": 4000000000,
            "step": 1, "periodMs": period_ms}


class Controller:
    def __init__(self, project_file, *options):
        self.process = subprocess.Popen(
            [Programs.tools / "controller" / "tavmir-controller", "--project", project_file,
             "--listen", "127.0.0.1:0", *map(str, options)],
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        line = self.process.stdout.readline()
        self.place = re.fullmatch(r"listening on (.*)\n", line)[1]

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.end()

    def end(self):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
        self.process.communicate(timeout=PATIENCE)


def host(project_file, place, *options):
    return [Programs.tools / "host" / "tavmir-host", "run", project_file, "--driver",
            Programs.driver, "--connect", place, *map(str, options)]


def export(folder, *options):
    return [Programs.tools / "host" / "tavmir-host", "export", folder, *map(str, options)]


def run(command):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                          timeout=PATIENCE, check=False)


def run_until_good(command):
    """Ends it when it has shown a good value, as JSON."""
    with subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          text=True) as process:
        for line in process.stdout:
            if '"quality":"good"' in line:
                break
        process.send_signal(signal.SIGTERM)
        output, said = process.communicate(timeout=PATIENCE)
        return subprocess.CompletedProcess(command, process.returncode, output, said)


def statistics(output):
    return json.loads(output.splitlines()[-1])["statistics"]


def csv_rows(text):
    return list(csv.DictReader(io.StringIO(text, newline="")))


def files(folder):
    return sorted(pathlib.Path(folder).glob("recording-*.sqlite"))


def query(path, sql, *values):
    database = sqlite3.connect(f"{path.resolve().as_uri()}?mode=ro", uri=True)
    try:
        return database.execute(sql, values).fetchall()
    finally:
        database.close()


def query_all(folder, sql, *values):
    return [row for path in files(folder) for row in query(path, sql, *values)]


def samples_of(folder, address):
    """Times and values, file after file."""
    return query_all(folder, "SELECT s.at, s.value FROM sample s JOIN variable v "
                     "ON v.id = s.variable WHERE v.address = ? ORDER BY s.at", address)


def size_of(folder):
    total = 0
    for path in pathlib.Path(folder).iterdir():
        try:
            total += path.stat().st_size
        except FileNotFoundError:
            pass # the oldest went just now
    return total


def highest_number(folder):
    return max((int(path.name[10:18]) for path in files(folder)), default=0)


def wait_until(condition, what, seconds=PATIENCE):
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > end:
            raise AssertionError(f"waited in vain until {what}")
        time.sleep(0.02)
