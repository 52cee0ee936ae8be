"""Breaks of the tools: each is applied to a copy of tools/, what depends on it is compiled anew and
linked in front of the libraries of a build that passes, and the test programs that see its room run
until one fails. Several at a time: nothing is written into the build or into the tree."""
import functools
import json
import os
import pathlib
import queue
import re
import shlex
import shutil
import sys
import threading
import time

from mutant_parts import (ROOT, TOOLS_HEADING, applied, fingerprint, read_earlier, run,
                          run_bounded, words_of)

WORKERS = 2
MOST_SECONDS = 300  # for all tests of one break, on a machine that has other work too
QUICK = ["-O0", "-g0", "-w", "-Wno-error"]
HOST = ["session_parts_tests", "session_tests", "host_parts_tests", "host_view_tests",
        "host_program_tests", "host_log_tests"]
CONTROLLER = ["controller_tests", "controller_server_tests", "controller_program_tests"]
PROBE = ["probe_tests", "probe_program_tests"]
# The test programs that see a room, its own first.
SEEN_BY = {
    "wire": ["wire_tests", "link_tests", "plan_tests", "trace_tests"] + HOST + CONTROLLER + PROBE,
    "project": ["project_tests", "plan_tests", "feed_tests"] + HOST + CONTROLLER,
    "plan": ["plan_tests", "feed_tests"] + HOST,
    "feed": ["feed_tests", "trace_tests", "link_tests"] + HOST,
    "link": ["link_tests"] + HOST,
    "driver": ["driver_tests"] + HOST,
    "session": HOST,
    "terminal": ["terminal_tests", "host_view_tests"],
    "trace": ["trace_tests", "host_view_tests", "host_program_tests"],
    "recorder": ["recorder_tests", "host_recording_tests"],
    "diagnose": ["diagnose_tests", "diagnose_report_tests", "diagnose_program_tests"],
    "host": ["host_parts_tests", "host_view_tests", "diagnose_report_tests", "host_recording_tests",
             "host_program_tests", "host_log_tests"],
    "capture": ["capture_tests", "feed_capture_tests"],
    "judge": ["judge_tests"] + CONTROLLER,
    "controller": CONTROLLER + ["host_program_tests"],
    "probe": PROBE,
    "page": ["page_server_tests", "page_content_tests", "host_recording_tests"],
}
# Programs that test programs start.
STARTED = {
    "host_program_tests": ["tavmir-host", "tavmir-controller"],
    "host_log_tests": ["tavmir-host", "tavmir-controller"],
    "diagnose_program_tests": ["tavmir-host"],
    "controller_program_tests": ["tavmir-controller"],
    "probe_program_tests": ["tavmir-probe"],
}
# These wait more than they work: parts of them run side by side.
SHARDS = {"session_tests": 6, "host_program_tests": 3, "link_tests": 2}
# For what comes soon or never a test waits so long at most, in ms, and fails with words.
PATIENCE = {"page_server_tests": 8000, "recorder_tests": 8000, "host_recording_tests": 8000}


def room_of(mutant):
    return mutant["file"].split("/")[0]


class Build:
    """A build that passes: how its objects are compiled, how its programs are linked."""

    def __init__(self, folder):
        self.folder = folder.resolve()
        names = {name for names in SEEN_BY.values() for name in names}
        names |= {name for names in STARTED.values() for name in names}
        built = run(["ninja", "-C", str(self.folder)] + sorted(names))
        if built.returncode != 0:
            sys.exit("the unbroken tree does not build:\n" + built.stdout.decode()[-4000:])
        listed = run(["ninja", "-C", str(self.folder), "-t", "compdb"]).stdout.decode()
        commands = json.loads(listed[listed.index("["):])
        self.compiles = {entry["output"]: shlex.split(entry["command"]) for entry in commands
                         if entry["output"].endswith(".o")}
        self.links = {pathlib.Path(entry["output"]).name: (entry["output"], link_of(entry))
                      for entry in commands
                      if pathlib.Path(entry["output"]).name in names and link_of(entry)}
        self.users = self.read_users()

    def read_users(self):
        """By file: the objects that are compiled from it."""
        users = {}
        for line in run(["ninja", "-C", str(self.folder), "-t", "deps"]).stdout.decode().splitlines():
            if line and not line.startswith(" "):
                current = line.partition(":")[0]
            elif line.strip():
                path = os.path.normpath(self.folder / line.strip())
                users.setdefault(path, set()).add(current)
        return users


