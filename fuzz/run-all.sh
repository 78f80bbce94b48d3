#!/usr/bin/env bash
# Runs every fuzz target for SECONDS seconds and reports its executions.
#   fuzz/run-all.sh BUILD SECONDS [TARGET...]
# BUILD is a build folder configured with -DLK_FUZZ=ON (clang). New corpus entries go to
# BUILD/fuzz-corpus/<target> (the checked-in seeds in fuzz/corpus/<target> are only
# read); crash inputs go to BUILD/fuzz-artifacts/<target>/. Exits non-zero when any
# target found a fault.
set -u
build=${1:?usage: run-all.sh BUILD SECONDS [TARGET...]}
seconds=${2:?usage: run-all.sh BUILD SECONDS [TARGET...]}
shift 2
here=$(cd "$(dirname "$0")" && pwd)

# -max_len per target: a little beyond the largest real file of its kind.
declare -A maxlen=(
  [hex_file]=65536 [qvm_file]=65536 [bin_file]=12288 [sn8_file]=12288 [bct_file]=12288
  [ftc_file]=12288 [project_file]=12288 [open_path]=12288 [profile]=4096
  [config_defs]=4096 [roll_settings]=2048 [sim_state]=65536 [sim_fault]=64)
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  targets=(hex_file bin_file qvm_file sn8_file bct_file ftc_file project_file open_path
           profile config_defs roll_settings sim_state sim_fault)
fi

status=0
printf '%-14s %12s %8s  %s\n' target executions exec/s result
for t in "${targets[@]}"; do
  exe="$build/fuzz/fuzz_$t"
  if [ ! -x "$exe" ]; then
    printf '%-14s %12s %8s  %s\n' "$t" - - "missing $exe"
    status=1
    continue
  fi
  work="$build/fuzz-corpus/$t"
  artifacts="$build/fuzz-artifacts/$t/"
  log="$build/fuzz-logs/$t.log"
  mkdir -p "$work" "$artifacts" "$(dirname "$log")"
  "$exe" -max_total_time="$seconds" -max_len="${maxlen[$t]:-4096}" -rss_limit_mb=2048 \
    -timeout=10 -print_final_stats=1 -artifact_prefix="$artifacts" \
    "$work" "$here/corpus/$t" >"$log" 2>&1
  rc=$?
  execs=$(grep -o 'stat::number_of_executed_units: *[0-9]*' "$log" | grep -o '[0-9]*$')
  rate=$(grep -o 'exec/s: [0-9]*' "$log" | tail -1 | grep -o '[0-9]*$')
  if [ $rc -eq 0 ]; then
    result=clean
  else
    result="FAULT (rc $rc), see $log and $artifacts"
    status=1
  fi
  printf '%-14s %12s %8s  %s\n' "$t" "${execs:-?}" "${rate:-?}" "$result"
done
exit $status
