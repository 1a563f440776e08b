#!/usr/bin/env python3
"""Checks a list of parts (SPDX 2.3 JSON) against what the format demands and against the packages.

usage: check_sbom.py FILE DIST
"""

import hashlib
import json
import pathlib
import re
import sys

DOCUMENT_KEYS = {"spdxVersion", "dataLicense", "SPDXID", "name", "documentNamespace", "creationInfo",
                 "hasExtractedLicensingInfos", "packages", "relationships"}
KINDS = {"DESCRIBES", "STATIC_LINK", "DYNAMIC_LINK", "BUILD_TOOL_OF"}


def faults_of_package(package):
    for key in ("SPDXID", "name", "versionInfo", "downloadLocation", "licenseConcluded", "copyrightText"):
        if not package.get(key):
            yield f"{package.get('name')} has no {key}"
    if not re.fullmatch(r"SPDXRef-[A-Za-z0-9.-]+", package["SPDXID"]):
        yield f"{package['SPDXID']} isn't an identifier"
    if package.get("filesAnalyzed") is not False:
        yield f"{package['name']} has files that nobody listed"


def faults_of_sums(packages, dist):
    for package in packages:
        for checksum in package.get("checksums", []):
            actual = hashlib.sha256((dist / package["name"]).read_bytes()).hexdigest()
            if checksum != {"algorithm": "SHA256", "checksumValue": actual}:
                yield f"{package['name']} has another check sum"


def faults(document, dist):
    if set(document) != DOCUMENT_KEYS:
        yield f"the document's keys are {sorted(document)}"
    if (document["spdxVersion"], document["dataLicense"]) != ("SPDX-2.3", "CC0-1.0"):
        yield "it isn't SPDX 2.3 under CC0-1.0"
    if not re.fullmatch(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ", document["creationInfo"]["created"]):
        yield "its time has another form"
    packages = document["packages"]
    for package in packages:
        yield from faults_of_package(package)
    yield from faults_of_sums(packages, dist)
    names = {package["SPDXID"] for package in packages} | {"SPDXRef-DOCUMENT"}
    if len(names) != len(packages) + 1:
        yield "an identifier is used twice"
    for each in document["relationships"]:
        if each["spdxElementId"] not in names or each["relatedSpdxElement"] not in names:
            yield f"a relationship leads nowhere: {each}"
    yield from faults_of_relationships(names, document["relationships"])


def faults_of_relationships(names, relationships):
    related = {each[end] for each in relationships for end in ("spdxElementId", "relatedSpdxElement")}
    yield from (f"nothing relates to {name}" for name in names - related)
    kinds = {each["relationshipType"] for each in relationships}
    yield from (f"it lists nothing as {kind}" for kind in KINDS - kinds)


def main(file, dist):
    found = list(faults(json.loads(pathlib.Path(file).read_text(encoding="utf-8")), pathlib.Path(dist)))
    print("\n".join(found))
    return 1 if found else 0


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__.strip())
    sys.exit(main(*sys.argv[1:]))
