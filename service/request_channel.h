// The service's end of lock and queue.
//
// The semaphore set has two members: the access lock, and a marker that is 1 while a service lives.
// The marker is raised with SEM_UNDO, so the kernel lowers it when the service is killed: whoever
// raises it from 0 owns the keys, and what stands under them is left over. A client that looks the
// lock up before the service is ready finds it held, and waits.
//
// Replies go to one queue with the requests, each under its asker's process id. An asker that was
// killed, or gave up on a signal, leaves its reply behind. Three rules keep such replies from harm:
//
//  1. A reply is dropped when its asker has a newer request on the queue: it no longer waits for
//     this one. Earlier replies to the same asker are removed before another is sent.
//  2. A sweep, 10 ms after a reply and then ever less often while one is left, removes those of
//     dead askers. A process id does not come round again in so short a time.
//  3. Sending never blocks. On a full queue, a sweep clears what nobody waits for, and requests
//     that wait are taken into memory; as the last resort every reply that was left goes, since the
//     one asker that holds the lock is the one to be answered.
//
// Messages that are neither requests nor replies of this service go with every sweep, once a second
// at the latest.
#ifndef PROREFLAX_SERVICE_REQUEST_CHANNEL_H
#define PROREFLAX_SERVICE_REQUEST_CHANNEL_H

#include <sys/types.h>

#include <cstddef>
#include <cstdint>

#include "service/reply.h"

namespace proreflax {

/// A request as it came off the queue. One byte of room beyond the longest, so that a longer one
/// shows.
struct incoming {
  std::size_t length = 0;
  char text[request_text_max + 1] = {};
};

/// Who may use lock and queue.
struct permissions {
  mode_t mode = 0600;
  bool has_group = false;
  gid_t group = 0;
};

/// A small set of message types.
class remembered {
 public:
  static constexpr std::size_t room = 64;

  bool holds(long type) const {
    for (std::size_t i = 0; i < count_; ++i) {
      if (types_[i] == type) {
        return true;
      }
    }
    return false;
  }
  bool empty() const { return count_ == 0; }
  bool full() const { return count_ == room; }
  void add(long type) { types_[count_++] = type; }

 private:
  long types_[room] = {};
  std::size_t count_ = 0;
};

class request_channel {
 public:
  enum class claim_result : std::uint8_t { claimed, live_service, failed };

  /// Makes the lock, held for the time being, clearing up what a killed service left. errno tells
  /// why it failed.
  claim_result claim(const permissions& allowed);

  /// Makes the queue and frees the lock: clients may come. False with errno when it cannot.
  bool open(const permissions& allowed);

  enum class wait_result : std::uint8_t { request, interrupted, lost };

  /// Waits for a request. A signal interrupts the wait; `lost` when the queue is no longer there.
  wait_result next(incoming* request);

  /// Sends a reply, or drops it when nobody waits for it. False when nobody could be told.
  bool send(const reply& answer);

  /// Removes what nobody waits for. To be called whenever the timer's signal, SIGALRM, has come:
  /// once a second at least.
  void sweep();

  /// Whether clients still find the lock. False with errno when it was removed.
  bool has_lock() const;

  /// Removes queue and lock.
  void close();

 private:
  enum class keep : std::uint8_t { of_live_askers, nothing };

  bool put(const reply& answer) const;
  bool receive(int flags, incoming* request) const;
  void take_waiting_requests();
  bool is_superseded(const reply& answer) const;
  void discard(long type) const;
  void sweep(keep kept);
  void remember(long type);
  std::size_t waiting_messages() const;
  void set_timer(long interval_ms);

  int lock_ = -1;
  int queue_ = -1;

  remembered unclaimed_;  // types of replies that may still be on the queue

  // Requests taken off a full queue, or seen early; a ring.
  static constexpr std::size_t backlog_max = 16;
  incoming backlog_[backlog_max];
  std::size_t backlog_first_ = 0;
  std::size_t backlog_count_ = 0;

  long timer_ms_ = 0;
};

}  // namespace proreflax

#endif
