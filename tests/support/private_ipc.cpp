#include "tests/support/private_ipc.h"

#include <sched.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "tests/support/request_queue.h"

namespace {

void write_file(const char* path, const std::string& text) {
  std::ofstream{path} << text;
}

bool unshare_ipc() {
  if (unshare(CLONE_NEWIPC) == 0) {
    return true;
  }
  const uid_t user = getuid();
  const gid_t group = getgid();
  if (unshare(CLONE_NEWUSER | CLONE_NEWIPC) != 0) {
    return false;
  }
  write_file("/proc/self/setgroups", "deny");
  write_file("/proc/self/uid_map", std::to_string(user) + " " + std::to_string(user) + " 1");
  write_file("/proc/self/gid_map", std::to_string(group) + " " + std::to_string(group) + " 1");
  return true;
}

}  // namespace

bool enter_private_ipc_namespace() {
  if (unshare_ipc() || !request_queue::keys_in_use()) {
    return true;
  }
  std::puts("No private IPC namespace, and the machine's own holds semaphore or queue already.");
  return false;
}
