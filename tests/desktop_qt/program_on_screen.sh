#!/usr/bin/env bash
# The program itself on a screen, driven by keys: opens its windows and leaves in order. Runs on the X server that
# DISPLAY names.
#
#   program_on_screen.sh program-folder
set -euo pipefail

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cp -r "$1" "$scratch/program"
program=$scratch/program/trelvin
cd "$scratch"

readonly kWelcome="Welcome to the Trelvin Utility"
readonly kMain="Trelvin Utility"

# $1: the title. Prints the window's number when it is up.
windowOf() { xdotool search --onlyvisible --name "^$1\$" 2>/dev/null | head -1; }
isUp() { [[ -n $(windowOf "$1") ]]; }
hasEnded() { ! kill -0 "$1" 2>/dev/null; }

# Sends keys to a window until something holds: there is no window manager here to say when a window listens.
# $1: the title; $2: the keys, with blanks between; then the command that says whether it holds.
pressUntil() {
  local title=$1 keys=$2 window i key
  shift 2
  for ((i = 0; i < 60; ++i)); do
    ! "$@" || return 0
    window=$(windowOf "$title" || true)
    if [[ -n $window ]]; then
      xdotool windowfocus "$window" 2>/dev/null || true
      for key in $keys; do
        xdotool key "$key"
        sleep 0.3
      done
    fi
    sleep 0.2
  done
  echo "The keys $keys had no effect on the window $title." >&2
  return 1
}

# $1: the process, which has been asked to leave its main window.
expectOrder() {
  local status=0
  wait "$1" || status=$?
  if [[ $status -ne 0 ]] || ! tail -1 Trelvin.log | grep -q 'Closing complete'; then
    echo "The program ended with status $status; the log:" >&2
    cat Trelvin.log >&2
    return 1
  fi
}

echo "The welcome form leaves by Escape."
"$program" &
process=$!
pressUntil "$kWelcome" Escape hasEnded "$process"
wait "$process"

echo "Continue opens the main window, whose menu leaves."
"$program" &
process=$!
pressUntil "$kWelcome" Return isUp "$kMain"
pressUntil "$kMain" "alt+f x" hasEnded "$process"
expectOrder "$process"

echo "A command line opens it straight."
"$program" -D &
process=$!
pressUntil "$kMain" "alt+f x" hasEnded "$process"
expectOrder "$process"
