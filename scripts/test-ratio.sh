#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Prints the size of the tests against the size of the code: non-blank lines that are not only a
# comment, in every language of the files git tracks (C++, Lua, Python, shell). Tests are tests/
# and fuzz/, code is src/ and tools/. Fails when the tests are more than MAX_PERCENT (default 35)
# of the code.
# Usage: test-ratio.sh [MAX_PERCENT]
set -euo pipefail
cd "$(dirname "$0")/.."
max=${1:-35}

# Lines of the files under the given folders whose names match a pattern, without blank lines and
# lines that hold only a comment of that language.
lines() {
  local pattern=$1 comment=$2
  shift 2
  git ls-files -- "$@" | grep -E "$pattern" | xargs -r cat |
    grep -v -E '^\s*$' | grep -v -E "^\s*($comment)" | wc -l
}

count() {
  local cpp lua script
  cpp=$(lines '\.(cpp|cc|h|hpp)$' '//' "$@")
  lua=$(lines '\.lua$' '--' "$@")
  script=$(lines '\.(py|sh)$' '#' "$@")
  echo $((cpp + lua + script))
}

code=$(count src tools)
tests=$(count tests fuzz)
percent=$(awk -v t="$tests" -v c="$code" 'BEGIN { printf "%.1f", 100 * t / c }')
echo "test ratio: code (src, tools) $code lines, tests (tests, fuzz) $tests lines: $percent%"
if awk -v p="$percent" -v m="$max" 'BEGIN { exit !(p > m) }'; then
  echo "test ratio: above $max% of the code; fold cases into tables and drop tests that restate the code" >&2
  exit 1
fi
