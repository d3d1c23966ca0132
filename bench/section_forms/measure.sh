#!/bin/sh
# Prints the size of the sections' tables, the engine and 88 getters and setters in each form of
# forms.cpp, as a table: bytes of a stripped shared object, at -Os.
#
#   bench/section_forms/measure.sh [COMPILER]     such as mips-linux-gnu-g++; the default is g++
set -eu
compiler=${1:-g++}
top=$(cd "$(dirname "$0")/../.." && pwd)
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT
echo '{ global: form_*; local: *; };' >"$work/exports"

echo "| Form | Code | Constants | Relocated | Relocations | Sum |"
echo "|---|---|---|---|---|---|"
for form in 0 1 2 3 4 5; do
  "$compiler" -std=c++20 -Os -DNDEBUG -fPIC -fno-exceptions -fno-rtti -fno-threadsafe-statics \
    -fvisibility=hidden -fvisibility-inlines-hidden -ffunction-sections -fdata-sections \
    -fno-unwind-tables -fno-asynchronous-unwind-tables -fconstexpr-ops-limit=1000000000 \
    -DFORM=$form -I"$top" -I"$top/include" -c "$top/bench/section_forms/forms.cpp" -o "$work/form.o"
  "$compiler" -shared -nostdlib -Wl,--gc-sections -Wl,--version-script="$work/exports" \
    "$work/form.o" -o "$work/form.so"
  size -A -d "$work/form.so" | awk -v form=$form '
    $1 ~ /^\.text|^\.init|^\.fini|^\.plt|^\.MIPS\.stubs/ { code += $2 }
    $1 ~ /^\.rodata/ { constants += $2 }
    $1 ~ /^\.data|^\.got/ { relocated += $2 }
    $1 ~ /^\.rel/ { relocations += $2 }
    END { printf "| %d | %d | %d | %d | %d | %d |\n", form, code, constants, relocated, relocations,
                 code + constants + relocated + relocations }'
done
