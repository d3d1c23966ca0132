#include "tools/cfc/status.h"

#include <proreflax/result.h>
#include <sys/msg.h>
#include <sys/sem.h>

#include <cerrno>
#include <cstring>

#include "tools/cfc/json_text.h"
#include "tools/cfc/line_reader.h"
#include "tools/cfc/result_text.h"
#include "transport/ipc_keys.h"

namespace cfc {
namespace {

/// The name that the kernel shows for a process; empty when there is no such process.
std::string process_name(int process) {
  line_reader lines{"/proc/" + std::to_string(process) + "/comm"};
  std::optional<text_line> line = lines.next();
  std::string name = line ? std::move(line->text) : std::string{};
  name.erase(name.find_last_not_of('\n') + 1);
  return name;
}

int ask_lock(int id, int command) {
  return semctl(id, proreflax::lock_semaphore, command);
}

service_status look_at_marker() {
  const int id = semget(proreflax::CFC_SEM_KEY, 0, 0);
  const int value = id == -1 ? -1 : semctl(id, proreflax::marker_semaphore, GETVAL);
  if (value == -1) {
    return {};
  }
  if (value == 0) {
    return {.state = service_status::life::dead};
  }
  const int process = semctl(id, proreflax::marker_semaphore, GETPID);
  return {.state = service_status::life::alive, .process = process, .name = process_name(process)};
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

std::string show_process(int id, const std::string& name) {
  if (id <= 0) {
    return "a process that cannot be seen from here";
  }
  const std::string process = "process " + std::to_string(id);
  return name.empty() ? process + ", which no longer runs" : process + " (" + printable(name) + ")";
}

std::string show_value(const lock_status& lock) {
  if (lock.value == 0) {
    return "held by " + show_process(lock.holder, lock.holder_name);
  }
  return lock.value == 1
             ? "free"
             : "raised to " + std::to_string(lock.value) + ", so that it excludes nobody";
}

}  // namespace

std::uint32_t status_report::code() const {
  if (!lock.present || service.state == service_status::life::dead) {
    return CFC_ERR_NO_SEM;
  }
  if (!queue.present) {
    return CFC_ERR_NO_MSQ;
  }
  return static_cast<std::uint32_t>(lock.error != 0 ? lock.error : queue.error);
}

std::string status_report::sentence() const {
  const bool killed = lock.present && service.state == service_status::life::dead;
  return killed ? std::string{killed_service} : result_sentence(code());
}

status_report look_at_device() {
  return {look_at_marker(), look_at_lock(), look_at_queue()};
}

bool service_was_killed() {
  return look_at_marker().state == service_status::life::dead;
}

std::string show_service(const service_status& service) {
  switch (service.state) {
    case service_status::life::alive:
      return "service: " + show_process(service.process, service.name);
    case service_status::life::dead:
      return "service: killed, with its lock left behind";
    case service_status::life::unknown:
      break;
  }
  return "service: nothing tells whether it runs";
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
  const status_report report = look_at_device();
  if (command.json) {
    out.result(json_of(report));
  } else {
    out.result(show_service(report.service));
    out.result(show_lock(report.lock));
    out.result(show_queue(report.queue));
  }
  const std::uint32_t code = report.code();
  if (code != CFC_OK) {
    out.complain("cfc: status: " + in_words(code, report.sentence()));
  }
  return status_of(code);
}

}  // namespace cfc
