#!/usr/bin/env bash
# The production database's proof on the simulated writer, with the real lkwriter-cli:
#
#   1. kills:       Auto runs with the rolling code on, each SIGKILLed at a random moment
#                   (the simulated writer keeps its chip in a state file, one fresh chip a
#                   run); then every chip's serial is read back from its state file: no
#                   serial may be found in two chips, and the record chain must verify.
#   2. concurrency: PROCS processes at once on one series (SQLite, then PostgreSQL when
#                   its server binaries are here), CHIPS chips in all: no serial twice.
#   3. tamper:      a record edited, deleted, reordered, and the chain truncated: each is
#                   found by `log verify` (exit 1, naming the record).
#
# Usage: bench/soak.sh BUILD [short]
#   full  (make soak):  1000 kills, 8 processes x 2000 chips per database
#   short (make test):  20 kills, 8 processes x 48 chips
set -euo pipefail

build=$(cd "${1:-build}" && pwd)
mode=${2:-full}
here=$(cd "$(dirname "$0")" && pwd)
cli="$build/lkwriter-cli"
if [ "$mode" = short ]; then kills=20; chips=48; else kills=1000; chips=2000; fi
procs=8

work=$(mktemp -d /tmp/lk-soak.XXXXXX)
chmod 755 "$work"  # the throwaway PostgreSQL server runs as another user when we are root
pgdir=""
cleanup() {
  if [ -n "$pgdir" ]; then bash "$here/../tests/support/pg-throwaway.sh" stop "$pgdir" >/dev/null 2>&1 || true; fi
  rm -rf "$work"
}
trap cleanup EXIT

failed=0
fail() { echo "FAIL: $*"; failed=1; }

# A project with the rolling code on: four code bytes at program words 7F3..7F0.
new_project() {
  mkdir -p "$1"
  cp "$build/examples/rolling/project.lkx" "$build/examples/rolling/project.ini" "$1/"
}

# The serial a chip carries: the low bytes of its words 7F3 7F2 7F1 7F0 (highest byte
# first), or nothing when the program packet with the code never reached it.
chip_serial() {
  awk -F= '$1 == "chip.program" {
    n = split($2, w, " ");
    if (n < 2036) exit;
    s = "";
    for (a = 2035; a >= 2032; --a) {
      h = toupper(substr(w[a + 1], 3, 2));
      lo = 16 * (index("0123456789ABCDEF", substr(h, 1, 1)) - 1) + index("0123456789ABCDEF", substr(h, 2, 1)) - 1;
      if (lo == 255) exit;
      s = s (s == "" ? "" : " ") lo;
    }
    print s;
  }' "$1"
}

