// Processes that send the shortest requests as fast as they can and take no reply, while honest
// clients go on. During the flood an honest client may have to wait; once it has ended, each one
// must get its reply within a bound.
#include <sys/msg.h>

#include "tests/endurance/crew.h"
#include "tests/support/request_queue.h"
#include "transport/ipc_keys.h"
#include "transport/message.h"

namespace endurance {
namespace {

constexpr unsigned honest_clients = 2;
constexpr double bound_seconds = 5;

struct form {
  const char* name;
  unsigned processes;
  int flags;
};

constexpr form forms[] = {{"one process, blocking", 1, 0},
                          {"one process, not blocking", 1, IPC_NOWAIT},
                          {"four processes, blocking", 4, 0},
                          {"four processes, not blocking", 4, IPC_NOWAIT}};

struct world {
  std::atomic<unsigned long> sent;
  std::atomic<unsigned long> answered;
  std::atomic<long> worst_us;
};

void send_for_ever(world& seen, int flags) {
  const int queue = msgget(proreflax::CFC_MSQ_KEY, 0);
  constexpr std::uint32_t unknown_opcode = 0;
  const bytes header = row(own_reply_type(), u32(unknown_opcode), u16(0), u16(0), u16(0), u16(0));
  message_buffer message{proreflax::request_type, {}};
  std::ranges::copy(header, message.text);
  for (;;) {
    if (msgsnd(queue, &message, header.size(), flags) == 0) {
      ++seen.sent;
    }
  }
}

void note_longest(std::atomic<long>& worst_us, long took_us) {
  for (long worst = worst_us; took_us > worst && !worst_us.compare_exchange_weak(worst, took_us);) {
  }
}

void ask(const report& found, world& seen, const char* key, std::uint32_t number) {
  const auto began = std::chrono::steady_clock::now();
  set_and_get(found, key, number);
  const auto took = std::chrono::steady_clock::now() - began;
  const auto took_us = std::chrono::duration_cast<std::chrono::microseconds>(took).count();
  note_longest(seen.worst_us, static_cast<long>(took_us));
  ++seen.answered;
}

void flood_in(const form& chosen, const plan& planned, report& found, unsigned long& sent) {
  prepare_device();
  config_service service{found};
  if (!service.start()) {
    return;
  }
  add_section(found, "WORK");
  const shared<world> seen;
  crew asking{found};
  for (unsigned i = 0; i < honest_clients; ++i) {
    asking.add([&, i, random = dice{planned, i}]() mutable {
      ask(found, *seen, ("honest" + std::to_string(i)).c_str(), random.any());
    });
  }
  std::vector<std::unique_ptr<child>> flooding;
  for (unsigned i = 0; i < chosen.processes; ++i) {
    flooding.push_back(std::make_unique<child>([&]() -> int {
      send_for_ever(*seen, chosen.flags);
      return 0;
    }));
  }
  usleep(static_cast<useconds_t>(planned.seconds / std::size(forms) * 1e6));
  const unsigned long answered_meanwhile = seen->answered;
  flooding.clear();
  const std::size_t hung = asking.dismiss(bound_seconds);
  if (hung != 0) {
    found.violation("%s: %zu honest clients got no reply within %.0f s of the flood's end",
                    chosen.name, hung, bound_seconds);
  }
  expect_free_lock_and_empty_queue(found);
  if (const int status = service.end(SIGTERM); status != 0) {
    found.violation("%s: the service ended with status %d", chosen.name, status);
  }
  sent += seen->sent;
  found.figure(std::string{chosen.name} + ": " + std::to_string(answered_meanwhile) +
               " honest operations meanwhile, " +
               (hung != 0 ? std::to_string(hung) + " without an end"
                          : "worst " + std::to_string(seen->worst_us / 1000) + " ms"));
}

}  // namespace

void flood(const plan& planned, report& found) {
  unsigned long sent = 0;
  for (const form& each : forms) {
    flood_in(each, planned, found, sent);
  }
  found.figure(sent, "messages");
}

}  // namespace endurance
