// Exchanges with a service in bare system calls, and a service that replies immediately.
#ifndef PROREFLAX_BENCH_BARE_QUEUE_H
#define PROREFLAX_BENCH_BARE_QUEUE_H

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

/// A child process that receives requests from the queue until this object is destroyed. It does
/// not read them: it replies with the values in turn, and starts again after the last.
class echo_process {
 public:
  echo_process(int queue, const std::vector<std::string>& values);
  ~echo_process();
  echo_process(const echo_process&) = delete;
  echo_process& operator=(const echo_process&) = delete;

 private:
  pid_t child_;
};

/// Reads values of a section as a program without the library would: look up and take the lock,
/// look up the queue, send and receive for each key, release the lock. The requests are built once,
/// by the constructor.
class bare_client {
 public:
  bare_client(std::string_view section, const std::vector<std::string>& keys);

  /// False when a call failed.
  bool get_values();

  /// The value of the last reply.
  std::string_view value() const;

 private:
  template <std::size_t TextBytes>
  struct message {
    long type;
    char text[TextBytes];
  };
  struct request {
    std::size_t bytes;
    message<96> sent;
  };

  request request_for(std::string_view section, std::string_view key) const;
  bool exchange(int queue, const request& asked);

  long reply_type_;
  std::vector<request> requests_;
  message<296> reply_{};
};

}  // namespace bench

#endif
