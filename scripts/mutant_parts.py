"""What breaks of the driver and breaks of the tools share: blocks of breaks, copies of the tree,
bounded runs of test programs, results of earlier runs, and the two halves of the table."""
import hashlib
import json
import os
import pathlib
import re
import resource
import shutil
import signal
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
MOST_MEMORY = 4 << 30  # bytes; a break may make a program queue without end
TOOLS_HEADING = "# Broken rules of the tools and who noticed"


def read_mutants(path):
    mutants = []
    for line in path.read_text().splitlines():
        if not line.strip() or line.startswith("#"):
            continue
        if line.startswith("["):
            mutants.append({"name": line.strip("[]")})
            continue
        key, _, value = line.partition(":")
        text = value[1:] if value.startswith(" ") else value
        text = text.replace("\\\\", "\0").replace("\\n", "\n").replace("\0", "\\")
        mutants[-1][key] = text
    return mutants


def run(command, **options):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **options)


def copy_tree(tree):
    """Copies the tree without what git ignores; files keep their dates."""
    names = run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=ROOT)
    wanted = set(filter(None, names.stdout.decode().split("\0")))
    for path in sorted(tree.rglob("*")) if tree.is_dir() else []:
        name = str(path.relative_to(tree))
        if path.is_file() and not name.startswith("build") and name not in wanted:
            path.unlink()
    for name in wanted:
        source, target = ROOT / name, tree / name
        if not source.is_file():
            continue
        target.parent.mkdir(parents=True, exist_ok=True)
        if not target.is_file() or target.read_bytes() != source.read_bytes():
            shutil.copy2(source, target)


def limit_memory():
    resource.setrlimit(resource.RLIMIT_AS, (MOST_MEMORY, MOST_MEMORY))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def run_bounded(command, deadline, environment, folder, is_enough=lambda: False):
    """Exit status and output; a status of None: it hung, or is_enough() became true meanwhile, and
    it was ended with all it had started."""
    last = time.monotonic() + deadline
    process = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                               stdin=subprocess.DEVNULL, env=environment, cwd=folder,
                               preexec_fn=limit_memory, start_new_session=True)
    try:
        while time.monotonic() < last and not is_enough():
            try:
                output, _ = process.communicate(timeout=min(0.5, deadline))
                return process.returncode, output
            except subprocess.TimeoutExpired:
                pass
        return None, b""
    finally:
        try:
            os.killpg(process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        process.communicate()


def words_of(output):
    """The first failed test of a GoogleTest program's output, and how many more."""
    failed = re.findall(rb"\[  FAILED  \] (\S+?)(?:,| \()", output)
    names = list(dict.fromkeys(name.decode() for name in failed))
    if not names:
        return "crashes"
    return names[0] + (f" and {len(names) - 1} more" if len(names) > 1 else "")


def applied(mutant, original):
    """The broken text, or None and why there is none."""
    times = original.count(mutant["from"])
    if times != 1 or mutant["from"] == mutant["to"]:
        return None, f"does not apply: its text stands {times} times in {mutant['file']}"
    return original.replace(mutant["from"], mutant["to"]), ""


def fingerprint(mutant, folder):
    """Changes when the break or the source file below `folder` that it breaks does."""
    path = folder / mutant["file"]
    text = path.read_text() if path.is_file() else ""
    return hashlib.sha256("\0".join([text, mutant["from"], mutant["to"]]).encode()).hexdigest()


def read_earlier(path, repeated):
    """The results of earlier runs by fingerprint, without those that are asked for again."""
    earlier = json.loads(path.read_text()) if path.is_file() else {}
    return {key: result for key, result in earlier.items() if key not in repeated}


def write_table(path, drivers=None, tools=None):
    """Replaces the half that is given, and keeps the other."""
    text = path.read_text() if path.is_file() else ""
    first, _, second = text.partition(TOOLS_HEADING)
    first = drivers if drivers is not None else first.rstrip("\n") + "\n"
    second = tools if tools is not None else (TOOLS_HEADING + second if second else "")
    path.write_text(first + ("\n" + second if second else ""))
