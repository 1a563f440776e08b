#!/usr/bin/env bash
# Installs what building and testing need and this machine lacks. Safe to run again: it does nothing where all is there.
#   setup.sh             what scripts/test.sh needs: compilers, cross compiler, Wine, the packages' tools, libraries'
#                        sources, the test machine's kernel
#   setup.sh --build     only what a native build and its unit tests need
#   setup.sh --packages  only what scripts/package.sh needs
#   setup.sh --coverage  what --build installs, and what scripts/coverage.sh needs
set -euo pipefail
. "$(dirname "$0")/lib.sh"

build_packages=(cmake ninja-build g++ clang lld googletest libgtest-dev libbenchmark-dev nlohmann-json3-dev libcli11-dev
  libpugixml-dev libminizip-dev zlib1g-dev dpkg-dev)
packaging_packages=(g++-mingw-w64-x86-64-posix libz-mingw-w64-dev pandoc nsis osslsigncode zip xz-utils git python3 python3-yaml)
test_packages=("${packaging_packages[@]}" clang-format clang-tidy man-db shellcheck libclang-rt-14-dev
  chromium-headless-shell wine wine64 qemu-system-x86 busybox-static cpio udev lintian unzip python3-jsonschema systemd zsh
  fish locales openssl util-linux xvfb xdotool)

case "${1:-}" in
  --build) packages=("${build_packages[@]}") ;;
  --packages) packages=("${build_packages[@]}" "${packaging_packages[@]}") ;;
  --coverage) packages=("${build_packages[@]}" gcovr) ;;
  *) at_most 0 "$@"; packages=("${build_packages[@]}" "${test_packages[@]}") ;;
esac

# Node may be there without Debian's package of it, and then that package doesn't go in beside it.
[ -n "${1:-}" ] || command -v npm >/dev/null || packages+=(nodejs npm)

missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q '^install ok installed$' || missing+=("$package")
done

if [ "${#missing[@]}" -gt 0 ]; then
  say "installing ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  sudo=""
  [ "$(id -u)" -eq 0 ] || sudo="sudo"
  log=$(mktemp)
  trap 'rm -f "$log"' EXIT
  if ! { $sudo apt-get update -q && $sudo apt-get install -y -q --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
    tail -n 40 "$log" >&2
    die "installing packages failed"
  fi
fi

case "${1:-}" in
  "") scripts/fetch-source.sh cpp-httplib minizip; scripts/fetch-vm-kernel.sh ;;
  --packages) scripts/fetch-source.sh cpp-httplib minizip ;;
  *) scripts/fetch-source.sh cpp-httplib ;;
esac
