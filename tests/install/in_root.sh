#!/bin/sh
# in_root.sh PREFIX LIBDIR ETC SOURCES
#
# What somebody does with an installation: builds the examples (in SOURCES) against it in three
# ways, starts its service and runs everything. ETC is the folder that holds init.d; or "moved", for
# an installation that is not where it was configured for: then nothing but the building and the
# loading is looked at. Run in a root of its own: it uses the device's own paths.
set -eu
prefix=$1 libdir=$1/$2 etc=$3 sources=$4
work=/tmp/work
warnings="-Wall -Wextra -Wpedantic -Werror"
PATH=$prefix/sbin:$prefix/bin:/usr/sbin:/usr/bin:/sbin:/bin
# shellcheck source=tests/support/expect.sh
. "$(dirname "$0")/expect.sh"

fail() {
  echo "$prefix: $*"
  exit 1
}

at_end() {
  [ -z "${watcher:-}" ] || kill "$watcher" 2>/dev/null || true
  [ -z "${service:-}" ] || kill "$service" 2>/dev/null || true
  [ "$etc" = moved ] || "$etc/init.d/config-center" stop >/dev/null 2>&1 || true
}
trap at_end EXIT

# --- Building -----------------------------------------------------------------------------------

# build_examples WAY FLAGS LIBRARIES: all examples into $work/WAY.
build_examples() {
  way=$1 flags="$warnings $2" libraries=$3
  mkdir -p "$work/$way"
  # shellcheck disable=SC2086 # lists of words
  {
    cc -std=c99 $flags "$sources/hostname.c" -o "$work/$way/hostname_c99" $libraries
    cc -std=c17 $flags "$sources/hostname.c" -o "$work/$way/hostname_c17" $libraries
    c++ -std=c++20 $flags "$sources/hostname_cpp.cpp" -o "$work/$way/hostname_cpp" $libraries
    c++ -std=c++20 $flags "$sources/watch_lan.cpp" -o "$work/$way/watch_lan" $libraries
  } || fail "$way: the examples do not build"
}

with_pkg_config() {
  run_path=
  if [ "$prefix" != /usr ]; then
    export PKG_CONFIG_PATH="$libdir/pkgconfig"
    run_path="-Wl,-rpath,$(pkg-config --variable=libdir proreflax)"
  fi
  [ "$(pkg-config --modversion proreflax)" = "$(cfc --version | sed 's/.* //')" ] ||
    fail "pkg-config tells another version than cfc"
  build_examples pkg_config "$(pkg-config --cflags proreflax)" \
    "$(pkg-config --libs proreflax) $run_path"
}

by_hand() {
  if [ "$prefix" = /usr ]; then
    build_examples by_hand "" -lproreflax
  else
    build_examples by_hand "-I$prefix/include" "-L$libdir -lproreflax -Wl,-rpath,$libdir"
  fi
}

with_cmake() {
  set -- -S "$sources/project" -B "$work/cmake" -G Ninja -DEXAMPLES="$sources"
  if [ "$prefix" != /usr ]; then
    set -- "$@" -DCMAKE_PREFIX_PATH="$prefix"
  fi
  { cmake "$@" && cmake --build "$work/cmake"; } >"$work/cmake.log" 2>&1 || {
    cat "$work/cmake.log"
    fail "the CMake package does not do"
  }
  grep -q "^proreflax_DIR:PATH=$libdir/cmake/proreflax$" "$work/cmake/CMakeCache.txt" ||
    fail "CMake found another proreflax: $(grep ^proreflax_DIR "$work/cmake/CMakeCache.txt")"
}

# loaded PROGRAM: the file that the loader takes for proreflax.so.0.
loaded() {
  file=$(ldd "$1" | sed -n 's/^\tproreflax\.so\.0 => \(.*\) (.*/\1/p')
  [ -z "$file" ] || realpath "$file"
}

