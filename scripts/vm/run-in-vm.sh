#!/usr/bin/env bash
# Runs a command on this machine's own files, but under a kernel that has /dev/uhid: boots a small virtual machine whose
# root is the host's, read-only below an overlay in memory, runs the command there in the current folder, prints its
# output and exits with its exit code. What the command writes is gone afterwards, except in the folder $VM_SHARE,
# which it finds at the same path.
#   run-in-vm.sh [--time SECONDS] [--memory MIB] [--cpus N] [--share FOLDER] COMMAND [ARGUMENT...]
# Without --share a fresh folder is made and removed again. Exit code 124: the time ran out; 125: the machine failed.
# Any number of machines may run side by side, each with a share of its own.
set -euo pipefail
. "$(dirname "$0")/../lib.sh"

repo=$PWD
here=$repo/scripts/vm
cd "$OLDPWD"
kernel=$repo/build/vm/kernel
time_limit=300
memory=1024
cpus=2
share=""

while [ $# -gt 0 ]; do
  case "$1" in
    --time | --memory | --cpus | --share) [ $# -ge 2 ] || usage_error "$1 needs a value" ;;&
    --time) time_limit=$2 ;;
    --memory) memory=$2 ;;
    --cpus) cpus=$2 ;;
    --share) share=$2 ;;
    *) no_other_options "$@"; break ;;
  esac
  shift 2
done
[ $# -gt 0 ] || usage_error "no command"
[ -e "$kernel/ready" ] || "$repo/scripts/fetch-vm-kernel.sh"

mkdir -p "$repo/build/vm"
work=$(mktemp -d "$repo/build/vm/run.XXXXXX")
machine=""
printer=""
clean_up() {
  # `timeout` hands the signal on to the machine that it watches.
  [ -z "$machine" ] || kill "$machine" 2>/dev/null || true
  [ -z "$printer" ] || kill "$printer" 2>/dev/null || true
  rm -rf "$work"
}
trap clean_up EXIT
trap 'exit 130' INT TERM HUP

if [ -z "$share" ]; then
  share=$work/share
fi
mkdir -p "$share"
share=$(cd "$share" && pwd)
control=$work/control
mkdir "$control"
: >"$control/output"

"$here/make-initramfs.sh" "$kernel/modules" "$work/initramfs"
{
  printf 'export HOME=%q PATH=%q VM_SHARE=%q LANG=C.UTF-8 TERM=dumb\n' "${HOME:-/root}" "$PATH" "$share"
  printf 'cd %q\n' "$PWD"
  printf 'exec'
  printf ' %q' "$@"
  printf '\n'
} >"$control/command"
printf '%s\n' "$control" >"$control/control-path"
printf '%s\n' "$share" >"$control/share-path"

# Software emulation always: the KVM device of nested machines is often there without working.
timeout --kill-after=5 "$time_limit" qemu-system-x86_64 \
  -accel tcg,thread=multi -smp "$cpus" -m "$memory" -nodefaults -display none -no-reboot \
  -kernel "$kernel/vmlinuz" -initrd "$work/initramfs" -append 'console=ttyS0 quiet panic=-1' \
  -serial "file:$work/serial" \
  -virtfs local,path=/,mount_tag=hostroot,security_model=none,readonly=on,multidevs=remap \
  -virtfs "local,path=$control,mount_tag=control,security_model=none" \
  -virtfs "local,path=$share,mount_tag=share,security_model=none" \
  </dev/null >"$work/qemu" 2>&1 &
machine=$!

# In the background, so that a signal to this script is heeded at once.
tail -n +1 -f -s 0.2 --pid="$machine" "$control/output" 2>/dev/null &
printer=$!
wait "$printer" || true
printer=""
machine_code=0
wait "$machine" || machine_code=$?
machine=""

if [ -s "$control/exit-code" ]; then
  exit "$(cat "$control/exit-code")"
fi
if [ "$machine_code" -eq 124 ] || [ "$machine_code" -eq 137 ]; then
  say "ended after $time_limit seconds" >&2
  exit 124
fi
say "the machine ended without a result (code $machine_code)" >&2
tail -n 30 "$work/qemu" "$work/serial" >&2 || true
exit 125