def link_of(entry):
    """The words of a program's link command, without what follows it."""
    for part in entry["command"].split("&&"):
        words = shlex.split(part)
        if "-o" in words:
            return words
    return []


def is_part_of(built, link):
    """An object is linked by itself, or as a member of its library."""
    if built in link:
        return True
    folder, _, rest = built.partition("/CMakeFiles/")
    return f"{folder}/lib{rest.partition('.dir/')[0]}.a" in link


class Bench:
    """Where one worker compiles, links and runs what is broken."""

    def __init__(self, build, folder, index):
        self.build = build
        self.folder = folder / str(index)
        self.tools = self.folder / "tools"
        # The tests know the programs that they start by their path. Where the broken ones lie must
        # have a path of the same length, which then takes its place in the linked test program.
        name = build.folder.name
        self.programs = build.folder.with_name(str(index).rjust(len(name), "_"))
        shutil.rmtree(self.folder, ignore_errors=True)
        shutil.copytree(ROOT / "tools", self.tools)
        shutil.rmtree(self.programs, ignore_errors=True)
        self.programs.mkdir(parents=True)
        (self.programs / "src").symlink_to(build.folder / "src")
        self.objects = {}

    def close(self):
        shutil.rmtree(self.programs, ignore_errors=True)

    def begin(self, mutant, broken):
        self.file = self.tools / mutant["file"]
        self.original = str(ROOT / "tools" / mutant["file"])
        self.before = self.file.read_text()
        self.file.write_text(broken)
        self.objects = {}

    def end(self):
        self.file.write_text(self.before)

    def compile(self, built):
        """The object made of the broken file; a text: why there is none."""
        if built not in self.objects:
            words = [word for word in self.build.compiles[built] if word != "ccache"]
            target = str(self.folder / built.replace("/", "_"))
            command = []
            for number, word in enumerate(words):
                before = words[number - 1] if number else ""
                if before == "-c" and not os.path.isabs(word):
                    word = os.path.normpath(self.build.folder / word)
                word = target if before == "-o" else word.replace(str(ROOT / "tools"),
                                                                  str(self.tools))
                command.append(word)
            skipped = {"-MD", "-MMD"}
            command = [word for number, word in enumerate(command)
                       if word not in skipped | {"-MT", "-MF"}
                       and command[number - 1] not in {"-MT", "-MF"}]
            compiled = run(command + QUICK, cwd=self.build.folder)
            if compiled.returncode != 0:
                raise RuntimeError("does not build: " + compiled.stdout.decode()[-600:])
            self.objects[built] = target
        return self.objects[built]

    def link(self, name):
        """The program with what is broken in it; the build's own when nothing is."""
        output, words = self.build.links[name]
        concerned = [built for built in self.build.users.get(self.original, ())
                     if is_part_of(built, words)]
        if not concerned:
            return self.build.folder / output
        target = self.programs / output
        target.parent.mkdir(parents=True, exist_ok=True)
        broken = {built: self.compile(built) for built in concerned}
        command, added = [], [path for built, path in broken.items() if built not in words]
        for number, word in enumerate(words):
            if word.endswith(".a") and added:
                command += added
                added = []
            command.append(str(target) if words[number - 1] == "-o" else broken.get(word, word))
        if shutil.which("ld.lld"):
            command += ["-fuse-ld=lld", "-Wl,--strip-debug"]
        linked = run(command, cwd=self.build.folder)
        if linked.returncode != 0:
            raise RuntimeError("does not link: " + linked.stdout.decode()[-600:])
        return target

    def prepare(self, name):
        """The test program and the programs that it starts, as they are to run."""
        program = self.link(name)
        started = [self.link(other) for other in STARTED.get(name, [])]
        if all(str(path).startswith(str(self.build.folder)) for path in started):
            return program
        for path, other in zip(started, STARTED[name]):
            here = self.programs / self.build.links[other][0]
            if path != here:
                here.parent.mkdir(parents=True, exist_ok=True)
                here.unlink(missing_ok=True)
                shutil.copy2(path, here)
        patched = self.programs / self.build.links[name][0]
        patched.parent.mkdir(parents=True, exist_ok=True)
        content = program.read_bytes().replace(f"{self.build.folder}/tools/".encode(),
                                               f"{self.programs}/tools/".encode())
        patched.unlink(missing_ok=True)
        patched.write_bytes(content)
        patched.chmod(0o755)
        return patched


