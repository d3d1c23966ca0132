#include "service/flash_tool.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <initializer_list>

#include "service/log.h"
#include "store/paths.h"

namespace proreflax {
namespace {

constexpr int exit_no_tool = 127;

// The engine waits for its children itself; the signal handler receives the same status.
volatile sig_atomic_t children;
volatile sig_atomic_t last_child_code = CLD_EXITED;
volatile sig_atomic_t last_child_status;

void on_child_end(int /*signal*/, siginfo_t* about, void* /*context*/) {
  children = children + 1;
  last_child_code = about->si_code;
  last_child_status = about->si_status;
}

/// The wait status of "writeflash -r" on the temporary file; -1 with errno when it could not run.
int run_read() {
  const pid_t child = fork();
  if (child == 0) {
    execl(flash_tool, flash_tool, "-r", temporary_file, nullptr);
    _exit(exit_no_tool);
  }
  int status = -1;
  while (child != -1 && waitpid(child, &status, 0) == -1 && errno == EINTR) {
  }
  return status;
}

void log_failed_read(int status) {
  if (status == -1) {
    log_line(log_level::error, "%s -r could not be run: %s", flash_tool, std::strerror(errno));
  } else if (WIFSIGNALED(status)) {
    log_line(log_level::error, "%s -r was ended by signal %d", flash_tool, WTERMSIG(status));
  } else if (access(flash_tool, X_OK) != 0) {
    log_line(log_level::error, "%s cannot be executed: %s", flash_tool, std::strerror(errno));
  } else {
    log_line(log_level::error, "%s -r failed with exit status %d", flash_tool, WEXITSTATUS(status));
  }
}

}  // namespace

void watch_children() {
  struct sigaction action {};
  action.sa_sigaction = on_child_end;
  action.sa_flags = SA_RESTART | SA_SIGINFO | SA_NOCLDSTOP;
  sigaction(SIGCHLD, &action, nullptr);
}

unsigned ended_children() {
  return static_cast<unsigned>(children);
}

bool last_child_succeeded() {
  return last_child_code == CLD_EXITED && last_child_status == 0;
}

saved_configuration read_flash() {
  const int status = run_read();
  if (status != -1 && WIFEXITED(status)) {
    switch (WEXITSTATUS(status)) {
      case 0:
        return saved_configuration::readable;
      case exit_nothing_saved:
        return saved_configuration::nothing_saved;
      default:
        break;
    }
  }
  log_failed_read(status);
  return saved_configuration::unreadable;
}

void block_signals(sigset_t* before) {
  sigset_t blocked;
  sigfillset(&blocked);
  for (const int needed : {SIGCHLD, SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS}) {
    sigdelset(&blocked, needed);
  }
  sigprocmask(SIG_BLOCK, &blocked, before);
}

}  // namespace proreflax
