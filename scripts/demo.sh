#!/usr/bin/env bash
# Shows the whole bridge on virtual panels and a virtual simulator, without hardware: a page for the browser.
#   demo.sh              builds what it needs, starts the page and prints its address; Ctrl+C ends it
#   demo.sh ARGUMENT...  builds, and runs virtual-cockpit with these arguments; as an example, in a terminal:
#                        demo.sh --script simulation/scenarios/stories/demo-flight.scenario
#   demo.sh --help       this text, then virtual-cockpit's own
set -euo pipefail
cd "$(dirname "$0")/.."

build=build/demo
mkdir -p build

[ "${1:-}" != "--help" ] || sed -n '2,6s/^# \{0,1\}//p' "$0"

scripts/setup.sh --build
echo "demo: building, which takes some minutes the first time" >&2
if ! { cmake --preset linux -B "$build" -DBRIDGE_BENCH=OFF && cmake --build "$build" --target virtual-cockpit; } \
  >"$build.log" 2>&1; then
  tail -n 40 "$build.log" >&2
  echo "demo: the build failed; all of it is in $build.log" >&2
  exit 1
fi

exec "$build/virtual-cockpit" "$@"
