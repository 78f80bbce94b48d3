#!/usr/bin/env bash
# Tests as a share of the C++ code: non-blank, non-comment lines of the .cpp and .h files
# under tests/ and fuzz/, against all such lines outside bench/ (tests included).
set -euo pipefail
cd "$(dirname "$0")/.."
count() {
  # Drops blank lines, // comment lines and /* ... */ blocks.
  awk '
    /^[[:space:]]*$/ { next }
    incomment { if ($0 ~ /\*\//) incomment = 0; next }
    /^[[:space:]]*\/\*/ { if ($0 !~ /\*\//) incomment = 1; next }
    /^[[:space:]]*\/\// { next }
    { n++ }
    END { print n + 0 }' "$@"
}
mapfile -t tests < <(git ls-files 'tests/*.cpp' 'tests/*.h' 'fuzz/*.cpp' 'fuzz/*.h')
mapfile -t code < <(git ls-files '*.cpp' '*.h' | grep -v -E '^(tests|fuzz|bench)/')
t=$(count "${tests[@]}")
c=$(count "${code[@]}")
awk -v t="$t" -v c="$c" \
  'BEGIN { printf "tests %d lines of %d (code %d): %.1f %%\n", t, t + c, c, 100 * t / (t + c) }'
