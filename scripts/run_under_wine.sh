#!/usr/bin/env bash
# Runs a Windows program under Wine and passes its status on. Its output goes through a file, since Wine's services
# would keep a pipe open.
#
#   scripts/run_under_wine.sh program.exe [argument ...]
set -euo pipefail
output=$(mktemp)
trap 'rm -f "$output"' EXIT
status=0
env -u DISPLAY WINEDEBUG=-all /usr/lib/wine/wine64 "$@" </dev/null >"$output" 2>&1 || status=$?
cat "$output"
exit "$status"
