#!/usr/bin/env bash
# Checks the documents against the sources: messages, keys, links, examples. Takes no arguments.
set -euo pipefail
. "$(dirname "$0")/lib.sh"
at_most 0 "$@"

exec python3 tests/docs/check_docs.py .
