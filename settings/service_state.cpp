#include "settings/service_state.h"

#include <proreflax/result.h>
#include <sys/msg.h>
#include <sys/sem.h>

#include <cerrno>

#include "settings/device_paths.h"
#include "settings/line_reader.h"
#include "settings/result_text.h"
#include "transport/ipc_keys.h"

namespace proreflax::settings {
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
  return semctl(id, lock_semaphore, command);
}

service_status look_at_marker() {
  const int id = semget(CFC_SEM_KEY, 0, 0);
  const int value = id == -1 ? -1 : semctl(id, marker_semaphore, GETVAL);
  if (value == -1) {
    return {};
  }
  if (value == 0) {
    return {.state = service_status::life::dead};
  }
  const int process = semctl(id, marker_semaphore, GETPID);
  return {.state = service_status::life::alive, .process = process, .name = process_name(process)};
}

/// Removed between two looks: not there.
bool has_gone(int error) {
  return error == EINVAL || error == EIDRM;
}

lock_status look_at_lock() {
  const int id = semget(CFC_SEM_KEY, 0, 0);
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
  const int id = msgget(CFC_MSQ_KEY, 0);
  msqid_ds state{};
  if (id == -1) {
    return {};
  }
  if (msgctl(id, IPC_STAT, &state) == -1) {
    return {.present = !has_gone(errno), .error = has_gone(errno) ? 0 : errno};
  }
  return {.present = true, .messages = state.msg_qnum, .bytes = state.__msg_cbytes};
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

served_status read_served_status(const std::string& path, int process) {
  line_reader lines{path};
  served_status served;
  while (const std::optional<text_line> line = lines.next()) {
    served.known = served.known || line->text == "pid=" + std::to_string(process) + "\n";
    served.from_flash = served.from_flash || line->text == "source=flash\n";
    served.flash_unreadable = served.flash_unreadable || line->text == "flash=unreadable\n";
  }
  return served.known ? served : served_status{};
}

status_report look_at_device() {
  status_report report{look_at_marker(), look_at_lock(), look_at_queue()};
  if (report.service.state == service_status::life::alive) {
    report.served = read_served_status(status_file, report.service.process);
  }
  return report;
}

bool service_was_killed() {
  return look_at_marker().state == service_status::life::dead;
}

}  // namespace proreflax::settings
