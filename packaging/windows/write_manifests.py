#!/usr/bin/python3
"""Writes what winget and Scoop need to know of a release: dist/winget/*.yaml and dist/scoop/vantrelbridge.json.

  write_manifests.py DIST VERSION RELEASE_URL

DIST has the final, signed packages, whose check sums go into the manifests. RELEASE_URL is the address of the folder
from which users download them.
"""
import hashlib
import json
import pathlib
import sys

import yaml

IDENTIFIER = "VantrelBridge.VantrelBridgeHID"
SCHEMA_VERSION = "1.6.0"
SUMMARY = "Connects the USB boards of a home cockpit to Microsoft Flight Simulator 2020 and 2024"
LICENCE = "All rights reserved"  # until LICENSE.txt names another


def sha256(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()


def winget_manifest(kind, version, content):
    return {"PackageIdentifier": IDENTIFIER, "PackageVersion": version, **content,
            "ManifestType": kind, "ManifestVersion": SCHEMA_VERSION}


def installer(url, path):
    """The keys of Windows' list of programs are those that installer.nsi writes."""
    return {
        "Platform": ["Windows.Desktop"],
        "MinimumOSVersion": "10.0.17763.0",
        "InstallerType": "nullsoft",
        "Scope": "user",
        "InstallModes": ["interactive", "silent"],
        "UpgradeBehavior": "install",
        "ProductCode": "VantrelBridge",
        "ExpectedReturnCodes": [{"InstallerReturnCode": 1, "ReturnResponse": "cancelledByUser"},
                                {"InstallerReturnCode": 3, "ReturnResponse": "custom"}],
        "Installers": [{"Architecture": "x64", "InstallerUrl": f"{url}/{path.name}",
                        "InstallerSha256": sha256(path).upper()}],
    }


def locale():
    return {"PackageLocale": "en-US", "Publisher": "VantrelBridgeHID", "PackageName": "VantrelBridgeHID",
            "License": LICENCE, "ShortDescription": SUMMARY, "Tags": ["flight-simulator", "hid", "msfs", "simconnect"]}


def winget(version, url, setup):
    yield IDENTIFIER, winget_manifest("version", version, {"DefaultLocale": "en-US"})
    yield f"{IDENTIFIER}.installer", winget_manifest("installer", version, installer(url, setup))
    yield f"{IDENTIFIER}.locale.en-US", winget_manifest("defaultLocale", version, locale())


def scoop(version, url, archive):
    """Scoop replaces the folder with each version, but keeps `config`. EXE.xml must name the folder that stays."""
    return {
        "version": version,
        "description": SUMMARY,
        "homepage": url,
        "license": {"identifier": LICENCE},
        "architecture": {"64bit": {"url": f"{url}/{archive.name}", "hash": sha256(archive),
                                   "extract_dir": f"VantrelBridge-{version}"}},
        "bin": ["vantrel.exe", "VantrelBridgeHID.exe"],
        "shortcuts": [["vantrel.exe", "VantrelBridge setup", "setup", "VantrelBridgeHID.exe"],
                      ["vantrel.exe", "Try it without hardware", "demo", "VantrelBridgeHID.exe"]],
        "persist": "config",
        # Scoop runs this before an update, too, which the entry in EXE.xml outlives.
        "pre_uninstall": ["if ($cmd -eq 'uninstall') {",
                          '    Start-Process -Wait "$dir\\VantrelBridgeHID.exe" -ArgumentList "--unregister"',
                          "}"],
        "notes": ["To start the bridge with the simulator: VantrelBridgeHID --register"],
    }


def write(path, text):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text, encoding="utf-8", newline="\n")


def main(dist, version, url):
    dist, url = pathlib.Path(dist), url.rstrip("/")
    for name, manifest in winget(version, url, dist / f"VantrelBridge-{version}-setup.exe"):
        write(dist / "winget" / f"{name}.yaml", yaml.safe_dump(manifest, sort_keys=False, allow_unicode=True, width=120))
    manifest = scoop(version, url, dist / f"VantrelBridge-{version}-windows-x64.zip")
    write(dist / "scoop" / "vantrelbridge.json", json.dumps(manifest, indent=4) + "\n")


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    main(*sys.argv[1:])
