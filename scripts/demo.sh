#!/usr/bin/env bash
# Shows the whole bridge on virtual panels and a virtual simulator, without hardware: a page for the browser.
#   demo.sh              builds what it needs, starts the page and prints its address; Ctrl+C ends it
#   demo.sh ARGUMENT...  builds, and runs virtual-cockpit with these arguments; as an example, in a terminal:
#                        demo.sh --script simulation/scenarios/stories/demo-flight.scenario
#   demo.sh --help       this text, then virtual-cockpit's own
set -euo pipefail
. "$(dirname "$0")/lib.sh"

build=build/demo
mkdir -p build

[ "${1:-}" != "--help" ] || show_help

scripts/setup.sh --build
say "building, which takes some minutes the first time" >&2
if ! { cmake --preset linux -B "$build" -DBRIDGE_BENCH=OFF && cmake --build "$build" --target virtual-cockpit; } \
  >"$build.log" 2>&1; then
  tail -n 40 "$build.log" >&2
  die "the build failed; its whole output is in $build.log"
fi

exec "$build/virtual-cockpit" "$@"
