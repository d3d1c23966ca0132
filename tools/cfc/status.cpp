#include "tools/cfc/status.h"

#include <proreflax/result.h>
#include <sys/msg.h>
#include <sys/sem.h>

#include <cerrno>
#include <cstring>
#include <fstream>

#include "tools/cfc/json_text.h"
#include "tools/cfc/result_text.h"
#include "transport/ipc_keys.h"

namespace cfc {
namespace {

/// The name that the kernel shows for a process; empty when there is no such process.
std::string process_name(int process) {
  std::ifstream file{"/proc/" + std::to_string(process) + "/comm"};
  std::string name;
  std::getline(file, name);
  return name;
}

int ask_lock(int id, int command) {
  return semctl(id, proreflax::lock_semaphore, command);
}

/// Removed between two looks: not there.
bool has_gone(int error) {
  return error == EINVAL || error == EIDRM;
}

lock_status look_at_lock() {
  const int id = semget(proreflax::CFC_SEM_KEY, 0, 0);
  if (id == -1) {
    return {};
  }
  lock_status lock{.present = true, .value = ask_lock(id, GETVAL)};
  if (lock.value == -1) {
    return {.present = !has_gone(errno), .error = has_gone(errno) ? 0 : errno};
  }
  if (lock.value == 0) {
    lock.holder = ask_lock(id, GETPID);
    lock.holder_name = process_name(lock.holder);
  }
  lock.waiting = ask_lock(id, GETNCNT);
  return lock;
}

queue_status look_at_queue() {
  const int id = msgget(proreflax::CFC_MSQ_KEY, 0);
  msqid_ds state{};
  if (id == -1) {
    return {};
  }
  if (msgctl(id, IPC_STAT, &state) == -1) {
    return {.present = !has_gone(errno), .error = has_gone(errno) ? 0 : errno};
  }
  return {.present = true, .messages = state.msg_qnum, .bytes = state.__msg_cbytes};
}

std::string show_holder(const lock_status& lock) {
  if (lock.holder <= 0) {
    return "a process that cannot be seen from here";
  }
  const std::string process = "process " + std::to_string(lock.holder);
  return lock.holder_name.empty() ? process + ", which no longer runs"
                                  : process + " (" + printable(lock.holder_name) + ")";
}

std::string show_value(const lock_status& lock) {
  if (lock.value == 0) {
    return "held by " + show_holder(lock);
  }
  return lock.value == 1
             ? "free"
             : "raised to " + std::to_string(lock.value) + ", so that it excludes nobody";
}

}  // namespace

std::uint32_t status_report::code() const {
  if (!lock.present) {
    return CFC_ERR_NO_SEM;
  }
  if (!queue.present) {
    return CFC_ERR_NO_MSQ;
  }
  return static_cast<std::uint32_t>(lock.error != 0 ? lock.error : queue.error);
}

status_report look_at_service() {
  return {look_at_lock(), look_at_queue()};
}

std::string show_lock(const lock_status& lock) {
  if (!lock.present) {
    return "lock: not there";
  }
  if (lock.error != 0) {
    return std::string{"lock: there, but not to be looked at: "} + std::strerror(lock.error);
  }
  const std::string state = "lock: " + show_value(lock);
  return lock.waiting > 0 ? state + "; " + std::to_string(lock.waiting) + " waiting for it" : state;
}

std::string show_queue(const queue_status& queue) {
  if (!queue.present) {
    return "queue: not there";
  }
  if (queue.error != 0) {
    return std::string{"queue: there, but not to be looked at: "} + std::strerror(queue.error);
  }
  return "queue: " + std::to_string(queue.messages) +
         (queue.messages == 1 ? " message waiting" : " messages waiting");
}

exit_status run(const status_command& command, output& out) {
  const status_report report = look_at_service();
  if (command.json) {
    out.result(json_of(report));
  } else {
    out.result(show_lock(report.lock));
    out.result(show_queue(report.queue));
  }
  const std::uint32_t code = report.code();
  if (code != CFC_OK) {
    out.complain("cfc: status: " + in_words(code, result_sentence(code)));
  }
  return status_of(code);
}

}  // namespace cfc
