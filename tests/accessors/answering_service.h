// A service of a few lines: answers gets and sets out of a map, in a thread of the test, and keeps
// what it was asked. It shares no code with the service that ships.
#ifndef PROREFLAX_TESTS_ACCESSORS_ANSWERING_SERVICE_H
#define PROREFLAX_TESTS_ACCESSORS_ANSWERING_SERVICE_H

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/support/request_queue.h"

struct asked {
  bool is_set = false;
  std::string section;
  std::string key;
  std::string value;   // of a set
  int lock_value = 0;  // while it was answered: 0 held
};

class answering_service {
 public:
  answering_service();
  ~answering_service();
  answering_service(const answering_service&) = delete;
  answering_service& operator=(const answering_service&) = delete;

  void holds(const std::string& section, const std::string& key, const std::string& value);
  void lacks(const std::string& section, const std::string& key);
  /// Answers every get and set of this key with a result, and nothing else.
  void refuses(const std::string& section, const std::string& key, std::uint32_t result);
  /// No longer.
  void accepts(const std::string& section, const std::string& key);

  /// The value held; "(none)" when there is none.
  std::string value(const std::string& section, const std::string& key) const;

  /// All requests since the last call.
  std::vector<asked> requests();
  /// Their keys.
  std::vector<std::string> keys();

  /// How often it was asked to write everything to flash.
  int flushes() const;

  const request_queue& queue() const { return queue_; }

 private:
  using name = std::pair<std::string, std::string>;

  void serve();
  bytes answer(const bytes& request);

  request_queue queue_;
  mutable std::mutex mutex_;
  std::map<name, std::string> values_;
  std::map<name, std::uint32_t> refused_;
  std::vector<asked> asked_;
  int flushes_ = 0;
  std::thread thread_;
};

#endif
