#!/usr/bin/env bash
# The part of scripts/test-linux-packages.sh that runs in the test machine.
#   test-linux-packages.sh OLDER-DEB DEB ARCHIVE
set -uo pipefail
. "$(dirname "$0")/../lib.sh"
at_most 3 "$@"
[ $# -eq 3 ] || usage_error "needs two packages and an archive"
older=$1
package=$2
archive=$3
home=/home/pilot
log=$home/.local/share/VantrelBridge/logs/VantrelBridgeHID.log
# The machine's root is a chroot, in which systemd's tools would do nothing.
export SYSTEMD_IGNORE_CHROOT=1
export DEBIAN_FRONTEND=noninteractive PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin

check() { # what is true, then the command that says so
  local what=$1
  shift
  if count "$@" >/tmp/output 2>&1; then
    echo "ok: $what"
  else
    echo "FAILED: $what"
    tail -n 30 /tmp/output
  fi
}

fails() { ! "$@"; }

# Until the command succeeds. The machine is emulated, so everything takes long.
eventually() {
  local end=$((SECONDS + 90))
  until "$@" >/dev/null 2>&1; do
    [ "$SECONDS" -lt "$end" ] || { "$@"; return; }
    sleep 0.3
  done
}

as_pilot() {
  (cd "$home" && setpriv --reuid=pilot --regid=pilot --init-groups \
    env -i HOME="$home" PATH=/usr/bin:/bin LANG=C.UTF-8 SYSTEMD_IGNORE_CHROOT=1 XDG_RUNTIME_DIR=/run/user/pilot "$@")
}

# udevd, and in place of a login the file in which logind says who is at the screen.
start_the_system() {
  useradd --create-home pilot
  [ -e /dev/fd ] || ln -s /proc/self/fd /dev/fd
  mkdir -p /run/udev /run/systemd/seats
  printf 'ACTIVE=1\nACTIVE_UID=%s\n' "$(id -u pilot)" >/run/systemd/seats/seat0
  /lib/systemd/systemd-udevd --daemon --resolve-names=never
}

plug_in() { # vendor, product
  build/linux/tests/system/plug-in-board "$1" "$2" &
  boards+=($!)
  eventually has_node "$1" "$2"
}
has_node() { [ -n "$(node_of "$1" "$2")" ]; }
node_of() { # vendor, product
  local folder
  for folder in /sys/class/hidraw/*; do
    ! grep -qi "HID_ID=0003:0000$1:0000$2" "$folder/device/uevent" || echo "/dev/${folder##*/}"
  done
}
pilot_may_open() { as_pilot test -r "$1" -a -w "$1"; }

# What the packages could leave behind: their own files and folders, and anything in /etc.
installed_files() {
  local path
  find /etc | sort
  for path in $(packed_paths); do
    [ ! -e "$path" ] || echo "$path"
  done
}
packed_paths() {
  for deb in "$older" "$package"; do dpkg-deb --fsys-tarfile "$deb" | tar -t; done | sed 's#^\.##' | sort -u
}

# Without other packages' triggers: to index all manual pages takes this machine many minutes.
run_dpkg() { dpkg --no-triggers --force-unsafe-io "$@"; }

test_installation() {
  echo "- installation"
  installed_files >/tmp/before
  plug_in 1234 abcd
  check "without the rule the board is closed" fails pilot_may_open "$(node_of 1234 abcd)"
  check "the older package is installed" run_dpkg -i "$older"
  check "the board that is plugged in is open to the user at the screen" eventually pilot_may_open "$(node_of 1234 abcd)"
  plug_in 5678 00ef
  check "another device isn't" fails pilot_may_open "$(node_of 5678 00ef)"
  sed 's/1234/5678/; s/ABCD/00EF/' /usr/lib/udev/rules.d/70-vantrelbridge.rules >/etc/udev/rules.d/70-vantrelbridge-boards.rules
  udevadm control --reload
  udevadm trigger --subsystem-match=hidraw --action=add
  check "unless the rule for its ids is added as the rule's file says" eventually pilot_may_open "$(node_of 5678 00ef)"
  rm /etc/udev/rules.d/70-vantrelbridge-boards.rules
}

