#!/usr/bin/env bash
# Builds the README's sample application against an installed library and runs it, once through
# the CMake package and once through pkg-config. `run.sh BUILD` installs the build tree into a
# scratch prefix first; `run.sh --installed PREFIX` takes a tree already installed there (the
# Debian packages, unpacked).
set -euo pipefail
source=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
if [ "$1" = --installed ]; then
  prefix=$2
else
  prefix=$work/prefix
  cmake --install "$1" --prefix "$prefix" > /dev/null
fi
libdir=$(dirname "$(find "$prefix" -name libDAL_Manage.so)")
test -L "$libdir/libDAL_Manage.so"
readelf -d "$libdir/libDAL_Manage.so" | grep -q 'SONAME.*libDAL_Manage.so.1'

# The README's sample is this program, word for word.
awk '/^```cpp$/ { on = 1; next } /^```$/ { on = 0 } on' "$source/../../README.md" |
  diff -u - "$source/main.cpp"

cmake -S "$source" -B "$work/cmake" -DCMAKE_PREFIX_PATH="$prefix" > /dev/null
cmake --build "$work/cmake" > /dev/null
LD_LIBRARY_PATH="$libdir" "$work/cmake/dal_consumer"

export PKG_CONFIG_PATH="$libdir/pkgconfig"
flags=$(pkg-config --cflags --libs DAL_Manage)
g++ -std=c++17 "$source/main.cpp" -o "$work/pkgconfig_consumer" $flags
LD_LIBRARY_PATH="$libdir" "$work/pkgconfig_consumer"

# Only the public headers are installed: the three classes, the export macro and the operation
# lists their declarations include, directly or through the lists they include.
cd "$prefix/include/DAL_Manage"
headers=$(find . -name '*.h' | LC_ALL=C sort | tr '\n' ' ')
expected="./dalTarsel.h ./dal_export.h ./dal_osd.h ./dal_pommet.h "
if [ "$headers" != "$expected" ]; then
  echo "installed headers: $headers; expected: $expected" >&2
  exit 1
fi
lists_included_by() { grep -ho '^#include "[^"]*\.def"' "$@" | cut -d'"' -f2 | LC_ALL=C sort -u; }
reached=$(lists_included_by *.h)
while next=$(LC_ALL=C sort -u <(echo "$reached") <(lists_included_by $reached)) &&
  [ "$next" != "$reached" ]; do
  reached=$next
done
installed=$(find . -name '*.def' | sed 's|^\./||' | LC_ALL=C sort)
diff -u <(echo "$reached") <(echo "$installed") ||
  { echo "installed operation lists differ from those the headers include" >&2; exit 1; }
