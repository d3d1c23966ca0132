#include "tests/endurance/config_service.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/msg.h>
#include <sys/sem.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cstring>
#include <fstream>
#include <stdexcept>

#include "tests/support/device_root.h"
#include "transport/ipc_keys.h"

namespace fs = std::filesystem;

namespace endurance {
namespace {

constexpr double start_and_stop_seconds = 20;

int notice_socket(const std::string& path) {
  const int descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  if (bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    throw std::runtime_error("cannot bind " + path);
  }
  return descriptor;
}

bool takes_notice(int notices) {
  char text[64];
  return recv(notices, text, sizeof text, 0) > 0;
}

std::string last_line_of(const std::string& path) {
  const std::string text = files::read(path).value_or("");
  const std::size_t before =
      text.size() < 2 ? std::string::npos : text.rfind('\n', text.size() - 2);
  return before == std::string::npos ? text : text.substr(before + 1);
}

}  // namespace

void prepare_device() {
  device_root::clear();
  device_root::install_flash_tool();
  device_root::write("/etc/config-file.ini",
                     files::text_of(PROREFLAX_SOURCE_DIR "/device/etc/config-file.ini"));
}

int lock_value() {
  return semctl(semget(proreflax::CFC_SEM_KEY, 0, 0), proreflax::lock_semaphore, GETVAL);
}

long waiting_messages() {
  msqid_ds state{};
  return msgctl(msgget(proreflax::CFC_MSQ_KEY, 0), IPC_STAT, &state) == 0
             ? static_cast<long>(state.msg_qnum)
             : -1;
}

bool has_ended(pid_t id) {
  siginfo_t info{};
  return waitid(P_PID, static_cast<id_t>(id), &info, WEXITED | WNOHANG | WNOWAIT) != 0 ||
         info.si_pid != 0;
}

bool ends_within(pid_t id, double seconds) {
  for (const deadline end{seconds}; !end.passed(); usleep(200)) {
    if (has_ended(id)) {
      return true;
    }
  }
  return has_ended(id);
}

config_service::config_service(report& found)
    : found_{found},
      log_path_{device_root::path("/service.log")},
      notices_{notice_socket(folder_.path() / "ready")} {}

config_service::~config_service() {
  if (id_ > 0) {
    end(SIGKILL);
  }
  close(notices_);
}

void config_service::launch() {
  while (takes_notice(notices_)) {
  }
  const std::string program = device_root::path("/programs/config-center");
  id_ = start_child([&] {
    setpgid(0, 0);
    setenv("NOTIFY_SOCKET", (folder_.path() / "ready").c_str(), 1);
    const int log = open(log_path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    dup2(log, STDERR_FILENO);
    dup2(log, STDOUT_FILENO);
    execl(program.c_str(), program.c_str(), "--log-level", "error", nullptr);
    return 127;
  });
  setpgid(id_, id_);
}

bool config_service::becomes_ready() {
  for (const deadline late{start_and_stop_seconds}; !late.passed();) {
    pollfd notice{notices_, POLLIN, 0};
    if (poll(&notice, 1, 20) > 0 && takes_notice(notices_)) {
      return true;
    }
    if (has_ended(id_)) {
      break;
    }
  }
  found_.violation("the service did not become ready: %s", last_line_of(log_path_).c_str());
  return false;
}

int config_service::end(int signal, target to) {
  // The group bears the service's id; nothing else may ever be signalled.
  if (!has_ended(id_) && (to == target::service || getpgid(id_) == id_)) {
    kill(to == target::group ? -id_ : id_, signal);
  }
  if (!ends_within(id_, start_and_stop_seconds)) {
    found_.violation("the service goes on after signal %d", signal);
    kill(id_, SIGKILL);
  }
  const int status = wait_for_child(id_);
  id_ = -1;
  return status;
}

long config_service::resident_kib() const {
  std::ifstream status{"/proc/" + std::to_string(id_) + "/status"};
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmRSS:")) {
      return std::stol(line.substr(6));
    }
  }
  return -1;
}

long config_service::descriptors() const {
  std::error_code failed;
  const fs::directory_iterator all{"/proc/" + std::to_string(id_) + "/fd", failed};
  return failed ? -1 : std::distance(fs::begin(all), fs::end(all));
}

void footprint::compare(report& found) const {
  const long kib = service_.resident_kib();
  const long descriptors = service_.descriptors();
  found.figure("memory " + std::to_string(kib_before_) + " to " + std::to_string(kib) + " KiB");
  found.figure("descriptors " + std::to_string(descriptors_before_) + " to " +
               std::to_string(descriptors));
#ifndef PROREFLAX_SANITIZED
  // The sanitizer keeps freed memory for a while; its build finds leaks when the service ends.
  constexpr long noise_kib = 256;
  if (kib < 0 || kib - kib_before_ > noise_kib) {
    found.violation("the service's memory grew from %ld to %ld KiB", kib_before_, kib);
  }
#endif
  if (descriptors != descriptors_before_ || descriptors < 0) {
    found.violation("the service's descriptors: %ld, then %ld", descriptors_before_, descriptors);
  }
}

void expect_free_lock_and_empty_queue(const report& found, long messages) {
  if (!eventually([] { return lock_value() == 1; })) {
    found.violation("the lock is not free at the end: %d", lock_value());
  }
  const auto is_empty = [&] {
    const long waiting = waiting_messages();
    return waiting >= 0 && waiting <= messages;
  };
  if (!eventually(is_empty)) {
    found.violation("%ld messages are left at the end", waiting_messages());
  }
}

}  // namespace endurance
