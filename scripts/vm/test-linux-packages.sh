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

as_pilot() {
  (cd "$home" && setpriv --reuid=pilot --regid=pilot --init-groups \
    env -i HOME="$home" PATH=/usr/bin:/bin LANG=C.UTF-8 SYSTEMD_IGNORE_CHROOT=1 XDG_RUNTIME_DIR=/run/user/pilot "$@")
}

# udevd, the journal, and in place of a login the file in which logind says who is at the screen.
start_the_system() {
  useradd --create-home pilot
  [ -e /dev/fd ] || ln -s /proc/self/fd /dev/fd
  [ -s /etc/machine-id ] || systemd-machine-id-setup >/dev/null 2>&1
  mount -t cgroup2 cgroup2 /sys/fs/cgroup
  mkdir -p /run/udev /run/systemd/seats /run/systemd/system /run/systemd/journal
  printf 'ACTIVE=1\nACTIVE_UID=%s\n' "$(id -u pilot)" >/run/systemd/seats/seat0
  /lib/systemd/systemd-udevd --daemon --resolve-names=never
  /lib/systemd/systemd-journald >/tmp/journald 2>&1 &
  background+=($!)
  eventually test -S /run/systemd/journal/socket
}

# The user's own systemd, with a group of processes that it may divide.
log_in() {
  mkdir -p /run/user/pilot /sys/fs/cgroup/pilot
  chown -R pilot: /run/user/pilot /sys/fs/cgroup/pilot
  (echo "$BASHPID" >/sys/fs/cgroup/pilot/cgroup.procs && as_pilot SYSTEMD_LOG_TARGET=journal /lib/systemd/systemd --user) \
    >/tmp/login 2>&1 &
  background+=($!)
  eventually test -S /run/user/pilot/systemd/private
}

plug_in() { # vendor, product
  build/linux/tests/system/plug-in-board "$1" "$2" &
  background+=($!)
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
  first_board=$!
  check "without the rule the board is closed" not pilot_may_open "$(node_of 1234 abcd)"
  check "the older package is installed" run_dpkg -i "$older"
  check "the board that is plugged in is open to the user at the screen" eventually pilot_may_open "$(node_of 1234 abcd)"
  plug_in 5678 00ef
  check "another device isn't" not pilot_may_open "$(node_of 5678 00ef)"
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

service() { as_pilot systemctl --user "$@" vantrelbridge; }
service_has() { [ "$(service show --property "$1" --value)" = "$2" ]; }
times_started_again() { [ "$(service show --property NRestarts --value)" -ge "$1" ]; }
the_journal_has() { journalctl --no-pager USER_UNIT=vantrelbridge.service | grep "$1"; }

# Without --console the bridge leaves SIGTERM to the system, so the journal alone has a line about its end.
test_service() {
  echo "- service"
  log_in
  check "the unit is valid" as_pilot systemd-analyze --user verify /usr/lib/systemd/user/vantrelbridge.service
  check "the service starts" service enable --now
  check "it opens the board and says so in its log" eventually grep 'HID device connected' "$log"
  check "the journal says that it has started" eventually the_journal_has 'Started .*Bridge'
  check "the service stops" service stop
  check "it has not failed" service_has Result success
  check "the journal says that it has stopped" eventually the_journal_has 'Stopped .*Bridge'
}

test_restarts() {
  echo "- the service's restarts"
  local configuration=$home/.local/share/VantrelBridge/config.json other
  mv "$configuration" "$configuration.away"
  service start
  check "a bridge that can't start has failed" eventually service_has ActiveState failed
  check "it isn't started again" service_has NRestarts 0
  mv "$configuration.away" "$configuration"
  as_pilot VantrelBridgeHID </dev/null >/dev/null 2>&1 &
  other=$!
  eventually pidof VantrelBridgeHID
  service start
  # To ask systemd more often would keep a whole processor busy for half a minute.
  pause=3 check "it is started again for as long as another bridge runs" eventually times_started_again 6
  kill -TERM "$(pidof VantrelBridgeHID)"
  wait "$other"
  check "it runs when the other has ended" eventually service_has SubState running
  service disable --now
}

test_upgrade_and_purge() {
  echo "- upgrade and purge"
  sha256sum "$home"/.local/share/VantrelBridge/*.json >/tmp/configuration
  check "the package upgrades the older one" run_dpkg -i "$package"
  check "what the new package lacks is gone" not test -e /usr/share/VantrelBridge/dropped-later
  check "the board is still open to the user" pilot_may_open "$(node_of 1234 abcd)"
  check "the user's configuration is as it was" sha256sum --check --quiet /tmp/configuration
  check "the package is purged" run_dpkg --purge vantrelbridge
  kill "$first_board"
  eventually not has_node 1234 abcd
  plug_in 1234 abcd
  udevadm settle
  check "the board is closed when it is plugged in again" not pilot_may_open "$(node_of 1234 abcd)"
  installed_files >/tmp/after
  check "nothing is left" diff /tmp/before /tmp/after
  check "the user's configuration is as it was" sha256sum --check --quiet /tmp/configuration
}

# A program that asks for more than this system has, in place of a system that has less.
says_what_is_missing() { # program, what is changed in it, what the system says about it
  local answer
  cp "$1" /tmp/program
  sed "$2" /tmp/program >"$1"
  answer=$(as_pilot "$folder/vantrel" --version 2>&1) && return 1
  cp /tmp/program "$1"
  echo "$answer"
  grep 'glibc 2.36 or newer and zlib is needed' <<<"$answer" && grep "$3" <<<"$answer"
}

# The lines of README.txt that set the service up, from the first to the last of them.
set_up_service() {
  # shellcheck disable=SC2016 # The inner shell is the one to expand it.
  as_pilot bash -ec 'cd "$1"; eval "$(sed -n "/^  mkdir/,/restart/p" README.txt)"' bash "$folder"
}
runs_from_folder() { [ "$(readlink "/proc/$(pidof VantrelBridgeHID)/exe")" = "$folder/usr/bin/VantrelBridgeHID" ]; }

test_archive() {
  echo "- archive"
  local folder program
  folder="$home/my programs/$(basename "$archive" .tar.gz)"
  program=$folder/usr/bin/vantrel
  as_pilot mkdir "$home/my programs"
  as_pilot tar -C "$home/my programs" -xf "$archive"
  check "its vantrel runs" as_pilot "$folder/vantrel" --version
  check "its bridge runs" as_pilot "$folder/VantrelBridgeHID" --list-exe-xml
  check "the service is set up as README.txt says" set_up_service
  check "it runs the archive's bridge" eventually runs_from_folder
  service stop
  check "it says that the C library is too old" \
    says_what_is_missing "$program" 's/GLIBC_2\.36/GLIBC_9.36/' "version .GLIBC_9.36' not found"
  check "it says that zlib is missing" says_what_is_missing "$program" 's/libz\.so\.1/libq.so.1/' 'libq.so.1 => not found'
  check "it says that this isn't its C library" \
    says_what_is_missing "$program" 's/ld-linux-x86-64/ld-linux-q86-64/' 'vantrel: not found'
}

background=()
start_the_system
test_installation
test_use
test_service
test_restarts
test_upgrade_and_purge
test_archive
kill "${background[@]}" 2>/dev/null
report_checks
