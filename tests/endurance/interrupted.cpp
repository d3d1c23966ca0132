// Clients whose waits are interrupted by a timer all the time. An interrupted operation reports
// EINTR and is tried again; one that reports success has the value that this client set.
//
// config.h describes the window that is left: a late reply that the service sends between the next
// request's look for it and that request itself. It is seldom hit; a library that never looked
// would give a wrong value after one interruption in twenty-five.
#include "tests/endurance/crew.h"
#include "tests/support/signal_storm.h"

namespace endurance {
namespace {

constexpr unsigned clients = 4;
constexpr double patience_seconds = 15;
constexpr unsigned long interruptions_per_wrong_value = 100;

struct counts {
  std::atomic<unsigned long> right;
  std::atomic<unsigned long> wrong;
  std::atomic<unsigned long> interrupted;
};

class client {
 public:
  client(const plan& planned, unsigned number, counts& seen)
      : random_{planned, number}, seen_{seen}, number_{number} {}

  void work() {
    const std::uint32_t value = random_.any();
    if (set("first", value) && set("second", ~value)) {
      expect("first", value);
      expect("second", ~value);
    }
    if (random_.one_in(20)) {
      request([] { return cfc_flush_all_nosem(); });
    }
  }

 private:
  std::string key(const char* name) const { return name + std::to_string(number_); }

  bool set(const char* name, std::uint32_t value) {
    const std::string own = key(name);
    return request([&] { return __cfc_set_u32(0, "WORK", own.c_str(), value); });
  }

  void expect(const char* name, std::uint32_t value) {
    const std::string own = key(name);
    std::uint32_t back = 0;
    if (!request([&] { return __cfc_get_u32(0, "WORK", own.c_str(), &back); })) {
      return;
    }
    ++(back == value ? seen_.right : seen_.wrong);
  }

  /// Tries until it is not interrupted. False when the result is not success.
  template <typename Request>
  bool request(Request once) {
    constexpr int most_tries = 200;
    std::uint32_t result = EINTR;
    for (int tries = 0; result == EINTR && tries < most_tries; ++tries) {
      result = once();
      seen_.interrupted += result == EINTR;
    }
    seen_.wrong += result != 0 && result != EINTR;
    return result == 0;
  }

  dice random_;
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
    asking.add([&, each = client{planned, i, *seen}]() mutable {
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
  if (seen->wrong * interruptions_per_wrong_value > seen->interrupted) {
    found.violation("%lu wrong values or results after %lu interruptions", seen->wrong.load(),
                    seen->interrupted.load());
  }
  found.figure(static_cast<unsigned long>(*signals), "signals");
  found.figure(seen->interrupted, "exchanges interrupted");
  found.figure(seen->right, "right values");
  found.figure(seen->wrong, "wrong values or results");
}

}  // namespace endurance
