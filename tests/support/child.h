// Processes of a test's own: a child that runs one function, memory that it shares with its parent,
// and a way to wait for what another process does.
#ifndef PROREFLAX_TESTS_SUPPORT_CHILD_H
#define PROREFLAX_TESTS_SUPPORT_CHILD_H

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <new>
#include <stdexcept>
#include <thread>

/// Waits until a condition holds that another process brings about; false when it never comes.
template <typename Condition>
bool eventually(Condition condition) {
  for (int tries = 0; tries < 10000; ++tries) {
    if (condition()) {
      return true;
    }
    std::this_thread::sleep_for(std::chrono::microseconds{500});
  }
  return false;
}

/// Runs `work` in a child process, which ends with its int as exit status and without the parent's
/// clean-up. Throws when there is none: nobody may be left to send signals to process -1.
template <typename Work>
pid_t start_child(Work work) {
  const pid_t pid = fork();
  if (pid == 0) {
    _exit(work());
  }
  if (pid == -1) {
    throw std::runtime_error("no child process");
  }
  return pid;
}

/// A child's exit status, or minus the signal that ended it. Throws when there is no such child.
inline int wait_for_child(pid_t pid) {
  int status = 0;
  while (waitpid(pid, &status, 0) == -1) {
    if (errno != EINTR) {
      throw std::runtime_error("no such child process");
    }
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

/// A child process that is killed with its object.
class child {
 public:
  template <typename Work>
  explicit child(Work work) : pid_{start_child(work)} {}
  ~child() { kill_and_wait(); }
  child(const child&) = delete;
  child& operator=(const child&) = delete;

  pid_t pid() const { return pid_; }

  /// As wait_for_child().
  int wait() {
    const int status = wait_for_child(pid_);
    pid_ = -1;
    return status;
  }

  void kill_and_wait() {
    if (pid_ > 0) {
      ::kill(pid_, SIGKILL);
      wait();
    }
  }

 private:
  pid_t pid_;
};

/// One object that a process and the children it starts afterwards see alike.
template <typename Object>
class shared {
 public:
  shared()
      : object_{new (mmap(nullptr, sizeof(Object), PROT_READ | PROT_WRITE,
                          MAP_SHARED | MAP_ANONYMOUS, -1, 0)) Object{}} {}
  ~shared() { munmap(object_, sizeof(Object)); }
  shared(const shared&) = delete;
  shared& operator=(const shared&) = delete;

  Object* operator->() const { return object_; }
  Object& operator*() const { return *object_; }

 private:
  Object* object_;
};

#endif
