// Clients whose waits are interrupted by a timer all the time. An interrupted operation reports
// EINTR and is tried again; one that reports success has the value that this client set.
#include "tests/endurance/crew.h"
#include "tests/support/signal_storm.h"

namespace endurance {
namespace {

constexpr unsigned clients = 4;
constexpr double patience_seconds = 15;

struct counts {
  std::atomic<unsigned long> right;
  std::atomic<unsigned long> wrong;
  std::atomic<unsigned long> interrupted;
};

class client {
 public:
  client(const plan& planned, unsigned number, const report& found, counts& seen)
      : random_{planned, number}, found_{found}, seen_{seen}, number_{number} {}

  void work() {
    const std::uint32_t value = random_.any();
    if (set("first", value) && set("second", ~value)) {
      expect("first", value);
      expect("second", ~value);
    }
    if (random_.one_in(20)) {
      request("a flush", [] { return cfc_flush_all_nosem(); });
    }
  }

 private:
  std::string key(const char* name) const { return name + std::to_string(number_); }

  bool set(const char* name, std::uint32_t value) {
    const std::string own = key(name);
    return request("a set", [&] { return __cfc_set_u32(0, "WORK", own.c_str(), value); });
  }

  void expect(const char* name, std::uint32_t value) {
    const std::string own = key(name);
    std::uint32_t back = 0;
    if (!request("a get", [&] { return __cfc_get_u32(0, "WORK", own.c_str(), &back); })) {
      return;
    }
    if (back == value) {
      ++seen_.right;
    } else {
      ++seen_.wrong;
      found_.violation("%s: 0x%08x, but 0x%08x was set", own.c_str(), back, value);
    }
  }

  /// Tries until it is not interrupted. False, and a violation, when the result is not success.
  template <typename Request>
  bool request(const char* what, Request once) {
    constexpr int most_tries = 200;
    std::uint32_t result = EINTR;
    for (int tries = 0; result == EINTR && tries < most_tries; ++tries) {
      result = once();
      seen_.interrupted += result == EINTR;
    }
    if (result != 0 && result != EINTR) {
      ++seen_.wrong;
      found_.violation("%s that nothing is wrong with: result %u", what, result);
    }
    return result == 0;
  }

  dice random_;
  const report& found_;
  counts& seen_;
  unsigned number_;
};

}  // namespace

void interrupted(const plan& planned, report& found) {
  prepare_device();
  config_service service{found};
  if (!service.start()) {
    return;
  }
  add_section(found, "WORK");
  const shared<counts> seen;
  const shared<std::atomic<int>> signals;
  crew asking{found};
  for (unsigned i = 0; i < clients; ++i) {
    asking.add([&, each = client{planned, i, found, *seen}]() mutable {
      const signal_storm storm{*signals, 150 + 250 * static_cast<suseconds_t>(i)};
      for (int round = 0; round < 100; ++round) {
        each.work();
      }
    });
  }
  for (const deadline over{planned.seconds}; !over.passed() && service.runs();) {
    usleep(20000);
  }
  asking.expect_to_end(patience_seconds);
  expect_free_lock_and_empty_queue(found);
  if (const int status = service.end(SIGTERM); status != 0) {
    found.violation("the service ended with status %d", status);
  }
  found.figure(static_cast<unsigned long>(*signals), "signals");
  found.figure(seen->interrupted, "exchanges interrupted");
  found.figure(seen->right, "right values");
  found.figure(seen->wrong, "wrong values or results");
}

}  // namespace endurance
