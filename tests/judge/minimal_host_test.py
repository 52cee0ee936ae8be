#!/usr/bin/env python3
"""The host to copy passes the standard script, with writes going on, on each driver that is given.

Arguments: tavmir-controller, minimal_host, folders of the driver's library.
"""
import concurrent.futures
import os
import sys
import unittest

sys.dont_write_bytecode = True
from judged import StandardTrial, rules_of

CONTROLLER, HOST = sys.argv[1:3]
DRIVERS = sys.argv[3:]


def trial_on(driver):
    trial = StandardTrial(CONTROLLER)
    try:
        return trial.run([HOST, f"127.0.0.1:{trial.port}"], "write {}", 0.3,
                         dict(os.environ, LD_LIBRARY_PATH=driver))
    finally:
        trial.close()


class MinimalHost(unittest.TestCase):
    def test_passes_the_standard_script(self):
        with concurrent.futures.ThreadPoolExecutor(len(DRIVERS)) as pool:
            ended = dict(zip(DRIVERS, pool.map(trial_on, DRIVERS)))
        for driver, (status, report, text) in ended.items():
            with self.subTest(driver):
                self.assertEqual(rules_of(report, "broken"), set(), text)
                self.assertEqual(rules_of(report, "not judged"), set(), text)
                self.assertEqual(status, 0, text)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
