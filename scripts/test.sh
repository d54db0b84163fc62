#!/usr/bin/env bash
# Builds Trelvin and runs all its tests, from a bare Debian 12 on: installs what is missing, checks the layout of the
# sources, then builds and tests the optimised program and, unless --quick is given, the one with the address and
# undefined-behaviour sanitizers and the one for Windows. Ends with the summary of each test run; the status is 0 when all
# went well.
#
#   scripts/test.sh [--quick]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh

presets=(default sanitize)
packages=("${kBuildPackages[@]}" "${kServerPackages[@]}" "${kCheckPackages[@]}")
case ${1:-} in
  '')
    windows=yes
    packages+=("${kWindowsPackages[@]}")
    ;;
  --quick)
    windows=no
    presets=(default)
    ;;
  *)
    echo "usage: scripts/test.sh [--quick]" >&2
    exit 2
    ;;
esac

failed=()
summary=$(mktemp)
trap 'rm -f "$summary"' EXIT

heading() { printf '\n=== %s ===\n' "$1"; }

checkLayout() {
  heading "Layout of the sources"
  find src tests bench \( -name '*.cpp' -o -name '*.h' \) -print0 | xargs -0 clang-format --dry-run -Werror &&
    echo "As clang-format would have it."
}

# Runs the tests of a preset. What the run tells goes to the screen and, its end, to the summary. $1: the preset; then
# the command that runs them.
runTests() {
  local preset=$1 log status=0
  shift
  log=$(mktemp)
  "$@" | tee "$log" || status=$?
  {
    echo "Preset $preset:"
    sed -n '/tests passed/,$p' "$log"
  } >>"$summary"
  rm -f "$log"
  return "$status"
}

heading "Packages"
installMissing "${packages[@]}"
echo "Complete."
# Without the servers their tests would be skipped; where they could be installed they are not to be.
if command -v apt-get >/dev/null; then
  export TRELVIN_REQUIRE_SERVERS=1
fi

checkLayout || failed+=("layout of the sources")
for preset in "${presets[@]}"; do
  heading "Build, preset $preset"
  if ! buildPreset "$preset"; then
    failed+=("build of preset $preset")
    continue
  fi
  heading "Tests, preset $preset"
  runTests "$preset" ctest --preset "$preset" --parallel "$(nproc)" --no-tests=error ||
    failed+=("tests of preset $preset")
done
if [[ $windows == yes ]]; then
  heading "Build and tests for Windows"
  runTests windows scripts/windows.sh || failed+=("build or tests for Windows")
fi

heading "Summary"
cat "$summary"
if [[ ${#failed[@]} -gt 0 ]]; then
  printf 'FAILED: %s\n' "${failed[@]}"
  exit 1
fi
