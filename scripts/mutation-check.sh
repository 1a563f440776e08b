#!/usr/bin/env bash
# Puts small faults into the sources, one at a time, and reports which of them the unit tests don't find.
#   mutation-check.sh                330 faults, spread over the folders of src/ by their lines
#   mutation-check.sh --list         print the faults that would be tried
#   mutation-check.sh --folder NAME  only faults in src/NAME; may be repeated
#   mutation-check.sh --count N      another number of faults over all folders; the parts are rounded up
#   mutation-check.sh --all          every fault that the rules find
#   mutation-check.sh --seed N       another choice of faults; the same seed makes the same choice (default 1)
#   mutation-check.sh --only ID      only this fault; may be repeated
#   mutation-check.sh --again FILE   the faults of an earlier result (--json) that the sources still have
#   mutation-check.sh --json FILE    also write the result to FILE, after each fault
#   mutation-check.sh --jobs N       compile N sources at a time (default: one for each core)
#
# Each fault is one change in one place, in a copy of the tree in build/mutation; your files stay untouched. The copy
# includes what isn't committed. Only the changed folder's library and test program are built, and the program runs up
# to its first failing test. That test then runs again alone: a fault counts as caught if it fails twice. A run that
# hangs for 60 seconds, or for 20 times as long as without a fault if that is longer, counts as caught too. A fault that
# doesn't compile isn't counted; the next one takes its place. Warnings are off. wire-tests test src/simconnect.
#
# The rules, each with the same weight, and no line twice in one run:
#   compare     < and <=, > and >=, == and != become each other
#   connective  && and || become each other
#   arithmetic  + and -, * and /, | and &, << and >> become each other, except on lines with a string
#   negate      the condition of an if or while becomes its opposite
#   not         a ! is dropped
#   constant    a number becomes one more; true and false become each other
#   jump        a break, continue or bare return is dropped
#   drop        a statement that is only a call or an assignment is dropped
#   swap        two such statements in a row, at least one a call, change places
# Comments, preprocessor lines and the text of strings and characters stay as they are. Left out: the folders named
# windows, which don't run natively, and main.cpp, which no unit test links.
#
# An ID is rule:file:mark. The mark is made from the rule and the text of the line (and of the line before a jump), not
# from where it is. So the same seed chooses the same faults after code moved, and --only and --again find a fault that
# moved to another file.
#
# Stopped early, it prints what it has found so far and exits with 1; survivors alone leave the exit code 0.
#
# Not part of test.sh or CI: a run takes about an hour. Run it before and after test code is cut, and compare the faults
# caught in each folder. Not every survivor is a gap: some changed programs behave the same.
set -euo pipefail
. "$(dirname "$0")/lib.sh"
case " $* " in
  *" -h "* | *" --help "*) show_help; exit 0 ;;
esac
main=$PWD/scripts/mutation/main.py
cd "$OLDPWD"
exec nice python3 -B "$main" "$@"
