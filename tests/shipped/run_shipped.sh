#!/bin/sh
# run_shipped.sh PROGRAMS
#
# The library as it ships, with the device's own paths, in a root of its own: private mount and IPC
# namespaces, a file system in memory with the host's libraries below it, and PROGRAMS (the folder
# of the built programs) in its /sbin. Exits with 77 where the kernel allows no such namespaces.
set -eu

# shellcheck source=tests/support/private_root.sh
. "$(dirname "$0")/../support/private_root.sh"

[ "${1:-}" = --inside ] || private_namespaces sh "$0" --inside "$1"

programs=$2
make_private_root bound
bound "$(dirname "$programs")"
cp "$programs/config-center" "$programs/writeflash" "$programs/cfc" "$root/sbin/"
cp "$(dirname "$0")/../support/expect.sh" "$root/"
printf '[LAN]\nConnType=0x00000001\nLanIPAddr=192.168.62.1\n' >"$root/etc/config-file.ini"

chroot "$root" /bin/sh -eu -s <<'COMMANDS'
PATH=/sbin:/usr/bin:/bin
. /expect.sh
service=
trap '[ -z "$service" ] || kill "$service" 2>/dev/null || true' EXIT
fail() {
  echo "$*"
  exit 1
}
start() {
  config-center --log-level warning >/dev/null &
  service=$!
  for attempt in $(seq 100); do
    cfc status >/dev/null 2>&1 && return
    sleep 0.05
  done
  fail "config-center did not start"
}

start
expect 192.168.62.1 cfc get LAN LanIPAddr
expect "" cfc set LAN LanIPAddr 10.0.0.5
expect "" cfc flush
kill -KILL "$service"
wait "$service" || true
start
expect 10.0.0.5 cfc get LAN LanIPAddr
[ ! -e /sbin/config-file.tmp ] || fail "the temporary file is left"
expect "" cfc defaults
expect 192.168.62.1 cfc get LAN LanIPAddr
kill "$service"
wait "$service"
service=
if cfc status >/dev/null 2>&1; then
  fail "lock or queue are left"
fi
COMMANDS
echo "the shipped library kept its configuration over a restart"
