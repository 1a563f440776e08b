#!/usr/bin/env bash
# Downloads and unpacks the kernel of the small test machine into build/vm, once. It is never installed on the host.
# Takes no arguments.
set -euo pipefail
. "$(dirname "$0")/lib.sh"
at_most 0 "$@"

target=build/vm/kernel
[ -e "$target/ready" ] && exit 0
mkdir -p build/vm
work=$(mktemp -d build/vm/fetch.XXXXXX)
trap 'rm -rf "$work"' EXIT

apt-cache show linux-image-amd64 >/dev/null 2>&1 || apt-get update -q >/dev/null
package=$(apt-cache depends linux-image-amd64 | sed -n 's/^ *Depends: \(linux-image-[0-9].*\)$/\1/p' | head -n 1)
[ -n "$package" ] || die "no kernel package behind linux-image-amd64"
say "fetching $package for the test machine"
(cd "$work" && apt-get download -q "$package" >/dev/null)
dpkg -x "$work"/*.deb "$work/root"
rm -rf "$target"
mkdir -p "$target"
cp "$work"/root/boot/vmlinuz-* "$target/vmlinuz"
cp -r "$work"/root/lib/modules/* "$target/modules"
touch "$target/ready"
