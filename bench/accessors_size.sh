#!/bin/sh
# Prints the size of accessors/ in the shared library at -Os: code, constants, and writable data.
# Exits with 1 when code and constants exceed 24 KiB, and with 77 when the compiler is missing.
#
#   bench/accessors_size.sh [COMPILER]     such as mips-linux-gnu-g++; the default is g++
set -eu
compiler=${1:-g++}
budget=24576
top=$(cd "$(dirname "$0")/.." && pwd)
if ! command -v "$compiler" >/dev/null; then
  echo "no $compiler on this machine"
  exit 77
fi
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT

for source in "$top"/accessors/*.cpp; do
  # section_list.cpp is compiled into programs, not into the library.
  [ "${source##*/}" = section_list.cpp ] || "$compiler" -std=c++20 -Os -DNDEBUG -fPIC \
    -fno-exceptions -fno-rtti -fno-threadsafe-statics \
    -fvisibility=hidden -fvisibility-inlines-hidden -ffunction-sections -fdata-sections \
    -fno-unwind-tables -fno-asynchronous-unwind-tables -I"$top" -I"$top/include" \
    -c "$source" -o "$work/$(basename "$source").o"
done
size -A -d "$work"/*.o | awk -v budget=$budget '
  $1 ~ /^\.text/ { code += $2 }
  $1 ~ /^\.rodata/ { constants += $2 }
  $1 ~ /^\.data\.rel\.ro/ { constants += $2 }
  $1 ~ /^\.(data|bss|sdata|sbss)/ && $1 !~ /^\.data\.rel\.ro/ { writable += $2 }
  END {
    printf "code %d, constants %d, together %d of %d; writable %d\n",
           code, constants, code + constants, budget, writable
    exit code + constants > budget || code == 0
  }'
