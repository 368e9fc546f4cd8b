#!/usr/bin/env bash
# Runs each fuzzer for a bounded time from its committed seed corpus (fuzz/corpus/NAME, read
# only; new inputs go to a scratch folder), with its dictionary (fuzz/FUZZER.dict) where it has
# one. Any crash, hang, leak or sanitizer report fails, and the input that caused it is kept
# under fuzz/out/.
set -euo pipefail
bin=$1 seconds=$2
shift 2
here=$(cd "$(dirname "$0")" && pwd)
mkdir -p "$here/out"
status=0
for fuzzer in "$@"; do
  seeds="$here/corpus/${fuzzer#fuzz_}"
  scratch=$(mktemp -d)
  dict=()
  [[ -f "$here/$fuzzer.dict" ]] && dict=(-dict="$here/$fuzzer.dict")
  echo "== $fuzzer for ${seconds}s from $seeds"
  if ! ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 \
      "$bin/$fuzzer" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=4096 \
      -artifact_prefix="$here/out/$fuzzer-" -print_final_stats=1 "${dict[@]}" "$scratch" "$seeds" \
      2> "$scratch.log"; then
    tail -50 "$scratch.log"
    echo "== $fuzzer FAILED"
    status=1
  else
    grep -E 'stat::number_of_executed_units|Done' "$scratch.log" || true
  fi
  rm -rf "$scratch" "$scratch.log"
done
exit $status
