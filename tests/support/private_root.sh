# shellcheck shell=sh
# A root of its own for programs that use the device's own paths: private mount and IPC namespaces,
# a file system in memory, and the host's programs and libraries in it. Sourced by test scripts.

# private_namespaces SCRIPT ARG...: becomes SCRIPT in private mount and IPC namespaces. Ends with 77
# where the kernel allows none.
private_namespaces() {
  for ids in "" --map-root-user; do
    # shellcheck disable=SC2086 # no word or one
    if unshare $ids --mount --ipc true 2>/dev/null; then
      # shellcheck disable=SC2086
      exec unshare $ids --mount --ipc "$@"
    fi
  done
  echo "no private mount and IPC namespaces on this machine"
  exit 77
}

# make_private_root bound|writable: makes $root. Bound, the host's folders are there as they are,
# and /sbin and /etc are new ones; writable, what is written into the host's folders stays in
# memory. Ends with 77 where this is not to be had.
make_private_root() {
  take_memory
  root=$memory
  mkdir -p "$root/dev" "$root/proc" "$root/run" "$root/var/lib"
  mkdir -m 1777 "$root/tmp"
  for folder in bin etc lib lib32 lib64 libx32 sbin usr; do
    case $1:$folder in
      bound:sbin | bound:etc) mkdir "$root/$folder" ;;
      *)
        if [ -L "/$folder" ]; then
          ln -s "$(readlink "/$folder")" "$root/$folder"
        elif [ -d "/$folder" ]; then
          "$1" "/$folder"
        fi
        ;;
    esac
  done
  add_kernel_files
}

# make_root_over FOLDER: makes $root, which is FOLDER; what is written there stays in memory.
make_root_over() {
  take_memory
  root=$memory/root
  lay_over "$1" "$root"
  add_kernel_files
}

# bound FOLDER: the host's FOLDER under the same name in the root.
bound() {
  mkdir -p "$root$1"
  mount --rbind "$1" "$root$1"
}

# writable FOLDER: the same; what is written there stays in memory.
writable() {
  lay_over "$1" "$root$1"
}

take_memory() {
  mount --make-rprivate /
  memory=/mnt
  mount -t tmpfs -o mode=755 tmpfs "$memory" || { echo "no file system in memory"; exit 77; }
}

# lay_over FOLDER PLACE
lay_over() {
  mkdir -p "$2" "$memory/.over$1/upper" "$memory/.over$1/work"
  mount -t overlay overlay "$2" \
    -o "lowerdir=$1,upperdir=$memory/.over$1/upper,workdir=$memory/.over$1/work" ||
    { echo "no overlay file system on this machine"; exit 77; }
  for inner in "$2"/*/; do
    [ -w "$inner" ] || { echo "only root can write over the folders of this machine"; exit 77; }
  done
}

add_kernel_files() {
  for file in null zero urandom; do
    : >>"$root/dev/$file"
    mount --bind "/dev/$file" "$root/dev/$file"
  done
  mount --rbind /proc "$root/proc"
}
