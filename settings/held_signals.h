// Signals that would end the program half-way wait for as long as an object lives.
#ifndef PROREFLAX_SETTINGS_HELD_SIGNALS_H
#define PROREFLAX_SETTINGS_HELD_SIGNALS_H

#include <csignal>

namespace proreflax::settings {

class held_signals {
 public:
  held_signals() {
    sigset_t ending;
    sigemptyset(&ending);
    for (const int each : {SIGINT, SIGTERM, SIGHUP}) {
      sigaddset(&ending, each);
    }
    sigprocmask(SIG_BLOCK, &ending, &before_);
  }
  ~held_signals() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
  held_signals(const held_signals&) = delete;
  held_signals& operator=(const held_signals&) = delete;

 private:
  sigset_t before_{};
};

}  // namespace proreflax::settings

#endif
