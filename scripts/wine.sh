# Read by the other scripts (source scripts/wine.sh): a Windows of its own for the tests, below a build folder.
# shellcheck shell=bash

# A suite may bring libraries of its own along.
export WINEDEBUG=-all WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-mscoree,mshtml=}
# Else Wine finds no file whose name has a letter beyond ASCII.
export LC_ALL=C.UTF-8
# Debian's wine64 package doesn't put the loader on the path. The loader lies at a fixed address, and the kernel puts its
# heap somewhere in the gigabyte behind it. Once in several thousand processes it covers 0x7ffe0000, where Windows has a
# page of its own, and CreateProcess fails with 1359. Without randomisation, which a process hands on, it never does.
if setarch --addr-no-randomize true 2>/dev/null; then
  readonly kWine=(setarch --addr-no-randomize /usr/lib/wine/wine64)
else
  echo "Addresses have to stay random here: now and then Wine won't start a process." >&2
  readonly kWine=(/usr/lib/wine/wine64)
fi
preparedPrefixes=()

# Makes the prefix unless it is there, and starts its services. They must not be started by the first test: they would
# keep its output open, and the test's caller would wait for them. The last one that was prepared is the one in use. $1:
# the folder of the prefix.
prepareWine() {
  mkdir -p "$(dirname "$1")"
  WINEPREFIX=$(realpath -m "$1")
  export WINEPREFIX
  preparedPrefixes+=("$WINEPREFIX")
  if [[ ! -f $WINEPREFIX/system.reg ]]; then
    env -u DISPLAY "${kWine[@]}" wineboot -i </dev/null >/dev/null 2>&1
    wineserver -w
    # Else the buttons of a window's caption show letters.
    cp /usr/share/wine/fonts/*.ttf "$WINEPREFIX/drive_c/windows/Fonts/"
  fi
  # It says no when it runs already, as after an earlier run.
  wineserver -p </dev/null >/dev/null 2>&1 || true
  env -u DISPLAY "${kWine[@]}" wineboot </dev/null >/dev/null 2>&1
  [[ -d $WINEPREFIX/drive_c/t ]] || useShortTemporaryFolder
}

# The program tells a missing key of a job from one that is there only while the job's path is short.
useShortTemporaryFolder() {
  local variable
  for variable in TEMP TMP; do
    env -u DISPLAY "${kWine[@]}" reg add 'HKCU\Environment' /v "$variable" /d 'C:\t' /f </dev/null >/dev/null 2>&1
  done
  mkdir "$WINEPREFIX/drive_c/t"
}

# Ends everything that runs in the prefixes.
stopWine() {
  local prefix
  for prefix in "${preparedPrefixes[@]}"; do
    WINEPREFIX=$prefix wineserver -k </dev/null >/dev/null 2>&1 || true
  done
}
