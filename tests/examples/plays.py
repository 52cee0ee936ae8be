"""The faults to play in docs/integration.md, chapter by chapter, and how they are played."""
import pathlib
import re
import shlex

import trial

PAGE = pathlib.Path(__file__).resolve().parent.parent.parent / "docs" / "integration.md"


def chapters():
    """(title, text) of each."""
    parts = re.split(r"^## (.*)\n", PAGE.read_text(), flags=re.MULTILINE)
    return list(zip(parts[1::2], parts[2::2]))


def plays(text):
    return [block.strip().split("\n")
            for block in re.findall(r"^```play\n(.*?)^```$", text, re.MULTILINE | re.DOTALL)]


def controller_options(step, plant):
    words = shlex.split(step)[2:]
    return [plant if word == "plant.json" else word for word in words]


def grouped(steps):
    """Steps, with words to be seen together as one: a list. `...` stands between two such lists."""
    groups = []
    for step in steps:
        is_action = step.startswith(("$ ", "> ", "^C ", "never ")) or step == "..."
        if is_action:
            groups.append(step)
        elif groups and isinstance(groups[-1], list):
            groups[-1].append(step)
        else:
            groups.append([step])
    return [step for step in groups if step != "..."]


class Player:
    def __init__(self, plant, driver=None, checks=None):
        self.plant, self.driver, self.checks = plant, driver, checks
        self.port = trial.free_port()
        self.controller = self.host = None
        self.never = []

    def play(self, steps):
        try:
            for step in grouped(steps):
                self.step(step)
            if self.host.process.poll() is None:
                self.host.end()
            self.host.rest()
        finally:
            if self.controller is not None:
                self.controller.end()
            if self.host is not None:
                self.host.kill()
        for words in self.never:
            seen = [line for line in self.host.said if words in line]
            if seen:
                raise AssertionError(f"never {words!r}, but: {seen[0]}")

    def step(self, step):
        if isinstance(step, list):
            self.host.expect(*step)
        elif step.startswith("$ tavmir-controller "):
            self.controller = trial.Controller(self.port, controller_options(step, self.plant))
        elif step == "$ minimal_host":
            self.host = trial.Host(self.port, self.driver, self.checks)
        elif step == "^C tavmir-controller":
            self.controller.end()
            self.controller = None
        elif step == "^C minimal_host":
            self.host.wait_until_taken()
            self.host.end()
        elif step.startswith("> "):
            self.host.type(step[2:])
        elif step.startswith("never "):
            self.never.append(step[len("never "):])
        else:
            raise AssertionError(f"nobody knows how to play {step!r}")
