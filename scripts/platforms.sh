# shellcheck shell=sh disable=SC2034
# The platforms that the library is looked at on, and how it is built for each. Sourced by scripts
# that stand in the project's top folder.

platforms="x86-64 mips i686"

# What the names of a platform's tools begin with.
tools_of() {
  case $1 in
    x86-64) echo x86_64-linux-gnu- ;;
    *) echo "$1-linux-gnu-" ;;
  esac
}

# Whether a platform's compiler is there; says so when it is not.
can_build_for() {
  command -v "$(tools_of "$1")g++" >/dev/null || {
    echo "$1: no $(tools_of "$1")g++ on this machine"
    return 1
  }
}

# build_for PLATFORM FOLDER TARGETS [OPTION...]: configures and builds, showing the compiler's words
# only when it fails. TARGETS is a list of words.
build_for() {
  build_tools=$(tools_of "$1") build_folder=$2 build_targets=$3
  build_toolchain=cmake/toolchains/target-$1.cmake
  [ -e "$build_toolchain" ] || build_toolchain=
  shift 3
  mkdir -p build
  # shellcheck disable=SC2086 # a list of words on purpose
  if ! { CC="${build_tools}gcc" CXX="${build_tools}g++" cmake -S . -B "$build_folder" -G Ninja \
           ${build_toolchain:+-DCMAKE_TOOLCHAIN_FILE="$build_toolchain"} "$@" &&
         cmake --build "$build_folder" --target $build_targets; } >"$build_folder.log" 2>&1; then
    grep -E 'error|FAILED|Error' -A 5 "$build_folder.log" | head -n 60 >&2
    echo "The build in $build_folder failed; $build_folder.log has all of it." >&2
    return 1
  fi
}
