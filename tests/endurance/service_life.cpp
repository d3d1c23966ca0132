// The service is stopped and killed at random moments, alone or with its flash tool, while clients
// set and flush.
//
// After each restart every value whose flush was acknowledged is there, and after an end with exit
// status 0 every value whose set was. Some starts are cut short in between, and must not cost saved
// values either. Each value of a key is greater than the one before, so one number shows a loss.
#include "tests/endurance/crew.h"

namespace endurance {
namespace {

constexpr unsigned writers = 3;
constexpr unsigned keys = 8;
constexpr double ends_per_second = 50;
constexpr unsigned patience_seconds = 30;

struct key_record {
  std::atomic<std::uint32_t> tried;
  std::atomic<std::uint32_t> set;
  std::atomic<std::uint32_t> flushed;
};

struct world {
  std::atomic<unsigned long> service;  // how many there were
  std::atomic<bool> hold;
  std::atomic<bool> idle[writers];
  std::atomic<unsigned long> flushes;
  std::atomic<unsigned long> failed_flushes;
  key_record records[writers][keys];
};

std::string key_of(unsigned writer, unsigned key) {
  return "writer" + std::to_string(writer) + "key" + std::to_string(key);
}

void set_next(world& seen, unsigned writer, unsigned key) {
  key_record& record = seen.records[writer][key];
  const std::uint32_t value = ++record.tried;
  if (__cfc_set_u32(0, "WORK", key_of(writer, key).c_str(), value) == 0) {
    record.set = value;
  } else {
    usleep(500);
  }
}

/// `service` is the one that answered the sets so far.
void flush(world& seen, unsigned writer, unsigned long service) {
  std::uint32_t set_before[keys];
  for (unsigned i = 0; i < keys; ++i) {
    set_before[i] = seen.records[writer][i].set;
  }
  if (cfc_flush_all_nosem() != 0) {
    ++seen.failed_flushes;
    return;
  }
  // The next service may have done it, which had nothing to save: it never saw these values.
  if (service != seen.service) {
    return;
  }
  ++seen.flushes;
  for (unsigned i = 0; i < keys; ++i) {
    seen.records[writer][i].flushed = set_before[i];
  }
}

void write(world& seen, dice& random, unsigned writer) {
  seen.idle[writer] = false;
  // Read before `hold`, which is set before it changes.
  const unsigned long service = seen.service;
  if (seen.hold) {
    seen.idle[writer] = true;
    usleep(200);
    return;
  }
  const alarm_clock patience{patience_seconds};
  if (random.one_in(20)) {
    flush(seen, writer, service);
  } else {
    set_next(seen, writer, random.below(keys));
  }
  random.pause_up_to_us(200);
}

/// After a restart: every record against what the service has now.
void check_values(const report& found, world& seen, bool stopped_with_0, const char* how) {
  for (unsigned writer = 0; writer < writers; ++writer) {
    for (unsigned key = 0; key < keys; ++key) {
      key_record& record = seen.records[writer][key];
      std::uint32_t value = 0;
      std::ignore = __cfc_get_u32(0, "WORK", key_of(writer, key).c_str(), &value);
      if (value < record.flushed) {
        found.violation("%s: a flushed value is lost (%u, now %u)", how, record.flushed.load(),
                        value);
      } else if (stopped_with_0 && value < record.set) {
        found.violation("%s, exit status 0: a value is lost (%u, now %u)", how, record.set.load(),
                        value);
      } else if (value > record.tried) {
        found.violation("%s: a value that was never set (%u)", how, value);
      }
      // Not all that the service has now is saved: a client that waited may have set it meanwhile.
      record.set = value;
      record.flushed = std::min(record.flushed.load(), value);
    }
  }
}

/// Waits until no client is in an operation: one that waited for a reply of the service that ended
/// learns of it when the next one is ready. False, and a violation, when one goes on waiting.
bool all_become_idle(const report& found, const world& seen) {
  constexpr double bound_seconds = 10;
  const auto all_idle = [&] {
    return std::ranges::all_of(seen.idle, [](const auto& each) { return each.load(); });
  };
  const deadline late{bound_seconds};
  while (!all_idle() && !late.passed()) {
    usleep(200);
  }
  if (!all_idle()) {
    found.violation("a client still waits %.0f s after a restart", bound_seconds);
  }
  return all_idle();
}

struct way_to_end {
  int signal;
  config_service::target to;
  const char* name;
};

constexpr way_to_end ways[] = {
    {SIGTERM, config_service::target::service, "SIGTERM"},
    {SIGINT, config_service::target::service, "SIGINT"},
    {SIGTERM, config_service::target::group, "SIGTERM to the group"},
    {SIGINT, config_service::target::group, "SIGINT to the group"},
    {SIGKILL, config_service::target::service, "SIGKILL"},
    {SIGKILL, config_service::target::group, "SIGKILL to the group"},
};

struct ends {
  unsigned long killed = 0;
  unsigned long with_0 = 0;
  unsigned long with_other = 0;
  unsigned long starts_cut_short = 0;

  unsigned long all() const { return killed + with_0 + with_other; }
  void count(int status) { ++(status == 0 ? with_0 : status == -SIGKILL ? killed : with_other); }
};

/// A service that is ended while it starts.
void cut_a_start_short(config_service& service, dice& random, ends& so_far) {
  const way_to_end& how = ways[random.below(std::size(ways))];
  service.launch();
  random.pause_up_to_us(12000);
  service.end(how.signal, how.to);
  ++so_far.starts_cut_short;
}

bool end_restart_and_check(config_service& service, report& found, world& seen, dice& random,
                           ends& so_far) {
  const way_to_end& how = ways[random.below(std::size(ways))];
  const int status = service.end(how.signal, how.to);
  seen.hold = true;
  ++seen.service;
  if (status < 0 && (status != -SIGKILL || how.signal != SIGKILL)) {
    found.violation("%s: the service ended by signal %d", how.name, -status);
  }
  so_far.count(status);
  while (random.one_in(4)) {
    cut_a_start_short(service, random, so_far);
  }
  if (!service.start() || !all_become_idle(found, seen)) {
    return false;
  }
  const bool checked = ends_in_time(found, "the check of all values",
                                    [&] { check_values(found, seen, status == 0, how.name); });
  seen.hold = false;
  return checked;
}

}  // namespace

void service_life(const plan& planned, report& found) {
  prepare_device();
  config_service service{found};
  if (!service.start()) {
    return;
  }
  add_section(found, "WORK");
  std::ignore = cfc_flush_all_nosem();
  const shared<world> seen;
  crew writing{found};
  for (unsigned i = 0; i < writers; ++i) {
    writing.add([&, i, random = dice{planned, i}]() mutable { write(*seen, random, i); });
  }
  dice random{planned, writers};
  ends so_far;
  bool alive = true;
  const deadline over{planned.seconds};
  while (alive && !over.passed() && so_far.all() < planned.at_most(ends_per_second)) {
    random.pause_up_to_us(60000);
    alive = end_restart_and_check(service, found, *seen, random, so_far);
  }
  writing.expect_to_end(patience_seconds);
  found.figure(so_far.all(), "ends");
  found.figure(so_far.with_0, "with status 0");
  found.figure(so_far.with_other, "with another");
  found.figure(so_far.killed, "killed");
  found.figure(so_far.starts_cut_short, "starts cut short");
  found.figure(seen->flushes, "flushes acknowledged");
  found.figure(seen->failed_flushes, "failed");
}

}  // namespace endurance
