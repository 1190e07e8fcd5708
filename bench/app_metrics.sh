#!/usr/bin/env bash
# Measures the running program on its simulated radio (--demo) with the system's own tools:
#   - the time from process start to the first frequency on screen (the status line the program
#     prints when a display changes, time-stamped by this script as it arrives),
#   - the CPU time the idle window takes over IDLE_SECONDS (utime + stime from /proc/PID/stat),
#   - the peak resident memory (/usr/bin/time -v, and VmHWM from /proc/PID/status).
# Usage: bench/app_metrics.sh [BINARY] [IDLE_SECONDS]
# Without a display it runs itself under xvfb-run, or on the offscreen platform when that is
# missing too.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
binary=${1:-$root/build/release/src/shell/qt/tarnline}
idle_s=${2:-30}

if [[ -z "${DISPLAY:-}" && -z "${QT_QPA_PLATFORM:-}" ]]; then
  if command -v xvfb-run >/dev/null; then
    exec xvfb-run -a "$0" "$binary" "$idle_s"
  fi
  export QT_QPA_PLATFORM=offscreen
fi
[[ -x "$binary" ]] || { echo "app_metrics: $binary is not built" >&2; exit 1; }
[[ -x /usr/bin/time ]] || { echo "app_metrics: /usr/bin/time is missing (apt-get install time)" >&2; exit 1; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkfifo "$work/out"

start=$EPOCHREALTIME
/usr/bin/time -v -o "$work/time.txt" "$binary" --demo --print-changes >"$work/out" 2>"$work/log" &
timer_pid=$!
exec 3<"$work/out"

first_freq_ms=""
while IFS= read -r -t 20 line <&3; do
  if [[ "$line" =~ ^Freq:\ [0-9] ]]; then
    now=$EPOCHREALTIME
    first_freq_ms=$(( (${now//[.,]/} - ${start//[.,]/}) / 1000 ))
    break
  fi
done
cat <&3 >/dev/null &  # later status lines must not fill the pipe
[[ -n "$first_freq_ms" ]] || { echo "app_metrics: no frequency within 20 s" >&2; kill "$timer_pid"; exit 1; }

app_pid=$(pgrep -P "$timer_pid" -x tarnline || pgrep -P "$timer_pid")
ticks=$(getconf CLK_TCK)
cpu_ticks() { awk '{print $14 + $15}' "/proc/$app_pid/stat"; }
before=$(cpu_ticks)
idle_start=$EPOCHREALTIME
sleep "$idle_s"
after=$(cpu_ticks)
idle_end=$EPOCHREALTIME
hwm_kb=$(awk '/^VmHWM/ {print $2}' "/proc/$app_pid/status")

kill -TERM "$app_pid"  # quits through File > Quit
wait "$timer_pid" || true
peak_kb=$(awk -F': ' '/Maximum resident set size/ {print $2}' "$work/time.txt")
exit_status=$(awk -F': ' '/Exit status/ {print $2}' "$work/time.txt")

awk -v ms="$first_freq_ms" -v t0="${idle_start//[.,]/}" -v t1="${idle_end//[.,]/}" \
    -v d="$((after - before))" -v hz="$ticks" -v peak="$peak_kb" -v hwm="$hwm_kb" \
    -v status="$exit_status" -v platform="${QT_QPA_PLATFORM:-xcb (DISPLAY=$DISPLAY)}" 'BEGIN {
  secs = (t1 - t0) / 1e6
  printf "%-34s %s\n", "platform:", platform
  printf "%-34s %d ms\n", "start to first frequency shown:", ms
  printf "%-34s %.2f %% of one core (%.2f s of CPU)\n", sprintf("idle CPU over %.1f s:", secs), 100 * d / hz / secs, d / hz
  printf "%-34s %.1f MiB (VmHWM %.1f MiB)\n", "peak resident memory:", peak / 1024, hwm / 1024
  printf "%-34s %s\n", "exit status after SIGTERM:", status
}'