programs_load_the_installed_library() {
  for program in "$work"/*/hostname_c?? "$work"/*/hostname_cpp "$work"/*/watch_lan \
      "$prefix/bin/cfc" "$prefix/sbin/config-center"; do
    expect "$(realpath "$libdir/proreflax.so.0.1.0")" loaded "$program"
  done
}

# Without a run path, in a folder that is not the loader's own, and on a device: without the links
# for the linker.
ldconfig_knows_the_library() {
  cc "-I$prefix/include" "$sources/hostname.c" -o "$work/plain" "-L$libdir" -lproreflax
  rm "$libdir/proreflax.so" "$libdir/libproreflax.so"
  expect "" loaded "$work/plain"
  echo "$libdir" >/etc/ld.so.conf.d/proreflax-check.conf
  ldconfig
  expect "$(realpath "$libdir/proreflax.so.0.1.0")" loaded "$work/plain"
  rm /etc/ld.so.conf.d/proreflax-check.conf
  ldconfig
}

# --- Running ------------------------------------------------------------------------------------

names() {
  printf 'host name    %s\ndomain name  localdomain\nweb port     80' "$1"
}

run_hostnames() {
  ran=0
  for program in "$work"/*/hostname_*; do
    [ ! -d "$program" ] || continue
    expect "$(names ipcam)" "$program"
    expect "" "$program" "host-$ran"
    expect "host-$ran" cfc get SYSTEMUTS hostname
    expect "$(names "host-$ran")" "$program"
    expect "" "$program" ipcam
    ran=$((ran + 1))
  done
  [ "$ran" -eq 9 ] || fail "$ran hostname programs were built, not 9"
}

# shows FILE LINE: waits until the last line of FILE is LINE.
shows() {
  for attempt in $(seq 300); do
    [ "$(tail -n 1 "$1" 2>/dev/null)" != "$2" ] || return 0
    sleep 0.1
  done
  fail "after $attempt looks $1 has \"$(cat "$1")\", and not \"$2\""
}

run_watchers() {
  for way in pkg_config by_hand cmake; do
    seen=$work/watch_lan.$way
    "$work/$way/watch_lan" 1 >"$seen" 2>&1 &
    watcher=$!
    shows "$seen" "dns2 0.0.0.0"
    expect "address 192.168.62.1" head -n 1 "$seen"
    expect "" cfc set LAN LanIPAddr 10.0.0.5
    shows "$seen" "address 192.168.62.1 -> 10.0.0.5"
    kill "$watcher"
    wait "$watcher" 2>/dev/null || true
    watcher=
    expect "" cfc set LAN LanIPAddr 192.168.62.1
  done
}

# By $shell, if that is set: by the shell that the script names.
shell=
init() {
  # shellcheck disable=SC2086 # no word or two
  $shell "$etc/init.d/config-center" "$@" >>"$work/init.log" 2>&1
}

expect_init() {
  expected=$1 status=0
  shift
  init "$@" || status=$?
  [ "$status" -eq "$expected" ] || {
    cat "$work/init.log"
    fail "init script $*: status $status, expected $expected"
  }
}

# The system's log, as the init script finds it: a program on its path.
keep_system_log() {
  printf '#!/bin/sh\ncat >>%s\n' "$work/system.log" >/usr/sbin/logger
  chmod +x /usr/sbin/logger
}

# logs LINE: waits until the system's log ends with LINE.
logs() {
  shows "$work/system.log" "config-center: $1"
}

# What a small system's shell makes of the script, too.
run_by_each_shell() {
  for shell in "" "busybox sh"; do
    expect_init 0 start
    logs "info: ready"
    expect_init 0 status
    # shellcheck disable=SC2086 # no word or two
    setpriv --reuid 65534 --regid 65534 --clear-groups \
      $shell "$etc/init.d/config-center" status >>"$work/init.log" 2>&1 ||
      fail "init script status: not for everyone"
    expect_init 0 force-reload
    expect_init 0 status
    expect_init 0 stop
    logs "info: signal 15: stopping"
    expect_init 3 status
  done
  shell=
}

