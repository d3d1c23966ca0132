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

/// A child process. It ends with the function's int as exit status, and is killed with its object.
class child {
 public:
  template <typename Work>
  explicit child(Work work) : pid_{fork()} {
    if (pid_ == 0) {
      _exit(work());
    }
    if (pid_ == -1) {
      throw std::runtime_error("no child process");
    }
  }
  ~child() { kill_and_wait(); }
  child(const child&) = delete;
  child& operator=(const child&) = delete;

  pid_t pid() const { return pid_; }

  /// The exit status, or minus the signal that ended the child.
  int wait() {
    int status = 0;
    while (waitpid(pid_, &status, 0) == -1 && errno == EINTR) {
    }
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
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
