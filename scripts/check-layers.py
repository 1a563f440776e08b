#!/usr/bin/env python3
"""Compares the folders that each library includes with those that CMake links it to.

usage: check-layers.py

A layer is a folder with a line such as `bridge_layer(hid ON platform logging)` in CMakeLists.txt, or
`simulation_layer(rig ON boards bridge-app)` in simulation/CMakeLists.txt, or the same in companion/. Its sources must
include all of the layers after ON, and no others; the table of folders in docs/architecture.md names the same ones.
Prints each difference; without any, succeeds silently.
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
LINE = re.compile(r"^(?:bridge|simulation|companion)_layer\(([^)]*)\)", re.MULTILINE)
ROW = re.compile(r"^\| `(?:src|simulation|companion)/(\w+)` \|.*\| ([^|]*)\|$", re.MULTILINE)
INCLUDE = re.compile(r'^\s*#\s*include "([^"]+)"', re.MULTILINE)

# A header that others may include without the rest of its layer: the C functions that src/wire defines.
PUBLIC_HEADERS = {"simconnect": "wire"}


class Layer:
    """A folder, the layers that CMake links it to, and its programs' own sources, which aren't in the library."""

    def __init__(self, folder, arguments):
        lists = {"": [], "ON": [], "EXCEPT": []}
        current = ""
        for word in arguments.split():
            if word in lists:
                current = word
            else:
                lists[current].append(word)
        self.name = lists[""][0]
        self.folder = folder / self.name
        self.linked = {word.removeprefix("bridge-").removeprefix("companion-") for word in lists["ON"]}
        self.programs = {"main", *lists["EXCEPT"]}

    def sources(self):
        return [path for path in sorted(self.folder.rglob("*"))
                if path.suffix in (".cpp", ".h") and path.stem not in self.programs]


def layers():
    found = []
    for cmake, folder in (("CMakeLists.txt", "src"), ("simulation/CMakeLists.txt", "simulation"),
                          ("companion/CMakeLists.txt", "companion")):
        found += [Layer(ROOT / folder, line) for line in LINE.findall((ROOT / cmake).read_text())]
    return found


def owner(include):
    """The folder that an include names. A header of one system is found by its name alone."""
    parts = include.removeprefix("simulation/").removeprefix("companion/").split("/")
    if len(parts) > 1:
        return PUBLIC_HEADERS.get(parts[0], parts[0])
    return next((header.parent.parent.name for header in (ROOT / "src").glob(f"*/*/{include}")), include)


def differences(layer, names):
    included = {}
    for source in layer.sources():
        for include in INCLUDE.findall(source.read_text()):
            included.setdefault(owner(include), f'{source.relative_to(ROOT)} includes "{include}"')
            # The header in src/simconnect is all that the bridge sees of src/wire.
            if include.startswith("wire/") and layer.name != "wire" and layer.folder.parent.name == "src":
                yield f'{source.relative_to(ROOT)} includes "{include}" instead of simconnect/simconnect_api.h'
    for name in sorted(included.keys() - layer.linked - {layer.name}):
        yield f"{included[name]}, but CMake doesn't link {layer.name} to {name}" if name in names else (
            f"{included[name]}, which is no layer")
    for name in sorted(layer.linked - included.keys()):
        yield f"CMake links {layer.name} to {name}, but {layer.folder.relative_to(ROOT)} includes nothing of it"


def page_differences(found):
    page = (ROOT / "docs/architecture.md").read_text()
    stated = {name: set(filter(None, words.strip().split(", "))) for name, words in ROW.findall(page)}
    for layer in found:
        if stated.get(layer.name, set()) != layer.linked:
            yield f"docs/architecture.md should say that {layer.name} depends on: {', '.join(sorted(layer.linked))}"


def main():
    found = layers()
    names = {layer.name for layer in found}
    lines = [line for layer in found for line in differences(layer, names)] + list(page_differences(found))
    print("\n".join(lines), end="\n" if lines else "")
    return 1 if lines or not found else 0


if __name__ == "__main__":
    sys.exit(main())
