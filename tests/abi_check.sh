#!/usr/bin/env bash
# Compares a build's libDAL_Manage.so with the committed ABI baseline (`abi_check.sh BASELINE
# LIBRARY`), or writes the baseline anew from it (`abi_check.sh --update BASELINE LIBRARY`).
# An addition passes with its report; a removed or changed function or variable, a changed
# layout or a changed virtual table of an exported type fails.
set -euo pipefail
command -v abidiff > /dev/null || { echo "abidiff not found: install abigail-tools" >&2; exit 1; }
if [ "$1" = --update ]; then
  mkdir -p "$(dirname "$2")"
  exec abidw --exported-interfaces-only --no-show-locs --no-comp-dir-path --no-corpus-path \
    --type-id-style hash --out-file "$2" "$3"
fi
baseline=$1 library=$2
[ -f "$baseline" ] || { echo "no ABI baseline $baseline: see the README" >&2; exit 1; }
compare() { abidiff --exported-interfaces-only --fail-no-debug-info "$@" "$baseline" "$library"; }
# abidiff's status is a bit set: 1 error, 2 usage error, 4 a change, 8 an incompatible change.
status=0
compare || status=$?
if ((status & 3)); then
  echo "abidiff could not compare $library with $baseline" >&2
  exit 1
fi
# Additions alone set the change bit too; without them nothing may be left.
if ((status & 12)); then
  status=0
  compare --no-added-syms > /dev/null || status=$?
  if ((status != 0)); then
    echo "incompatible ABI change (bits $status): raise the SOVERSION or undo it; see the README" >&2
    exit 1
  fi
  echo "ABI additions only: compatible"
fi