def verdict_of(name, program, folder, deadline):
    """None when the program passes, else what it says; also by itself, for on a busy machine a test
    may fail that has nothing to do with the break."""
    failed = []
    for _ in range(3):
        verdict = verdict_of_run(name, program, folder, deadline, "-" + ":".join(failed))
        test = verdict.partition(" and ")[0] if verdict else ""
        if "." not in test:
            return verdict
        if verdict_of_run(name, program, folder, deadline, test):
            return verdict
        failed.append(test)
    return None


def verdict_of_run(name, program, folder, deadline, tests):
    """The same of one run of these tests, in GoogleTest's words."""
    shards = SHARDS.get(name, 1)
    verdicts = []

    def one(index):
        environment = dict(os.environ, GTEST_TOTAL_SHARDS=str(shards), GTEST_SHARD_INDEX=str(index))
        if name in PATIENCE:
            environment["TAVMIR_TEST_PATIENCE_MS"] = str(PATIENCE[name])
        status, output = run_bounded([str(program), "--gtest_brief=1", "--gtest_fail_fast",
                                      "--gtest_filter=" + tests],
                                     deadline, environment, folder, lambda: bool(verdicts))
        if status != 0:
            verdicts.append("hangs" if status is None else words_of(output))

    threads = [threading.Thread(target=one, args=(index,)) for index in range(shards)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    return min(verdicts, key=lambda verdict: verdict == "hangs") if verdicts else None


class Judge:
    """Tries breaks; results by fingerprint are kept in a file as they come."""

    def __init__(self, build, record, known):
        self.build = build
        self.record = record
        self.known = known
        self.lock = threading.Lock()
        self.deadlines = {}

    def measure(self, rooms):
        """What the unbroken programs need gives each its deadline."""
        for name in dict.fromkeys(name for room in rooms for name in SEEN_BY[room]):
            start = time.monotonic()
            program = self.build.folder / self.build.links[name][0]
            verdict = verdict_of(name, program, program.parent, 300)
            if verdict:
                sys.exit(f"the unbroken tools do not pass: {name}: {verdict}")
            self.deadlines[name] = max(30, 4 * (time.monotonic() - start))
            print(f"{name}: {time.monotonic() - start:.0f} s", flush=True)

    def try_mutant(self, bench, mutant):
        """State, program and verdict, seconds of building, seconds of testing."""
        path = ROOT / "tools" / mutant["file"]
        broken, why_not = applied(mutant, path.read_text() if path.is_file() else "")
        if broken is None:
            return [why_not, "", "", 0, 0]
        building = testing = 0.0
        bench.begin(mutant, broken)
        try:
            for name in SEEN_BY[room_of(mutant)]:
                start = time.monotonic()
                program = bench.prepare(name)
                building += time.monotonic() - start
                if str(program).startswith(str(self.build.folder)):
                    continue # nothing in it is broken
                start = time.monotonic()
                verdict = verdict_of(name, program, program.parent, self.deadlines[name])
                testing += time.monotonic() - start
                if verdict:
                    return ["noticed", name, verdict, building, testing]
            return ["UNNOTICED", "", "", building, testing]
        except RuntimeError as problem:
            return [str(problem), "", "", building, testing]
        finally:
            bench.end()

    def work(self, bench, todo, count):
        while True:
            try:
                number, mutant, key = todo.get_nowait()
            except queue.Empty:
                return
            result = self.try_mutant(bench, mutant)
            with self.lock:
                self.known[key] = result
                self.record.write_text(json.dumps(self.known))
                state, program, verdict, building, testing = result
                print(f"{number}/{count} {mutant['name']}: {state} {program} {verdict} "
                      f"(built {building:.0f} s, tested {testing:.0f} s)", flush=True)


def judge_all(tests, folder, mutants, resume):
    """Each break with its result, in order."""
    folder.mkdir(parents=True, exist_ok=True)
    record = folder / "results.json"
    keys = [fingerprint(mutant, ROOT / "tools") for mutant in mutants]
    known = read_earlier(record, [] if resume else keys)
    todo = queue.Queue()
    for number, (mutant, key) in enumerate(zip(mutants, keys), 1):
        if key not in known:
            todo.put((number, mutant, key))
    if not todo.empty():
        judge = Judge(Build(tests), record, known)
        judge.measure(dict.fromkeys(room_of(mutant) for _, mutant, _ in list(todo.queue)))
        benches = [Bench(judge.build, folder, index) for index in range(WORKERS)]
        threads = [threading.Thread(target=judge.work, args=(bench, todo, len(mutants)))
                   for bench in benches]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        for bench in benches:
            bench.close()
    return [(mutant, known[key]) for mutant, key in zip(mutants, keys) if key in known]


def is_settled(mutant, result):
    """Noticed in time, or argued to be the same behaviour and not noticed."""
    if "equivalent" in mutant:
        return result[0] == "UNNOTICED"
    return result[0] == "noticed" and result[4] <= MOST_SECONDS


def words_of_result(mutant, result):
    """Who noticed a break, or how else it went."""
    state, program, verdict, _, _ = result
    if state == "noticed":
        return f"{program}: {verdict}"
    if state == "UNNOTICED" and "equivalent" in mutant:
        return "equivalent: " + mutant["equivalent"]
    return state


def is_standing(words):
    """The test that is named as the one that noticed is still there; a program, when none is."""
    if not names_program(words):
        return False
    found = re.match(r"(?:\w+/)?(\w+\.\w+)", words.partition(": ")[2])
    return not found or found[1] in written_tests()


def names_program(words):
    return words.partition(": ")[0] in {name for names in SEEN_BY.values() for name in names}


@functools.lru_cache
def written_tests():
    """All tests by their names."""
    found = set()
    for path in (ROOT / "tests").glob("*/*_test.cpp"):
        for suite, name in re.findall(r"^TEST\w*\((\w+),\s*(\w+)\)", path.read_text(), re.MULTILINE):
            found.add(f"{suite}.{name}")
    return found


def kept_lines(path, listed):
    """Who noticed, by name, from the table of earlier runs: where the break is still listed with the
    same rule in the same room, and whatever noticed it, or the reason why nobody can, still stands."""
    kept = {}
    half = path.read_text().partition(TOOLS_HEADING)[2] if path.is_file() else ""
    for mutant in listed:
        begin = f"| {room_of(mutant)} | {mutant['rule']} | {mutant['name']} | "
        for line in half.splitlines():
            who = line[len(begin):-len(" |")]
            if line.startswith(begin) and (is_standing(who) or who == words_of_result(
                    mutant, ["UNNOTICED", "", "", 0, 0])):
                kept[mutant["name"]] = who
    return kept


def table_of(listed, results, kept):
    """The table of the listed breaks: by the results of this run, else by what is kept."""
    tried = {mutant["name"]: words_of_result(mutant, result) for mutant, result in results}
    told = {mutant["name"]: tried.get(mutant["name"], kept.get(mutant["name"])) for mutant in listed}
    lines = [TOOLS_HEADING, "",
             "Written by `scripts/mutants --tools`: each line is the tools with one rule broken, "
             "built and run against", "the test programs that see its room, its own first; the "
             "first that fails is named.", "",
             "| room | broken rule | name | noticed by |", "|---|---|---|---|"]
    judged = [mutant for mutant in listed if told[mutant["name"]]]
    for mutant in judged:
        lines.append(f"| {room_of(mutant)} | {mutant['rule']} | {mutant['name']} | "
                     f"{told[mutant['name']]} |")
    equal = sum(1 for mutant in judged if told[mutant["name"]].startswith("equivalent: "))
    noticed = sum(1 for mutant in judged if names_program(told[mutant["name"]]))
    rooms = {}
    for mutant in judged:
        rooms[room_of(mutant)] = rooms.get(room_of(mutant), 0) + 1
    lines += ["", f"{len(judged)} rules broken, {noticed} noticed, {equal} argued to be "
              "equivalent. By room: " + ", ".join(f"{name} {n}" for name, n in rooms.items())
              + "."]
    untried = [mutant["name"] for mutant in listed if not told[mutant["name"]]]
    if untried:
        lines.append(f"Listed and not tried yet: {len(untried)} ({', '.join(untried)}).")
    return "\n".join(lines + [""])
