// The service's end of the queue, played by a thread for programs that a test runs: a small map of
// sections, and for each request, by its number, what the test wants to happen when it comes.
#ifndef PROREFLAX_TESTS_TOOLS_CFC_PROMPTED_SERVICE_H
#define PROREFLAX_TESTS_TOOLS_CFC_PROMPTED_SERVICE_H

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/request_queue.h"

class prompted_service {
 public:
  prompted_service();
  ~prompted_service();
  prompted_service(const prompted_service&) = delete;
  prompted_service& operator=(const prompted_service&) = delete;

  void has_section(const std::string& section);
  void holds(const std::string& section, const std::string& key, const std::string& value);
  std::optional<std::string> value(const std::string& section, const std::string& key);

  /// The n-th request from the start, counted from 1, is answered with a code and not carried out.
  void answers(std::size_t nth, std::uint32_t code);
  /// The n-th request is carried out, but its reply is longer than the asker takes.
  void answers_too_long(std::size_t nth);
  /// Before the n-th request is answered, this runs.
  void before_answer(std::size_t nth, std::function<void()> action);

  /// What was asked: "get LAN k", "set LAN k=v", "register NAME", "flush", "defaults".
  std::vector<std::string> requests();

  request_queue& queue() { return queue_; }

 private:
  struct script {
    std::optional<std::uint32_t> code;
    bool too_long = false;
    std::function<void()> action;
  };
  struct request;

  void serve();
  void answer(const request& asked);
  std::uint32_t carry_out(const request& asked, std::string& value);

  request_queue queue_;
  std::mutex guard_;
  std::map<std::string, std::map<std::string, std::string>> sections_;
  std::map<std::size_t, script> scripts_;
  std::vector<std::string> requests_;
  std::thread thread_;
};

#endif
