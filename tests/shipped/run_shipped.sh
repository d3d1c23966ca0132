#!/bin/sh
# run_shipped.sh PROGRAMS
#
# The library as it ships, with the device's own paths, in a root of its own: private mount and IPC
# namespaces, a file system in memory with the host's libraries below it, and PROGRAMS (the folder
# of the built programs) in its /sbin. Exits with 77 where the kernel allows no such namespaces.
set -eu

if [ "${1:-}" != --inside ]; then
  programs=$1
  for ids in "" --map-root-user; do
    # shellcheck disable=SC2086 # no word or one
    if unshare $ids --mount --ipc true 2>/dev/null; then
      # shellcheck disable=SC2086
      exec unshare $ids --mount --ipc sh "$0" --inside "$programs"
    fi
  done
  echo "no private mount and IPC namespaces on this machine"
  exit 77
fi

programs=$2
mount --make-rprivate /
root=/mnt
mount -t tmpfs tmpfs "$root" || { echo "no file system in memory"; exit 77; }
mkdir -p "$root/etc" "$root/sbin" "$root/var" "$root/dev" "$root/proc" "$root/tmp"
for folder in bin lib lib32 lib64 libx32 usr; do
  if [ -L "/$folder" ]; then
    ln -s "$(readlink "/$folder")" "$root/$folder"
  elif [ -d "/$folder" ]; then
    mkdir "$root/$folder"
    mount --rbind "/$folder" "$root/$folder"
  fi
done
for file in null zero; do
  : >"$root/dev/$file"
  mount --bind "/dev/$file" "$root/dev/$file"
done
mount --rbind /proc "$root/proc"
library=$(dirname "$programs")
mkdir -p "$root$library"
mount --bind "$library" "$root$library"
cp "$programs/config-center" "$programs/writeflash" "$programs/cfc" "$root/sbin/"
printf '[LAN]\nConnType=0x00000001\nLanIPAddr=192.168.62.1\n' >"$root/etc/config-file.ini"

chroot "$root" /bin/sh -eu -s <<'COMMANDS'
PATH=/sbin:/usr/bin:/bin
start() {
  config-center --log-level warning >/dev/null &
  service=$!
  for attempt in $(seq 100); do
    cfc status >/dev/null 2>&1 && return
    sleep 0.05
  done
  echo "config-center did not start"
  exit 1
}
expect() {
  expected=$1
  shift
  actual=$("$@" 2>&1) || true
  if [ "$actual" != "$expected" ]; then
    echo "$*: \"$actual\", expected \"$expected\""
    kill "$service"
    exit 1
  fi
}

start
expect 192.168.62.1 cfc get LAN LanIPAddr
expect "" cfc set LAN LanIPAddr 10.0.0.5
expect "" cfc flush
kill -KILL "$service"
wait "$service" || true
start
expect 10.0.0.5 cfc get LAN LanIPAddr
[ ! -e /sbin/config-file.tmp ] || { echo "the temporary file is left"; exit 1; }
expect "" cfc defaults
expect 192.168.62.1 cfc get LAN LanIPAddr
kill "$service"
wait "$service"
if cfc status >/dev/null 2>&1; then
  echo "lock or queue are left"
  exit 1
fi
COMMANDS
echo "the shipped library kept its configuration over a restart"
