#!/usr/bin/env bash
# Builds the packages twice, from two clones of this commit in different folders and at different times, and compares
# every file of dist/ bit by bit.
#   check-reproducible.sh          two clones
#   check-reproducible.sh --here   this folder's dist/, which scripts/package.sh has made, and one clone
# It takes twice, or once, the time of scripts/package.sh, and leaves its clones only where they differ.
set -euo pipefail
. "$(dirname "$0")/lib.sh"
here=""
if [ "${1:-}" = --here ]; then
  here=yes
  shift
fi
at_most 0 "$@"

[ -z "$(git status --porcelain)" ] || die "there are changes that no commit holds, which a clone doesn't have"
[ -z "$here" ] || [ -e dist/SHA256SUMS ] || die "dist/ is empty; scripts/package.sh fills it"
started=$SECONDS
mkdir -p build
work=$(mktemp -d "$PWD/build/reproducible.XXXXXX")

# The sources that scripts/setup.sh fetches are the same for all.
build_clone() { # name, the permissions that its sources lack
  local clone=$work/$1
  (umask "$2" && git clone --quiet . "$clone")
  git -C "$clone" -c advice.detachedHead=false checkout --quiet "$(git rev-parse HEAD)"
  mkdir -p "$clone/build"
  cp -r build/third-party "$clone/build/"
  "$clone/scripts/package.sh"
}

scripts/setup.sh --packages
second=$work/another-folder/inside
mkdir -p "$work/another-folder"
build_clone another-folder/inside 077
first=$PWD
if [ -z "$here" ]; then
  first=$work/one
  build_clone one 022
fi

files_of() { (cd "$1/dist" && find . -type f | sort); }
for name in $(files_of "$first"); do
  count cmp "$first/dist/$name" "$second/dist/$name" || echo "FAILED: $name differs"
done
count diff <(files_of "$first") <(files_of "$second") || echo "FAILED: another set of files"
say "compared $passed files after $((SECONDS - started)) s"
if [ "$failed" -eq 0 ]; then
  rm -rf "$work"
fi
report_checks
