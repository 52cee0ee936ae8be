#!/usr/bin/env python3
"""A controller, a host with its page, and a client of the standard library: every question, writes
with and without permission, a controller that goes and comes, and the end.
Usage: page_interface_test.py TOOLS DRIVER PROJECT [unittest options]; TOOLS is the build's folder with
host/ and controller/."""
import base64
import json
import os
import pathlib
import re
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import time
import unittest
import urllib.error
import urllib.parse
import urllib.request

TOOLS = DRIVER = PROJECT = None
PATIENCE = 60
# Seconds for what must happen at once: a busy machine may pause a program for some of them, and a
# write that is waited for would take twice as long.
AT_ONCE = 30


def await_that(condition, what):
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        found = condition()
        if found:
            return found
        time.sleep(0.02)
    raise AssertionError(f"in vain: {what}")


class Controller:
    def __init__(self, listen="127.0.0.1:0", *options):
        self.process = subprocess.Popen(
            [TOOLS / "controller" / "tavmir-controller", "--listen", listen, "--project", PROJECT,
             *options], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.place = re.fullmatch(r"listening on (.*)\n", self.process.stdout.readline())[1]

    def end(self):
        if self.process.poll() is None:
            self.process.terminate()
        self.process.communicate(timeout=PATIENCE)


class Page:
    """A host's page as a program sees it."""

    def __init__(self, place, *options, url_on="stdout"):
        self.process = subprocess.Popen(
            [TOOLS / "host" / "tavmir-host", "run", PROJECT, "--driver", DRIVER, "--connect", place,
             "--page", "--interval", "60000", *options],
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.url = getattr(self.process, url_on).readline().rstrip("\n")
        self.base, self.token = re.fullmatch(
            r"(http://127\.0\.0\.1:[0-9]+)/#token=([0-9a-f]{32})", self.url).groups()

    def ask(self, path, body=None, **headers):
        """Status and body."""
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self.base + path, data=data)
        request.add_header("Authorization", "Bearer " + self.token)
        if data is not None:
            request.add_header("Content-Type", "application/json")
        for name, value in headers.items():
            request.add_header(name, value)
        try:
            with urllib.request.urlopen(request, timeout=PATIENCE) as answer:
                return answer.status, answer.read()
        except urllib.error.HTTPError as refused:
            return refused.code, refused.read()

    def get(self, what, **query):
        status, body = self.ask(f"/api/v1/{what}?" + urllib.parse.urlencode(query))
        assert status == 200, body
        return json.loads(body)

    def value(self, address):
        return self.get("values", address=address)["values"][0]

    def write(self, address, value, **more):
        status, body = self.ask("/api/v1/write", {"address": address, "value": value, **more})
        return status, json.loads(body)

    def end(self, how=signal.SIGINT):
        if self.process.poll() is None:
            self.process.send_signal(how)
            self.stdout, self.stderr = self.process.communicate(timeout=PATIENCE)
        return self.process.returncode


class Live:
    """A WebSocket, as little of it as the page needs."""

    def __init__(self, page, epoch=None, sequence=0):
        host, port = page.base.removeprefix("http://").rsplit(":", 1)
        self.socket = socket.create_connection((host, int(port)), timeout=PATIENCE)
        key = base64.b64encode(os.urandom(16)).decode()
        self.socket.sendall(
            (f"GET /api/v1/live HTTP/1.1\r\nHost: {host}:{port}\r\nUpgrade: websocket\r\n"
             f"Connection: Upgrade\r\nSec-WebSocket-Version: 13\r\nSec-WebSocket-Key: {key}\r\n"
             f"Origin: {page.base}\r\n\r\n").encode())
        self.bytes = b""
        while b"\r\n\r\n" not in self.bytes:
            self.bytes += self.receive()
        head, self.bytes = self.bytes.split(b"\r\n\r\n", 1)
        assert b" 101 " in head, head
        self.send(1, json.dumps({"token": page.token, "epoch": epoch,
                                 "sequence": sequence}).encode())

    def receive(self):
        got = self.socket.recv(65536)
        assert got, "the connection ended"
        return got

    def need(self, count):
        while len(self.bytes) < count:
            self.bytes += self.receive()
        taken, self.bytes = self.bytes[:count], self.bytes[count:]
        return taken

    def send(self, opcode, payload):
        mask = os.urandom(4)
        assert len(payload) < 126
        self.socket.sendall(bytes([0x80 | opcode, 0x80 | len(payload)]) + mask +
                            bytes(byte ^ mask[i % 4] for i, byte in enumerate(payload)))

    def frame(self):
        first, length = self.need(2)
        if length == 126:
            length = struct.unpack(">H", self.need(2))[0]
        elif length == 127:
            length = struct.unpack(">Q", self.need(8))[0]
        return first & 0xF, self.need(length)

    def message(self):
        """The next one; or the code with which the server closed."""
        whole = b""
        while True:
            opcode, payload = self.frame()
            if opcode == 8:
                return struct.unpack(">H", payload[:2])[0]
            if opcode == 9:
                self.send(10, payload)
            elif opcode in (0, 1):
                whole += payload
                try:
                    return json.loads(whole)
                except ValueError:
                    continue

    def close(self):
        self.socket.close()


def patient_project(folder):
    """The project, with a time-out that a busy machine does not reach."""
    project = json.loads(PROJECT.read_text())
    project["connection"]["replyTimeoutMs"] = 20000
    file = pathlib.Path(folder) / "plant.json"
    file.write_text(json.dumps(project))
    return file


class PageInterface(unittest.TestCase):
    maxDiff = None

    def controller(self, *options):
        controller = Controller(*options)
        self.addCleanup(controller.end)
        return controller

    def page(self, place, *options, **more):
        page = Page(place, *options, **more)
        self.addCleanup(page.end)
        return page

    def await_good(self, page, address="Main.Setpoint"):
        return await_that(lambda: (lambda row: row[3] == "good" and row)(page.value(address)),
                          f"{address} is good")

    def test_every_question_has_its_answer(self):
        page = self.page(self.controller().place)
        row = self.await_good(page)
        self.assertEqual(row[1:3], ["1500", 1500])
        status = page.get("status")
        self.assertEqual(status["link"]["state"], "connected")
        self.assertFalse(status["writes"]["allowed"])
        variables = page.get("variables")["variables"]
        self.assertEqual(len(variables), len(page.get("values")["values"]))
        self.assertFalse(any(one["writable"] for one in variables))
        plan = page.get("plan")
        self.assertEqual(len(plan["requests"]), 3)
        self.assertEqual(plan["passElements"], status["pass"]["elements"])
        why = page.get("explain", address="Main.Setpoint")
        self.assertEqual([one["step"] for one in why["steps"]],
                         ["resolved", "polled", "station", "request", "exchange", "bytes", "value",
                          "age"])
        self.assertIn("The value is there", why["conclusion"])
        self.assertEqual(page.get("events")["events"][0]["kind"], "connected")
        frames = await_that(lambda: (lambda found: len(found) == 10 and found)(
            page.get("frames", limit=10)["frames"]), "ten frames")
        self.assertLessEqual({one["way"] for one in frames}, {"request", "reply"})
        history = await_that(lambda: (lambda found: len(found["t"]) > 5 and found)(
            page.get("history", address="Main.Axis[0].Pos")), "a moving value has a history")
        self.assertEqual(history["t"], sorted(history["t"]))
        self.assertEqual(page.ask("/api/v1/nothing")[0], 404)
        status, body = page.ask("/")
        self.assertEqual(status, 200)
        self.assertIn(b"<html", body.lower())

    def test_the_chart_comes_with_its_licence(self):
        page = self.page(self.controller().place)
        self.assertEqual(page.ask("/vendor/uPlot.esm.js")[0], 200)
        status, licence = page.ask("/vendor/uPlot.LICENSE.txt")
        self.assertEqual(status, 200)
        self.assertIn(b"Permission is hereby granted", licence)

    def test_the_requests_foretold_are_those_on_the_wire(self):
        page = self.page(self.controller().place)
        self.await_good(page)
        planned = {(one["function"], one["elements"]) for one in page.get("plan")["requests"]}
        texts = [one["text"] for one in page.get("frames")["frames"] if one["way"] == "request"]
        self.assertTrue(texts)
        for text in texts:
            self.assertIn(re.search(r"station 1 (read [a-z ]+):", text)[1],
                          {function for function, _ in planned})

    def test_the_last_minute_is_a_capture(self):
        page = self.page(self.controller().place)
        self.await_good(page)
        status, body = page.ask("/api/v1/capture.pcapng")
        self.assertEqual(status, 200)
        with tempfile.NamedTemporaryFile(suffix=".pcapng") as file:
            file.write(body)
            file.flush()
            done = subprocess.run([TOOLS / "host" / "tavmir-host", "diagnose", file.name, PROJECT],
                                  stdout=subprocess.PIPE, text=True, timeout=PATIENCE)
        self.assertEqual(done.returncode, 0, done.stdout)
        # A reply for which a busy machine took its time is a remark, and nothing is wrong.
        self.assertRegex(done.stdout, "all is well|nothing is wrong")

    def test_without_permission_nothing_is_written(self):
        page = self.page(self.controller().place)
        self.await_good(page)
        self.assertEqual(page.write("Main.Setpoint", "7")[0], 403)
        self.assertEqual(page.value("Main.Setpoint")[1], "1500")

    def test_what_is_permitted_is_written_and_read_back(self):
        controller = self.controller()
        page = self.page(controller.place, "--allow-writes=Main.Setpoint,Line2.Grid[1,C],Main.Mode.b[2]")
        self.await_good(page)
        status, end = page.write("Main.Setpoint", "77", expect="1500")
        self.assertEqual((status, end["outcome"], end["old"]), (200, "done", "1500"))
        self.assertEqual(end["readBack"], {"text": "77", "number": 77, "quality": "good",
                                           "reason": ""})
        self.assertEqual(page.write("Line2.Grid[1,C]", "78")[1]["outcome"], "done")
        self.assertEqual(page.write("Main.Mode.b[2]", "1")[1]["outcome"], "done")
        read = subprocess.run([TOOLS / "host" / "tavmir-host", "read", PROJECT, "--driver", DRIVER,
                               "--connect", controller.place, "Main.Setpoint", "Main.Mode.b[2]"],
                              stdout=subprocess.PIPE, text=True, timeout=PATIENCE)
        self.assertEqual(read.stdout, "Main.Setpoint = 77\nMain.Mode.b[2] = 1\n")
        self.assertEqual(page.write("Main.Total", "1")[0], 403)
        self.assertEqual(page.write("Main.Setpoint", "1", expect="1500")[0], 409)
        self.assertEqual(page.write("Main.Setpoint", "much")[0], 400)
        self.assertEqual(page.write("Main.Setpoint", "70000")[0], 400)
        writes = [one for one in page.get("events")["events"] if one["kind"] in ("write", "read")]
        self.assertEqual([one["text"] for one in writes],
                         ["Main.Setpoint = 77: written; 77 stands there (from the page)",
                          "Line2.Grid[1,C] = 78: written; 78 stands there (from the page)",
                          "Main.Mode.b[2] = 1: written; 1 stands there (from the page)"])

    def test_a_write_that_is_refused_says_so(self):
        page = self.page(self.controller("127.0.0.1:0", "--refuse", "dword:4000=3").place,
                         "--allow-writes")
        self.await_good(page)
        status, end = page.write("Main.Total", "5")
        self.assertEqual((status, end["outcome"]), (200, "refused"))
        self.assertIn("exception 3", end["text"])
        self.assertEqual(end["readBack"]["text"], "–")
        self.assertIn("exception 3", end["readBack"]["reason"])

    def test_a_controller_that_goes_and_comes(self):
        controller = self.controller()
        page = self.page(controller.place, "--allow-writes", "--timeout", "300")
        live = Live(page)
        snapshot = live.message()
        self.assertEqual(snapshot["kind"], "snapshot")
        count = len(snapshot["variables"])
        rows = {}

        def awaits(quality):
            end = time.monotonic() + PATIENCE
            while time.monotonic() < end:
                message = live.message()
                rows.update({row[0]: row for row in message.get("values", [])})
                if len(rows) == count and {row[3] for row in rows.values()} == {quality}:
                    return message
            self.fail(f"not all are {quality}")

        rows.update({row[0]: row for row in snapshot["values"]})
        awaits("good")
        place = controller.place
        controller.end()
        message = awaits("stale") # because of the connection: no reply is waited for so shortly
        self.assertEqual(message["status"]["link"]["state"], "lost")
        for row in rows.values():
            self.assertIn("not connected to " + place, row[4])
            self.assertNotEqual(row[1], "–")
        self.assertIn("the connection was lost", page.get("explain", address="Main.Run")["conclusion"])
        status, end = page.write("Main.Setpoint", "5")
        self.assertEqual((status, end["outcome"], end["readBack"]), (200, "not sent", None))
        self.controller(place)
        awaits("good")
        gaps = page.get("history", address="Main.Setpoint")["gaps"]
        self.assertTrue(any(gap[2].startswith("stale: not connected") for gap in gaps), gaps)
        live.close()

    def test_history_reaches_back_into_the_recording(self):
        controller = self.controller()
        with tempfile.TemporaryDirectory() as folder:
            page = self.page(controller.place, "--record", folder)
            self.await_good(page)
            await_that(lambda: (page.get("status")["recording"] or {}).get("bytes", 0) > 0,
                       "something is recorded")
            self.assertEqual(page.get("status")["recording"]["state"], "on")
            before = await_that(lambda: (lambda found: len(found["t"]) > 10 and found)(
                page.get("history", address="Main.Axis[0].Pos")), "ten changes")
            self.assertEqual(page.end(), 0)
            page = self.page(controller.place, "--record", folder)
            self.await_good(page)
            began = page.get("status")["startedAt"]
            again = await_that(lambda: (lambda found: found["t"][-1] > began and found)(
                page.get("history", address="Main.Axis[0].Pos", points=2000)), "a change since")
            self.assertEqual(again["source"], "both")
            self.assertLess(again["oldest"], began)
            self.assertLess(again["t"][0], began)
            self.assertEqual(again["t"], sorted(again["t"]))
            old = [value for at, value in zip(again["t"], again["last"]) if at < began]
            self.assertLessEqual(len(set(before["last"][:5]) - set(old)), 1, "nearly all of them")
            self.assertTrue(any("recorded" in gap[2] for gap in again["gaps"]), again["gaps"])
            page.end()

    def test_a_client_goes_on_where_it_was(self):
        page = self.page(self.controller().place)
        self.await_good(page)
        first = Live(page)
        snapshot = first.message()
        first.close()
        again = Live(page, snapshot["epoch"], snapshot["sequence"])
        self.assertEqual(again.message()["kind"], "changes")
        again.close()
        other = Live(page, "0123456789abcdef", snapshot["sequence"])
        self.assertEqual(other.message()["kind"], "snapshot")
        other.close()

    def test_who_asks_again_and_again_changes_nothing(self):
        page = self.page(self.controller().place)
        self.await_good(page)
        for _ in range(100):
            page.get("frames", limit=50)
            page.get("explain", address="Main.Title")
        self.assertEqual(self.await_good(page)[1], "1500")

    def test_ctrl_c_ends_it_at_once_and_tells_its_clients(self):
        page = self.page(self.controller().place)
        self.await_good(page)
        live = Live(page)
        live.message()
        began = time.monotonic()
        page.process.send_signal(signal.SIGINT)
        while not isinstance(code := live.message(), int):
            pass
        live.close()
        self.assertEqual(code, 1001)
        page.stdout, page.stderr = page.process.communicate(timeout=PATIENCE)
        self.assertEqual(page.process.returncode, 0)
        self.assertLess(time.monotonic() - began, AT_ONCE)
        self.assertNotIn("token", page.stdout + page.stderr)

    def test_ctrl_c_ends_a_write_that_still_waits(self):
        controller = self.controller()
        page = self.page(controller.place, "--allow-writes", "--timeout", "60000")
        self.await_good(page)
        controller.end()
        await_that(lambda: page.get("status")["link"]["state"] == "lost", "the line is lost")
        body = json.dumps({"address": "Main.Setpoint", "value": "5"})
        host, port = page.base.removeprefix("http://").rsplit(":", 1)
        with socket.create_connection((host, int(port)), timeout=PATIENCE) as client:
            client.sendall(
                (f"POST /api/v1/write HTTP/1.1\r\nHost: {host}:{port}\r\nContent-Length: "
                 f"{len(body)}\r\nContent-Type: application/json\r\nAuthorization: Bearer "
                 f"{page.token}\r\n\r\n{body}").encode())
            for _ in range(5): # it was taken before the last of these
                page.get("status")
            client.settimeout(0.2)
            self.assertRaises(socket.timeout, client.recv, 1)
            began = time.monotonic()
            self.assertEqual(page.end(), 0)
            self.assertLess(time.monotonic() - began, AT_ONCE)

    def test_the_address_stands_beside_what_programs_read(self):
        page = self.page(self.controller().place, "--format", "json", url_on="stderr")
        self.await_good(page)
        self.assertEqual(page.end(), 0)
        self.assertTrue(page.stdout)
        for line in page.stdout.splitlines():
            json.loads(line)

    def test_the_browser_is_opened_or_it_is_said_that_not(self):
        with tempfile.TemporaryDirectory() as folder:
            browser = pathlib.Path(folder) / "browser"
            got = pathlib.Path(folder) / "got"
            browser.write_text(f"#!/bin/sh\nprintf '%s\\n' \"$#\" \"$1\" >'{got}.part'\n"
                               f"mv '{got}.part' '{got}'\n")
            browser.chmod(0o755)
            os.environ["BROWSER"] = str(browser)
            self.addCleanup(os.environ.pop, "BROWSER")
            page = self.page(self.controller().place, "--open")
            await_that(got.exists, "the browser was started")
            self.assertEqual(got.read_text(), f"1\n{page.url}\n")
            page.end()
            os.environ["BROWSER"] = str(browser) + "-that-is-not-there"
            page = self.page(self.controller().place, "--open")
            self.await_good(page)
            self.assertEqual(page.end(), 0)
            self.assertIn("the browser was not opened", page.stderr)

    def refused(self, *options):
        done = subprocess.run([TOOLS / "host" / "tavmir-host", "run", PROJECT, "--driver", DRIVER,
                               "--connect", "127.0.0.1:1", "--duration", "0", *options],
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                              timeout=PATIENCE)
        self.assertEqual(done.returncode, 2, done.stderr)
        self.assertEqual(done.stdout, "")
        self.assertEqual(len(done.stderr.splitlines()), 1, done.stderr)
        return done.stderr

    def test_what_cannot_be_is_said_at_the_start(self):
        self.assertIn('address "Main.Nothing"', self.refused("--page", "--allow-writes=Main.Nothing"))
        with socket.socket() as taken:
            taken.bind(("127.0.0.1", 0))
            taken.listen()
            port = taken.getsockname()[1]
            self.assertIn(f"127.0.0.1:{port}", self.refused(f"--page=127.0.0.1:{port}"))
            self.assertIn("never writable",
                          self.refused(f"--page=0.0.0.0:{port}", "--allow-writes"))

    def test_two_pages_at_once_are_strangers(self):
        controller = self.controller()
        one, other = self.page(controller.place), self.page(controller.place)
        self.await_good(one)
        one.token, kept = other.token, one.token
        self.assertEqual(one.ask("/api/v1/status")[0], 401)
        one.token = kept
        self.assertEqual(one.ask("/api/v1/write", {}, Origin=other.base)[0], 403)


if __name__ == "__main__":
    TOOLS = pathlib.Path(sys.argv.pop(1)).resolve()
    DRIVER = pathlib.Path(sys.argv.pop(1)).resolve()
    PROJECT = pathlib.Path(sys.argv.pop(1)).resolve()
    with tempfile.TemporaryDirectory() as its_folder:
        PROJECT = patient_project(its_folder)
        unittest.main()
