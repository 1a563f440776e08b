# shellcheck shell=bash disable=SC2154
# The stories of test-windows-packages.sh that go through the installer's pages with the keyboard, on a virtual screen.
# Sourced, not run.

screen=""

start_screen() {
  Xvfb -displayfd 3 -screen 0 1024x768x24 -noreset 3>"$work/display" >/dev/null 2>&1 &
  screen=$!
  eventually test -s "$work/display" || die "there is no virtual screen"
  DISPLAY=:$(cat "$work/display")
}

end_screen() {
  [ -z "$screen" ] || kill "$screen"
}

page_says() { # text
  wine build/windows/tests/system/window-texts.exe 2>/dev/null | tr -d '\r' | tee "$work/page" | grep -qF -- "$1"
}

# A key pressed before the page is there would go to the page before it.
answer() { # text of the page, keys...
  local text=$1
  shift
  check "a page says \"$text\"" eventually page_says "$text" || { cat "$work/page"; return 1; }
  xdotool key "$@"
}

# Starts a program with pages, whose process id is then in opened.
open_pages() {
  wine "$@" >/dev/null 2>&1 &
  opened=$!
}

has_exited_with() { # exit code
  eventually has_ended "$opened" && exits_with "$1" wait "$opened"
}

# What a program without administrator rights may change there, without Wine's own keys.
registry() { # file
  (cd "$work" && wine reg export 'HKCU\Software' registry.reg /y) >/dev/null
  iconv -f UTF-16 -t UTF-8 "$work/registry.reg" | tr -d '\r' | grep -vE '^$|.Software.Wine.' >"$1"
}

setup_page_runs() { grep -qsE 'Programs.VantrelBridge.vantrel[.]exe' /proc/[0-9]*/cmdline; }

changes_nothing_when_cancelled() {
  echo "== cancelled installations"
  registry "$work/registry-before"
  picture "$work/before"
  open_pages "$setup"
  answer "Close the simulator before you go on." Escape
  answer "Are you sure you want to quit" alt+y
  check "cancelling on the first page gives exit code 1" has_exited_with 1
  open_pages "$setup"
  answer "Close the simulator before you go on." Return
  answer "Space required: 5." Return
  answer "[x] &Start the bridge whenever the simulator starts" Escape
  answer "Are you sure you want to quit" alt+y
  check "cancelling before copying gives exit code 1" has_exited_with 1
  picture "$work/after"
  check "all files and both EXE.xml are as before" diff "$work/before" "$work/after"
  registry "$work/registry-after"
  check "and so is the registry" diff "$work/registry-before" "$work/registry-after"
}

installs_by_keyboard() {
  echo "== pages"
  open_pages "$setup"
  answer "Close the simulator before you go on." Return
  answer "Space required: 5." Return
  answer "[x] &Start the bridge whenever the simulator starts" Return
  answer "&Next >" Return # which is grey until all is installed
  answer "The simulator starts the bridge from now on." alt+o
  answer "&Open the setup page" Return
  check "the installer ends with exit code 0" has_exited_with 0
  check "and does not open the setup page" not setup_page_runs
  check_installed_files
  check_shortcuts
  check "both simulators start the bridge" each_exe_xml has_entry
}

keeps_all_when_not_uninstalled() {
  start_bridge
  open_pages "$installed/uninstall.exe"
  answer "The bridge will be removed from:" Return
  answer "is running. End it and go on?" Escape
  answer "Cancelled. Nothing was changed." Escape
  check "the bridge still runs" not has_ended "$bridge_pid"
  check "both simulators start it" each_exe_xml has_entry
  check_installed_files
}
