#!/usr/bin/env bash
# Installs the built tree into a scratch prefix, then builds and runs a consumer against it,
# once through the CMake package and once through pkg-config.
set -euo pipefail
build=$1 source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build" --prefix "$work/prefix" > /dev/null
test -L "$work/prefix/lib/libDAL_Manage.so"
readelf -d "$work/prefix/lib/libDAL_Manage.so" | grep -q 'SONAME.*libDAL_Manage.so.1'

cmake -S "$source" -B "$work/cmake" -DCMAKE_PREFIX_PATH="$work/prefix" > /dev/null
cmake --build "$work/cmake" > /dev/null
LD_LIBRARY_PATH="$work/prefix/lib" "$work/cmake/dal_consumer"

export PKG_CONFIG_PATH="$work/prefix/lib/pkgconfig"
flags=$(pkg-config --cflags --libs DAL_Manage)
g++ -std=c++17 -fPIC "$source/main.cpp" -o "$work/pkgconfig_consumer" $flags
LD_LIBRARY_PATH="$work/prefix/lib" "$work/pkgconfig_consumer"

# Only the public headers are installed: the three classes, the export macro and the
# operation lists their declarations include.
headers=$(cd "$work/prefix/include/DAL_Manage" && find . -name '*.h' | LC_ALL=C sort | tr '\n' ' ')
expected="./dalTarsel.h ./dal_export.h ./dal_osd.h ./dal_pommet.h "
if [ "$headers" != "$expected" ]; then
  echo "installed headers: $headers; expected: $expected" >&2
  exit 1
fi
