#!/usr/bin/env bash
# Cross-builds Trelvin for Windows with mingw-w64 and runs its tests under Wine, from a bare Debian 12 on. What the tests
# need on this machine's side is taken from the build for Linux. Ends with the summary of the test run; the status is 0
# when all went well.
#
# With --release it builds the program as it is released instead, a 32-bit one, since the Access driver that every Windows
# brings is one: build-windows-release/Trelvin-4.1.zip, or what the version is.
#
#   scripts/windows.sh [--release]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh
source scripts/wine.sh

release() {
  installMissing "${kBuildPackages[@]}" "${kReleasePackages[@]}"
  buildPreset windows-release
  cpack --config build-windows-release/CPackConfig.cmake -B build-windows-release
}

case ${1:-} in
  '') ;;
  --release)
    release
    exit
    ;;
  *)
    echo "usage: scripts/windows.sh [--release]" >&2
    exit 2
    ;;
esac

installMissing "${kBuildPackages[@]}" "${kWindowsPackages[@]}"
buildPreset default windows_hosts
buildPreset windows
trap stopWine EXIT
prepareWine build-windows/wine-transfer
prepareWine build-windows/wine
ctest --preset windows --parallel "$(nproc)" --no-tests=error
