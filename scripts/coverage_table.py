"""Adds gcovr's figures of each file up to those of each folder of src/.

Usage: coverage_table.py SUMMARY COMMIT [JSON]
"""

import collections
import json
import pathlib
import sys

KINDS = ["line", "branch"]
KEYS = [f"{kind}_{part}" for kind in KINDS for part in ("covered", "total")]


def folders(summary):
    sums = collections.defaultdict(collections.Counter)
    for file in summary["files"]:
        folder = pathlib.PurePath(file["filename"]).parts[1]
        for name in (folder, "all"):
            sums[name].update({key: file[key] for key in KEYS})
    return {name: dict(sums[name]) for name in sorted(sums, key=lambda name: (name == "all", name))}


def cell(sums, kind):
    covered, total = sums[f"{kind}_covered"], sums[f"{kind}_total"]
    percent = 100 * covered / total if total else 100
    return f"{percent:6.1f} % ({covered}/{total})".ljust(24)


def main(summary, commit, target=None):
    sums = folders(json.loads(pathlib.Path(summary).read_text()))
    print(f"{'folder':14}{'lines':24}branches")
    for name, figures in sums.items():
        print(f"{name:14}{''.join(cell(figures, kind) for kind in KINDS)}".rstrip())
    if target:
        pathlib.Path(target).write_text(json.dumps({"commit": commit, "folders": sums}, indent=1) + "\n")


main(*sys.argv[1:])
