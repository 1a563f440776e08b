#!/usr/bin/python3
"""Checks the manifests for winget and Scoop in a folder of packages: check_manifests.py DIST"""
import copy
import hashlib
import json
import pathlib
import re
import sys
import zipfile

import jsonschema
import yaml

HERE = pathlib.Path(__file__).parent
INSTALLER_SCRIPT = HERE.parent.parent / "packaging/windows/installer.nsi"
passed = failed = 0


def check(what, holds):
    global passed, failed
    passed, failed = passed + bool(holds), failed + (not holds)
    if not holds:
        print(f"FAILED: {what}")


def validator(name):
    return jsonschema.Draft202012Validator(json.loads((HERE / name).read_text()))


def check_rules(name, rules, manifest):
    errors = [error.message for error in rules.iter_errors(manifest)]
    check(f"{name}: {errors}", not errors)


def check_that_rules_can_fail(name, rules, manifest):
    """A manifest is refused without any of its required keys and with an unknown one."""
    for key in manifest:
        if key in str(rules.schema["required"]) or key in ("Installers", "License", "DefaultLocale"):
            check(f"{name} without {key} is refused",
                  not rules.is_valid({k: v for k, v in manifest.items() if k != key}))
    check(f"{name} with an unknown key is refused", not rules.is_valid({**copy.deepcopy(manifest), "Unknown": 1}))


def check_download(name, packages, url, digest):
    package = packages / url.rsplit("/", 1)[1]
    check(f"{name}: {package.name} exists", package.is_file())
    check(f"{name}: its check sum is right", hashlib.sha256(package.read_bytes()).hexdigest() == digest.lower())


def check_winget(packages):
    rules = validator("winget.schema.json")
    manifests = {path.name: yaml.safe_load(path.read_text()) for path in sorted((packages / "winget").glob("*.yaml"))}
    for name, manifest in manifests.items():
        check_rules(name, rules, manifest)
        check_that_rules_can_fail(name, rules, manifest)
    check("one manifest of each kind", sorted(m["ManifestType"] for m in manifests.values()) ==
          ["defaultLocale", "installer", "version"])
    check("the same package and version in all", len({(m["PackageIdentifier"], m["PackageVersion"])
                                                      for m in manifests.values()}) == 1)
    installer = next(m for m in manifests.values() if m["ManifestType"] == "installer")
    check_download("winget", packages, installer["Installers"][0]["InstallerUrl"],
                   installer["Installers"][0]["InstallerSha256"])
    product = re.search(r"!define PRODUCT (\S+)", INSTALLER_SCRIPT.read_text()).group(1)
    check("the product code is the uninstall key that the installer writes", installer["ProductCode"] == product)


def check_scoop(packages):
    rules = validator("scoop.schema.json")
    manifest = json.loads((packages / "scoop/vantrelbridge.json").read_text())
    check_rules("scoop", rules, manifest)
    check_that_rules_can_fail("scoop", rules, manifest)
    download = manifest["architecture"]["64bit"]
    check_download("scoop", packages, download["url"], download["hash"])
    names = set(zipfile.ZipFile(packages / download["url"].rsplit("/", 1)[1]).namelist())
    for program in manifest["bin"] + [shortcut[0] for shortcut in manifest["shortcuts"]]:
        check(f"scoop: {program} is in the zip", f"{download['extract_dir']}/{program}" in names)


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    check_winget(pathlib.Path(sys.argv[1]))
    check_scoop(pathlib.Path(sys.argv[1]))
    print(f"check: {passed} passed, {failed} failed")
    sys.exit(failed > 0 or passed == 0)
