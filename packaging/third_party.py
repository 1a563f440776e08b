#!/usr/bin/env python3
"""What others wrote and the programs contain.

usage: third_party.py notices           prints THIRD-PARTY-NOTICES.txt
       third_party.py sbom VERSION FILE...  prints the SPDX 2.3 document of these packages

Licence texts and versions are those of the installed Debian packages. SOURCE_DATE_EPOCH is the document's time.
"""

import hashlib
import json
import os
import pathlib
import re
import subprocess
import sys
import time
from dataclasses import dataclass

ROOT = pathlib.Path(__file__).parent.parent
LINUX, WINDOWS, INSTALLER = "linux", "windows", "installer"


@dataclass
class Part:
    name: str
    licence: str
    # The Debian package that each build takes it from. Its version names the part's.
    packages: dict
    # Where its licence text is: a package, and the paragraph of that package's copyright file.
    copyright_package: str
    files: str = "*"


PARTS = [
    Part("CLI11", "BSD-3-Clause", {LINUX: "libcli11-dev", WINDOWS: "libcli11-dev"}, "libcli11-dev"),
    Part("JSON for Modern C++", "MIT", {LINUX: "nlohmann-json3-dev", WINDOWS: "nlohmann-json3-dev"}, "nlohmann-json3-dev"),
    Part("cpp-httplib", "MIT", {LINUX: "source:cpp-httplib", WINDOWS: "source:cpp-httplib"}, "source:cpp-httplib"),
    Part("minizip", "Zlib", {LINUX: "libminizip-dev", WINDOWS: "source:minizip"}, "libminizip-dev"),
    Part("zlib", "Zlib", {WINDOWS: "libz-mingw-w64-dev"}, "libz-mingw-w64-dev"),
    Part("libstdc++ and libgcc", "GPL-3.0-or-later WITH GCC-exception-3.1",
         {LINUX: "libstdc++-12-dev", WINDOWS: "gcc-mingw-w64-x86-64-posix-runtime"}, "gcc-12-base"),
    Part("MinGW-w64 runtime", "ZPL-2.1", {WINDOWS: "mingw-w64-x86-64-dev"}, "mingw-w64-x86-64-dev"),
    Part("winpthreads", "MIT", {WINDOWS: "mingw-w64-x86-64-dev"}, "mingw-w64-x86-64-dev",
         "mingw-w64-libraries/winpthreads/*"),
    Part("NSIS", "Zlib", {INSTALLER: "nsis-common"}, "nsis-common"),
    Part("System plug-in of NSIS", "MIT", {INSTALLER: "nsis-common"}, "nsis-common", "Contrib/System/Source/Call.S"),
]

# Libraries of the system that the programs load when they start: name, licence, Debian package.
LOADED = {LINUX: [("GNU C library", "LGPL-2.1-or-later", "libc6"), ("zlib", "Zlib", "zlib1g")]}

# Debian packages whose versions decide about the bytes of a build.
TOOLS = {LINUX: ["binutils", "dpkg", "g++-12", "gzip", "libc6-dev", "pandoc", "tar"],
         WINDOWS: ["binutils-mingw-w64-x86-64", "g++-mingw-w64-x86-64-posix", "zip"],
         INSTALLER: ["nsis"]}

# A package's ending, and the builds whose parts it contains.
BUILDS_IN = {".deb": [LINUX], "linux-x86_64.tar.gz": [LINUX], "windows-x64.zip": [WINDOWS],
             "setup.exe": [WINDOWS, INSTALLER]}
ONLY = {WINDOWS: ", on Windows only", INSTALLER: ", in the installer for Windows only"}


def source_folder(package):
    return ROOT / "build/third-party" / package.removeprefix("source:")


def copyright_text(package):
    if package.startswith("source:"):
        return (source_folder(package) / "debian/copyright").read_text(encoding="utf-8")
    return pathlib.Path("/usr/share/doc", package, "copyright").read_text(encoding="utf-8")


def installed_version(package):
    if package.startswith("source:"):
        first = (source_folder(package) / "debian/changelog").read_text(encoding="utf-8").splitlines()[0]
        return re.search(r"\((.*?)\)", first)[1]
    return subprocess.run(["dpkg-query", "-W", "-f=${Version}", package], check=True, capture_output=True,
                          text=True).stdout


def fields_of(paragraph):
    """The fields of one paragraph of a machine-readable copyright file."""
    return {match[1]: match[2].strip("\n") for match in
            re.finditer(r"^(\S+?):(.*(?:\n[ \t].*)*)", paragraph, flags=re.M)}


def unwrapped(field):
    """A field without its layout: a dot is an empty line."""
    lines = [line.strip() if line.strip() != "." else "" for line in field.splitlines()]
    return "\n".join(line for line in lines).strip()


