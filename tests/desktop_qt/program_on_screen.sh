#!/usr/bin/env bash
# The program itself on a screen, driven by keys: opens its windows and leaves in order. Runs on the X server that
# DISPLAY names.
#
#   program_on_screen.sh program-folder
set -euo pipefail

program=$1/trelvin
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cp -r "$1" "$scratch/program"
program=$scratch/program/trelvin
cd "$scratch"

# $1: the beginning of a title.
waitForWindow() {
  local i
  for ((i = 0; i < 200; ++i)); do
    ! xdotool search --onlyvisible --name "^$1" >/dev/null 2>&1 || return 0
    sleep 0.05
  done
  echo "No window $1 came up." >&2
  return 1
}

# Leaves the main window of a process by its menu and looks how that went. $1: the process.
leaveByMenu() {
  local status=0
  waitForWindow "Trelvin Utility"
  xdotool key alt+f
  sleep 0.5
  xdotool key x
  wait "$1" || status=$?
  if [[ $status -ne 0 ]] || ! tail -1 Trelvin.log | grep -q 'Closing complete'; then
    echo "The program ended with status $status; the log:" >&2
    cat Trelvin.log >&2
    return 1
  fi
}

echo "The welcome form leaves by Escape."
"$program" &
waitForWindow "Welcome to the Trelvin Utility"
xdotool key Escape
wait $!

echo "Continue opens the main window."
"$program" &
waitForWindow "Welcome to the Trelvin Utility"
xdotool key Return
leaveByMenu $!

echo "A command line opens it straight."
"$program" -D &
leaveByMenu $!
