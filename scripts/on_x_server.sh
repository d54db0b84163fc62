#!/usr/bin/env bash
# Runs a command with an X server of its own that shows its screen to nobody, and ends the server with it.
# TRELVIN_SCREEN, such as 1600x1200, asks for another size than 1280x1024.
#
#   scripts/on_x_server.sh command [argument ...]
set -euo pipefail

number=$(mktemp)
Xvfb -displayfd 3 -screen 0 "${TRELVIN_SCREEN:-1280x1024}x24" -nolisten tcp 3>"$number" 2>/dev/null &
server=$!
trap 'kill "$server" 2>/dev/null || true; rm -f "$number"' EXIT

# The server writes its number once it takes clients.
for ((i = 0; i < 100; ++i)); do
  [[ ! -s $number ]] || break
  sleep 0.1
done
if [[ ! -s $number ]]; then
  echo "The X server did not start." >&2
  exit 1
fi

DISPLAY=:$(<"$number") QT_QPA_PLATFORM=xcb "$@"