def notice(part):
    text = copyright_text(part.copyright_package)
    if not text.startswith("Format:"):
        begin = text.index("GCC RUNTIME LIBRARY EXCEPTION")
        owner = re.search(r"^GCC is Copyright.*?Inc\.", text, flags=re.S | re.M)[0]
        return owner + "\n\n" + text[begin:text.index("\n\n\n", begin)]
    paragraphs = [fields_of(paragraph) for paragraph in re.split(r"\n\s*\n", text)]
    own = next(each for each in paragraphs if part.files in each.get("Files", "").split())
    name, _, terms = own["License"].partition("\n")
    if not terms:
        terms = next(each["License"] for each in paragraphs
                     if "Files" not in each and each.get("License", "").startswith(name + "\n")).partition("\n")[2]
    owners = "\n".join("Copyright " + re.sub(r"^Copyright ", "", line) for line in unwrapped(own["Copyright"]).splitlines())
    return owners + "\n\n" + unwrapped(terms)


def notices():
    print("VantrelBridge contains parts that others wrote. These are their licences.")
    for part in PARTS:
        only = "" if LINUX in part.packages else ONLY[next(iter(part.packages))]
        print(f"\n{'=' * 80}\n{part.name} ({part.licence}){only}\n{'=' * 80}\n\n{notice(part)}")


def identifier(text):
    return "SPDXRef-" + re.sub(r"[^A-Za-z0-9.]+", "-", text).strip("-")


def builds_in(path):
    return next(builds for ending, builds in BUILDS_IN.items() if path.name.endswith(ending))


def parts_of(build):
    return [part for part in PARTS if build in part.packages]


def package_record(path, version):
    return {
        "SPDXID": identifier(path.name),
        "name": path.name,
        "versionInfo": version,
        "downloadLocation": "NOASSERTION",
        "filesAnalyzed": False,
        "checksums": [{"algorithm": "SHA256", "checksumValue": hashlib.sha256(path.read_bytes()).hexdigest()}],
        "licenseConcluded": "LicenseRef-VantrelBridge",
        "licenseDeclared": "LicenseRef-VantrelBridge",
        "copyrightText": "NOASSERTION",
    }


def debian_record(spdx_id, name, package, licence, owners="NOASSERTION"):
    version = installed_version(package)
    kind = "?arch=source" if package.startswith("source:") else ""
    place = f"{package.removeprefix('source:')}@{version.replace(':', '%3A')}".replace("+", "%2B")
    return {
        "SPDXID": spdx_id,
        "name": name,
        "versionInfo": version,
        "downloadLocation": "NOASSERTION",
        "filesAnalyzed": False,
        "licenseConcluded": licence,
        "licenseDeclared": licence,
        "copyrightText": owners,
        "externalRefs": [{"referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl",
                          "referenceLocator": f"pkg:deb/debian/{place}{kind}"}],
    }


# What a build has taken from others: how it relates to the packages, and its record.
def taken_by(build):
    for part in parts_of(build):
        yield "STATIC_LINK", debian_record(identifier(f"{part.name} {build}"), part.name, part.packages[build], part.licence,
                                           notice(part).partition("\n\n")[0])
    for name, licence, package in LOADED.get(build, []):
        yield "DYNAMIC_LINK", debian_record(identifier(f"{name} loaded {build}"), name, package, licence)
    for package in TOOLS[build]:
        yield "BUILD_TOOL_OF", debian_record(identifier(f"{package} tool {build}"), package, package, "NOASSERTION")


def relationship(one, kind, other):
    return {"spdxElementId": one, "relationshipType": kind, "relatedSpdxElement": other}


def relation(path, kind, taken):
    ends = [identifier(path.name), taken["SPDXID"]]
    if kind == "BUILD_TOOL_OF":
        ends.reverse()
    return relationship(ends[0], kind, ends[1])


def sbom(version, paths):
    builds = sorted({build for path in paths for build in builds_in(path)})
    packages = [package_record(path, version) for path in paths]
    taken = {build: list(taken_by(build)) for build in builds}
    relationships = [relationship("SPDXRef-DOCUMENT", "DESCRIBES", package["SPDXID"]) for package in packages]
    for path in paths:
        relationships += [relation(path, kind, record) for build in builds_in(path) for kind, record in taken[build]]
    digest = hashlib.sha256("".join(package["checksums"][0]["checksumValue"] for package in packages).encode()).hexdigest()
    document = {
        "spdxVersion": "SPDX-2.3",
        "dataLicense": "CC0-1.0",
        "SPDXID": "SPDXRef-DOCUMENT",
        "name": f"VantrelBridge-{version}",
        "documentNamespace": f"urn:vantrelbridge:{version}:{digest}",
        "creationInfo": {
            "created": time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(int(os.environ["SOURCE_DATE_EPOCH"]))),
            "creators": ["Tool: VantrelBridge-third_party.py"],
        },
        "hasExtractedLicensingInfos": [{"licenseId": "LicenseRef-VantrelBridge", "name": "The licence of VantrelBridge",
                                        "extractedText": (ROOT / "LICENSE.txt").read_text(encoding="utf-8")}],
        "packages": packages + [record for build in builds for _, record in taken[build]],
        "relationships": relationships,
    }
    print(json.dumps(document, indent=2, ensure_ascii=False))


def main(arguments):
    if arguments == ["notices"]:
        notices()
    elif len(arguments) > 2 and arguments[0] == "sbom":
        sbom(arguments[1], [pathlib.Path(name) for name in sorted(arguments[2:])])
    else:
        sys.exit(__doc__.strip())


if __name__ == "__main__":
    main(sys.argv[1:])
