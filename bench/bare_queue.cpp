#include "bench/bare_queue.h"

#include <sys/msg.h>
#include <sys/prctl.h>
#include <sys/sem.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <stdexcept>

#include "transport/ipc_keys.h"
#include "transport/message.h"

namespace bench {
namespace {

using namespace proreflax;

/// The header of a message text.
struct text_header {
  std::int32_t reply_type;
  std::uint32_t result;
  std::uint16_t section_off;
  std::uint16_t key_off;
  std::uint16_t value_off;
  std::uint16_t value_len;
};
static_assert(sizeof(text_header) == text_header_bytes);

[[noreturn]] void echo(int queue, const std::vector<std::string>& values) {
  struct {
    long type;
    char text[4096];
  } message;
  for (std::size_t next = 0;; next = (next + 1) % values.size()) {
    const std::string& value = values[next];
    if (msgrcv(queue, &message, sizeof message.text, request_type, 0) == -1) {
      _exit(1);
    }
    text_header header;
    std::memcpy(&header, message.text, sizeof header);
    message.type = header.reply_type;
    header = {.reply_type = header.reply_type,
              .result = 0,
              .section_off = 0,
              .key_off = 0,
              .value_off = 0,
              .value_len = static_cast<std::uint16_t>(value.size())};
    std::memcpy(message.text, &header, sizeof header);
    std::memcpy(message.text + sizeof header, value.data(), value.size());
    if (msgsnd(queue, &message, sizeof header + value.size(), 0) == -1) {
      _exit(1);
    }
  }
}

bool change_lock(int id, short by) {
  sembuf change{lock_semaphore, by, SEM_UNDO};
  return semop(id, &change, 1) == 0;
}

}  // namespace

echo_process::echo_process(int queue, const std::vector<std::string>& values) : child_{fork()} {
  if (child_ == -1) {
    throw std::runtime_error("cannot start the echo process");
  }
  if (child_ == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    echo(queue, values);
  }
}

echo_process::~echo_process() {
  kill(child_, SIGTERM);
  waitpid(child_, nullptr, 0);
}

bare_client::bare_client(std::string_view section, const std::vector<std::string>& keys)
    : reply_type_{getpid() + reply_type_bias} {
  for (const std::string& key : keys) {
    requests_.push_back(request_for(section, key));
  }
}

bare_client::request bare_client::request_for(std::string_view section,
                                              std::string_view key) const {
  request built{.bytes = text_header_bytes + section.size() + 1 + key.size() + 1,
                .sent = {.type = request_type, .text = {}}};
  if (built.bytes > sizeof built.sent.text) {
    throw std::runtime_error("names too long");
  }
  const text_header header{.reply_type = static_cast<std::int32_t>(reply_type_),
                           .result = CFC_OP_GET,
                           .section_off = 0,
                           .key_off = static_cast<std::uint16_t>(section.size() + 1),
                           .value_off = static_cast<std::uint16_t>(section.size() + key.size() + 2),
                           .value_len = 0};
  char* const text = built.sent.text;
  std::memcpy(text, &header, sizeof header);
  std::memcpy(text + sizeof header, section.data(), section.size());
  std::memcpy(text + sizeof header + header.key_off, key.data(), key.size());
  return built;
}

bool bare_client::exchange(int queue, const request& asked) {
  static_assert(sizeof reply_.text >= sizeof asked.sent.text + value_room);
  return msgsnd(queue, &asked.sent, asked.bytes, 0) == 0 &&
         msgrcv(queue, &reply_, asked.bytes + value_room, reply_type_, 0) != -1;
}

bool bare_client::get_values() {
  const int lock = semget(CFC_SEM_KEY, 0, 0);
  if (lock == -1 || !change_lock(lock, -1)) {
    return false;
  }
  const int queue = msgget(CFC_MSQ_KEY, 0);
  const bool received = std::all_of(requests_.begin(), requests_.end(),
                                    [&](const request& each) { return exchange(queue, each); });
  return change_lock(lock, +1) && received;
}

std::string_view bare_client::value() const {
  text_header header;
  std::memcpy(&header, reply_.text, sizeof header);
  return {reply_.text + sizeof header + header.value_off, header.value_len};
}

}  // namespace bench
