#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Measures the running program with the system's own tools:
#   - the time from process start to the first frequency on screen with --demo (the status line
#     the program prints when a display changes, time-stamped by this script as it arrives),
#   - the peak resident memory of that run (/usr/bin/time -v, and VmHWM from /proc/PID/status),
#   - for three idle cases, over IDLE_SECONDS: the wake-ups per second of the main thread (its
#     voluntary context switches, /proc/PID/task/PID/status: each is a sleep that something ended)
#     and the CPU the whole process takes (on-CPU time of all its threads, /proc/PID/task/*/schedstat):
#       --demo         the simulated radio, polled each second, answering;
#       quiet port     --port on a pseudo-terminal whose other end is held open and sends nothing;
#       no port given  only the machine's own ports, if it has any;
#       network port   tcp:// to a local ser2net serving such a quiet pseudo-terminal; its line also
#                      counts the wake-ups of every thread, gensio's among them.
#     and --demo and the quiet port again with --capture to a file.
# Usage: bench/app_metrics.sh [BINARY] [IDLE_SECONDS]
# Without a display it runs itself under xvfb-run, or on the offscreen platform when that is
# missing too.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
binary=${1:-$root/build/release/src/shell/qt/tarnline}
idle_s=${2:-30}
settle_s=3  # start-up and the first answers are not idling

if [[ -z "${DISPLAY:-}" && -z "${QT_QPA_PLATFORM:-}" ]]; then
  if command -v xvfb-run >/dev/null; then
    exec xvfb-run -a "$0" "$binary" "$idle_s"
  fi
  export QT_QPA_PLATFORM=offscreen
fi
[[ -x "$binary" ]] || { echo "app_metrics: $binary is not built" >&2; exit 1; }
[[ -x /usr/bin/time ]] || { echo "app_metrics: /usr/bin/time is missing (apt-get install time)" >&2; exit 1; }
command -v python3 >/dev/null || { echo "app_metrics: python3 is missing (it holds the quiet port)" >&2; exit 1; }

work=$(mktemp -d)
holder_pid=""
cleanup() {
  [[ -n "$holder_pid" ]] && kill "$holder_pid" 2>/dev/null
  rm -rf "$work"
}
trap cleanup EXIT
mkfifo "$work/out"

switches() { awk '/^voluntary_ctxt_switches/ {print $2}' "/proc/$1/task/$1/status"; }
cpu_ns() { cat /proc/"$1"/task/*/schedstat | awk '{s += $1} END {printf "%.0f", s}'; }

# Prints one line of idle figures for the running process $1, named $2.
idle_figures() {
  local pid=$1 name=$2 s0 c0 t0 s1 c1 t1
  s0=$(switches "$pid"); c0=$(cpu_ns "$pid"); t0=$EPOCHREALTIME
  sleep "$idle_s"
  s1=$(switches "$pid"); c1=$(cpu_ns "$pid"); t1=$EPOCHREALTIME
  awk -v name="$name" -v s="$((s1 - s0))" -v c="$((c1 - c0))" \
      -v t0="${t0//[.,]/}" -v t1="${t1//[.,]/}" 'BEGIN {
    secs = (t1 - t0) / 1e6
    printf "%-34s %.1f wake-ups/s of the main thread, CPU %.3f %% of one core\n",
           sprintf("idle, %s (%.0f s):", name, secs), s / secs, 100 * c / 1e9 / secs
  }'
}

# Runs the program with the given arguments, settles, measures, and ends it with SIGTERM.
idle_run() {
  local name=$1
  shift
  "$binary" "$@" >/dev/null 2>&1 &
  local pid=$!
  sleep "$settle_s"
  idle_figures "$pid" "$name"
  kill -TERM "$pid"
  wait "$pid" || true
}

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
sleep "$settle_s"
demo_line=$(idle_figures "$app_pid" "--demo")
hwm_kb=$(awk '/^VmHWM/ {print $2}' "/proc/$app_pid/status")

kill -TERM "$app_pid"  # quits through File > Quit
wait "$timer_pid" || true
peak_kb=$(awk -F': ' '/Maximum resident set size/ {print $2}' "$work/time.txt")
exit_status=$(awk -F': ' '/Exit status/ {print $2}' "$work/time.txt")

# The quiet port: a pseudo-terminal whose other end stays open, never read from or written to.
python3 -c 'import os, pty, sys, time
master, slave = pty.openpty()
print(os.ttyname(slave), flush=True)
time.sleep(1e9)' >"$work/pty" &
holder_pid=$!
for _ in $(seq 50); do [[ -s "$work/pty" ]] && break; sleep 0.1; done
quiet_line=$(idle_run "quiet port" --port "$(head -1 "$work/pty")")
none_line=$(idle_run "no port given")
# The same with the bus captured to a file.
demo_capture_line=$(idle_run "--demo --capture" --demo --capture "$work/demo.pcapng")
quiet_capture_line=$(idle_run "quiet port --capture" --port "$(head -1 "$work/pty")" \
  --capture "$work/quiet.pcapng")

# The network port: ser2net on 127.0.0.1 serves the quiet pseudo-terminal over raw TCP.
all_switches() { cat /proc/"$1"/task/*/status | awk '/^voluntary_ctxt_switches/ {s += $2} END {print s}'; }
net_line="idle, network port: ser2net is not installed"
if [[ -x /usr/sbin/ser2net ]]; then
  net_port=$(python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')
  printf 'connection: &quiet\n  accepter: tcp,127.0.0.1,%s\n  connector: serialdev,%s,9600n81,local\n' \
    "$net_port" "$(head -1 "$work/pty")" >"$work/ser2net.yaml"
  /usr/sbin/ser2net -n -c "$work/ser2net.yaml" >/dev/null 2>&1 &
  ser2net_pid=$!
  sleep 0.5
  "$binary" --port "tcp://127.0.0.1:$net_port" >/dev/null 2>&1 &
  net_pid=$!
  sleep "$settle_s"
  a0=$(all_switches "$net_pid"); t0=$EPOCHREALTIME
  net_line=$(idle_figures "$net_pid" "network port")
  a1=$(all_switches "$net_pid"); t1=$EPOCHREALTIME
  net_line+=$(awk -v a="$((a1 - a0))" -v t0="${t0//[.,]/}" -v t1="${t1//[.,]/}" \
    'BEGIN { printf ", %.1f wake-ups/s of all threads", a / ((t1 - t0) / 1e6) }')
  kill -TERM "$net_pid" "$ser2net_pid"
  wait "$net_pid" "$ser2net_pid" || true
fi

printf "%-34s %s\n" "platform:" "${QT_QPA_PLATFORM:-xcb (DISPLAY=$DISPLAY)}"
printf "%-34s %d ms\n" "start to first frequency shown:" "$first_freq_ms"
awk -v peak="$peak_kb" -v hwm="$hwm_kb" \
    'BEGIN { printf "%-34s %.1f MiB (VmHWM %.1f MiB)\n", "peak resident memory:", peak / 1024, hwm / 1024 }'
printf "%-34s %s\n" "exit status after SIGTERM:" "$exit_status"
printf "%s\n" "$demo_line" "$quiet_line" "$none_line" "$demo_capture_line" "$quiet_capture_line" \
  "$net_line"
