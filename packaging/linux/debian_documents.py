#!/usr/bin/env python3
"""The documents that a Debian package has in forms of its own.

usage: debian_documents.py copyright           from LICENSE.txt and THIRD-PARTY-NOTICES.txt
       debian_documents.py changelog VERSION   from CHANGELOG.md; SOURCE_DATE_EPOCH is its date
"""

import email.utils
import os
import pathlib
import re
import sys
import textwrap

ROOT = pathlib.Path(__file__).parent.parent.parent
MAINTAINER = "VantrelBridge maintainers <maintainers@vantrelbridge.invalid>"


def copyright_text():
    own = (ROOT / "LICENSE.txt").read_text(encoding="utf-8")
    return own + "\n" + (ROOT / "THIRD-PARTY-NOTICES.txt").read_text(encoding="utf-8")


def changes_of(version):
    """The points of one version, each in one line."""
    text = (ROOT / "CHANGELOG.md").read_text(encoding="utf-8")
    section = re.search(rf"^## {re.escape(version)}\b.*?\n(.*?)(?=^## |\Z)", text, flags=re.S | re.M)[1]
    return [" ".join(point.split()) for point in re.split(r"^- ", section, flags=re.M)[1:]]


def changelog(version):
    points = "\n".join(textwrap.fill(point, 78, initial_indent="  * ", subsequent_indent="    ", break_long_words=False)
                       for point in changes_of(version))
    date = email.utils.formatdate(int(os.environ["SOURCE_DATE_EPOCH"]))
    date = date.replace("-0000", "+0000")
    return f"vantrelbridge ({version}) unstable; urgency=medium\n\n{points}\n\n -- {MAINTAINER}  {date}\n"


if __name__ == "__main__":
    if sys.argv[1:] == ["copyright"]:
        sys.stdout.write(copyright_text())
    elif len(sys.argv) == 3 and sys.argv[1] == "changelog":
        sys.stdout.write(changelog(sys.argv[2]))
    else:
        sys.exit(__doc__.strip())
