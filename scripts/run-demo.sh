#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Starts tarnline on its built-in simulated radio, prints what the frequency, mode and filter
# displays show after a few seconds, and saves a picture of the window to build/screenshot.png
# (TARNLINE_SCREENSHOT=docs/screenshot.png refreshes the README's picture instead).
# Usage: scripts/run-demo.sh BINARY
#
# With a display the window stays open until File > Quit (or Ctrl+Q). Without one the program runs
# under xvfb-run and quits once the picture is taken, as nobody could use the window.
set -euo pipefail

binary=${1:?usage: run-demo.sh BINARY}
root=$(cd "$(dirname "$0")/.." && pwd)
shot="${TARNLINE_SCREENSHOT:-$root/build/screenshot.png}"
mkdir -p "$(dirname "$shot")"
log="${TMPDIR:-/tmp}/tarnline-demo.log"
settle_ms=3000
args=(--demo --status-after "$settle_ms" --screenshot "$shot")

if [[ ! -x "$binary" ]]; then
  echo "run-demo: $binary is not built (make build)" >&2
  exit 1
fi

# The program's log (every frame sent, port troubles) goes to a file, not over the status line.
echo "Tarnline on its simulated radio (radio 08); its log goes to $log"
if [[ -z "${DISPLAY:-}" ]]; then
  if ! command -v xvfb-run >/dev/null; then
    echo "run-demo: no display and no xvfb-run (apt-get install xvfb xauth)" >&2
    exit 1
  fi
  xvfb-run -a "$binary" "${args[@]}" --quit-after $((settle_ms + 500)) 2>"$log"
  echo "Screenshot: $shot"
else
  echo "The displays are printed and a screenshot saved to $shot after $((settle_ms / 1000)) s;"
  echo "quit with File > Quit or Ctrl+Q."
  "$binary" "${args[@]}" 2>"$log"
fi
