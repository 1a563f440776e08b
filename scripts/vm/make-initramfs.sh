#!/usr/bin/env bash
# Packs the first root of the test machine: busybox, the kernel modules that it needs, and guest-init.
#   make-initramfs.sh MODULES OUTPUT
set -euo pipefail
. "$(dirname "$0")/../lib.sh"
at_most 2 "$@"
[ $# -eq 2 ] || usage_error "needs the modules' folder and an output file"

here=$PWD/scripts/vm
cd "$OLDPWD"
modules=$1
output=$2
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT

# The order in which they load: each only needs those before it.
order=(virtio_ring virtio virtio_pci_legacy_dev virtio_pci_modern_dev virtio_pci
  netfs fscache 9pnet 9pnet_virtio 9p overlay hid uhid hid-generic)

mkdir -p "$root"/{bin,modules,proc,sys,dev,host,control,share,memory,root}
cp "$(command -v busybox)" "$root/bin/busybox"
cp "$here/guest-init" "$root/init"
chmod 755 "$root/init"
number=10
for name in "${order[@]}"; do
  file=$(find "$modules" -name "$name.ko" -print -quit)
  [ -n "$file" ] || die "no module $name under $modules"
  cp "$file" "$root/modules/$number-$name.ko"
  number=$((number + 1))
done
(cd "$root" && find . | cpio --quiet --create --format=newc --owner=0:0) >"$output"
