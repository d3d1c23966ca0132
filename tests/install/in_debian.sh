#!/bin/sh
# in_debian.sh packaged|booted
#
# In the root of a Debian with the three packages in /srv: installs them, uses them, and purges
# them, without systemd as process 1; or, booted, uses the installed service under systemd.
set -eu
packages="proreflax proreflax-dev proreflax-tools"
log=/srv/log
PATH=/usr/sbin:/usr/bin:/sbin:/bin
# shellcheck source=tests/support/expect.sh
. "$(dirname "$0")/expect.sh"
export DEBIAN_FRONTEND=noninteractive

fail() {
  echo "$*"
  cat "$log" 2>/dev/null || true
  exit 1
}

quiet() {
  "$@" >"$log" 2>&1 || fail "failed: $*"
}

as_member() {
  setpriv --reuid 65534 --regid 65534 --groups "$(getent group proreflax | cut -d : -f 3)" "$@"
}

as_nobody() {
  setpriv --reuid 65534 --regid 65534 --clear-groups "$@"
}

use_service() {
  expect 192.168.62.1 cfc get LAN LanIPAddr
  expect "" cfc set LAN LanIPAddr 10.0.0.5
  expect 10.0.0.5 as_member cfc get LAN LanIPAddr
  if as_nobody cfc get LAN LanIPAddr >/dev/null 2>&1; then
    fail "who is not of the group reads the configuration"
  fi
  expect "drwx------ root root" stat -c '%A %U %G' /var/lib/proreflax
}

# --- The packages -------------------------------------------------------------------------------

# What a device has, but for what every package leaves: names of packages, logs and the loader's
# cache.
listing() {
  find / -xdev \( -path /proc -o -path /srv -o -path /tmp -o -path /var/lib/dpkg -o -path /var/log \
    -o -path /var/cache/ldconfig -o -path /var/cache/debconf -o -path /etc/ld.so.cache \) -prune \
    -o -printf '%y %m %u %g %p\n' | sort
}

build_a_program() {
  # shellcheck disable=SC2046 # a list of words
  cc -std=c99 -Wall -Wextra -Wpedantic -Werror /usr/share/doc/proreflax-dev/examples/hostname.c \
    -o /tmp/hostname $(pkg-config --cflags --libs proreflax) || fail "the example does not build"
  expect 'host name    ipcam' sh -c '/tmp/hostname | head -n 1'
}

look_at_what_is_loaded() {
  for program in cfc config-center writeflash; do
    ! readelf -d "$(command -v "$program")" | grep -q RUNPATH || fail "$program has a run path"
  done
}

packaged() {
  # Services are started as on a running device.
  printf '#!/bin/sh\nexit 0\n' >/usr/sbin/policy-rc.d
  chmod +x /usr/sbin/policy-rc.d
  listing >/srv/before
  quiet dpkg --install /srv/*.deb
  expect_no_service "nothing to serve yet"
  cp /usr/share/doc/proreflax/examples/config-file.ini /etc/config-file.ini
  quiet invoke-rc.d config-center start
  use_service
  build_a_program
  look_at_what_is_loaded
  quiet dpkg --install /srv/proreflax_*.deb
  expect 10.0.0.5 cfc get LAN LanIPAddr
  # shellcheck disable=SC2086 # a list of words
  quiet dpkg --remove proreflax-dev proreflax-tools proreflax
  expect_no_service "the packages are removed"
  [ -e /var/lib/proreflax/slot0 ] || fail "what was saved goes before the packages are purged"
  # shellcheck disable=SC2086
  quiet dpkg --purge $packages
  rm /etc/config-file.ini
  listing >/srv/after
  diff -u /srv/before /srv/after || fail "purged packages leave something"
}

expect_no_service() {
  ! queue_is_there || fail "a service runs: $1"
}

# --- Under systemd ------------------------------------------------------------------------------

expect_unit() {
  expect "$1" systemctl is-active config-center.service
}

booted() {
  expect_unit active
  use_service
  quiet systemctl restart config-center.service
  expect 10.0.0.5 cfc get LAN LanIPAddr
  expect "" cfc set LAN LanIPAddr 10.0.0.6
  expect "" cfc flush
  kill -KILL "$(systemctl show --property MainPID --value config-center.service)"
  for attempt in $(seq 300); do
    [ "$(systemctl show --property NRestarts,ActiveState --value config-center.service | xargs)" \
      != "1 active" ] || break
    sleep 0.1
  done
  expect 10.0.0.6 cfc get LAN LanIPAddr
  expect 1 systemctl show --property NRestarts --value config-center.service
  expect "" cfc set LAN LanIPAddr 10.0.0.7
  quiet systemctl stop config-center.service
  expect_no_service "the unit is stopped after $attempt looks"
  expect_unit inactive
  mv /etc/config-file.ini /etc/elsewhere.ini
  mv /var/lib/proreflax /var/lib/elsewhere
  quiet systemctl start config-center.service
  expect_unit inactive
  rm -rf /var/lib/proreflax
  mv /var/lib/elsewhere /var/lib/proreflax
  quiet systemctl start config-center.service
  expect 10.0.0.7 cfc get LAN LanIPAddr
  expect "" systemctl --failed --quiet --no-legend
}

"$1"
echo ok
