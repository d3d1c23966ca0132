// The client processes of a run.
//
// A client that waits too long for one operation is ended by its alarm clock or, where it has none,
// killed when the crew is dismissed: either is a violation.
#ifndef PROREFLAX_TESTS_ENDURANCE_CREW_H
#define PROREFLAX_TESTS_ENDURANCE_CREW_H

#include <proreflax/config.h>
#include <proreflax/sections.h>

#include <algorithm>
#include <memory>
#include <tuple>
#include <vector>

#include "tests/endurance/config_service.h"

namespace endurance {

class crew {
 public:
  explicit crew(report& found) : found_{found} {}

  /// Starts a client that does `work()` again and again until the crew is dismissed.
  template <typename Work>
  void add(Work work) {
    members_.push_back(std::make_unique<child>([&] {
      while (!*dismissed_) {
        work();
      }
      return 0;
    }));
  }

  /// Lets all clients end after what they are doing. Those that do not within so many seconds are
  /// killed; how many is returned, and not yet a violation.
  std::size_t dismiss(double seconds) {
    *dismissed_ = true;
    const deadline late{seconds};
    const auto all_ended = [&] {
      return std::ranges::all_of(members_, [](const auto& each) { return has_ended(each->pid()); });
    };
    while (!late.passed() && !all_ended()) {
      usleep(500);
    }
    std::size_t killed = 0;
    for (const auto& each : members_) {
      if (has_ended(each->pid())) {
        check(each->wait());
      } else {
        each->kill_and_wait();
        ++killed;
      }
    }
    members_.clear();
    *dismissed_ = false;
    return killed;
  }

  /// The same; a client that does not end is a violation.
  void expect_to_end(double seconds) {
    if (const std::size_t killed = dismiss(seconds); killed != 0) {
      found_.violation("%zu clients did not end within %.0f s", killed, seconds);
    }
  }

  pid_t id_of(std::size_t member) const { return members_[member]->pid(); }

 private:
  void check(int status) const {
    if (status == -SIGALRM) {
      found_.violation("a client waited too long for one operation");
    } else if (status != 0) {
      found_.violation("a client ended with status %d", status);
    }
  }

  report& found_;
  shared<std::atomic<bool>> dismissed_;
  std::vector<std::unique_ptr<child>> members_;
};

/// Ends this process by SIGALRM when it lives so long.
class alarm_clock {
 public:
  explicit alarm_clock(unsigned seconds) { alarm(seconds); }
  ~alarm_clock() { alarm(0); }
  alarm_clock(const alarm_clock&) = delete;
  alarm_clock& operator=(const alarm_clock&) = delete;
};

/// Does `work()` in a process of its own. False, and a violation, when it takes too long.
template <typename Work>
bool ends_in_time(const report& found, const char* what, Work work) {
  constexpr double bound_seconds = 15;
  child worker{[&] {
    work();
    return 0;
  }};
  if (!ends_within(worker.pid(), bound_seconds)) {
    found.violation("%s: no end after %.0f s", what, bound_seconds);
    return false;
  }
  if (const int status = worker.wait(); status != 0) {
    found.violation("%s: ended with status %d", what, status);
  }
  return true;
}

/// The section "LAN", all of it made from one number: a mixture of two is found.
inline lan_info lan_of(std::uint32_t number) {
  return {number, number + 1, number + 2, number + 3, number + 4, number + 5};
}

inline bool is_of_one_number(const lan_info& lan) {
  const lan_info whole = lan_of(lan.ConnType);
  return whole.LanIPAddr == lan.LanIPAddr && whole.LanNetmask == lan.LanNetmask &&
         whole.LanGw == lan.LanGw && whole.DnsSrv1 == lan.DnsSrv1 && whole.DnsSrv2 == lan.DnsSrv2;
}

/// Sets a number and gets it again, both without the lock. What comes back must be what was set.
inline void set_and_get(const report& found, const char* key, std::uint32_t number) {
  std::uint32_t back = 0;
  if (const std::uint32_t result = __cfc_set_u32(0, "WORK", key, number); result != 0) {
    found.violation("set %s: result %u", key, result);
  } else if (const std::uint32_t got = __cfc_get_u32(0, "WORK", key, &back); got != 0) {
    found.violation("get %s: result %u", key, got);
  } else if (back != number) {
    found.violation("get %s: %u, but %u was set", key, back, number);
  }
}

/// Sections that the factory file lacks, made for the run.
inline void add_section(const report& found, const char* name) {
  if (const std::uint32_t result = cfc_add_app_nosem(name); result != 0) {
    found.violation("no section %s: result %u", name, result);
  }
}

}  // namespace endurance

#endif
