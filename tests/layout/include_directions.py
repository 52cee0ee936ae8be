#!/usr/bin/env python3
"""Checks that includes between the rooms of tools/ point one way and that none form a circle.

Usage: include_directions.py ROOT

ROOT is a tree with tools/ and src/. Prints one line for each include that is not allowed; exit
status 1 when there is one. A room that the table below does not know is an error too: whoever
adds a room says here what it may know.
"""
import pathlib
import re
import sys

# Each room and the rooms whose headers it may include, beside its own.
MAY_KNOW = {
    "wire": [],
    "project": ["wire"],
    "plan": ["wire", "project"],
    "feed": ["wire", "project", "plan"],
    "link": ["wire", "project", "plan", "feed"],
    "driver": ["wire", "project", "plan", "feed"],
    "session": ["wire", "project", "plan", "feed", "link", "driver"],
    "terminal": ["feed"],
    "capture": ["wire"],
    "capture/feed_": ["wire", "project", "plan", "feed", "capture"],
    "recorder": ["wire", "project", "plan", "feed"],
    "trace": ["wire", "project", "plan", "feed"],
    "diagnose": ["wire"],
    "page/server": [],
    "page": ["wire", "project", "plan", "feed", "page/server"],
    "host": ["wire", "project", "plan", "feed", "link", "driver", "session", "terminal", "trace",
             "capture", "capture/feed_", "diagnose", "recorder", "page", "page/server"],
    "judge": ["wire"],
    "controller": ["wire", "project", "capture", "judge"],
    "probe": ["wire", "capture"],
}
# The only rooms in which these may be included.
ONLY_IN = {"QtNetwork/": ["controller"], "curses.h": ["terminal"], "term.h": ["terminal"],
           "sqlite3.h": ["recorder"], "pcap/": ["diagnose"], "tins/": ["diagnose"],
           "boost/": ["page/server"]}
NO_QT = ["wire", "capture", "diagnose", "judge", "page/server"]
# Parts that have no name of their own in front: their files.
FILES = {
    "page/server": ["access_rules", "ascii_text", "built_in_assets", "connections", "greeting",
                    "http_answers", "http_session", "listening", "live_messages", "live_session", "page_content",
                    "page_limits", "page_server", "polling_first", "query", "request_rules", "return_path",
                    "send_progress", "session", "token"],
}

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.M)


def includes_of(file):
    return [(quote == '"', name) for quote, name in INCLUDE.findall(file.read_text())]


def part_of(room, name):
    """The room, or that part of it whose files are listed or begin with a name of their own."""
    for part, files in FILES.items():
        if part.startswith(f"{room}/") and name.rsplit(".", 1)[0] in files:
            return part
    return next((part for part in MAY_KNOW if "/" in part and f"{room}/{name}".startswith(part)), room)


def check_room(root, file, room, problems):
    room = part_of(room, file.name)
    for own, name in includes_of(file):
        place = f"{file.relative_to(root)}: includes {name}"
        for prefix, rooms in ONLY_IN.items():
            if name.startswith(prefix) and room not in rooms:
                problems.append(f"{place}, which only {', '.join(rooms)} may know")
        if not own and name.startswith("Qt") and room in NO_QT:
            problems.append(f"{place}: {room} does without Qt")
        folder = name.split("/")[0] if "/" in name else file.parent.name
        folder = part_of(folder, name.split("/")[-1])
        if not own or folder in (room, "tavmir_kx_tcp"):
            continue
        if folder not in MAY_KNOW[room]:
            problems.append(f"{place}: an arrow back from {room}")


def target_of(root, file, name):
    for candidate in (file.parent / name, root / "tools" / name, root / "src" / name,
                      root / "include" / name):
        if candidate.is_file():
            return candidate.resolve()
    return None


def find_circles(root, files, problems):
    arrows = {file.resolve(): [target for own, name in includes_of(file) if own
                               for target in [target_of(root, file, name)] if target]
              for file in files}
    done = set()

    def visit(file, path):
        if file in path:
            circle = path[path.index(file):] + [file]
            names = " -> ".join(str(step.relative_to(root)) for step in circle)
            problems.append(f"includes form a circle: {names}")
            return
        if file in done:
            return
        done.add(file)
        for target in arrows.get(file, []):
            visit(target, path + [file])

    for file in arrows:
        visit(file, [])


def sources_below(folder):
    return sorted(file for file in folder.rglob("*") if file.suffix in (".h", ".cpp"))


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    root = pathlib.Path(sys.argv[1]).resolve()
    problems = []
    files = sources_below(root / "tools")
    for file in files:
        room = file.relative_to(root / "tools").parts[0]
        if room not in MAY_KNOW:
            problems.append(f"tools/{room}: a room whose arrows nobody has said")
            continue
        check_room(root, file, room, problems)
    find_circles(root, files + sources_below(root / "src"), problems)
    for problem in sorted(set(problems)):
        print(problem)
    print(f"{len(files)} files of tools/, {len(set(problems))} includes that are not allowed")
    return 1 if problems or not files else 0


if __name__ == "__main__":
    sys.exit(main())
