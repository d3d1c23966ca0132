// The service's end of lock and queue.
//
// Replies travel on one queue with the requests, each under its client's process id. A client that
// was killed, or gave up on a signal, leaves its reply behind; and anyone who may write to the queue
// may flood it. Four rules keep an honest client safe from both:
//
//  1. A reply is dropped, also one that was kept, when one of the next requests is its client's:
//     the client no longer waits for it. Earlier replies to the same client are removed before
//     another is sent.
//  2. A sweep, 10 ms after a reply and then ever less often while one is left, removes those of
//     dead clients, and with them whatever is neither a request nor a reply of this service.
//  3. Sending never blocks. A quarter of the queue is closed to requests: it opens for the moment in
//     which a reply is sent that finds no room otherwise.
//  4. A reply that finds no room even so is kept in memory, and tried again after every request
//     that is taken off the queue and with every sweep. No reply to a live client is ever dropped
//     for another one.
#ifndef PROREFLAX_SERVICE_REQUEST_CHANNEL_H
#define PROREFLAX_SERVICE_REQUEST_CHANNEL_H

#include <cstddef>
#include <cstdint>

#include "service/access_lock.h"
#include "service/permissions.h"
#include "service/reply.h"
#include "service/reply_list.h"
#include "service/type_set.h"

namespace proreflax {

/// A request as it came off the queue. One byte of room beyond the longest, so that a longer one
/// shows.
struct incoming {
  std::size_t length = 0;
  char text[request_text_max + 1] = {};
};

class request_channel {
 public:
  using claim_result = access_lock::claim_result;

  /// Claims the lock, and removes the queue that a killed service left: its clients stop waiting
  /// for replies that nobody will send. After `failed`, failed_call() and errno say why.
  claim_result claim(const permissions& allowed);
  const char* failed_call() const { return failed_call_; }

  /// Creates the queue and releases the lock: clients may come. False as above when it cannot.
  bool open(const permissions& allowed);

  enum class wait_result : std::uint8_t { request, interrupted, lost };

  /// Waits for a request. A signal interrupts the wait; `lost` when the queue no longer exists.
  wait_result next(incoming* request);

  /// Sends a reply, or drops it when its client no longer waits for it, or keeps it until there is
  /// room. False with errno when it can do none of these.
  bool send(const reply& answer);

  /// Removes what nobody waits for, and sends what was kept. To be called whenever the timer's
  /// signal, SIGALRM, has come: once a second at least.
  void sweep();

  /// Whether clients still find the lock. False with errno when it was removed.
  bool has_lock() const { return lock_.exists(); }

  /// Removes the queue, lets those who wait for the lock come through, and removes the lock.
  void close();

 private:
  enum class taken : std::uint8_t { message, none, no_memory };

  bool failure(const char* call);
  bool create_queue(const permissions& allowed);
  bool reserve_room(const permissions& allowed);
  bool receive(int flags, incoming* request) const;
  void take_waiting_requests();
  bool is_superseded(long type) const;
  void discard(long type) const;
  bool put(const long* message, std::size_t length) const;
  bool limit_bytes(std::size_t most) const;
  void send_kept();
  void remember(long type);
  void remove_unclaimed();
  taken take_other_message(type_set* left);
  std::size_t waiting_messages() const;
  void set_timer(long interval_ms);

  access_lock lock_;
  int queue_ = -1;
  const char* failed_call_ = "";

  // How many bytes the queue takes from clients, and from the service.
  std::size_t request_bytes_ = 0;
  std::size_t reply_bytes_ = 0;

  type_set unclaimed_;         // types of replies that may still be on the queue
  bool some_unnoted_ = false;  // memory was short: there may be others
  std::size_t swept_size_ = 0;
  reply_list kept_;

  // Requests taken off a full queue, or seen early; a ring.
  static constexpr std::size_t backlog_max = 16;
  incoming backlog_[backlog_max];
  std::size_t backlog_first_ = 0;
  std::size_t backlog_count_ = 0;

  long timer_ms_ = 0;
};

}  // namespace proreflax

#endif
