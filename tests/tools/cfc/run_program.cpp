#include "tests/tools/cfc/run_program.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstring>
#include <fstream>
#include <stdexcept>

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

}  // namespace

started_program::started_program(const std::string& path, std::vector<std::string> words,
                                 std::string_view input, const char* out_path)
    : out_{open_output(out_path)}, err_{file_in_memory({})} {
  const int in = file_in_memory(input);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, out_, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, err_, STDERR_FILENO);
  words.insert(words.begin(), path);
  std::vector<char*> arguments;
  for (std::string& word : words) {
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);
  const int error =
      posix_spawn(&pid_, full_path(path).c_str(), &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(in);
  if (error != 0) {
    throw std::runtime_error("cannot start " + path + ": " + std::strerror(error));
  }
}

started_program::~started_program() {
  if (pid_ != -1) {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  close(out_);
  close(err_);
}

ended started_program::wait() {
  int status = 0;
  waitpid(pid_, &status, 0);
  pid_ = -1;
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), content_of(out_),
          content_of(err_)};
}

ended run_cfc(std::vector<std::string> words, std::string_view input) {
  return started_program{"cfc", std::move(words), input}.wait();
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
