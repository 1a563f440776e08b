#!/usr/bin/env bash
# Shows the whole bridge on virtual panels and a virtual simulator, without hardware: a page for the browser.
#   demo.sh              builds what it needs, starts the page and prints its address; Ctrl+C ends it
#   demo.sh ARGUMENT...  builds, and runs `vantrel demo` with these arguments. Examples:
#                        demo.sh --script simulation/scenarios/stories/demo-flight.scenario
#                        demo.sh --config panels/config.json
#   demo.sh --help       this text. docs/vantrel.md explains the arguments, and so does build/demo/vantrel demo --help
set -euo pipefail
. "$(dirname "$0")/lib.sh"

case "${1:-}" in
  -h | --help) show_help; exit 0 ;;
esac

build=build/demo
mkdir -p build

scripts/setup.sh --build
say "building, which takes some minutes the first time" >&2
if ! { cmake --preset linux -B "$build" -DBRIDGE_BENCH=OFF && cmake --build "$build" --target vantrel; } \
  >"$build.log" 2>&1; then
  tail -n 40 "$build.log" >&2
  die "the build failed; its whole output is in $build.log"
fi

exec "$build/vantrel" demo "$@"
