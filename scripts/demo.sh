#!/usr/bin/env bash
# Shows Trelvin at work: builds it, runs a sample job unattended against a copy of the sample servers, and tells what
# came of it. The samples stay as they are; the copy, the log and all that the run tells are left in build/demo.
#
#   scripts/demo.sh [job]      job: a name in samples/jobs, web5-sites.job if none is given
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh

job=${1:-web5-sites.job}
if [[ $job != *.job || ! -f samples/jobs/$job ]]; then
  echo "There is no job samples/jobs/$job. These can be run:" >&2
  (cd samples/jobs && printf '  %s\n' *.job) >&2
  exit 2
fi

program=$PWD/build/Trelvin
scratch=$PWD/build/demo

heading() { printf '\n=== %s ===\n\n' "$1"; }

# Messages of the installation and the build are of interest only when they fail. $1: a name; then the command.
quietly() {
  local log=$scratch/$1.log
  shift
  if ! "$@" >"$log" 2>&1; then
    cat "$log" >&2
    return 1
  fi
}

# $1: a query. Prints its rows as a table.
ask() { sqlite3 -readonly -box "$database" "$1"; }

runJob() {
  (cd "$scratch" && TRELVIN_NETWORK=$scratch/servers "$program/trelvin" -RUNBACKUP -B "$job")
}

# An IIS without application pools makes the program note for every value that it has no pool's name; one line in
# the place of those hundreds says as much.
showLog() {
  local noise='has no property AppPoolID'
  tr -d '\r' <"$scratch/Trelvin.log" | grep -v "$noise" || true
  echo "(and $(grep -c "$noise" "$scratch/Trelvin.log" || true) lines that say that a node $noise)"
}

# What a long value of several lines looks like in one line of a table.
readonly kValue="substr(replace(coalesce(StringValue, ObjectValue, NumberValue,
  iif(BooleanValue, 'True', 'False')), char(13, 10), ' | '), 1, 60)"

showDatabase() {
  echo "The database: $database"
  heading "Table Sites"
  ask "SELECT * FROM Sites"
  heading "Table Data: how many rows each site has"
  ask "SELECT SiteName, count(*) AS Rows, count(DISTINCT Location) AS Nodes
       FROM Sites JOIN Data ON Data.SiteNumber = Sites.ID GROUP BY Sites.ID"
  heading "Table Data: the directories, with their new paths"
  ask "SELECT SiteNumber AS Site, Location, Class, StringValue AS Path, AppPath, AppInOutProc, AppPoolName
       FROM Data WHERE Name = 'Path' AND DataType = 8 ORDER BY ID"
  heading "Table Data: some of the properties"
  ask "SELECT SiteNumber AS Site, Location, Name, DataType AS Type, $kValue AS Value FROM Data
       WHERE Name IN ('ServerComment', 'ServerBindings', 'SecureBindings', 'AccessFlags', 'AccessScript',
                      'AppFriendlyName', 'AppPoolId', 'DefaultDoc', 'HttpCustomHeaders', 'ScriptMaps')
       ORDER BY ID LIMIT 60"
}

rm -rf "$scratch"
mkdir -p "$scratch"

heading "Building (messages in build/demo)"
quietly install installMissing "${kBuildPackages[@]}"
quietly build buildPreset default trelvin program_folder
echo "$program/trelvin"

heading "The job: samples/jobs/$job"
cp -r samples/servers "$scratch/servers"
cp "samples/jobs/$job" "$program/$job"
tr -d '\r' <"samples/jobs/$job"

heading "The run: trelvin -RUNBACKUP -B $job"
stamp=$scratch/before-the-run
touch "$stamp"
runJob

heading "The log: build/demo/Trelvin.log"
showLog

heading "What was stored"
database=$(find "$program/BackupJobs" -name '*.mdb' -newer "$stamp" -print -quit 2>/dev/null || true)
if [[ -z $database ]]; then
  echo "The run left no database in $program/BackupJobs." >&2
  exit 1
fi
showDatabase
