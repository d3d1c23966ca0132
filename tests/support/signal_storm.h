// Signals in quick succession, each of which interrupts the system call that it meets.
#ifndef PROREFLAX_TESTS_SUPPORT_SIGNAL_STORM_H
#define PROREFLAX_TESTS_SUPPORT_SIGNAL_STORM_H

#include <sys/time.h>

#include <atomic>
#include <csignal>

/// While it lives, this process gets SIGALRM every so
/// many microseconds, and counts them in `count`.
class signal_storm {
 public:
  signal_storm(std::atomic<int>& count, suseconds_t every_microseconds) {
    counter() = &count;
    struct sigaction action {};
    action.sa_handler = [](int) { ++*counter(); };
    sigaction(SIGALRM, &action, &before_);
    set_timer(every_microseconds);
  }
  ~signal_storm() {
    set_timer(0);
    sigaction(SIGALRM, &before_, nullptr);
  }
  signal_storm(const signal_storm&) = delete;
  signal_storm& operator=(const signal_storm&) = delete;

 private:
  static std::atomic<int>*& counter() {
    static std::atomic<int>* current = nullptr;
    return current;
  }

  static void set_timer(suseconds_t every_microseconds) {
    const itimerval timer{{0, every_microseconds}, {0, every_microseconds}};
    setitimer(ITIMER_REAL, &timer, nullptr);
  }

  struct sigaction before_ {};
};

#endif
