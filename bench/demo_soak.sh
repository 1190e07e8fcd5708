#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Runs `tarnline --demo` in real time under Qt's offscreen platform and samples its resident memory
# every second. Prints the samples' first, last and largest values (kB) and the growth after the
# first minute.
# Usage: bench/demo_soak.sh [BINARY] [SECONDS]     (defaults: build/release/src/shell/qt/tarnline, 600)
set -euo pipefail
binary=${1:-build/release/src/shell/qt/tarnline}
seconds=${2:-600}
log=$(mktemp)
trap 'rm -f "$log"; kill "$pid" 2>/dev/null || true' EXIT

QT_QPA_PLATFORM=offscreen "$binary" --demo >/dev/null 2>"$log" &
pid=$!
first="" after_minute="" last="" max=0
for ((i = 1; i <= seconds; i++)); do
  sleep 1
  rss=$(awk '/^VmRSS:/ {print $2}' "/proc/$pid/status" 2>/dev/null || true)
  if [[ -z "$rss" ]]; then
    echo "tarnline ended after ${i}s:" >&2
    cat "$log" >&2
    exit 1
  fi
  [[ -z "$first" ]] && first=$rss
  ((i == 60)) && after_minute=$rss
  last=$rss
  ((rss > max)) && max=$rss
done
echo "resident memory (kB): first $first, after 1 min ${after_minute:-n/a}, last $last, largest $max"
if [[ -n "$after_minute" ]]; then
  echo "growth after the first minute: $((last - after_minute)) kB"
fi
