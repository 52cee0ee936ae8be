#!/usr/bin/env python3
"""The reference host passes the standard script, with an operator's writes going on, and its limits
can be learned from it; a judge to whom nobody comes says that it cannot tell.

Arguments: tavmir-controller, tavmir-host, the driver.
"""
import subprocess
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
from judged import Judged, StandardTrial, calm_plant, rules_of

CONTROLLER, HOST, DRIVER = sys.argv[1:4]
MOST_SECONDS = 120


def host(plant, port, *options):
    return [HOST, "run", plant, *options, "--driver", DRIVER, "--connect", f"127.0.0.1:{port}"]


class ReferenceHost(unittest.TestCase):
    def test_passes_the_standard_script(self):
        trial = StandardTrial(CONTROLLER)
        self.addCleanup(trial.close)
        status, report, text = trial.run(host(trial.plant, trial.port, "--stdin"),
                                         "Main.Setpoint={}", 0.15)
        self.assertEqual(rules_of(report, "broken"), set(), text)
        self.assertEqual(rules_of(report, "not judged"), set(), text)
        self.assertEqual(status, 0, text)
        self.assertEqual(report["result"], "kept")

    def test_its_limits_are_learned(self):
        with tempfile.TemporaryDirectory() as folder:
            judge = Judged(CONTROLLER, "reply-timeout learn\nattempts learn\nsilent for=4s\n")
            self.addCleanup(judge.close)
            run = subprocess.Popen(host(calm_plant(folder), judge.port), stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            try:
                status, report, text = judge.wait(MOST_SECONDS)
            finally:
                run.kill()
                run.wait()
        self.assertEqual(status, 0, text)
        self.assertEqual(report["attempts"], 3)
        self.assertGreaterEqual(report["replyTimeoutMs"], 450)
        self.assertLess(report["replyTimeoutMs"], 2000)

    def test_nobody_came(self):
        judge = Judged(CONTROLLER, "wait-for-host 200ms\ncalm\n")
        self.addCleanup(judge.close)
        status, report, text = judge.wait(MOST_SECONDS)
        self.assertEqual(status, 3)
        self.assertEqual(report["result"], "no host came")
        self.assertIn("result: no host came (0 kept, 0 broken, 30 not judged)", text)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
