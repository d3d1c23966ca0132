# shellcheck shell=sh
# What test scripts look at. Sourced by those that define fail().

# expect TEXT COMMAND...: COMMAND prints TEXT, on standard output and standard error together.
expect() {
  expected=$1
  shift
  actual=$("$@" 2>&1) || true
  [ "$actual" = "$expected" ] || fail "$* prints \"$actual\", expected \"$expected\""
}

# Whether the queue of a service is there.
queue_is_there() {
  ipcs -q | grep -q '^0x083a030e'
}