test_use() {
  echo "- use"
  check "vantrel runs" as_pilot vantrel --version
  as_pilot mkdir -p "$home/.local/share/VantrelBridge"
  as_pilot sh -c "cp /usr/share/VantrelBridge/config/*.json $home/.local/share/VantrelBridge/"
  check "vantrel check accepts the sample set" as_pilot vantrel check
  check "vantrel boards lists the board" as_pilot vantrel boards
  check "bash reads the completions" bash -n /usr/share/bash-completion/completions/vantrel
  check "zsh reads the completions" zsh -n /usr/share/zsh/vendor-completions/_vantrel
  check "fish reads the completions" fish --no-execute /usr/share/fish/vendor_completions.d/vantrel.fish
  check "bash completes a command" completes_command
  check "bash completes an option" completes_option
}

completions() { # the words of a command line
  bash -c '. /usr/share/bash-completion/completions/vantrel
    COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)); _vantrel; printf "%s\n" "${COMPREPLY[@]}"' bash "$@"
}
completes_command() { [ "$(completions vantrel doc)" = doctor ]; }
completes_option() { [ "$(completions vantrel demo --real-s)" = --real-simulator ]; }

# To systemd, an exit without an error and an end by SIGTERM are both clean. Without --console the bridge leaves that
# signal to the system.
ended_by_request() { # process
  local code=0
  wait "$1" || code=$?
  [ "$code" -eq 0 ] || [ "$code" -eq 143 ]
}

# No systemd runs in this machine, so the unit is checked by systemd's own tool, and its command is run as it says.
test_service() {
  echo "- service"
  local unit=/usr/lib/systemd/user/vantrelbridge.service command service
  mkdir -p /run/user/pilot
  chown pilot: /run/user/pilot
  check "the unit is valid" as_pilot systemd-analyze --user verify "$unit"
  command=$(sed -n 's/^ExecStart=//p' "$unit")
  as_pilot "$command" </dev/null >/tmp/service 2>&1 &
  service=$!
  check "the unit's command opens the board and says so in its log" eventually grep 'HID device connected' "$log"
  kill -TERM "$(pidof VantrelBridgeHID)"
  check "it ends as systemd expects when it is asked to" ended_by_request "$service"
  tail -n 3 "$log"
}

test_upgrade_and_purge() {
  echo "- upgrade and purge"
  sha256sum "$home"/.local/share/VantrelBridge/*.json >/tmp/configuration
  check "the package upgrades the older one" run_dpkg -i "$package"
  check "what the new package lacks is gone" fails test -e /usr/share/VantrelBridge/dropped-later
  check "the board is still open to the user" pilot_may_open "$(node_of 1234 abcd)"
  check "the user's configuration is as it was" sha256sum --check --quiet /tmp/configuration
  check "the package is purged" run_dpkg --purge vantrelbridge
  installed_files >/tmp/after
  check "nothing is left" diff /tmp/before /tmp/after
  check "the user's configuration is as it was" sha256sum --check --quiet /tmp/configuration
}

says_what_is_too_old() {
  local answer
  answer=$(as_pilot env PATH=/tmp/old:/usr/bin:/bin "$1" --version 2>&1) && return 1
  grep 'glibc 2.31) is too old' <<<"$answer"
}

test_archive() {
  echo "- archive"
  local folder
  folder=$home/$(basename "$archive" .tar.gz)
  as_pilot tar -xf "$archive"
  check "its vantrel runs" as_pilot "$folder/vantrel" --version
  check "its bridge runs" as_pilot "$folder/VantrelBridgeHID" --list-exe-xml
  mkdir /tmp/old
  printf '#!/bin/sh\necho glibc 2.31\n' >/tmp/old/getconf
  chmod -R 755 /tmp/old
  check "on an old system it says what it needs" says_what_is_too_old "$folder/vantrel"
}

boards=()
start_the_system
test_installation
test_use
test_service
test_upgrade_and_purge
test_archive
kill "${boards[@]}"
report_checks
