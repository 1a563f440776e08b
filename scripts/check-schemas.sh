#!/usr/bin/env bash
# Checks schemas/, config/ and tests/schemas/gallery with an independent validator and with the program's own verdict.
#   check-schemas.sh [CONFIG-VERDICT]   the program that gives it, build/linux/tests/schemas/config-verdict by default
set -euo pipefail
. "$(dirname "$0")/lib.sh"
at_most 1 "$@"

verdict=build/linux/tests/schemas/config-verdict
[ $# -eq 0 ] || verdict=$(callers_path "$1")
[ -x "$verdict" ] || die "$verdict isn't built"
install_node_modules tests/schemas
node tests/schemas/check.mjs "$verdict"
