#!/usr/bin/env bash
# Checks schemas/, config/ and tests/schemas/gallery with an independent validator and with the program's own verdict,
# and vantrel check with both.
#   check-schemas.sh [PRESET]   with the programs of this preset, linux by default
set -euo pipefail
. "$(dirname "$0")/lib.sh"
at_most 1 "$@"

build=build/${1:-linux}
verdict=$build/tests/schemas/config-verdict
companion=$build/vantrel
for program in "$verdict" "$companion"; do
  [ -x "$program" ] || die "$program isn't built"
done
install_node_modules tests/schemas
node tests/schemas/check.mjs "$verdict" "$companion"
