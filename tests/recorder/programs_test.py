#!/usr/bin/env python3
"""The host with its recording on: killed at any time, at its limit, on a disk that is full, and
exported while it records.
Usage: programs_test.py TOOLS DRIVER [unittest options]; TOOLS is the build's folder with host/ and
controller/."""
import concurrent.futures
import csv
import io
import os
import pathlib
import random
import resource
import signal
import sqlite3
import statistics as figures
import subprocess
import sys
import tempfile
import time
import unittest

sys.dont_write_bytecode = True
from recording import (MIB, MICROS, PATIENCE, Controller, Programs, counter, csv_rows, export,
                       files, highest_number, host, project, query, query_all, run,
                       run_until_good, samples_of, size_of, statistics, wait_until)

KILLS = 20
FOLDERS = 4
SHOWN_EACH = 0.005 # seconds between two values of the counter
MINUTE = 60


class Recorded(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)
        self.recording = self.folder / "recording"

    def write_project(self, *arguments, **keys):
        path = self.folder / "plant.json"
        path.write_text(project(*arguments, **keys))
        return path

    def check_whole(self, folder):
        for path in files(folder):
            self.assertEqual(query(path, "PRAGMA integrity_check"), [("ok",)], path.name)

    def no_logs(self, folder):
        self.assertEqual([path.name for path in folder.iterdir()
                          if not path.name.endswith((".sqlite", ".lock"))], [])


