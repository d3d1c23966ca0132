# shellcheck shell=sh disable=SC2034
# What the project's commands need from Debian. Sourced by ./run, ./test and .ci/run.

build_packages="g++ cmake ninja-build rapidjson-dev util-linux"
test_packages="$build_packages libgtest-dev libgmock-dev nlohmann-json3-dev clang libclang-rt-14-dev binutils bash-completion mandoc mount
  procps u-boot-tools"
install_packages="$build_packages binutils busybox g++-mips-linux-gnu mandoc mount pkg-config shellcheck systemd"
deb_packages="debootstrap lintian mount util-linux"
# What ./test --all needs on top: compilers for the other platforms, what runs their programs and
# looks at their output, and what packages are made with.
target_packages="$build_packages googletest nlohmann-json3-dev g++-mips-linux-gnu g++-i686-linux-gnu qemu-user"
all_packages="$test_packages $install_packages $target_packages $deb_packages abigail-tools"
ci_packages="$all_packages clang-format clang-tidy libbenchmark-dev zlib1g-dev"

# Installs those of the named packages that are missing, or says which they are and stops.
need_packages() {
  missing=
  for package in "$@"; do
    case " $missing " in *" $package "*) continue ;; esac
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' ||
      missing="$missing $package"
  done
  [ -n "$missing" ] || return 0

  as_root=
  if [ "$(id -u)" -ne 0 ]; then
    if command -v sudo >/dev/null && sudo -n true 2>/dev/null; then
      as_root=sudo
    else
      printf 'Missing packages, and no right to install them:%s\n' "$missing" >&2
      exit 1
    fi
  fi
  printf 'Installing:%s\n' "$missing"
  # shellcheck disable=SC2086 # lists of words on purpose
  if ! { $as_root apt-get update -q &&
         $as_root env DEBIAN_FRONTEND=noninteractive \
           apt-get install -y -q --no-install-recommends $missing; } >"$(package_log)" 2>&1; then
    tail -n 20 "$(package_log)" >&2
    printf 'Missing packages, and they cannot be installed:%s\n' "$missing" >&2
    exit 1
  fi
}

package_log() {
  mkdir -p build
  echo build/packages.log
}

# build_preset PRESET [TARGET...]: configures and builds, showing the compiler's words only when
# something fails.
build_preset() {
  preset=$1
  shift
  mkdir -p build
  if ! { cmake --preset "$preset" && cmake --build --preset "$preset" ${1:+--target "$@"}; } \
      >"build/$preset.log" 2>&1; then
    grep -E 'error|FAILED|Error' -A 5 "build/$preset.log" | head -n 60 >&2
    printf 'The %s build failed; build/%s.log has all of it.\n' "$preset" "$preset" >&2
    exit 1
  fi
}

# The command that enters a private IPC namespace, or nothing where the kernel allows none.
private_ipc() {
  if unshare --ipc true 2>/dev/null; then
    echo unshare --ipc
  elif unshare --map-root-user --ipc true 2>/dev/null; then
    echo unshare --map-root-user --ipc
  fi
}
