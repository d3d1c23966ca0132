// Random and mutated messages of all types and lengths, while honest clients check every value.
//
// Two things are left out, since a queue that its users share cannot tell them from the real ones:
// a message under the type under which an honest client waits, and a request in an honest client's
// name. A reset to defaults would be executed: none is sent.
#include <sys/msg.h>

#include <cstring>
#include <limits>

#include "tests/endurance/crew.h"
#include "tests/support/request_queue.h"
#include "transport/ipc_keys.h"
#include "transport/message.h"

namespace endurance {
namespace {

constexpr unsigned honest_clients = 3;
constexpr unsigned attackers = 3;
constexpr unsigned patience_seconds = 20;

constexpr std::size_t opcode_at = offsetof(proreflax::cfc_msg, op_result) - proreflax::text_off;

struct world {
  std::atomic<unsigned long> sent;
  std::atomic<unsigned long> checked;
  // What each honest client sets now, and what was the last that it found again.
  std::atomic<std::uint32_t> set[honest_clients];
  std::atomic<std::uint32_t> found[honest_clients];
};

/// Whether a number is the reply type of a process that must not be impersonated.
class protected_types {
 public:
  void add(pid_t id) { ids_.push_back(id + 2); }
  bool hold(long type) const { return std::ranges::find(ids_, type) != ids_.end(); }

 private:
  std::vector<long> ids_;
};

class attacker {
 public:
  attacker(const plan& planned, unsigned number, const protected_types& honest, pid_t service)
      : random_{planned, number}, honest_{honest}, service_{service} {}

  void attack(world& seen) {
    const int queue = msgget(proreflax::CFC_MSQ_KEY, 0);
    for (unsigned left = random_.below(20) + 1; left > 0; --left) {
      const bytes content = harmless(any_text());
      message_buffer message{any_type(), {}};
      std::ranges::copy(content, message.text);
      if (msgsnd(queue, &message, content.size(), IPC_NOWAIT) == 0) {
        ++seen.sent;
      }
    }
    random_.pause_up_to_us(1000);
  }

 private:
  bytes any_text() {
    switch (random_.below(4)) {
      case 0:
        return random_bytes();
      case 1:
        return mutated(request());
      case 2: {
        bytes resized = request();
        resized.resize(random_.below(random_.one_in(4) ? 8192 : 500));
        return resized;
      }
      default:
        return with_any_offsets();
    }
  }

  bytes random_bytes() {
    static constexpr unsigned ends[] = {8, 40, 400, 8192};
    bytes all(random_.below(ends[random_.below(4)]));
    for (auto& each : all) {
      each = static_cast<std::uint8_t>(random_.any());
    }
    return all;
  }

  std::uint32_t any_opcode() {
    static constexpr std::uint32_t known[] = {1, 9, 9, 10, 10, 12};
    return random_.one_in(8) ? random_.below(20) : known[random_.below(6)];
  }

  bytes request() {
    const std::string key = "key" + std::to_string(random_.below(30));
    const std::string value(random_.below(random_.one_in(8) ? 260 : 40), 'v');
    const auto key_off = static_cast<std::uint16_t>(sizeof "HOSTILE");
    const auto value_off = static_cast<std::uint16_t>(key_off + key.size() + 1);
    return row(i32(any_reply_type()), u32(any_opcode()), u16(0), u16(key_off), u16(value_off),
               u16(static_cast<std::uint16_t>(value.size() + 1)), text("HOSTILE"), text(key),
               text(value));
  }

  bytes mutated(bytes all) {
    for (unsigned changes = random_.below(4) + 1; changes > 0; --changes) {
      all[random_.below(static_cast<unsigned>(all.size()))] =
          static_cast<std::uint8_t>(random_.any());
    }
    return all;
  }

  bytes with_any_offsets() {
    bytes all = request();
    for (std::size_t at = 8; at < 16; at += 2) {
      const auto offset = static_cast<std::uint16_t>(random_.any());
      std::memcpy(&all[at], &offset, sizeof offset);
    }
    return all;
  }

