#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Runs each fuzz target for a bounded time, starting from the committed seed corpus; what the run
# finds stays in a scratch folder, so the repository's corpus changes only by hand.
# Usage: run-fuzzers.sh FUZZ_BIN_DIR SECONDS
set -euo pipefail
bin_dir=$(cd "$1" && pwd)
seconds=$2
root=$(cd "$(dirname "$0")/.." && pwd)
# shellcheck source=fuzz-targets.sh
source "$root/scripts/fuzz-targets.sh"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

for target in "${fuzz_targets[@]}"; do
  mkdir -p "$scratch/$target"
  echo "fuzz_$target: ${seconds}s"
  read -r -a max_len <<<"$(fuzz_max_len "$target")"
  (cd "$scratch" && "$bin_dir/fuzz_$target" "${max_len[@]}" -max_total_time="$seconds" -rss_limit_mb=2048 \
     -print_final_stats=1 "$scratch/$target" "$root/fuzz/corpus/$target" 2>&1) \
    | grep -E "^(stat::number_of_executed_units|stat::average_exec_per_sec|#[0-9]+\s+DONE)|ERROR|SUMMARY|runtime error" || true
  # libFuzzer leaves crash-* files behind when it finds something.
  if compgen -G "$scratch/crash-*" >/dev/null || compgen -G "$scratch/leak-*" >/dev/null; then
    echo "fuzz_$target found a failure:" >&2
    ls "$scratch" >&2
    exit 1
  fi
done
