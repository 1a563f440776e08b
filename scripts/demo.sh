#!/usr/bin/env bash
# Plays a short flight: the whole bridge on virtual panels and a virtual simulator, in half a minute, without hardware.
#   demo.sh              builds what it needs and plays simulation/scenarios/demo-flight.scenario
#   demo.sh ARGUMENT...  builds, and runs virtual-cockpit with these arguments instead
#   demo.sh --help       this text, then virtual-cockpit's own
set -euo pipefail
cd "$(dirname "$0")/.."

build=build/demo
mkdir -p build

[ "${1:-}" != "--help" ] || sed -n '2,5s/^# \{0,1\}//p' "$0"

scripts/setup.sh --build
if ! { cmake --preset linux -B "$build" -DBRIDGE_BENCH=OFF && cmake --build "$build" --target virtual-cockpit; } \
  >"$build.log" 2>&1; then
  tail -n 40 "$build.log" >&2
  echo "demo: the build failed; all of it is in $build.log" >&2
  exit 1
fi

[ "$#" -gt 0 ] || set -- --script simulation/scenarios/demo-flight.scenario
exec "$build/virtual-cockpit" "$@"
