#include "bench/bare_queue.h"

#include <sys/msg.h>
#include <sys/prctl.h>
#include <sys/sem.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstring>
#include <stdexcept>

#include "transport/ipc_keys.h"
#include "transport/message.h"

namespace bench {
namespace {

using namespace proreflax;

/// The message text's own header, as it travels.
struct text_header {
  std::int32_t reply_type;
  std::uint32_t result;
  std::uint16_t section_off;
  std::uint16_t key_off;
  std::uint16_t value_off;
  std::uint16_t value_len;
};
static_assert(sizeof(text_header) == text_header_bytes);

[[noreturn]] void echo(int queue, std::string_view value) {
  struct {
    long type;
    char text[4096];
  } message;
  for (;;) {
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

echo_process::echo_process(int queue, std::string_view value) : child_{fork()} {
  if (child_ == -1) {
    throw std::runtime_error("cannot start the echo process");
  }
  if (child_ == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    echo(queue, value);
  }
}

echo_process::~echo_process() {
  kill(child_, SIGTERM);
  waitpid(child_, nullptr, 0);
}

bare_client::bare_client(std::string_view section, std::string_view key)
    : request_bytes_{text_header_bytes + section.size() + 1 + key.size() + 1},
      reply_room_{request_bytes_ + value_room},
      reply_type_{getpid() + reply_type_bias} {
  if (reply_room_ > sizeof reply_.text) {
    throw std::runtime_error("names too long");
  }
  request_.type = request_type;
  const text_header header{.reply_type = static_cast<std::int32_t>(reply_type_),
                           .result = CFC_OP_GET,
                           .section_off = 0,
                           .key_off = static_cast<std::uint16_t>(section.size() + 1),
                           .value_off = static_cast<std::uint16_t>(section.size() + key.size() + 2),
                           .value_len = 0};
  std::memcpy(request_.text, &header, sizeof header);
  std::memcpy(request_.text + sizeof header, section.data(), section.size());
  std::memcpy(request_.text + sizeof header + header.key_off, key.data(), key.size());
}

bool bare_client::ask() {
  const int lock = semget(CFC_SEM_KEY, 0, 0);
  if (lock == -1 || !change_lock(lock, -1)) {
    return false;
  }
  const int queue = msgget(CFC_MSQ_KEY, 0);
  const bool answered = msgsnd(queue, &request_, request_bytes_, 0) == 0 &&
                        msgrcv(queue, &reply_, reply_room_, reply_type_, 0) != -1;
  return change_lock(lock, +1) && answered;
}

std::string_view bare_client::value() const {
  text_header header;
  std::memcpy(&header, reply_.text, sizeof header);
  return {reply_.text + sizeof header + header.value_off, header.value_len};
}

}  // namespace bench