  std::int32_t any_reply_type() {
    const std::int32_t own = getpid() + 2;
    const std::int32_t types[] = {
        own, own, own, 0, 1, 2, -1, service_ + 2, 30000, std::numeric_limits<std::int32_t>::max()};
    return types[random_.below(std::size(types))];
  }

  long any_type() {
    if (!random_.one_in(3)) {
      return proreflax::request_type;
    }
    // Mostly those of processes that do not live, or the service's own.
    const long types[] = {2,
                          service_ + 2,
                          getpid() + 2,
                          static_cast<long>(random_.below(40000)) + 1,
                          static_cast<long>(random_.any() / 2 | 1),
                          std::numeric_limits<long>::max()};
    const long type = types[random_.below(std::size(types))];
    return honest_.hold(type) ? proreflax::request_type : type;
  }

  bytes harmless(bytes all) const {
    std::uint32_t opcode = 0;
    std::int32_t reply_type = 0;
    if (all.size() >= opcode_at + sizeof opcode) {
      std::memcpy(&opcode, &all[opcode_at], sizeof opcode);
      if (opcode == proreflax::CFC_OP_TO_DEFAULT) {
        all[opcode_at] = all[opcode_at + 3] = 0;
      }
    }
    if (all.size() >= sizeof reply_type) {
      std::memcpy(&reply_type, all.data(), sizeof reply_type);
      if (honest_.hold(reply_type)) {
        std::memset(all.data(), 0, sizeof reply_type);
      }
    }
    return all;
  }

  dice random_;
  const protected_types& honest_;
  pid_t service_;
};

void ask(const report& found, world& seen, unsigned number, std::uint32_t value) {
  const alarm_clock patience{patience_seconds};
  seen.set[number] = value;
  set_and_get(found, ("honest" + std::to_string(number)).c_str(), value);
  seen.found[number] = value;
  ++seen.checked;
}

/// A client that was killed while it waited may have set its value or not.
void expect_value_of(unsigned number, const report& found, const world& seen) {
  std::uint32_t value = 0;
  const std::string key = "honest" + std::to_string(number);
  const std::uint32_t result = __cfc_get_u32(0, "WORK", key.c_str(), &value);
  if (result != 0 || (value != seen.set[number] && value != seen.found[number])) {
    found.violation("%s after a restart: result %u, %u instead of %u", key.c_str(), result, value,
                    seen.set[number].load());
  }
}

void expect_values_after_restart(config_service& service, const report& found, const world& seen) {
  if (const int status = service.end(SIGTERM); status != 0) {
    found.violation("the service ended with status %d", status);
  }
  if (service.start()) {
    ends_in_time(found, "the check of all values", [&] {
      for (unsigned i = 0; i < honest_clients; ++i) {
        expect_value_of(i, found, seen);
      }
    });
  }
}

}  // namespace

void hostile_messages(const plan& planned, report& found) {
  prepare_device();
  config_service service{found};
  if (!service.start()) {
    return;
  }
  add_section(found, "WORK");
  add_section(found, "HOSTILE");
  const shared<world> seen;
  protected_types honest;
  honest.add(getpid());
  crew asking{found};
  for (unsigned i = 0; i < honest_clients; ++i) {
    asking.add([&, i, random = dice{planned, i}]() mutable { ask(found, *seen, i, random.any()); });
    honest.add(asking.id_of(i));
  }
  crew attacking{found};
  for (unsigned i = 0; i < attackers; ++i) {
    attacking.add([&, each = attacker{planned, 100 + i, honest, service.id()}]() mutable {
      each.attack(*seen);
    });
  }
  for (const deadline over{planned.seconds}; !over.passed() && service.runs();) {
    usleep(20000);
  }
  attacking.expect_to_end(5);
  asking.expect_to_end(patience_seconds);
  // A reply to a live process stays until that process takes it. Two that never ask are left, and
  // may have been named: the service itself, and the first process of the namespace.
  constexpr long named_without_asking = 2;
  expect_free_lock_and_empty_queue(found, named_without_asking);
  expect_values_after_restart(service, found, *seen);
  found.figure(seen->sent, "hostile messages");
  found.figure(seen->checked, "values of honest clients checked");
}

}  // namespace endurance
