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

# What a user gets has to bring all that it reads, and to run where there is nothing but Windows. $1: the zip.
checkRelease() (
  unpacked=$(mktemp -d)
  trap 'rm -r "$unpacked"' EXIT
  cmake -E chdir "$unpacked" cmake -E tar xf "$1"
  cd "$unpacked"/*
  status=0
  for file in Trelvin.exe TrelvinSetup.exe License.txt Documentation/Index.htm Documentation/Windows.htm \
    Documentation/pictures/main.png Schemas/sites-mariadb.sql Schemas/sites-postgresql.sql; do
    [[ -s $file ]] || { echo "The zip lacks $file." >&2 && status=1; }
  done
  for file in *.exe; do
    # The libraries that mingw brings begin so; none of Windows' does.
    if i686-w64-mingw32-objdump -p "$file" | grep -i 'DLL Name: lib' >&2; then status=1; fi
  done
  exit $status
)

release() {
  installMissing "${kBuildPackages[@]}" "${kReleasePackages[@]}"
  buildPreset windows-release
  rm -f build-windows-release/Trelvin-*.zip
  cpack --config build-windows-release/CPackConfig.cmake -B build-windows-release
  checkRelease "$(realpath build-windows-release/Trelvin-*.zip)"
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