without_a_configuration() {
  mv /etc/config-file.ini /etc/elsewhere.ini
  mv /var/lib/proreflax /var/lib/elsewhere
  expect_init 0 start
  expect_init 3 status
  echo "no section" >/etc/config-file.ini
  expect_init 1 start
  grep -q 'did not start; the system' "$work/init.log" || fail "init script: no word of the log"
  logs "error: no configuration: flash has none, and /etc/config-file.ini:\
 malformed; cfc check reports where (205 CFC_ERR_BAD_VALUE)"
  expect_init 3 status
  rm -rf /var/lib/proreflax
  mv /var/lib/elsewhere /var/lib/proreflax
  mv /etc/elsewhere.ini /etc/config-file.ini
}

run_under_init() {
  keep_system_log
  run_by_each_shell
  expect_init 3 status
  expect_init 0 start
  expect_init 0 status
  expect_init 0 start
  expect 192.168.62.1 cfc get LAN LanIPAddr
  run_hostnames
  run_watchers
  expect "" cfc set LAN LanGw 10.0.0.1
  expect_init 0 restart
  expect 10.0.0.1 cfc get LAN LanGw
  killed=$(cat /run/config-center.pid)
  kill -KILL "$killed"
  while kill -0 "$killed" 2>/dev/null && ! grep -q '^State:.Z' "/proc/$killed/status" 2>/dev/null; do
    sleep 0.1
  done
  expect_init 1 status
  expect_init 0 start
  expect 10.0.0.1 cfc get LAN LanGw
  expect_init 0 stop
  expect_init 3 status
  expect_init 0 stop
  expect_init 2 reload
  ! queue_is_there || fail "a service runs after the init script stopped it"
  without_a_configuration
  for left in /sbin/config-file.tmp* /run/config-center*; do
    [ ! -e "$left" ] || fail "$left is left"
  done
  expect "drwx------ root root" stat -c '%A %U %G' /var/lib/proreflax
}

# The service as its unit starts it: without capabilities, for a group.
run_as_unit() {
  unit=$prefix/lib/systemd/system/config-center.service
  eval "setpriv --bounding-set -all --inh-caps -all --no-new-privs \
    $(sed -n 's/^ExecStart=//p' "$unit") >$work/service.log 2>&1 &"
  service=$!
  for attempt in $(seq 300); do
    ! grep -q ': ready$' "$work/service.log" || break
    sleep 0.1
  done
  expect 10.0.0.1 setpriv --reuid 65534 --regid 65534 --groups "$group" cfc get LAN LanGw
  if setpriv --reuid 65534 --regid 65534 --clear-groups cfc get LAN LanGw >/dev/null 2>&1; then
    fail "who is not of the group reads the configuration"
  fi
  expect "" cfc set LAN LanGw 10.0.0.2
  kill "$service"
  wait "$service" || fail "the service of the unit ends with $?: $(cat "$work/service.log")"
  expect_init 0 start
  expect 10.0.0.2 cfc get LAN LanGw
  expect_init 0 stop
}

# --- All of it ----------------------------------------------------------------------------------

rm -rf "$work" /var/lib/proreflax
mkdir "$work"
cp "$prefix/share/doc/proreflax/examples/config-file.ini" /etc/config-file.ini
[ -e /sbin/writeflash ] || ln -s "$prefix/sbin/writeflash" /sbin/writeflash
with_pkg_config
by_hand
with_cmake
programs_load_the_installed_library
if [ "$etc" = moved ]; then
  ldconfig_knows_the_library
  exit
fi

group=$(sed -n 's/^proreflax:[^:]*:\([0-9]*\):.*/\1/p' /etc/group)
run_under_init
run_as_unit
