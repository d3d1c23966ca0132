// Ordinary work: clients come, do some of everything, check it, and go. The service's memory and
// descriptors stay as they were, with process ids coming round where the kernel lets the run say
// which one is next.
#include <cstring>

#include "tests/endurance/crew.h"
#include "tests/endurance/process_ids.h"

namespace endurance {
namespace {

constexpr unsigned at_once = 4;
constexpr unsigned rounds_of_a_client = 50;
constexpr pid_t ids_in_use = 200;
constexpr double clients_per_second = 1000;
constexpr unsigned patience_seconds = 20;

struct counts {
  std::atomic<unsigned long> operations;
};

class worker {
 public:
  worker(const plan& planned, unsigned number, unsigned place, const report& found)
      : random_{planned, number}, place_{std::to_string(place)}, found_{found} {}

  void work_once() {
    switch (random_.below(8)) {
      case 0:
        return string();
      case 1:
        return binary();
      case 2:
        return address();
      case 3:
        return section();
      case 4:
        return under_the_lock();
      case 5:
        return missing();
      default:
        return set_and_get(found_, ("number" + place_).c_str(), random_.any());
    }
  }

  void flush() { expect(cfc_flush_all_nosem() == 0, "a flush"); }

 private:
  void expect(bool right, const char* what) const {
    if (!right) {
      found_.violation("%s: a wrong result or value", what);
    }
  }

  void string() {
    const std::string set(random_.below(200), static_cast<char>('a' + random_.below(26)));
    const std::string key = "string" + place_;
    char back[200];
    expect(__cfc_set_string(0, "WORK", key.c_str(), set.c_str()) == 0 &&
               __cfc_get_string(0, "WORK", key.c_str(), back, sizeof back) == 0 && set == back,
           "a string");
  }

  void binary() {
    std::uint8_t set[98];
    std::uint8_t back[98];
    std::int32_t count = static_cast<std::int32_t>(random_.below(sizeof set)) + 1;
    std::ranges::generate(set, [&] { return static_cast<std::uint8_t>(random_.any()); });
    const std::string key = "binary" + place_;
    expect(__cfc_set_binary(0, "WORK", key.c_str(), set, count) == 0 &&
               __cfc_get_binary(0, "WORK", key.c_str(), back, &count) == 0 &&
               std::memcmp(set, back, static_cast<std::size_t>(count)) == 0,
           "binary data");
  }

  void address() {
    const std::uint32_t set = random_.any();
    std::uint32_t back = ~set;
    const std::string key = "address" + place_;
    expect(__cfc_set_ip(0, "WORK", key.c_str(), set) == 0 &&
               __cfc_get_ip(0, "WORK", key.c_str(), &back) == 0 && back == set,
           "an address");
  }

  void section() {
    lan_info lan = lan_of(random_.any() % 0x10000000);
    expect(gui_set_lan_info(&lan) == 0 && gui_get_lan_info(&lan) == 0 && is_of_one_number(lan),
           "a whole section");
  }

  void under_the_lock() {
    const std::uint32_t set = random_.any();
    std::uint32_t back = ~set;
    if (cfc_get_mutex() != 0) {
      expect(false, "the lock");
      return;
    }
    const bool right = __cfc_set_u32(1, "WORK", "shared", set) == 0 &&
                       __cfc_get_u32(1, "WORK", "shared", &back) == 0 && back == set;
    cfc_put_mutex();
    expect(right, "a value that all clients write, under the lock");
  }

  void missing() {
    std::uint32_t untouched = 7;
    expect(__cfc_get_u32(0, "WORK", "no such key", &untouched) == CFC_ERR_NO_KEY &&
               __cfc_get_u32(0, "NO SUCH SECTION", "key", &untouched) == CFC_ERR_NO_SECTION &&
               untouched == 7 && cfc_add_app_nosem("WORK") == 0,
           "what is not there");
  }

  dice random_;
  std::string place_;
  const report& found_;
};

int work(const plan& planned, const report& found, counts& seen, unsigned number) {
  worker own{planned, number, number % at_once, found};
  for (unsigned round = 0; round < rounds_of_a_client; ++round) {
    const alarm_clock patience{patience_seconds};
    own.work_once();
    ++seen.operations;
  }
  if (number % 20 == 0) {
    own.flush();
  }
  return 0;
}

/// Clients, each with its place among those that work at once.
class shift {
 public:
  shift(const plan& planned, const report& found, counts& seen)
      : planned_{planned}, found_{found}, seen_{seen} {}

  /// Starts a client in every place that is free.
  void fill(process_ids& ids) {
    for (unsigned place = 0; place < at_once; ++place) {
      if (places_[place] > 0 && !has_ended(places_[place])) {
        continue;
      }
      leave(place);
      const unsigned number = started_++ * at_once + place;
      places_[place] = start_child([&] { return work(planned_, found_, seen_, number); });
      ids.started(places_[place]);
    }
  }

  void end() {
    for (unsigned place = 0; place < at_once; ++place) {
      leave(place);
    }
  }

  unsigned started() const { return started_; }

 private:
  void leave(unsigned place) {
    if (places_[place] > 0) {
      if (const int status = wait_for_child(places_[place]); status != 0) {
        found_.violation("a client ended with status %d", status);
      }
      places_[place] = -1;
    }
  }

  const plan& planned_;
  const report& found_;
  counts& seen_;
  pid_t places_[at_once] = {};
  unsigned started_ = 0;
};

}  // namespace

void mixed_work(const plan& planned, report& found) {
  prepare_device();
  config_service service{found};
  if (!service.start()) {
    return;
  }
  add_section(found, "WORK");
  const shared<counts> seen;
  process_ids ids{ids_in_use};
  shift working{planned, found, *seen};
  const auto work_for = [&](double seconds, unsigned long most) {
    for (const deadline over{seconds};
         !over.passed() && service.runs() && working.started() < most;) {
      working.fill(ids);
      usleep(500);
    }
    working.end();
  };
  // The keys are made, and the memory of the longest values taken, in the first tenth.
  const unsigned long most = planned.at_most(clients_per_second);
  work_for(planned.seconds / 10, most);
  const footprint before{service};
  work_for(planned.seconds * 9 / 10, most);
  expect_free_lock_and_empty_queue(found);
  found.figure(working.started(), "clients");
  found.figure(seen->operations, "operations checked");
  ids.report_rounds(found);
  before.compare(found);
  if (const int status = service.end(SIGTERM); status != 0) {
    found.violation("the service ended with status %d", status);
  }
}

}  // namespace endurance
