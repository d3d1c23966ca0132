#include "tests/tools/cfc/run_program.h"

#include <fcntl.h>
#include <pty.h>
#include <spawn.h>
#include <sys/mman.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstring>
#include <fstream>
#include <mutex>
#include <optional>
#include <stdexcept>

#include "tests/support/child.h"

namespace {

int file_in_memory(std::string_view content) {
  const int file = memfd_create("test", MFD_CLOEXEC);
  if (file == -1 ||
      write(file, content.data(), content.size()) != static_cast<ssize_t>(content.size())) {
    throw std::runtime_error("cannot make a file in memory");
  }
  lseek(file, 0, SEEK_SET);
  return file;
}

std::string content_of(int file) {
  std::string content;
  std::array<char, 4096> buffer{};
  lseek(file, 0, SEEK_SET);
  for (ssize_t count = 0; (count = read(file, buffer.data(), buffer.size())) > 0;) {
    content.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return content;
}

std::string full_path(const std::string& path) {
  return path.find('/') == std::string::npos ? PROREFLAX_DEVICE_ROOT "/programs/" + path : path;
}

int open_output(const char* path) {
  return path == nullptr ? file_in_memory({}) : open(path, O_WRONLY | O_CLOEXEC);
}

pid_t start(const std::string& path, std::vector<std::string> words, int in, int out, int err) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, err, STDERR_FILENO);
  words.insert(words.begin(), path);
  std::vector<char*> arguments;
  for (std::string& word : words) {
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);
  pid_t child = -1;
  const int error =
      posix_spawn(&child, full_path(path).c_str(), &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) {
    throw std::runtime_error("cannot start " + path + ": " + std::strerror(error));
  }
  return child;
}

/// Neither echoes what is typed nor changes what is shown.
class pseudo_terminal {
 public:
  explicit pseudo_terminal(std::string_view typed) {
    termios settings{};
    if (openpty(&own_end_, &programs_end_, nullptr, nullptr, nullptr) == -1 ||
        tcgetattr(programs_end_, &settings) == -1) {
      throw std::runtime_error("no pseudo terminal");
    }
    settings.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    settings.c_oflag &= ~static_cast<tcflag_t>(OPOST);
    tcsetattr(programs_end_, TCSANOW, &settings);
    fcntl(own_end_, F_SETFD, FD_CLOEXEC);
    fcntl(own_end_, F_SETFL, O_NONBLOCK);
    fcntl(programs_end_, F_SETFD, FD_CLOEXEC);
    if (write(own_end_, typed.data(), typed.size()) != static_cast<ssize_t>(typed.size())) {
      throw std::runtime_error("cannot type on the pseudo terminal");
    }
  }
  ~pseudo_terminal() {
    close(programs_end_);
    close(own_end_);
  }
  pseudo_terminal(const pseudo_terminal&) = delete;
  pseudo_terminal& operator=(const pseudo_terminal&) = delete;

  int programs_end() const { return programs_end_; }

  /// What a program has shown that has ended; a terminal keeps many thousand bytes unread. The
  /// programs' end is still open: a reader who learns of the end by its closing now and then loses
  /// what was written just before it.
  std::string shown() const {
    std::string all;
    std::array<char, 4096> buffer{};
    for (ssize_t count = 0; (count = read(own_end_, buffer.data(), buffer.size())) > 0;) {
      all.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return all;
  }

 private:
  int own_end_ = -1;
  int programs_end_ = -1;
};

}  // namespace

started_program::started_program(const std::string& path, std::vector<std::string> words,
                                 std::string_view input, const char* out_path)
    : out_{open_output(out_path)}, err_{file_in_memory({})} {
  const int in = file_in_memory(input);
  pid_ = start(path, std::move(words), in, out_, err_);
  close(in);
}

started_program::~started_program() {
  if (pid_ != -1) {
    send(SIGKILL);
    wait_for_child(pid_);
  }
  close(out_);
  close(err_);
}

void started_program::send(int signal) const {
  if (pid_ <= 0) {
    throw std::logic_error("there is no program to signal");  // -1 would mean every process
  }
  kill(pid_, signal);
}

ended started_program::wait() {
  const int status = wait_for_child(pid_);
  pid_ = -1;  // not before: until then another thread may want to signal the program
  return {status, content_of(out_), content_of(err_)};
}

ended run_cfc(std::vector<std::string> words, std::string_view input) {
  return started_program{"cfc", std::move(words), input}.wait();
}

ended run_cfc_and_signal_it(int signal, scripted_service& service, std::size_t nth,
                            std::vector<std::string> words, std::string_view input) {
  std::optional<started_program> cfc;
  std::mutex starting;
  service.before_answer(nth, [&] {
    const std::lock_guard wait_until_it_is_known{starting};
    cfc->send(signal);
  });
  {
    const std::lock_guard lock{starting};
    cfc.emplace("cfc", std::move(words), input);
  }
  return cfc->wait();
}

ended run_cfc_on_terminal(std::vector<std::string> words, std::string_view typed) {
  const pseudo_terminal terminal{typed};
  const int out = file_in_memory({});
  const pid_t cfc =
      start("cfc", std::move(words), terminal.programs_end(), out, terminal.programs_end());
  const int status = wait_for_child(cfc);
  ended run{status, content_of(out), terminal.shown()};
  close(out);
  return run;
}

std::string name_of(pid_t process) {
  std::ifstream file{"/proc/" + std::to_string(process) + "/comm"};
  std::string name;
  std::getline(file, name);
  return name;
}

std::string line(std::string_view text) {
  return std::string{text} + '\n';
}
