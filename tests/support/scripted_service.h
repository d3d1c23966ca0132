// A service that does as a test told it: a thread on the other end of lock and queue, with the
// values it holds, the keys it fails on, and a record of every request.
//
// It lives in the test's process but never goes through the fault injector, so that what is counted
// there was done by the code under test. It answers forked children as well.
#ifndef PROREFLAX_TESTS_SUPPORT_SCRIPTED_SERVICE_H
#define PROREFLAX_TESTS_SUPPORT_SCRIPTED_SERVICE_H

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tests/support/request_queue.h"

/// A request as the service found it.
struct seen_request {
  bytes text;  // all of it
  std::uint32_t operation = 0;
  std::string section;
  std::string key;
  std::string value;       // of a set, without its NUL
  std::int32_t asker = 0;  // the reply type that it waits for
  bool lock_held = false;  // when it was taken off the queue
};

/// It answers gets and sets out of what it holds, and every other request with 0. A section or key
/// that it does not hold is answered with 209 or 201, but a set creates the key.
class scripted_service {
 public:
  scripted_service();
  ~scripted_service();
  scripted_service(const scripted_service&) = delete;
  scripted_service& operator=(const scripted_service&) = delete;

  void has_section(std::string_view section);
  void holds(std::string_view section, std::string_view key, std::string_view value);
  void lacks(std::string_view section, std::string_view key);

  /// Answers every request for this key with this code; a set stores nothing.
  void fails(std::string_view section, std::string_view key, std::uint32_t code);

  /// Answers a get of this key with a header that tells of a value of this length, and no value. It
  /// shows how much room the asker has where no reply could carry so long a value.
  void claims(std::string_view section, std::string_view key, std::uint16_t length);

  /// The n-th request from the start, counted from 1, is answered with a code and not carried out.
  void answers(std::size_t nth, std::uint32_t code);

  /// The n-th request is carried out, but its reply is longer than any asker takes.
  void answers_too_long(std::size_t nth);

  /// Before the n-th request is answered, this runs.
  void before_answer(std::size_t nth, std::function<void()> action);

  /// Forgets failures and claims of keys.
  void obeys();

  /// Forgets the values too, and the requests.
  void starts_anew();

  std::optional<std::string> value(std::string_view section, std::string_view key) const;

  /// The requests since the last call.
  std::vector<seen_request> take_requests();

  /// Their keys alone.
  std::vector<std::string> take_keys();

  /// The requests since the last take, in words: "get LAN LanGw", "set LAN LanGw=10.0.0.1",
  /// "register LAN", "flush", "defaults".
  std::vector<std::string> requests() const;

  /// 1 free, 0 held.
  int lock_value() const { return queue_.lock_value(); }
  request_queue& queue() { return queue_; }

 private:
  struct script {
    std::optional<std::string> value;
    std::uint32_t code = 0;
    std::optional<std::uint16_t> claim;
  };
  struct turn {
    std::optional<std::uint32_t> code;
    bool too_long = false;
    std::function<void()> action;
  };

  void serve();
  turn next_turn(const seen_request& request);
  bytes answer(const seen_request& request);
  bytes carry_out(const seen_request& request);
  bytes answer_get(const seen_request& request, const script& key) const;
  script& key_of(std::string_view section, std::string_view key);

  request_queue queue_;
  mutable std::mutex mutex_;
  std::map<std::string, std::map<std::string, script>> sections_;
  std::map<std::size_t, turn> turns_;
  std::size_t requests_seen_ = 0;
  std::vector<seen_request> requests_;
  std::thread thread_;
};

#endif
