#!/usr/bin/env bash
# Runs every benchmark built in the build folder given as $1 (default: build).
set -euo pipefail
build="${1:-build}"
status=0
for bench in "$build"/bench/*_bench; do
  [ -x "$bench" ] || continue
  echo "== $(basename "$bench")"
  "$bench" || status=1
done
exit $status
