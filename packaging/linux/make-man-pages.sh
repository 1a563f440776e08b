#!/usr/bin/env bash
# Makes the manual pages from the documents.
#   make-man-pages.sh FOLDER VERSION   into FOLDER/man1 and FOLDER/man5; SOURCE_DATE_EPOCH is their date
set -euo pipefail
. "$(dirname "$0")/../../scripts/lib.sh"
at_most 2 "$@"
[ $# -eq 2 ] || usage_error "needs FOLDER and VERSION"
folder=$(cd "$OLDPWD" && mkdir -p "$1/man1" "$1/man5" && realpath "$1")
version=$2
date=$(date -u -d "@$SOURCE_DATE_EPOCH" +%Y-%m-%d)

# A terminal shows no pictures and follows no links, and is too narrow for tables: each row becomes a point of a list, with
# the columns' titles where there are more than two. What is nothing but a link, in parentheses or after a colon, goes.
plain() {
  perl -0pe 's/^!\[.*\n//gm; s/\s*\(\[[^][]*\]\([^)]*\)\)//g; s/:\s+\[[^][]*\]\([^)]*\)\.$/./gm;
      s/\[([^][]*)\]\([^)]*\)/$1/g; s/\\\|/\001/g' |
    awk -F ' *[|] *' '
      !/^[|]/ { rows = 0; gsub(/\001/, "\\|"); print; next }
      ++rows == 1 { split($0, title); next }
      rows == 2 { next }
      {
        point = "- " $2 (NF > 4 || $3 == "" ? "" : ": " $3)
        for (i = 3; NF > 4 && i < NF; i++) if ($i != "") point = point ". " title[i] ": " $i
        gsub(/\001/, "|", point)
        print point
      }'
}

# One part of a document, of which only the text counts.
section() { # document, title
  awk -v title="## $2" '/^## / { inside = ($0 == title); next } inside' "$1"
}

# For whom a document is helps people to choose one in the folder. Whoever reads a page has chosen.
without_readers() { perl -0pe 's/\bFor\s[a-z\s]+(:[^.]*)?\.( |(?=\n))//'; }

before_sections() { # document
  awk '/^## / { exit } !/^# /' "$1"
}

other_pages() { # name
  printf '%s\n' 'VantrelBridgeHID(1)' 'vantrel(1)' 'VantrelBridge-config(5)' 'VantrelBridge-scenario(5)' |
    grep -v "^$1(" | paste -sd, | sed 's/,/, /g'
}

# A document's sections become those of the page.
page() { # name, section, what it is; the text comes on standard input
  {
    printf -- '## NAME\n\n%s - %s\n\n' "$1" "$3"
    without_readers | plain
    printf -- '\n## SEE ALSO\n\n%s\n\n' "$(other_pages "$1")"
    printf -- 'The whole manual is in /usr/share/doc/vantrelbridge.\n'
  } | pandoc --standalone --from=gfm --to=man --shift-heading-level-by=-1 --metadata="title=$1" \
    --metadata="section=$2" --metadata="date=$date" --metadata="footer=VantrelBridge $version" |
    gzip -9n >"$folder/man$2/$1.$2.gz"
}

{
  # shellcheck disable=SC2016
  printf '## SYNOPSIS\n\n`VantrelBridgeHID` [*OPTION*]...\n\n## DESCRIPTION\n\n'
  before_sections README.md
  printf '\n## OPTIONS\n\n'
  section README.md 'Command line'
  printf '\n## FILES\n\n'
  section docs/configuration.md 'Where the files lie'
  printf '\n## IF IT DOES NOT WORK\n\n'
  section README.md "Where to look when it doesn't work"
} | page VantrelBridgeHID 1 "bridge between cockpit boards and the flight simulator"

{
  # shellcheck disable=SC2016
  printf '## SYNOPSIS\n\n`vantrel` *COMMAND* [*OPTION*]...\n\n## DESCRIPTION\n\n'
  tail -n +2 docs/vantrel.md
} | page vantrel 1 "set up, check and try the bridge VantrelBridgeHID"

{
  printf '## DESCRIPTION\n\n'
  tail -n +2 docs/configuration.md
} | page VantrelBridge-config 5 "the bridge's three configuration files"

{
  printf '## DESCRIPTION\n\n'
  tail -n +2 docs/scenarios.md
} | page VantrelBridge-scenario 5 "tests and demonstrations of the bridge as text"
