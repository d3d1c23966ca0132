// One exchange with a service in bare system calls, and a service that answers every request alike.
#ifndef PROREFLAX_BENCH_BARE_QUEUE_H
#define PROREFLAX_BENCH_BARE_QUEUE_H

#include <sys/types.h>

#include <cstddef>
#include <string_view>

namespace bench {

/// A child process that takes requests off the queue and answers each with `value`, until this
/// object goes.
class echo_process {
 public:
  echo_process(int queue, std::string_view value);
  ~echo_process();
  echo_process(const echo_process&) = delete;
  echo_process& operator=(const echo_process&) = delete;

 private:
  pid_t child_;
};

/// Asks for one value as a program without the library would: look up and take the lock, look up
/// the queue, send, receive, give the lock back. The request is made once, when the object is.
class bare_client {
 public:
  bare_client(std::string_view section, std::string_view key);

  /// False when a call failed.
  bool ask();

  /// The value of the last reply.
  std::string_view value() const;

 private:
  struct message {
    long type;
    char text[256];
  };

  message request_{};
  std::size_t request_bytes_;
  message reply_{};
  std::size_t reply_room_;
  long reply_type_;
};

}  // namespace bench

#endif
