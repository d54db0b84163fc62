#!/usr/bin/env bash
# Cross-builds the Windows parts of Trelvin with mingw-w64 and runs their tests under Wine, from a bare Debian 12 on.
# What the tests need on this machine's side is taken from the build for Linux.
# Ends with the summary of the test run; the status is 0 when all went well.
#
#   scripts/windows.sh
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh
source scripts/wine.sh

installMissing "${kBuildPackages[@]}" "${kWindowsPackages[@]}"
buildPreset default windows_hosts
buildPreset windows
trap stopWine EXIT
prepareWine build-windows/wine
ctest --preset windows --no-tests=error