class Kills(Recorded):
    """Twenty of them, in some folders side by side; each goes on where it was killed."""

    def test_killed_at_any_time_at_most_a_second_is_missing(self):
        plant = self.write_project([("Count", "dword", {}), ("Still", "word", {})],
                                   [counter("Count")])
        seed = random.randrange(1 << 30)
        print(f"seed {seed}", flush=True)
        with Controller(plant) as controller, \
                concurrent.futures.ThreadPoolExecutor(FOLDERS) as workers:
            jobs = [workers.submit(self.kill_often, plant, controller.place, number,
                                   random.Random(seed + number)) for number in range(FOLDERS)]
            ends = [end for job in jobs for end in job.result()]
        self.check_losses([lost for lost, _ in ends], [pause for _, its in ends for pause in its])

    def check_losses(self, lost, pauses):
        """Seconds. A busy machine may keep the recorder from its work while values are read on, which
        is no fault: so one kill in four may cost more than a second, and it is the middle one of the
        pauses between two commits that must be short."""
        self.assertEqual(len(lost), KILLS)
        self.assertLessEqual(len([one for one in lost if one >= 1.2]), KILLS // 4, lost)
        self.assertGreater(len(pauses), KILLS // 4, pauses)
        self.assertLess(figures.median(pauses), 1, pauses)

    def kill_often(self, plant, place, number, chance):
        """Seconds lost at each kill, and those between commits before."""
        folder = self.folder / f"recording{number}"
        ends = []
        for _ in range(KILLS // FOLDERS):
            seen, commits = self.run_and_kill(plant, place, folder, chance.uniform(0.2, 3))
            self.check_whole(folder)
            # Since what is seen is printed, not written, it is all there.
            recorded = [value for _, value in samples_of(folder, "Plant.Count")]
            last = recorded[-1] if recorded else -1
            self.assertGreaterEqual(last, max([value for _, value in commits], default=-1),
                                    "what was committed stays")
            missing = [value for value in seen if value > last]
            times = sorted({until for until, _ in commits})
            ends.append((len(missing) * SHOWN_EACH,
                         [(b - a) / MICROS for a, b in zip(times, times[1:])]))
        done = run_until_good(host(plant, place, "--format", "json", "--record", folder))
        self.assertEqual(done.returncode, 0, done.stderr)
        self.no_logs(folder)
        self.check_whole(folder)
        values = [value for _, value in samples_of(folder, "Plant.Count")]
        self.assertEqual(values, sorted(set(values)), "each value once, in its order")
        times = [at for at, _ in samples_of(folder, "Plant.Count")]
        self.assertEqual(times, sorted(times))
        self.check_gaps(folder)
        return ends

    def run_and_kill(self, plant, place, folder, seconds):
        """The values of the counter that the host had shown when it was killed, and what stood in its
        file until then: (covered until, last value), again and again."""
        before = files(folder)
        process = subprocess.Popen(
            host(plant, place, "--format", "csv", "--changes", "--record", folder),
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        killer = concurrent.futures.ThreadPoolExecutor(1)
        output = killer.submit(process.stdout.read)
        commits = []
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            commits += self.committed(set(files(folder)) - set(before))
            time.sleep(0.05)
        process.kill()
        process.wait()
        lines = output.result().split("\n")[:-1]
        killer.shutdown()
        process.stdout.close()
        rows = csv_rows("\n".join(lines))
        return [int(row["value"]) for row in rows if row["address"] == "Plant.Count"], commits

    @staticmethod
    def committed(paths):
        try:
            return [row for path in paths for row in query(
                path, "SELECT value, (SELECT coalesce(max(value), -1) FROM sample) FROM about "
                "WHERE key = 'covered_until'")]
        except sqlite3.Error:
            return [] # it is just being made

    def check_gaps(self, folder):
        """The end of one file, the gap, and the beginning of the next fit together."""
        paths = files(folder)
        for before, after in zip(paths, paths[1:]):
            (until,), = query(before, "SELECT value FROM about WHERE key = 'covered_until'")
            (began,), = query(after, "SELECT value FROM about WHERE key = 'began'")
            self.assertEqual(query(after, "SELECT at, until FROM event WHERE kind = 'gap'"),
                             [(until, began)])


class Limit(Recorded):
    LIMIT = 4

    def busy(self, *options):
        """A host that fills files, and its controller."""
        names = [f"Count{number}" for number in range(100)]
        plant = self.write_project([(name, "dword", {}) for name in names],
                                   [counter(name, 2) for name in names], pass_ms=1)
        controller = Controller(plant)
        self.addCleanup(controller.end)
        process = subprocess.Popen(
            host(plant, controller.place, "--format", "json", "--interval", 60000, "--record",
                 self.recording, "--record-limit", self.LIMIT, *options),
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.addCleanup(lambda: process.poll() is None and process.kill())
        return process

    def turns(self, number):
        """Until the ring has come to that file; the limit holds all the time."""
        def look():
            self.assertLessEqual(size_of(self.recording), self.LIMIT * MIB)
            return highest_number(self.recording) >= number
        wait_until(lambda: self.recording.exists() and look(), f"file {number} is begun")

    def end(self, process):
        process.send_signal(signal.SIGTERM)
        output, said = process.communicate(timeout=PATIENCE)
        self.assertEqual(process.returncode, 0, said)
        return statistics(output)

    def export_for_a_minute(self):
        """One whose reader is slow, so that it holds a file while the ring goes on."""
        exporting = subprocess.Popen(export(self.recording), stdout=subprocess.PIPE,
                                     stderr=subprocess.PIPE, text=True)
        self.assertEqual(exporting.stdout.readline(), "time,address,value,number,quality,reason\n")
        began, first = time.monotonic(), highest_number(self.recording)
        while time.monotonic() - began < MINUTE:
            self.assertTrue(exporting.stdout.readline().endswith("\n"))
            self.assertLessEqual(size_of(self.recording), self.LIMIT * MIB)
            self.assertIsNone(exporting.poll())
            time.sleep(0.05)
        self.assertGreaterEqual(highest_number(self.recording), first + 4)
        rows, said = exporting.communicate(timeout=PATIENCE)
        self.assertEqual(exporting.returncode, 0, said)
        self.assertRegex(said, r"\A(tavmir-host: exported until \S+Z, \d+ %\n)*\Z")
        self.assertTrue(rows.endswith("\n"))

    def test_the_oldest_go_beside_an_export_and_each_file_can_be_read_by_itself(self):
        process = self.busy()
        self.turns(4)
        self.export_for_a_minute()
        self.turns(9)
        shown = self.end(process)["recording"]
        self.assertEqual((shown["lostSamples"], shown["problem"]), (0, None))
        # A disk that keeps the recorder waiting for seconds may cost it something once; one that is
        # too slow for its feed would miss something again and again.
        missed = query_all(self.recording, "SELECT text FROM event WHERE kind = 'gap'")
        self.assertLessEqual(len(missed), 1 if shown["missedEvents"] else 0, missed)
        self.assertEqual(shown["bytes"], size_of(self.recording))
        self.no_logs(self.recording)
        self.check_whole(self.recording)
        self.assertGreater(len(files(self.recording)), 2)
        self.assertGreater(highest_number(self.recording), len(files(self.recording)))
        plant = (self.folder / "plant.json").read_bytes()
        for path in files(self.recording):
            self.assertLessEqual(path.stat().st_size, self.LIMIT * MIB / 8)
            self.assertEqual(query(path, "SELECT bytes FROM project"), [(plant,)])
            self.assertEqual(query(path, "SELECT count(*) FROM variable"), [(100,)])
        for path in files(self.recording)[1:]:
            self.assertEqual(query(path, "SELECT count(*) FROM opening WHERE value IS NOT NULL "
                                   "AND quality = 1"), [(100,)])

    def test_a_reader_that_holds_a_file_does_not_stop_the_ring(self):
        process = self.busy()
        self.turns(2)
        held = sqlite3.connect(files(self.recording)[-1], isolation_level=None)
        held.execute("BEGIN")
        held.execute("SELECT count(*) FROM sample").fetchall()
        self.turns(highest_number(self.recording) + 4)
        held.close()
        shown = self.end(process)["recording"]
        self.assertEqual((shown["lostSamples"], shown["problem"]), (0, None))
        self.no_logs(self.recording)


class Disk(Recorded):
    def test_a_full_disk_is_told_and_recording_goes_on_when_there_is_room(self):
        plant = self.write_project([("Count", "dword", {})], [counter("Count", 10)])
        with Controller(plant) as controller:
            process = subprocess.Popen(
                host(plant, controller.place, "--format", "csv", "--changes", "--record",
                     self.recording), stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
            wait_until(lambda: self.recording.exists() and files(self.recording) and
                       samples_of(self.recording, "Plant.Count"), "something is recorded")
            shown = []
            with concurrent.futures.ThreadPoolExecutor(1) as reader:
                reader.submit(lambda: shown.extend(process.stdout))
                # Every write into a file fails from here on.
                hard = resource.prlimit(process.pid, resource.RLIMIT_FSIZE)[1]
                resource.prlimit(process.pid, resource.RLIMIT_FSIZE, (4096, hard))
                failed = self.said(process, "cannot be written")
                self.assertRegex(failed, r"^the recording cannot be written: .+\n$")
                before = samples_of(self.recording, "Plant.Count")[-1]
                # Polling goes on. A value stands for 10 ms, so that 2.5 s at least will be missing.
                until_then = len(shown)
                wait_until(lambda: len(shown) > until_then + 250, "values are shown all the same")
                self.assertEqual(samples_of(self.recording, "Plant.Count")[-1], before)
                resource.prlimit(process.pid, resource.RLIMIT_FSIZE, (hard, hard))
                self.assertIn("the recording is written again", self.said(process, "again"))
                wait_until(lambda: len([1 for at, _ in samples_of(self.recording, "Plant.Count")
                                        if at > before[0]]) > 50, "it goes on")
                process.send_signal(signal.SIGTERM)
            self.assertEqual(process.wait(PATIENCE), 0)
            process.stdout.close()
            process.stderr.close()
        self.check_whole(self.recording)
        self.check_gap(before[0])

    def said(self, process, words):
        for line in process.stderr:
            if words in line:
                return line
        raise AssertionError(f"never said: {words}")

    def check_gap(self, last):
        (since, until), = query_all(self.recording,
                                    "SELECT at, until FROM event WHERE kind = 'gap'")
        self.assertGreater(until - since, 2 * MICROS)
        times = [at for at, _ in samples_of(self.recording, "Plant.Count")]
        self.assertEqual([at for at in times if since < at < until], [])
        self.assertLessEqual(last, since)
        self.assertEqual(query_all(self.recording, "SELECT count(*) FROM event "
                                   "WHERE kind = 'storage failed' AND text != ''"), [(1,)])

    def test_a_folder_that_cannot_be_written_ends_the_program_at_once(self):
        plant = self.write_project([("Count", "dword", {})])
        a_file = self.folder / "file"
        a_file.write_text("mine")
        for place, why in ((a_file, "Not a directory"),
                           (self.folder / "no" / "such", "No such file or directory")):
            done = run(host(plant, "127.0.0.1:1", "--record", place))
            self.assertEqual((done.returncode, done.stdout), (2, ""))
            self.assertEqual(done.stderr, f"tavmir-host: cannot record into {place}: {why}\n")
        self.assertEqual(a_file.read_text(), "mine")

    def test_two_programs_cannot_record_into_one_folder(self):
        plant = self.write_project([("Count", "dword", {})])
        with Controller(plant) as controller:
            first = subprocess.Popen(host(plant, controller.place, "--format", "json", "--record",
                                          self.recording), stdout=subprocess.DEVNULL)
            wait_until(lambda: self.recording.exists() and files(self.recording), "it records")
            second = run(host(plant, controller.place, "--record", self.recording))
            first.send_signal(signal.SIGTERM)
            self.assertEqual(first.wait(PATIENCE), 0)
        self.assertEqual(second.returncode, 2)
        self.assertEqual(second.stderr, f"tavmir-host: cannot record into {self.recording}: "
                                        "another program records into it\n")

    def test_files_of_others_are_never_touched(self):
        plant = self.write_project([("Count", "dword", {})])
        self.recording.mkdir()
        others = {"notes.txt": b"mine", "recording-00000001-20200101T000000000Z.sqlite": b"no " * 99,
                  "recording-1.sqlite": b"", "x-wal": b"1"}
        for name, content in others.items():
            (self.recording / name).write_bytes(content)
        with Controller(plant) as controller:
            done = run_until_good(host(plant, controller.place, "--format", "json", "--record",
                                       self.recording, "--record-limit", 4))
        self.assertEqual(done.returncode, 0, done.stderr)
        for name, content in others.items():
            self.assertEqual((self.recording / name).read_bytes(), content)


class Exports(Recorded):
    """One recording, exported in many ways."""
    TEXTS = ("=1+2", "@home", '+a,"b"', "-x")

    @classmethod
    def setUpClass(cls):
        temporary = tempfile.TemporaryDirectory()
        cls.addClassCleanup(temporary.cleanup)
        folder = pathlib.Path(temporary.name)
        cls.shared = folder / "recording"
        variables = [("Count", "dword", {}), ("Low", "word", {"format": "signed"}),
                     ("Mask", "word", {"format": "hex"}), ("Run", "bit", {}),
                     ("Level", "real", {})]
        variables += [(f"Text{n}", "text", {"words": 8}) for n in range(len(cls.TEXTS))]
        initial = [{"address": "Plant.Low", "value": "-5"},
                   {"address": "Plant.Mask", "value": "0x1F"},
                   {"address": "Plant.Level", "value": "-1.5"}]
        initial += [{"address": f"Plant.Text{n}", "value": text}
                    for n, text in enumerate(cls.TEXTS)]
        plant = folder / "plant.json"
        plant.write_text(project(variables, [counter("Count", 20)], initial, pass_ms=5))
        with Controller(plant) as controller:
            command = host(plant, controller.place, "--format", "json", "--interval", 60000,
                           "--record", cls.shared)
            process = subprocess.Popen(command, stdout=subprocess.PIPE, text=True)
            wait_until(lambda: len(samples_of(cls.shared, "Plant.Count")) > 160, "3 s are recorded")
            controller.end() # what was good is stale from here on
            wait_until(lambda: query_all(
                cls.shared, "SELECT at FROM quality, about WHERE key = 'covered_until' AND "
                "quality != 1 AND at < value - 300000"), "some of that is recorded")
            process.send_signal(signal.SIGTERM)
            cls.output = process.communicate(timeout=PATIENCE)[0]
        cls.rows = csv_rows(run(export(cls.shared)).stdout)

    def of(self, address, rows=None):
        return [row for row in (self.rows if rows is None else rows) if row["address"] == address]

    def test_rows_are_what_stands_in_the_files(self):
        recorded = [value for _, value in samples_of(self.shared, "Plant.Count")]
        exported = [int(row["number"]) for row in self.of("Plant.Count") if row["quality"] == "good"]
        self.assertEqual(exported, recorded)
        self.assertGreater(len(recorded), 50)
        times = [row["time"] for row in self.rows]
        self.assertEqual(times, sorted(times))
        for moment in times:
            self.assertRegex(moment, r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z$")

    def test_values_are_shown_as_the_project_says_and_numbers_are_decimal(self):
        first = {row["address"]: (row["value"], row["number"]) for row in reversed(self.rows)
                 if row["quality"] == "good"}
        self.assertEqual(first["Plant.Low"], ("-5", "-5"))
        self.assertEqual(first["Plant.Mask"], ("0x001F", "31"))
        self.assertEqual(first["Plant.Level"], ("-1.5", "-1.5"))
        self.assertEqual(first["Plant.Run"], ("0", "0"))

    def test_texts_that_begin_as_formulas_are_quoted(self):
        for number, text in enumerate(self.TEXTS):
            shown = {row["value"] for row in self.of(f"Plant.Text{number}") if row["value"]}
            self.assertEqual(shown, {"'" + text})
            self.assertEqual({row["number"] for row in self.of(f"Plant.Text{number}")}, {""})

    def test_what_is_not_good_says_why(self):
        last = self.of("Plant.Count")[-1]
        self.assertIn(last["quality"], ("stale", "bad"))
        self.assertNotEqual(last["reason"], "")
        self.assertEqual(last["value"], self.of("Plant.Count")[-2]["value"])

    def test_addresses_choose(self):
        rows = csv_rows(run(export(self.shared, "Plant.Low", "Plant.Run")).stdout)
        self.assertEqual({row["address"] for row in rows}, {"Plant.Low", "Plant.Run"})
        self.assertEqual(rows, [row for row in self.rows
                                if row["address"] in ("Plant.Low", "Plant.Run")])

    def test_from_and_to_cut(self):
        counts = self.of("Plant.Count")
        begin, end = counts[10]["time"], counts[40]["time"]
        rows = csv_rows(run(export(self.shared, "--from", begin, "--to", end)).stdout)
        self.assertEqual(rows, [row for row in self.rows if begin <= row["time"] < end])
        without_zone = csv_rows(run(export(self.shared, "--from", begin[:-1], "--to", end)).stdout)
        self.assertEqual(without_zone, rows)

    def test_wide_rows_are_the_values_at_each_step(self):
        done = run(export(self.shared, "--wide", 100, "Plant.Count", "Plant.Mask"))
        self.assertEqual(done.returncode, 0, done.stderr)
        rows = csv_rows(done.stdout)
        self.assertEqual(list(rows[0]), ["time", "Plant.Count", "Plant.Mask"])
        self.assertGreater(len(rows), 30)
        for row in rows:
            self.assertRegex(row["time"], r"\.\d00Z$")
            before = [one for one in self.of("Plant.Count") if one["time"] < row["time"]]
            after = [one for one in self.of("Plant.Count") if one["time"] == row["time"]]
            if after: # within the same millisecond
                continue
            good = before and before[-1]["quality"] == "good"
            self.assertEqual(row["Plant.Count"], before[-1]["value"] if good else "", row)
        self.assertEqual(rows[-1]["Plant.Count"], "")
        self.assertIn("0x001F", {row["Plant.Mask"] for row in rows})

    def test_wide_begins_with_what_stood_before(self):
        begin = self.of("Plant.Count")[60]["time"]
        rows = csv_rows(run(export(self.shared, "--wide", 10, "--from", begin, "Plant.Low")).stdout)
        self.assertEqual(rows[0]["Plant.Low"], "-5")

    def test_the_size_and_the_time_covered_are_told(self):
        shown = statistics(self.output)["recording"]
        self.assertEqual(shown["bytes"], size_of(self.shared))
        counted = sum(query_all(self.shared, "SELECT count(*) FROM sample")[0])
        self.assertEqual(shown["samples"], counted)
        self.assertLessEqual(shown["from"], self.rows[0]["time"])
        self.assertGreaterEqual(shown["until"], self.rows[-1]["time"])

    def test_the_view_reads_as_the_export_does(self):
        rows = query_all(self.shared, "SELECT time, value, quality FROM samples "
                         "WHERE address = 'Plant.Count' ORDER BY time")
        self.assertEqual([(time, str(value)) for time, value, _ in rows],
                         [(row["time"], row["value"]) for row in self.of("Plant.Count")
                          if row["quality"] == "good"])
        self.assertEqual({quality for _, _, quality in rows}, {"good"})

    def test_bad_input_is_one_line(self):
        empty = self.folder / "empty"
        empty.mkdir()
        a_file = self.folder / "file"
        a_file.write_text("")
        cases = {
            (self.folder / "no",): f"{self.folder / 'no'}: No such file or directory",
            (a_file,): f"{a_file}: is no folder; a recording is a folder of files",
            (empty,): f"{empty}: holds no recording",
            (self.shared, "Plant.No"): "Plant.No: the recording has no such variable",
            (self.shared, "--wide", "0"): "--wide 0: must be a whole number from 1 to 86400000",
            (self.shared, "--from", "noon"):
                "--from noon: must be a time such as 2026-03-01T12:00:00.000Z",
            (self.shared, "--from", "2026-01-02", "--to", "2026-01-01"):
                "--from, --to: the first must be before the second"}
        for options, said in cases.items():
            done = run(export(*options))
            self.assertEqual((done.returncode, done.stdout, done.stderr),
                             (2, "", f"tavmir-host: {said}\n"))

    def test_a_file_that_is_damaged_is_told_and_the_others_are_read(self):
        copy = self.folder / "copy"
        copy.mkdir()
        good = files(self.shared)[0]
        (copy / good.name).write_bytes(good.read_bytes())
        content = bytearray(good.read_bytes())
        content[4096:] = os.urandom(len(content) - 4096)
        damaged = copy / good.name.replace("00000001", "00000002")
        damaged.write_bytes(content)
        done = run(export(copy))
        self.assertEqual(done.returncode, 1)
        self.assertIn(f"tavmir-host: {damaged}: ", done.stderr)
        self.assertEqual(csv_rows(done.stdout), self.rows)

    def test_a_signal_ends_it_and_a_reader_that_goes_too(self):
        wide = export(self.shared, "--wide", 1)
        stopped = subprocess.Popen(wide, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        stopped.stdout.readline()
        stopped.send_signal(signal.SIGINT)
        wait_until(lambda: stopped.poll() is not None, "it ended")
        self.assertEqual(stopped.returncode, 1)
        self.assertIn("the export was stopped: it is not whole", stopped.communicate()[1])
        left = subprocess.Popen(wide, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        left.stdout.readline()
        left.stdout.close()
        self.assertEqual((left.wait(PATIENCE), left.stderr.read()), (0, ""))
        left.stderr.close()


if __name__ == "__main__":
    Programs.tools = pathlib.Path(sys.argv.pop(1)).resolve()
    Programs.driver = pathlib.Path(sys.argv.pop(1)).resolve()
    unittest.main()
