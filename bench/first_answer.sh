#!/usr/bin/env bash
# How long a person waits for the first answer of `dalctl decode` and `dalctl explain`: the wall
# time from starting dalctl as a process to the first line it writes, for inputs of every kind,
# with and without --device. Each case runs five times; the worst and the median are printed,
# in milliseconds. The runs use the kept indexes of the user's cache folder, as a person's do;
# the last line gives one run that learns everything anew, in an empty cache folder.
#   bench/first_answer.sh build/dalctl
set -euo pipefail
dalctl=$(realpath "${1:?usage: first_answer.sh DALCTL}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export LC_ALL=C.UTF-8

trace='12:00:01 [biz] ---addToQueue----CMD= "68" ---DAT1= "12" ---DAT2= "3" ---DAT3= "0" ---DAT4= "0" ---arryDatablock= "" ---Datablock= ""'
{ for i in $(seq 1000); do echo "12:00:0$((i % 10)) [ui] take pressed"; echo "$trace"; done; } > "$work/app.log"
"$dalctl" --device T3 getComBoardVer > "$work/record.txt"
"$dalctl" saveScene 3000 5 >> "$work/record.txt"
"$dalctl" --json setSupplierName 3000 5 414243 > "$work/record.json"
"$dalctl" learn > /dev/null

# Milliseconds from the start of "$@" to its first line of output.
first_line_ms() {
  local start end line
  start=$(date +%s%N)
  exec 3< <("$@" 2>/dev/null)
  local pid=$!
  IFS= read -r line <&3 || true
  end=$(date +%s%N)
  kill "$pid" 2>/dev/null || true
  exec 3<&-
  echo $(((end - start) / 1000000))
}

measure() {
  local label=$1
  shift
  local times=() t
  for _ in 1 2 3 4 5; do times+=("$(first_line_ms "$@")"); done
  IFS=$'\n' read -r -d '' -a sorted < <(printf '%s\n' "${times[@]}" | sort -n && printf '\0')
  printf '%-52s worst %4d ms   median %4d ms\n' "$label" "${sorted[4]}" "${sorted[2]}"
}

measure "decode 5-byte head, every family" "$dalctl" decode 6a03000000
measure "decode 8-byte head and block, every family" "$dalctl" decode 0000f05805040000414243c6
measure "decode head, --device keyboard" "$dalctl" decode --device keyboard a203000000
measure "decode T3 text, every text family" "$dalctl" decode '<SVCN, 2B>'
measure "decode T3 text, --device T3" "$dalctl" decode --device T3 '<SVCN, 2B>'
measure "decode VM6S frame" "$dalctl" decode "$("$dalctl" --device VM6S getComBoardVer --json | sed 's/.*"arryDatablock":"\([0-9a-f]*\)".*/\1/')"
measure "decode printout of two records, standard input" sh -c "\"$dalctl\" decode - < \"$work/record.txt\""
measure "decode --json line, --file" "$dalctl" decode --file "$work/record.json"
measure "decode trace line" "$dalctl" decode "$trace"
measure "explain 2000-line log" "$dalctl" explain "$work/app.log"
measure "explain 2000-line log, --device T3 --json" "$dalctl" explain "$work/app.log" --device T3 --json
measure "explain --follow" "$dalctl" explain --follow "$work/app.log"
cold=$(XDG_CACHE_HOME=$(mktemp -d -p "$work") first_line_ms "$dalctl" decode 6a03000000)
printf '%-52s once  %4d ms\n' "decode head, nothing kept yet (learns everything)" "$cold"
