#!/usr/bin/env bash
# Lines per second of `dalctl explain` as a process, from its start to its last line, proofs
# included: a generated application log of LINES lines (300 000 unless given), every other line
# a trace line, piped through `dalctl explain -`. The trace lines are a handful of distinct ones,
# written by the library itself (dalctl's --trace) for requests on several families, and repeat
# as a log repeats them: each distinct line is proven once, the rest are looked up. Three runs
# each, with and without --json; the worst and the median are printed with the target.
#   bench/explain_rate.sh build/dalctl [LINES]
set -euo pipefail
dalctl=$(realpath "${1:?usage: explain_rate.sh DALCTL [LINES]}")
lines=${2:-300000}
target=500000
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export LC_ALL=C.UTF-8

trace() { "$dalctl" --trace "$@" | sed -n 's/^trace: //p'; }
{
  trace saveScene 3000 5
  trace setSupplierName 3000 5 414243
  trace setSceneDate 1
  trace --device T3 saveScene 3000 2
  trace --device T9 getComBoardVer
  trace --device H40B getComBoardVer
  trace --device VM6S getComBoardVer
  trace --device Cadex setSupplierName 3000 5 414243
} > "$work/traces"
distinct=$(sort -u "$work/traces" | wc -l)

awk -v lines="$lines" '
  { trace[n++] = $0 }
  END {
    for (i = 0; i < lines / 2; i++) {
      t = sprintf("2024-05-01 12:%02d:%02d.%03d", int(i / 60000) % 60, int(i / 1000) % 60, i % 1000)
      print t " [biz] " trace[i % n]
      print t " [ui] take pressed on screen 2, layer " i % 16 " selected"
    }
  }' "$work/traces" > "$work/app.log"
total=$(wc -l < "$work/app.log")
traced=$(grep -c -- '---addToQueue----CMD=' "$work/app.log")

# Lines per second of one run; the output is checked: every line passes, every trace line is
# annotated with an operation.
rate() {
  local start end out=$work/out
  start=$(date +%s%N)
  cat "$work/app.log" | "$dalctl" explain "$@" - > "$out"
  end=$(date +%s%N)
  if [[ " $* " == *" --json "* ]]; then
    [[ $(grep -c '"candidates":\[{' "$out") == "$traced" ]] || { echo "explain $*: a trace line has no answer" >&2; exit 1; }
  else
    [[ $(wc -l < "$out") == "$total" ]] || { echo "explain $*: lines lost" >&2; exit 1; }
    [[ $(grep -c '  # dal: ' "$out") == "$traced" ]] &&
      ! grep -q -E '  # dal: (no operation sends|cut or garbled)' "$out" ||
      { echo "explain $*: a trace line has no answer" >&2; exit 1; }
  fi
  echo $((total * 1000000000 / (end - start)))
}

measure() {
  local label=$1
  shift
  local rates=() r
  for _ in 1 2 3; do rates+=("$(rate "$@")"); done
  IFS=$'\n' read -r -d '' -a sorted < <(printf '%s\n' "${rates[@]}" | sort -n && printf '\0')
  local verdict=met
  ((sorted[0] >= target)) || verdict=MISSED
  printf '%-44s worst %9d lines/s   median %9d lines/s   (target %d: %s)\n' \
    "$label" "${sorted[0]}" "${sorted[1]}" "$target" "$verdict"
}

echo "explain as a process: $total lines, $traced trace lines, $distinct distinct"
measure "explain - from a pipe"
measure "explain --json - from a pipe" --json
