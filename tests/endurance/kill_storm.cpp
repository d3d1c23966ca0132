// Clients are killed at random moments while they get, set, hold the lock over several calls, read
// whole sections and flush. Other clients go on meanwhile and check every answer.
//
// Process ids come round, but not within the time in which the service clears up after the dead: a
// reply that it leaves goes to the next process of that id.
#include "tests/endurance/crew.h"
#include "tests/endurance/process_ids.h"

namespace endurance {
namespace {

constexpr unsigned survivors = 4;
constexpr unsigned at_once = 8;
constexpr double kills_per_second = 1000;
constexpr pid_t ids_in_use = 3000;
constexpr unsigned patience_seconds = 15;

struct counts {
  std::atomic<unsigned long> operations;
};

std::string key_of(const char* who, unsigned number) {
  return who + std::to_string(number);
}

void read_section(const report& found) {
  lan_info lan{};
  if (const std::uint32_t result = gui_get_lan_info(&lan); result != 0) {
    found.violation("a whole section: result %u", result);
  } else if (!is_of_one_number(lan)) {
    found.violation("a whole section is mixed from two");
  }
}

void write_section(const report& found, std::uint32_t number) {
  const lan_info lan = lan_of(number);
  if (const std::uint32_t result = gui_set_lan_info(&lan); result != 0) {
    found.violation("set a whole section: result %u", result);
  }
}

/// Two values that survivors alone write, and always together.
void change_pair(const report& found, std::uint32_t number) {
  if (const std::uint32_t result = cfc_get_mutex(); result != 0) {
    found.violation("the lock: result %u", result);
    return;
  }
  std::uint32_t first = 0;
  std::uint32_t second = 1;
  const bool done = __cfc_get_u32(1, "WORK", "first", &first) == 0 &&
                    __cfc_get_u32(1, "WORK", "second", &second) == 0 &&
                    __cfc_set_u32(1, "WORK", "first", number) == 0 &&
                    __cfc_set_u32(1, "WORK", "second", number) == 0;
  cfc_put_mutex();
  if (!done || first != second) {
    found.violation("a pair kept under the lock: %u and %u", first, second);
  }
}

void survive(const report& found, counts& seen, dice& random, unsigned number) {
  const alarm_clock patience{patience_seconds};
  const std::uint32_t value = random.any();
  switch (random.below(4)) {
    case 0:
      read_section(found);
      break;
    case 1:
      change_pair(found, value);
      break;
    case 2:
      if (number == 0) {
        write_section(found, value % 0x10000000);
        break;
      }
      [[fallthrough]];
    default:
      set_and_get(found, key_of("survivor", number).c_str(), value);
  }
  ++seen.operations;
}

void hold_the_lock(dice& random, const char* key) {
  if (cfc_get_mutex() == 0) {
    for (unsigned calls = random.below(4); calls > 0; --calls) {
      std::ignore = __cfc_set_u32(1, "WORK", key, random.any());
    }
    random.pause_up_to_us(500);
    cfc_put_mutex();
  }
}

int work_until_killed(const report& found, dice random, unsigned number) {
  const std::string key = key_of("victim", number);
  for (;;) {
    switch (random.below(4)) {
      case 0:
        read_section(found);
        break;
      case 1:
        hold_the_lock(random, key.c_str());
        break;
      case 2:
        if (random.one_in(20)) {
          std::ignore = cfc_flush_all_nosem();
          break;
        }
        [[fallthrough]];
      default:
        set_and_get(found, key.c_str(), random.any());
    }
  }
}

/// Starts some clients and kills each at a moment of its own.
void kill_a_wave(const plan& planned, const report& found, process_ids& ids, dice& random,
                 unsigned long wave) {
  std::vector<pid_t> doomed;
  for (unsigned i = 0; i < at_once; ++i) {
    const dice own{planned, static_cast<unsigned>(1000 + wave * at_once + i)};
    doomed.push_back(start_child([&] { return work_until_killed(found, own, i); }));
    ids.started(doomed.back());
  }
  for (const pid_t victim : doomed) {
    random.pause_up_to_us(2000);
    kill(victim, SIGKILL);
  }
  for (const pid_t victim : doomed) {
    if (const int status = wait_for_child(victim); status != -SIGKILL) {
      found.violation("a client to be killed ended with status %d", status);
    }
  }
}

/// Every key is there before the memory is measured.
void write_all_once(const report& found) {
  add_section(found, "WORK");
  write_section(found, 1);
  set_and_get(found, "first", 1);
  set_and_get(found, "second", 1);
  for (unsigned i = 0; i < at_once; ++i) {
    set_and_get(found, key_of("victim", i).c_str(), 0);
    set_and_get(found, key_of("survivor", i).c_str(), 0);
  }
  std::ignore = cfc_flush_all_nosem();
}

}  // namespace

void kill_storm(const plan& planned, report& found) {
  prepare_device();
  config_service service{found};
  if (!service.start()) {
    return;
  }
  write_all_once(found);
  const shared<counts> seen;
  crew working{found};
  for (unsigned i = 0; i < survivors; ++i) {
    working.add([&, i, random = dice{planned, i}]() mutable { survive(found, *seen, random, i); });
  }
  dice random{planned, survivors};
  process_ids ids{ids_in_use};
  unsigned long kills = 0;
  const deadline over{planned.seconds};
  kill_a_wave(planned, found, ids, random, 0);
  const footprint before{service};
  for (unsigned long wave = 1; !over.passed() && kills < planned.at_most(kills_per_second);
       ++wave) {
    kill_a_wave(planned, found, ids, random, wave);
    kills += at_once;
  }
  working.expect_to_end(patience_seconds);
  expect_free_lock_and_empty_queue(found);
  found.figure(kills, "clients killed");
  found.figure(seen->operations, "operations of others checked");
  ids.report_rounds(found);
  before.compare(found);
  if (const int status = service.end(SIGTERM); status != 0) {
    found.violation("the service ended with status %d", status);
  }
}

}  // namespace endurance
