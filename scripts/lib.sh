# shellcheck shell=bash
# What the scripts share. A script sources it first, and is then in the repository's root:
#   . "$(dirname "$0")/lib.sh"

script=$(realpath "$0")
script_name=${0##*/}
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1

# A file as the caller names it, relative to the caller's folder.
callers_path() { (cd "$OLDPWD" && realpath -- "$1"); }

# The comment at a script's head is its help.
show_help() { awk 'NR == 1 { next } !sub(/^# ?/, "") { exit } { print }' "$script"; }

say() { echo "${script_name%.sh}: $*"; }

die() {
  say "$*" >&2
  exit 1
}

usage_error() {
  echo "$script_name: $* (see --help)" >&2
  exit 2
}

# Answers --help, and refuses every other option. A script with options of its own handles them first.
no_other_options() {
  case "${1:-}" in
    -h | --help) show_help; exit 0 ;;
    -*) usage_error "unknown option $1" ;;
  esac
}

# As above, for a script that takes at most so many operands.
at_most() {
  local limit=$1
  shift
  no_other_options "$@"
  [ "$#" -le "$limit" ] || usage_error "unexpected argument ${*:limit + 1:1}"
}

passed=0 failed=0
count() { # command whose success counts as passed
  if "$@"; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
    return 1
  fi
}

check() { # what is true, then the command that says so; its output is only shown when it fails
  local what=$1 output
  shift
  output=$(mktemp)
  if count "$@" >"$output" 2>&1; then
    echo "ok: $what"
  else
    echo "FAILED: $what"
    tail -n 40 "$output"
  fi
  rm "$output"
}

not() { ! "$@"; }

# Until the command succeeds, for two minutes at most: emulated machines are slow. `pause` is in seconds.
eventually() {
  local end=$((SECONDS + 120))
  until "$@" >/dev/null 2>&1; do
    [ "$SECONDS" -lt "$end" ] || { "$@"; return; }
    sleep "${pause:-0.3}"
  done
}

# The line that test.sh adds up. Fails unless something was checked and nothing failed.
report_checks() {
  echo "check: $passed passed, $failed failed"
  [ "$passed" -gt 0 ] && [ "$failed" -eq 0 ]
}

# Installs what a package-lock.json names, without the packages' own scripts.
install_node_modules() { # folder
  [ "$1/node_modules/.package-lock.json" -nt "$1/package-lock.json" ] ||
    npm ci --prefix "$1" --ignore-scripts --no-audit --no-fund --loglevel=error
}

# Lets programs of the Windows build run under Wine until `end_wine`. One server for all of them: otherwise it ends with
# each, and a program that starts just then fails. The first program starts Wine's services, which keep its output open.
start_wine() {
  export WINEPREFIX=$PWD/build/wine WINEDEBUG=-all DISPLAY='' WINEDLLOVERRIDES='mscoree,mshtml='
  scripts/vm/make-wine-prefix.sh "$WINEPREFIX" || exit 1
  wineserver -p
  wine cmd /c exit >/dev/null 2>&1
}

end_wine() { wineserver -k; wineserver -w; }

# Builds into build/PRESET: all of it, or only some targets. Scripts run side by side, and two builds in one folder clash,
# so one waits for the other.
build_preset() { # preset, target...
  local preset=$1
  shift
  mkdir -p build
  (
    flock 9
    cmake --preset "$preset" >/dev/null && cmake --build --preset "$preset" "${@/#/--target=}"
  ) 9>"build/$preset.lock"
}
