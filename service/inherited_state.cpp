#include "service/inherited_state.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

namespace proreflax {
namespace {

/// A separate open file of the same pipe or terminal; -1 if the system does not provide one.
int reopen(int descriptor) {
  char path[40];
  std::snprintf(path, sizeof path, "/proc/self/fd/%d", descriptor);
  return open(path, O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
}

}  // namespace

void reset_signals() {
  struct sigaction by_default {};
  by_default.sa_handler = SIG_DFL;
  for (int signal = 1; signal < NSIG; ++signal) {
    sigaction(signal, &by_default, nullptr);  // refused for those that cannot be caught
  }
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

void never_wait_for_reader(int descriptor) {
  struct stat about {};
  if (fstat(descriptor, &about) != 0 || S_ISREG(about.st_mode)) {
    return;
  }
  if (const int reopened = S_ISSOCK(about.st_mode) ? -1 : reopen(descriptor); reopened != -1) {
    dup2(reopened, descriptor);
    close(reopened);
    return;
  }
  if (const int flags = fcntl(descriptor, F_GETFL); flags != -1) {
    fcntl(descriptor, F_SETFL, flags | O_NONBLOCK);
  }
}

}  // namespace proreflax
