#!/usr/bin/env bash
# Builds a build's three Debian packages, checks what each depends on, lets apt resolve their
# installation (simulated), unpacks them into a scratch root, builds and runs the README's
# sample against the development package there, and runs lintian on each: no error.
# Usage: packages.sh BUILD QT_DEV_PACKAGE
set -euo pipefail
build=$1 qt_dev=$2
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cpack --config "$build/CPackConfig.cmake" -B "$work/debs" > "$work/cpack.log" ||
  { cat "$work/cpack.log" >&2; exit 1; }
declare -A deb
for file in "$work"/debs/*.deb; do
  deb[$(dpkg-deb -f "$file" Section)]=$file
done
[ "${#deb[@]}" = 3 ] && [ -n "${deb[libs]:-}" ] && [ -n "${deb[libdevel]:-}" ] &&
  [ -n "${deb[utils]:-}" ] || { echo "expected a runtime, a development and a tool package" >&2; exit 1; }

runtime="$(dpkg-deb -f "${deb[libs]}" Package) (= $(dpkg-deb -f "${deb[libs]}" Version))"
depends() { dpkg-deb -f "${deb[$1]}" Depends | tr -d ' ' | tr ',' '\n'; }
need() { depends "$1" | grep -qxF "$(tr -d ' ' <<<"$2")" || { echo "${deb[$1]##*/} lacks $2" >&2; exit 1; }; }
need libdevel "$runtime"
need libdevel "$qt_dev"
need utils "$runtime"
depends libs | grep -q '^libc6' || { echo "the runtime's library dependencies are missing" >&2; exit 1; }
(cd "$work/debs" && apt-get install --simulate ./*.deb > "$work/apt.log") ||
  { cat "$work/apt.log" >&2; exit 1; }

for file in "${deb[@]}"; do
  dpkg-deb -x "$file" "$work/root"
done
"$here/consumer/run.sh" --installed "$work/root/usr"
lintian --fail-on error "${deb[@]}"
