#include "tests/support/service_process.h"

#include <fcntl.h>
#include <sys/msg.h>
#include <sys/sem.h>
#include <sys/wait.h>

#include <fstream>

#include "tests/support/device_root.h"
#include "tests/support/files.h"
#include "transport/ipc_keys.h"

namespace {

int present_queue() {
  return msgget(proreflax::CFC_MSQ_KEY, 0);
}

/// The service raises its marker first. It takes over the lock that it finds, but always creates a
/// queue of its own, last of all before it frees the lock; clients may then take that at once.
bool is_ready(pid_t service, int queue_before) {
  const int lock = semget(proreflax::CFC_SEM_KEY, 0, 0);
  const int queue = present_queue();
  return lock != -1 && queue != -1 && queue != queue_before &&
         semctl(lock, proreflax::marker_semaphore, GETVAL) > 0 &&
         (semctl(lock, proreflax::lock_semaphore, GETVAL) > 0 ||
          semctl(lock, proreflax::lock_semaphore, GETPID) != service);
}

/// The third word of /proc/ID/stat, behind the program's name: T for a stopped process.
bool stands_still(pid_t id) {
  return files::text_of("/proc/" + std::to_string(id) + "/stat").find(") T ") != std::string::npos;
}

}  // namespace

service_process::service_process(const std::vector<std::string>& options, void (*before_exec)())
    : log_path_{device_root::path("/service.log")} {
  const std::string program = device_root::path("/programs/config-center");
  std::vector<char*> arguments{const_cast<char*>(program.c_str())};
  for (const std::string& option : options) {
    arguments.push_back(const_cast<char*>(option.c_str()));
  }
  arguments.push_back(nullptr);
  const int queue_before = present_queue();
  id_ = start_child([&] {
    const int log = open(log_path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    dup2(log, STDERR_FILENO);
    dup2(log, STDOUT_FILENO);
    if (before_exec != nullptr) {
      before_exec();
    }
    execv(program.c_str(), arguments.data());
    return 127;
  });
  eventually([&] { return !runs() || is_ready(id_, queue_before); });
}

service_process::~service_process() {
  if (!ended_) {
    thaw();
    end();
  }
}

void service_process::freeze() const {
  kill(id_, SIGSTOP);
  eventually([this] { return stands_still(id_); });
}

bool service_process::runs() const {
  siginfo_t info{};
  return !ended_ &&
         waitid(P_PID, static_cast<id_t>(id_), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
         info.si_pid == 0;
}

int service_process::end(int signal) {
  if (!ended_) {
    kill(id_, signal);
  }
  return status();
}

int service_process::status() {
  if (!ended_) {
    status_ = wait_for_child(id_);
    ended_ = true;
  }
  return status_;
}

std::string service_process::log() const {
  return files::read(log_path_).value_or("");
}

long service_process::resident_kib() const {
  std::ifstream status{"/proc/" + std::to_string(id_) + "/status"};
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmRSS:")) {
      return std::stol(line.substr(6));
    }
  }
  return -1;
}
