"""Puts small faults into src/, one at a time, and counts those that the unit tests find. See ../mutation-check.sh."""

import argparse
import collections
import fcntl
import json
import math
import os
import pathlib
import signal
import sys
import time

import faults
import trial
from result import Result

ROOT = pathlib.Path(__file__).resolve().parents[2]
# A folder without a test program of its own, and the one whose tests cover it.
TESTED_BY = {"simconnect": "wire"}


def options():
    parser = argparse.ArgumentParser(prog="mutation-check.sh", add_help=False, usage="see --help")
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--all", action="store_true")
    parser.add_argument("--folder", action="append", choices=folders())
    parser.add_argument("--count", type=int, default=330)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--only", action="append", metavar="ID")
    parser.add_argument("--again", type=pathlib.Path, metavar="FILE")
    parser.add_argument("--json", type=pathlib.Path, metavar="FILE")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    return parser.parse_args()


def folders():
    return sorted(path.name for path in (ROOT / "src").iterdir() if any(faults.sources(ROOT, path.name)))


def line_count(folder):
    return sum(path.read_text().count("\n") for path in faults.sources(ROOT, folder))


def plan(wanted):
    """For each folder its faults in the order in which they are taken, and how many of them count."""
    total = sum(line_count(name) for name in folders())
    found = {name: list(faults.faults_of(ROOT, name)) for name in folders()}
    ids = named_ids(wanted, [fault for name in found for fault in found[name]])
    for name in wanted.folder or found:
        queue = list(faults.order(found[name], wanted.seed))
        share = math.ceil(wanted.count * line_count(name) / total)
        if ids is not None:
            queue = [fault for fault in found[name] if fault.id in ids]
        elif wanted.all:
            queue = found[name]
        yield name, queue, share if ids is None and not wanted.all else len(queue)


def named_ids(wanted, found):
    """The ids that the options name, or None. A fault that moved to another file is known by rule and line text."""
    if not wanted.only and not wanted.again:
        return None
    named = set(wanted.only or [fault["id"] for fault in json.loads(wanted.again.read_text())["faults"]])
    present = {fault.id for fault in found}
    lost = {faults.without_file(id) for id in named - present}
    moved = [id for id in present - named if faults.without_file(id) in lost]
    places = collections.Counter(map(faults.without_file, moved))
    return named & present | {id for id in moved if places[faults.without_file(id)] == 1}


def by_place(chosen):
    return sorted(chosen, key=lambda fault: (fault.path, fault.line))


def list_faults(wanted):
    for _, queue, share in plan(wanted):
        for fault in by_place(queue[:share]):
            print(f"{fault.path}:{fault.line}  {fault.id}  {fault.text}\n    {fault.words}")


def check(wanted):
    tree = trial.ScratchTree(ROOT, wanted.jobs)
    result = Result(trial.git(ROOT, "rev-parse", "HEAD").strip(), wanted.seed, wanted.json)
    with locked(tree.base):
        tree.prepare()
        try:
            for folder, queue, share in plan(wanted):
                try_folder(tree, folder, queue, share, result)
            result.finish()
        except KeyboardInterrupt:
            print("\nmutation-check: stopped; this is the result so far")
    result.print()
    return result.is_finished()


def locked(base):
    base.mkdir(parents=True, exist_ok=True)
    lock = open(base / "lock", "w")
    try:
        fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
    except BlockingIOError:
        sys.exit("mutation-check: another run is using build/mutation")
    return lock


def try_folder(tree, folder, queue, share, result):
    if not queue:
        return
    tests = TESTED_BY.get(folder, folder) + "-tests"
    tree.baseline(tests)
    counted = 0
    while counted < share and queue:
        # Faults of one file follow each other, so that only this file is compiled again.
        batch, queue = queue[: share - counted], queue[share - counted :]
        for fault in by_place(batch):
            counted += try_fault(tree, folder, fault, tests, result)


def try_fault(tree, folder, fault, tests, result):
    started = time.monotonic()
    outcome = tree.attempt(fault, tests)
    seconds = time.monotonic() - started
    result.add(folder, fault, outcome, seconds)
    print(f"{outcome.verdict:10} {seconds:6.1f} s  {fault.path}:{fault.line}  {fault.id}  {outcome.by}", flush=True)
    return outcome.verdict != "uncompiled"


def interrupt(*_):
    raise KeyboardInterrupt


if __name__ == "__main__":
    signal.signal(signal.SIGTERM, interrupt)
    signal.signal(signal.SIGPIPE, signal.SIG_DFL)
    arguments = options()
    if arguments.list:
        list_faults(arguments)
    elif not check(arguments):
        sys.exit(1)
