// At most one client is between a cfc_get_mutex() that returned 0 and its cfc_put_mutex(), while
// the service is killed and stopped again and again.
//
// Clients write themselves into one shared word on entry, and out of it before they put the lock
// back. A client that gets 230 or 231 is not inside; one that is inside when the service ends stays
// inside until it puts the lock back.
#include "tests/endurance/crew.h"

namespace endurance {
namespace {

constexpr unsigned clients = 6;
constexpr double ends_per_second = 400.0 / 60;
constexpr unsigned patience_seconds = 30;

struct lock_record {
  std::atomic<pid_t> owner;
  std::atomic<unsigned long> entries;
  std::atomic<unsigned long> refusals;
  std::atomic<unsigned long> shared_entries;
};

/// What a client does inside. Results do not matter: a service that starts anew has lost the value.
void use_the_lock(dice& random, const char* key) {
  std::uint32_t value = 0;
  if (random.one_in(2)) {
    std::ignore = __cfc_set_u32(1, "WORK", key, random.any());
    std::ignore = __cfc_get_u32(1, "WORK", key, &value);
  }
  random.pause_up_to_us(400);
}

void enter_and_leave(const report& found, lock_record& record, dice& random) {
  const alarm_clock patience{patience_seconds};
  if (cfc_get_mutex() != 0) {
    ++record.refusals;
    usleep(300);
    return;
  }
  ++record.entries;
  pid_t other = 0;
  const bool alone = record.owner.compare_exchange_strong(other, getpid());
  if (!alone) {
    ++record.shared_entries;
    found.violation("client %d is inside, and so is client %d", getpid(), other);
  }
  use_the_lock(random, "value");
  if (pid_t self = getpid(); alone && !record.owner.compare_exchange_strong(self, 0)) {
    found.violation("client %d was inside, and found %d there", getpid(), self);
  }
  cfc_put_mutex();
  random.pause_up_to_us(200);
}

struct ends {
  unsigned long kills = 0;
  unsigned long stops = 0;
};

/// Ends the service and starts it again: by SIGKILL, every eighth time by a stop signal.
bool end_and_restart(config_service& service, const report& found, dice& random, ends& so_far) {
  constexpr unsigned stop_every = 8;
  if (so_far.stops * (stop_every - 1) < so_far.kills) {
    const int signal = random.one_in(2) ? SIGTERM : SIGINT;
    if (const int status = service.end(signal); status != 0) {
      found.violation("a stopped service ended with status %d", status);
    }
    ++so_far.stops;
  } else {
    if (const int status = service.end(SIGKILL); status != -SIGKILL) {
      found.violation("the service had ended before it was killed, with status %d", status);
    }
    ++so_far.kills;
  }
  random.pause_up_to_us(5000);
  return service.start();
}

}  // namespace

void exclusive_lock(const plan& planned, report& found) {
  prepare_device();
  config_service service{found};
  if (!service.start()) {
    return;
  }
  const shared<lock_record> record;
  crew contenders{found};
  for (unsigned i = 0; i < clients; ++i) {
    contenders.add(
        [&, random = dice{planned, i}]() mutable { enter_and_leave(found, *record, random); });
  }
  dice random{planned, clients};
  ends so_far;
  bool alive = true;
  const deadline over{planned.seconds * 2};
  while (alive && !over.passed() && so_far.kills < planned.at_most(ends_per_second)) {
    random.pause_up_to_us(150000);
    if (const int value = lock_value(); value > 1) {
      found.violation("the lock's value is %d", value);
    }
    alive = end_and_restart(service, found, random, so_far);
  }
  contenders.expect_to_end(patience_seconds);
  expect_free_lock_and_empty_queue(found);
  found.figure(so_far.kills, "kills");
  found.figure(so_far.stops, "stops");
  found.figure(record->entries, "entries");
  found.figure(record->shared_entries, "of them beside another");
  found.figure(record->refusals, "times no lock");
}

}  // namespace endurance
