// The service's end of lock and queue, without a service: a test makes them, lays replies out
// before a client asks, and takes the requests off afterwards.
#ifndef PROREFLAX_TESTS_SUPPORT_REQUEST_QUEUE_H
#define PROREFLAX_TESTS_SUPPORT_REQUEST_QUEUE_H

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

/// The text of a System V message: all behind its type.
using bytes = std::vector<std::uint8_t>;

/// Numbers in the machine's byte order, texts with their NUL, one behind the other:
/// row(i32(7), u32(10), u16(0), text("LAN")).
bytes u16(std::uint16_t number);
bytes u32(std::uint32_t number);
bytes i32(std::int32_t number);
bytes text(std::string_view characters);
bytes raw(std::string_view characters);

template <typename... Parts>
bytes row(const Parts&... parts) {
  bytes all;
  (all.insert(all.end(), parts.begin(), parts.end()), ...);
  return all;
}

/// The reply type of this process, as a number of the message text.
bytes own_reply_type();

/// A message as it stands on the queue.
struct message {
  long type = 0;
  bytes text;
};

/// What msgsnd and msgrcv move: the type, then the text.
struct message_buffer {
  long type;
  std::uint8_t text[8192];
};

class request_queue {
 public:
  /// Makes the semaphore (value 1) and the queue under the fixed keys.
  request_queue();
  ~request_queue();
  request_queue(const request_queue&) = delete;
  request_queue& operator=(const request_queue&) = delete;

  static bool keys_in_use();

  /// Puts a reply to this process on the queue.
  void reply(const bytes& text) const;
  /// Puts a reply whose header carries only a result.
  void reply_with(std::uint32_t result) const;
  /// Puts a reply to a get whose value stands at the start of the payload.
  void reply_with_value(std::string_view value) const;

  /// Takes the next message of a type off the queue; nothing when there is none.
  std::optional<message> take(long type = 1) const;

  /// How many messages are on the queue.
  int waiting() const;

  /// 1 free, 0 held.
  int lock_value() const;
  void set_lock_value(int value) const;
  /// How many processes wait for the lock.
  int waiting_for_lock() const;

  void remove_queue();
  void remove_lock();

  int queue_id() const { return queue_; }
  int lock_id() const { return lock_; }

 private:
  int lock_;
  int queue_;
};

#endif
