#!/usr/bin/env bash
# Runs a Windows program under Wine and passes its status on. Its output goes through a file, since Wine's services
# would keep a pipe open. With TRELVIN_DIRECTORY_HOST in the environment that program is the host of the tests'
# directory provider: it runs beside the Windows program, which finds its port in TRELVIN_DIRECTORY_PORT, and makes the
# shares of its servers known to Wine. Only a program that is meant to gets the screen (scripts/on_wine_desktop.sh).
#
#   scripts/run_under_wine.sh program.exe [argument ...]
set -euo pipefail
# shellcheck source=scripts/wine.sh
source "$(dirname "${BASH_SOURCE[0]}")/wine.sh"
[[ -n ${TRELVIN_WINE_SCREEN:-} ]] || unset DISPLAY
output=$(mktemp)
trap 'rm -f "$output"' EXIT
if [[ -n ${TRELVIN_DIRECTORY_HOST:-} ]]; then
  # Wine looks for \\server\share below this link.
  export TRELVIN_SHARES_LINK=${WINEPREFIX:-$HOME/.wine}/dosdevices/unc
  # It ends with its standard input, that is with this script.
  coproc host { exec "$TRELVIN_DIRECTORY_HOST"; }
  read -r TRELVIN_DIRECTORY_PORT <&"${host[0]}"
  export TRELVIN_DIRECTORY_PORT
fi
status=0
"${kWine[@]}" "$@" </dev/null >"$output" 2>&1 || status=$?
cat "$output"
exit "$status"
