# Read by the other scripts (source scripts/packages.sh): what the project needs of Debian 12, in one place.
# shellcheck shell=bash

# To configure, build and test.
# shellcheck disable=SC2034  # used by the scripts that read this one
readonly kBuildPackages=(
  g++ cmake ninja-build
  libpugixml-dev                                      # the metabase file
  unixodbc-dev unixodbc odbcinst libsqliteodbc sqlite3  # the databases
  qt6-base-dev                                        # the window
  xvfb xauth xdotool fonts-dejavu-core                # a screen for the window's tests
  libgtest-dev libgmock-dev                           # the tests
)
# To try the program on the database servers that it can store into. The tests run private ones of their own; Debian
# starts one of PostgreSQL for the system when it installs it, which nothing here uses.
# shellcheck disable=SC2034
readonly kServerPackages=(
  mariadb-server-core mariadb-client-core odbc-mariadb
  postgresql odbc-postgresql
)
# To build for Windows and run it here.
# shellcheck disable=SC2034
readonly kWindowsPackages=(
  g++-mingw-w64-x86-64-posix  # the tests are 64-bit: Wine brings no 32-bit part here
  googletest                  # its sources, to be built for Windows
  wine wine64
  fonts-wine                  # the signs of the buttons in a caption
)
# To take pictures of the windows there.
# shellcheck disable=SC2034
readonly kPicturePackages=(imagemagick)
# To build the program for Windows as it is released.
# shellcheck disable=SC2034
readonly kReleasePackages=(
  g++-mingw-w64-i686-posix
)
# To check the layout of the sources as well.
# shellcheck disable=SC2034
readonly kCheckPackages=(clang-format)

# Runs a command as root; says what to do where that is impossible. $1 and on: the command.
asRoot() {
  if [[ $(id -u) -eq 0 ]]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    echo "This needs root, and there is no sudo here. As root, run: $*" >&2
    return 1
  fi
}

isInstalled() {
  [[ $(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null) == installed ]]
}

# Installs those of the named packages that are missing; touches nothing when none is.
installMissing() {
  if ! command -v apt-get >/dev/null; then
    echo "No apt-get here: install what stands for these packages of Debian 12, if need be: $*" >&2
    return 0
  fi
  local missing=() package
  for package in "$@"; do
    isInstalled "$package" || missing+=("$package")
  done
  if [[ ${#missing[@]} -eq 0 ]]; then
    return 0
  fi
  echo "Installing ${missing[*]}"
  asRoot apt-get update -q
  asRoot env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends "${missing[@]}"
}

# Configures and builds a preset, with ccache where there is one. $1: the preset; then targets, none for all.
buildPreset() {
  local preset=$1
  shift
  if [[ -z ${CMAKE_CXX_COMPILER_LAUNCHER:-} ]] && command -v ccache >/dev/null; then
    export CMAKE_CXX_COMPILER_LAUNCHER=ccache
  fi
  cmake --preset "$preset" && cmake --build --preset "$preset" ${1:+--target "$@"}
}
