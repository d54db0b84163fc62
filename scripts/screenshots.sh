#!/usr/bin/env bash
# Takes the pictures of the manual: builds the windows, drives them into their main states on the sample servers, as a
# person would, and saves what they look like to Documentation/pictures. Needs no screen.
#
#   scripts/screenshots.sh          the pictures of the manual
#   scripts/screenshots.sh --all    also in dark colours, at 150 and 200 % and on a large screen, to build/pictures
#   scripts/screenshots.sh --windows
#                                   instead of Trelvin.exe under Wine, at 96 and 144 dots per inch, to
#                                   build-windows/pictures
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh

case ${1:-} in
  '' | --all | --windows) ;;
  *)
    echo "usage: scripts/screenshots.sh [--all | --windows]" >&2
    exit 2
    ;;
esac

# $1: the folder; then settings of the environment.
take() {
  local pictures=$PWD/$1
  shift
  mkdir -p "$pictures"
  env QT_QPA_PLATFORM=offscreen "TRELVIN_PICTURES=$pictures" "$@" build/tests/take_pictures --gtest_brief=1
  echo "$pictures"
}

# Windows learns of its screen when it starts. $1: the dots per inch.
takeUnderWine() {
  local pictures=$PWD/build-windows/pictures/$1 odbc=$PWD/build-windows/odbc/program_win32
  mkdir -p "$pictures"
  env -u DISPLAY "${kWine[@]}" reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD /d "$1" /f \
    </dev/null >/dev/null 2>&1
  env TRELVIN_SCREEN=1600x1200 "TRELVIN_PICTURES=$pictures" "TRELVIN_DIRECTORY_HOST=$PWD/build/tests/directory_host" \
    "ODBCSYSINI=$odbc" "ODBCINI=$odbc/user.ini" \
    scripts/on_wine_desktop.sh build-windows/tests/take_win32_pictures.exe --gtest_brief=1
  echo "$pictures"
}

if [[ ${1:-} == --windows ]]; then
  source scripts/wine.sh
  installMissing "${kBuildPackages[@]}" "${kWindowsPackages[@]}" "${kPicturePackages[@]}"
  buildPreset default windows_hosts >/dev/null
  buildPreset windows take_win32_pictures >/dev/null
  trap stopWine EXIT
  prepareWine build-windows/wine-pictures
  takeUnderWine 96
  takeUnderWine 144
  exit
fi

installMissing "${kBuildPackages[@]}"
buildPreset default take_pictures databases >/dev/null
take Documentation/pictures
if [[ ${1:-} == --all ]]; then
  take build/pictures/dark TRELVIN_PICTURES_DARK=1
  take build/pictures/150 QT_SCALE_FACTOR=1.5
  take build/pictures/200 QT_SCALE_FACTOR=2
  take build/pictures/800x600 TRELVIN_PICTURES_SIZE=800x570
  take build/pictures/large TRELVIN_PICTURES_SIZE=1600x1000
fi
