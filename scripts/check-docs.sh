#!/usr/bin/env bash
# Holds the documents against the sources: messages, keys, links, examples. Takes no arguments.
set -euo pipefail
cd "$(dirname "$0")/.."

case "${1:-}" in -h | --help) sed -n '2s/^# \{0,1\}//p' "$0"; exit 0 ;; esac
exec python3 tests/docs/check_docs.py .
