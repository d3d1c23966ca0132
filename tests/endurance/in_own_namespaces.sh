#!/bin/sh
# in_own_namespaces.sh BUILD SECONDS ARG...
#
# Runs BUILD's endurance program with these arguments, at most SECONDS long, in PID, IPC and mount
# namespaces of its own: nothing outside can be signalled, and the device's folder is a new one in
# memory, with the programs and the library of the build tree. Exits with 77 where the kernel allows
# no such namespaces.
set -eu

here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=tests/support/private_root.sh
. "$here/../support/private_root.sh"

if [ "${1:-}" != --inside ]; then
  build=$1
  seconds=$2
  shift 2
  for ids in "" --map-root-user; do
    # shellcheck disable=SC2086 # no word or one
    if unshare $ids --pid --fork --kill-child --mount --mount-proc --ipc true 2>/dev/null; then
      # The first process of a PID namespace takes all others with it.
      # shellcheck disable=SC2086
      exec timeout --foreground -s KILL "$seconds" \
        unshare $ids --pid --fork --kill-child --mount --mount-proc --ipc \
        sh "$here/in_own_namespaces.sh" --inside "$build" "$@"
    fi
  done
  echo "no private PID, IPC and mount namespaces on this machine"
  exit 77
fi

build=$2
shift 2
take_memory
root=$memory
bound "$build/device/programs"
bound "$build/device/lib"
mount --rbind "$root$build/device" "$build/device"
# Not by exec: this shell stays the first process, and takes in the flash tools of killed services.
status=0
"$build/tests/endurance/endurance" "$@" || status=$?
exit $status
