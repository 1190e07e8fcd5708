#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# A long run of each fuzz target, one after the other, from its corpus in fuzz/corpus: until it has
# executed RUNS inputs or SECONDS have passed. What it found is merged back into fuzz/corpus with
# libFuzzer's -merge=1: the named cases stay, and the hash-named files are replaced by the fewest
# that keep every edge reached (-use_counters=0: hit counts alone would keep hundreds of files, and
# the test command's runs find them again in seconds). Prints per target the inputs run, the
# coverage (cov: edges, ft: features), the time and the corpus size before and after. A failure is
# kept in FUZZ_BIN_DIR.
# Usage: fuzz-campaign.sh FUZZ_BIN_DIR [RUNS] [SECONDS]
set -euo pipefail
bin_dir=$(cd "$1" && pwd)
runs=${2:-10000000}
limit=${3:-1200}
root=$(cd "$(dirname "$0")/.." && pwd)
# shellcheck source=fuzz-targets.sh
source "$root/scripts/fuzz-targets.sh"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

for target in "${fuzz_targets[@]}"; do
  corpus=$root/fuzz/corpus/$target
  mkdir -p "$scratch/$target/found" "$scratch/$target/kept"
  read -r -a max_len <<<"$(fuzz_max_len "$target")"
  before=$(find "$corpus" -type f | wc -l)
  start=$SECONDS
  if ! "$bin_dir/fuzz_$target" "${max_len[@]}" -runs="$runs" -max_total_time="$limit" \
       -print_final_stats=1 -artifact_prefix="$bin_dir/" "$scratch/$target/found" "$corpus" \
       >"$scratch/$target.log" 2>&1; then
    tail -n 40 "$scratch/$target.log" >&2
    echo "fuzz_$target found a failure; the input is in $bin_dir" >&2
    exit 1
  fi
  took=$((SECONDS - start))
  executed=$(awk '/stat::number_of_executed_units/ { print $2 }' "$scratch/$target.log")
  coverage=$(grep -E '#[0-9]+[[:space:]]+DONE' "$scratch/$target.log" | grep -oE 'cov: [0-9]+ ft: [0-9]+')
  for f in "$corpus"/*; do
    [[ $(basename "$f") =~ ^[0-9a-f]{40}$ ]] || cp "$f" "$scratch/$target/kept/"
  done
  "$bin_dir/fuzz_$target" "${max_len[@]}" -merge=1 -use_counters=0 "$scratch/$target/kept" "$corpus" \
    "$scratch/$target/found" >"$scratch/$target.merge.log" 2>&1
  find "$corpus" -type f -regextype posix-extended -regex '.*/[0-9a-f]{40}' -delete
  cp -n "$scratch/$target/kept"/* "$corpus/"
  after=$(find "$corpus" -type f | wc -l)
  echo "fuzz_$target: $executed inputs, $coverage, ${took}s, corpus $before -> $after files"
done
