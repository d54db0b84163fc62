#!/usr/bin/env bash
# Shows Trelvin at work on a copy of the sample servers: builds it, stores sites of an IIS 5 in a database, rebuilds
# them from there on a new IIS 6 and compares; then moves two web sites and an FTP site straight from server to server,
# and compares. The samples stay as they are; the copy, the logs and all that the runs tell are left in build/demo.
#
#   scripts/demo.sh [job]      runs just that job; a name in samples/jobs that stores sites
#   scripts/demo.sh --window   opens the window on the copy of the sample servers, for you to try: List Sites with the
#                              server WEB5 (IIS5) or WEB6 (IIS6), and export to NEW6 (IIS6)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh

inWindow=false
if [[ ${1:-} == --window ]]; then
  inWindow=true
  shift
fi
job=${1:-web5-sites.job}
# Each moves one site to NEW6.
readonly kRebuild=rebuild-stored-sites.job
readonly kMoves=(move-web5-site.job move-web6-site.job move-web5-ftp.job)
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

# $1: a job in the program folder; then further words of the command line.
runJob() {
  local name=$1
  shift
  (cd "$scratch" && TRELVIN_NETWORK=$scratch/servers "$program/trelvin" -RUNBACKUP -B "$name" "$@")
}

# An IIS without application pools makes the program note for every value that it has no pool's name; one line in
# the place of those hundreds says as much.
showLog() {
  local noise='has no property AppPoolID'
  tr -d '\r' <"$scratch/Trelvin.log" | grep -v "$noise" || true
  echo "(and $(grep -c "$noise" "$scratch/Trelvin.log" || true) lines that say that a node $noise)"
}

# What a long value of several lines looks like in one line of a table. $1: the table.
valueOf() {
  printf '%s' "substr(replace(coalesce($1.StringValue, $1.ObjectValue, $1.NumberValue,
    CASE WHEN $1.BooleanValue THEN 'True' ELSE 'False' END), char(13, 10), ' | '), 1, 60)"
}

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
  ask "SELECT SiteNumber AS Site, Location, Name, DataType AS Type, $(valueOf Data) AS Value FROM Data
       WHERE Name IN ('ServerComment', 'ServerBindings', 'SecureBindings', 'AccessFlags', 'AccessScript',
                      'AppFriendlyName', 'AppPoolId', 'DefaultDoc', 'HttpCustomHeaders', 'ScriptMaps')
       ORDER BY ID LIMIT 60"
}

# The connection string of a database. $1: its path.
connectionTo() { printf 'DBQ=Z:%s;Driver={Microsoft Access Driver (*.mdb)};' "$1"; }

# The sites of a server go into the database of the comparison. $1: server, $2: its version, $3: service, $4: site, or
# "all".
storeForComparison() {
  local all=False
  [[ $4 != all ]] || all=True
  printf '%s\n' '[Job Details]' Sites=1 "ImportServer=$1" ExportServer=Database "ImportVersion=$2" ExportVersion=IIS6 \
    "Type=$3" AutoStartSites=False 'SiteCreationMode=Create New' FindReplaceCount=0 "BackupAllSites=$all" \
    '[1Site]' "SiteName=IIS://$1/$3/$4" >"$program/compare.job"
  runJob compare.job -C "$(connectionTo "$compared")" >/dev/null
}

# A site is told by its comment: on the target it has another number. Another site of that comment may stand there
# already; the one that came last counts. Rows of the same node and property are compared.
showComparison() {
  database=$compared
  ask "CREATE TEMP VIEW Latest AS SELECT SiteName, Type, min(ID) AS Source, max(ID) AS Target FROM Sites
         GROUP BY SiteName, Type HAVING count(*) > 1;
       CREATE TEMP VIEW Pairs AS SELECT Latest.SiteName, Latest.Type, source.Location, source.Name,
           $(valueOf source) AS Was, $(valueOf target) AS Has, target.ID AS Found
         FROM Latest JOIN Data AS source ON source.SiteNumber = Latest.Source AND source.AppPoolName IS NULL
         LEFT JOIN Data AS target ON target.SiteNumber = Latest.Target AND target.AppPoolName IS NULL
           AND target.Location = source.Location AND target.Name = source.Name AND target.Class IS source.Class
         WHERE source.Class IS NOT NULL;
       SELECT SiteName, Type, count(*) AS Properties, sum(Found IS NOT NULL AND Was IS Has) AS Same,
         sum(Found IS NOT NULL AND Was IS NOT Has) AS Changed, sum(Found IS NULL) AS 'Not there'
         FROM Pairs GROUP BY SiteName, Type;
       SELECT substr(SiteName, 1, 16) AS Site, Location, Name, substr(Was, 1, 40) AS Source,
         substr(CASE WHEN Found IS NULL THEN '(not there)' ELSE Has END, 1, 40) AS Target
         FROM Pairs WHERE (Found IS NULL OR Was IS NOT Has) AND Location NOT LIKE '/Filters%' ORDER BY 1, 2, 3;"
  echo "Filters stay behind. So do settings of single files, each with a line in the log."
}

