#!/usr/bin/env bash
# libDAL_Manage.so exports the three classes of the installed headers and nothing else: their
# members, virtual tables and type information. The executables given after it link the
# library's objects statically and so must not load the shared library too, or they would
# carry two copies of its static data.
set -euo pipefail
library=$1
shift
classes='DalTarsel|Dal_Pommet|dal_Osd'
symbols=$(nm -D --defined-only -C "$library" | cut -d' ' -f3-)
leaks=$(grep -Ev "^(($classes)::|(vtable|typeinfo|typeinfo name) for ($classes)$)" <<<"$symbols" || true)
if [ -n "$leaks" ]; then
  echo "$library exports what no installed header declares:" >&2
  echo "$leaks" >&2
  exit 1
fi
for class in DalTarsel Dal_Pommet dal_Osd; do
  grep -qx "vtable for $class" <<<"$symbols" || { echo "$class is not exported" >&2; exit 1; }
done
for executable in "$@"; do
  if readelf -d "$executable" | grep -q 'NEEDED.*libDAL_Manage\.so'; then
    echo "$executable links libDAL_Manage.so beside the library's static objects" >&2
    exit 1
  fi
done
echo "$(wc -l <<<"$symbols") symbols exported, all of $classes; $# executables checked"