# Prints how many serials were found in more than one chip of folder $1.
duplicates() {
  local f
  for f in "$1"/*.state; do [ -f "$f" ] && chip_serial "$f"; done | sort | uniq -d | wc -l
}

run_auto() {  # db project state
  "$cli" --home "$build" -q --db "$1" --device sim --sim-state "$3" auto "$2/project.lkx"
}

# --- 1. kills --------------------------------------------------------------------------
kill_db="sqlite:$work/kill.sqlite"
new_project "$work/kill"
mkdir -p "$work/kill/chips"
# How long one whole run takes, to spread the kills over it.
start=$(date +%s%N)
run_auto "$kill_db" "$work/kill" "$work/kill/chips/0.state" >/dev/null 2>&1 || true
span_ms=$(( ($(date +%s%N) - start) / 1000000 ))
killed=0
for i in $(seq 1 "$kills"); do
  # The CLI itself in the background (not a subshell around it), so that the kill hits it.
  "$cli" --home "$build" -q --db "$kill_db" --device sim --sim-state "$work/kill/chips/$i.state" \
    auto "$work/kill/project.lkx" >/dev/null 2>&1 &
  pid=$!
  delay=$(( RANDOM % (span_ms + 1) ))
  sleep "$(printf '%d.%03d' $((delay / 1000)) $((delay % 1000)))"
  if kill -9 "$pid" 2>/dev/null; then killed=$((killed + 1)); fi
  wait "$pid" 2>/dev/null || true
done
# One run to the end after the last kill: it voids what the last killed run left open.
run_auto "$kill_db" "$work/kill" "$work/kill/chips/final.state" >/dev/null 2>&1 || true
dups=$(duplicates "$work/kill/chips")
with_serial=$(for f in "$work/kill/chips"/*.state; do chip_serial "$f"; done | wc -l)
voided=$("$cli" --home "$build" --db "$kill_db" stats | awk '/^serials / { for (i = 1; i <= NF; ++i) if ($i == "void") print $(i + 1) }' | head -n 1)
echo "kills: $killed of $kills runs killed (run ~${span_ms} ms); chips with a serial: $with_serial; serials in two chips: $dups; voided (skipped): ${voided:-0}"
[ "$dups" -eq 0 ] || fail "a serial was given to two chips after kills"
"$cli" --home "$build" --db "$kill_db" log verify || fail "the record chain does not verify after kills"

# --- 2. concurrency ----------------------------------------------------------------------
concurrency() {  # name db
  local name=$1 db=$2 dir="$work/conc-$1" per=$((chips / procs)) p
  new_project "$dir"
  mkdir -p "$dir/chips"
  local t0; t0=$(date +%s%N)
  for p in $(seq 1 "$procs"); do
    (for c in $(seq 1 "$per"); do run_auto "$db" "$dir" "$dir/chips/$p-$c.state" >/dev/null 2>&1 || true; done) &
  done
  wait
  local secs=$(( ($(date +%s%N) - t0) / 1000000000 ))
  local dups; dups=$(duplicates "$dir/chips")
  local distinct; distinct=$(for f in "$dir/chips"/*.state; do chip_serial "$f"; done | sort -u | wc -l)
  echo "concurrency ($name): $procs processes, $((per * procs)) chips in ${secs} s; distinct serials: $distinct; serials in two chips: $dups"
  [ "$dups" -eq 0 ] || fail "a serial was given to two chips ($name)"
  "$cli" --home "$build" --db "$db" log verify >/dev/null || fail "the record chain does not verify ($name)"
}
concurrency sqlite "sqlite:$work/conc.sqlite"
if pgurl=$(bash "$here/../tests/support/pg-throwaway.sh" start "$work/pg" 2>/dev/null); then
  pgdir="$work/pg"
  concurrency postgresql "$pgurl"
else
  echo "concurrency (postgresql): skipped, no PostgreSQL server binaries on this machine"
fi

# --- 3. tamper ---------------------------------------------------------------------------
tamper() {  # what sql
  local db="$work/tamper-$1.sqlite"
  cp "$work/conc.sqlite" "$db"
  sqlite3 "$db" "$2"
  local out status=0
  out=$("$cli" --home "$build" --db "sqlite:$db" log verify 2>&1) || status=$?
  echo "tamper ($1): exit $status: $out"
  [ "$status" -eq 1 ] || fail "log verify did not find the $1 record"
}
if command -v sqlite3 >/dev/null; then
  tamper edited "UPDATE chip_record SET record = replace(record, '\"passed\"', '\"failed\"') WHERE id = 3"
  tamper deleted "DELETE FROM chip_record WHERE id = 3"
  tamper reordered "UPDATE chip_record SET id = -3 WHERE id = 3; UPDATE chip_record SET id = 3 WHERE id = 4; UPDATE chip_record SET id = 4 WHERE id = -3"
  tamper truncated "DELETE FROM chip_record WHERE id = (SELECT max(id) FROM chip_record)"
else
  fail "sqlite3 is missing (scripts/install-deps.sh installs it)"
fi

if [ "$failed" -ne 0 ]; then echo "soak: FAILED"; exit 1; fi
echo "soak: passed"