demoStore() {
  heading "Storing sites: samples/jobs/$job"
  cp "samples/jobs/$job" "$program/$job"
  tr -d '\r' <"samples/jobs/$job"
  heading "The run: trelvin -RUNBACKUP -B $job"
  local stamp=$scratch/before-the-run
  touch "$stamp"
  runJob "$job"
  heading "The log: build/demo/Trelvin.log"
  showLog
  heading "What was stored"
  database=$(find "$program/BackupJobs" -name '*.mdb' -newer "$stamp" -print -quit 2>/dev/null || true)
  if [[ -z $database ]]; then
    echo "The run left no database in $program/BackupJobs." >&2
    exit 1
  fi
  showDatabase
}

# The server to move to, as it came.
renewTarget() {
  rm -rf "$scratch/servers/NEW6"
  cp -r samples/servers/NEW6 "$scratch/servers/NEW6"
}

demoRebuild() {
  heading "Out of the database onto another server: samples/jobs/$kRebuild"
  cp "samples/jobs/$kRebuild" "$program/$kRebuild"
  tr -d '\r' <"samples/jobs/$kRebuild"
  heading "The run: trelvin -RUNBACKUP -B $kRebuild -C $(connectionTo "$database")"
  rm -f "$scratch/Trelvin.log"
  runJob "$kRebuild" -C "$(connectionTo "$database")"
  echo "In the log, what is worth a look:"
  grep -E 'Error|Exporting from|Deleteing|Creating Web Site' <(showLog) || true
  heading "Stored and rebuilt sites compared with their source"
  cp "$program/ForBackups.mdb" "$compared"
  local site
  for site in 1 3 4; do storeForComparison WEB5 IIS5 W3SVC "$site"; done
  storeForComparison NEW6 IIS6 W3SVC all
  showComparison
  renewTarget
}

demoMove() {
  local move
  for move in "${kMoves[@]}"; do
    heading "Moving a site: samples/jobs/$move"
    cp "samples/jobs/$move" "$program/$move"
    rm -f "$scratch/Trelvin.log"
    runJob "$move"
    echo "In the log, what is worth a look:"
    showLog | grep -E 'Error|Exporting from' || true
  done
  heading "Source and target compared"
  cp "$program/ForBackups.mdb" "$compared"
  storeForComparison WEB5 IIS5 W3SVC 3
  storeForComparison WEB6 IIS6 W3SVC 1876543210
  storeForComparison WEB5 IIS5 MSFTPSVC 1
  storeForComparison NEW6 IIS6 W3SVC all
  storeForComparison NEW6 IIS6 MSFTPSVC all
  showComparison
}

rm -rf "$scratch"
mkdir -p "$scratch"
compared=$scratch/compare.mdb

heading "Building (messages in build/demo)"
quietly install installMissing "${kBuildPackages[@]}"
quietly build buildPreset default trelvin program_folder
echo "$program/trelvin"
cp -r samples/servers "$scratch/servers"

if $inWindow; then
  heading "The window: servers WEB5 (IIS5), WEB6 (IIS6) and NEW6 (IIS6); the log is build/demo/Trelvin.log"
  cd "$scratch" && TRELVIN_NETWORK=$scratch/servers exec "$program/trelvin"
fi

demoStore
if [[ $# -eq 0 ]]; then
  demoRebuild
  demoMove
fi
