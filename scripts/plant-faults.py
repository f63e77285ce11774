#!/usr/bin/env python3
"""Plants single faults in a copy of the tree, one after another, and tells which of them the tests find.

    scripts/plant-faults.py [--only TEXT] [--list] [FILE.faults ...]

Without files it takes tests/faults/*.faults. A fault is a block of such a file:

    NAME: what is wrong with it
    FILE: IpodService/PendingWork.cpp
    OLD:
    lines that stand once in the file
    NEW:
    what stands in their place
    END

The faults of a file Room.faults are looked for by the test programs of tests/Room; what they let pass, by the
end-to-end tests and three of the kit's, which need pytest. A fault that does not compile counts as found by the compiler, and is told as such. Works in
build/faults, so the tree is left alone. Exits 1 when more than one fault in ten survives.
"""

import argparse
import pathlib
import shutil
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "faults"
TREE = WORK / "tree"
BUILD = WORK / "build"
END_TO_END = "EndToEnd.(Clients|Exit|Log)Test|Kit.(commute|protocol_page|rough_road)"
TIMEOUT_S = 300


def parse(path):
    """The faults of one file, in its order, as dictionaries with the keys room, name, file, old and new."""
    faults, fault, key = [], None, None
    for line in path.read_text().splitlines(keepends=True):
        if line.startswith("NAME: "):
            fault, key = {"room": path.stem, "name": line[6:].strip(), "old": "", "new": ""}, None
        elif line.startswith("FILE: ") and key is None:
            fault["file"] = line[6:].strip()
        elif line.rstrip() in ("OLD:", "NEW:"):
            key = line.rstrip()[:3].lower()
        elif line.rstrip() == "END":
            faults.append(fault)
            fault = key = None
        elif key:
            fault[key] += line
    return faults


def run(*command):
    """True when the command succeeded in time; what it wrote is kept for the one who asks why not."""
    with open(WORK / "last.log", "w") as log:
        try:
            return subprocess.run(command, stdout=log, stderr=log, timeout=TIMEOUT_S).returncode == 0
        except subprocess.TimeoutExpired:
            return False


def build(*targets):
    return run("cmake", "--build", BUILD, "--target", *targets)


def room_targets(room):
    """The test programs of a room: what its build folder holds once everything is built."""
    folder = BUILD / "tests" / room
    programs = [p.name for p in folder.iterdir() if p.is_file() and p.name.endswith("_test")]
    return programs or sys.exit(f"no test program in {folder}")


def finder(room):
    """Who finds the fault that is planted now; None when nobody does."""
    programs = room_targets(room)
    if not build(*programs):
        return "compiler"
    for program in programs:
        if not run(BUILD / "tests" / room / program, "--gtest_brief=1"):
            return program
    if not build("ipod-service", "end_to_end_test"):
        return "compiler"
    if not run("ctest", "--test-dir", BUILD, "-R", END_TO_END, "--no-tests=error", "--stop-on-failure"):
        return "end to end"
    return None


def prepare():
    """A copy of the tree as it stands, with its tests built; they pass in it."""
    shutil.rmtree(TREE, ignore_errors=True)
    TREE.mkdir(parents=True)
    files = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", "-z"], cwd=ROOT, check=True,
                           stdout=subprocess.PIPE).stdout.decode().split("\0")
    for name in filter(None, files):
        if (ROOT / name).is_file():
            (TREE / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(ROOT / name, TREE / name)
    configured = run("cmake", "-S", TREE, "-B", BUILD, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                     "-DIPOD_BUILD_BENCH=OFF")
    if not configured or not subprocess.run(["cmake", "--build", BUILD], stdout=subprocess.DEVNULL).returncode == 0:
        sys.exit("the tree does not build; see " + str(WORK / "last.log"))


def plant(fault):
    """Returns who finds the fault; leaves the copy as it was."""
    path = TREE / fault["file"]
    text = path.read_text()
    if text.count(fault["old"]) != 1:
        return f"NOT PLANTED: {text.count(fault['old'])} places"
    path.write_text(text.replace(fault["old"], fault["new"]))
    try:
        return finder(fault["room"])
    finally:
        path.write_text(text)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--only", default="", help="faults with this text in their name")
    parser.add_argument("--list", action="store_true", help="tell the faults and plant none")
    parser.add_argument("files", nargs="*", type=pathlib.Path)
    arguments = parser.parse_args()
    files = arguments.files or sorted((ROOT / "tests" / "faults").glob("*.faults"))
    faults = [f for path in files for f in parse(path) if arguments.only in f["name"]]
    if arguments.list:
        for fault in faults:
            print(f"{fault['room']:12} {fault['name']}")
        return 0
    prepare()
    survivors = []
    for fault in faults:
        start = time.monotonic()
        found = plant(fault)
        if found is None or found.startswith("NOT"):
            survivors.append(fault["name"])
        print(f"{fault['room']:12} {fault['name']:72} {found or 'SURVIVED':20} {time.monotonic() - start:5.0f} s",
              flush=True)
    print(f"{len(faults) - len(survivors)} of {len(faults)} found")
    return 1 if len(survivors) * 10 > len(faults) else 0


if __name__ == "__main__":
    sys.exit(main())
