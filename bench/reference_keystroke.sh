#!/bin/sh
# Times the reference page's search per keystroke in headless Chromium.
#
#   bench/reference_keystroke.sh DALCTL|PAGE.html [ROUNDS]
#
# Given dalctl, generates the page with `dalctl doc --out` and prints its size and the time it
# took; given an .html file, uses it as is.
# Prints the median and 95th percentile per keystroke over ROUNDS (default 5) rounds of the
# harness's queries, and how many operations each query lists.
set -eu

die() {
    echo "reference_keystroke: $*" >&2
    exit 2
}

[ $# -ge 1 ] && [ $# -le 2 ] || die "usage: $0 DALCTL|PAGE.html [ROUNDS]"
target=$1
rounds=${2:-5}
case $rounds in '' | *[!0-9]*) die "ROUNDS must be a number, got '$rounds'" ;; esac

here=$(cd "$(dirname "$0")" && pwd)
harness=$here/reference_keystroke.html
[ -r "$harness" ] || die "missing $harness"

chromium=
for candidate in chromium chromium-browser /usr/bin/chromium; do
    if command -v "$candidate" >/dev/null 2>&1; then
        chromium=$(command -v "$candidate")
        break
    fi
done
[ -n "$chromium" ] || die "no Chromium found (install the chromium package)"

tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT INT TERM

case $target in
*.html)
    [ -r "$target" ] || die "cannot read page $target"
    page=$(cd "$(dirname "$target")" && pwd)/$(basename "$target")
    ;;
*)
    [ -x "$target" ] || die "dalctl not found or not executable: $target"
    start=$(date +%s%N)
    "$target" doc --out "$tmp/reference.html" || die "$target doc failed"
    end=$(date +%s%N)
    page=$tmp/reference.html
    echo "dalctl doc wrote $(wc -c < "$page") bytes in $(((end - start) / 1000000)) ms"
    ;;
esac

# The page's file URL travels inside the harness's fragment: escape what would end it early.
encode() {
    printf '%s' "$1" | sed -e 's/%/%25/g' -e 's/ /%20/g' -e 's/#/%23/g' -e 's/&/%26/g' \
        -e 's/?/%3F/g'
}
page_url=file://$(encode "$page")
harness_url=file://$(encode "$harness")

sandbox=
[ "$(id -u)" -ne 0 ] || sandbox=--no-sandbox # Chromium refuses to run as root with its sandbox

# shellcheck disable=SC2086
"$chromium" --headless $sandbox --disable-gpu --disable-quic --no-first-run \
    --disable-background-networking --disable-component-update --disable-sync \
    --allow-file-access-from-files --window-size=1280,900 --user-data-dir="$tmp/profile" \
    --dump-dom "$harness_url#page=$(encode "$page_url")&rounds=$rounds" \
    >"$tmp/dom.html" 2>"$tmp/chromium.log" ||
    { tail -n 5 "$tmp/chromium.log" >&2; die "Chromium failed"; }

result=$(sed -n '/<pre id="result">/,/<\/pre>/p' "$tmp/dom.html" |
    sed -e 's/.*<pre id="result">//' -e 's/<\/pre>.*//' -e 's/&quot;/"/g' -e 's/&lt;/</g' \
        -e 's/&gt;/>/g' -e 's/&amp;/\&/g')
case $result in
keystroke*) printf '%s\n' "$result" ;;
*)
    echo "reference_keystroke: no figures from the harness: ${result:-empty page}" >&2
    exit 1
    ;;
esac
