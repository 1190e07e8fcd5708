#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Prints the size of the tests against the size of the code: non-blank lines that are not only a
# comment, in the C++ files git tracks. Tests are tests/ and fuzz/, code is src/ and tools/.
# Fails when the tests are more than MAX_PERCENT (default 40) of the code.
# Usage: test-ratio.sh [MAX_PERCENT]
set -euo pipefail
cd "$(dirname "$0")/.."
max=${1:-40}

count() {
  git ls-files -- "$@" | grep -E '\.(cpp|cc|h|hpp)$' | xargs -r cat |
    grep -v -E '^\s*$' | grep -v -E '^\s*//' | wc -l
}

code=$(count src tools)
tests=$(count tests fuzz)
percent=$(awk -v t="$tests" -v c="$code" 'BEGIN { printf "%.1f", 100 * t / c }')
echo "test ratio: code (src, tools) $code lines, tests (tests, fuzz) $tests lines: $percent%"
if awk -v p="$percent" -v m="$max" 'BEGIN { exit !(p > m) }'; then
  echo "test ratio: above $max% of the code; fold cases into tables and drop tests that restate the code" >&2
  exit 1
fi
