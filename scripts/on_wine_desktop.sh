#!/usr/bin/env bash
# Runs a Windows program that opens windows under Wine, on a screen that nobody sees, with a desktop of its own: windows
# get the focus there as under Windows.
#
#   scripts/on_wine_desktop.sh program.exe [argument ...]
set -euo pipefail
folder=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=scripts/wine.sh
source "$folder/wine.sh"

# $1: key below Wine's own, $2: name of the value, $3: the value.
setWine() {
  env -u DISPLAY "${kWine[@]}" reg add "HKCU\\Software\\Wine\\$1" /v "$2" /d "$3" /f </dev/null >/dev/null 2>&1
}

setWine "AppDefaults\\$(basename "$1")\\Explorer" Desktop Trelvin
setWine 'Explorer\Desktops' Trelvin "${TRELVIN_SCREEN:-1280x1024}"
TRELVIN_WINE_SCREEN=1 exec "$folder/on_x_server.sh" "$folder/run_under_wine.sh" "$@"
