#!/usr/bin/env bash
# Runs every operation on every family through two dalctl builds (one per Qt major version)
# and fails on the first difference in records, text payloads or trace lines.
set -euo pipefail
first=$1 second=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export LC_ALL=C.UTF-8
"$first" sweep > "$work/first.txt" 2>&1
"$second" sweep > "$work/second.txt" 2>&1
grep -q '^trace: ---addToQueue----CMD=' "$work/first.txt"
if ! cmp -s "$work/first.txt" "$work/second.txt"; then
  echo "the two builds differ:" >&2
  diff "$work/first.txt" "$work/second.txt" | head -40 >&2
  exit 1
fi
echo "$(grep -c '^== ' "$work/first.txt") requests, $(grep -c '^trace: ' "$work/first.txt") trace lines: identical"
