#!/usr/bin/env bash
# Takes the pictures of the manual: builds the windows, drives them into their main states on the sample servers, as a
# person would, and saves what they look like to Documentation/pictures. Needs no screen.
#
#   scripts/screenshots.sh          the pictures of the manual
#   scripts/screenshots.sh --all    also in dark colours, at 150 and 200 % and on a large screen, to build/pictures
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh

case ${1:-} in
  '' | --all) ;;
  *)
    echo "usage: scripts/screenshots.sh [--all]" >&2
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
