// Runs a program of the device as a process of its own and keeps what it wrote.
#ifndef PROREFLAX_TESTS_TOOLS_CFC_RUN_PROGRAM_H
#define PROREFLAX_TESTS_TOOLS_CFC_RUN_PROGRAM_H

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/scripted_service.h"

/// How a program ended: its exit status, or minus the signal that killed it.
struct ended {
  int status = 0;
  std::string out;
  std::string err;
};

/// A program that runs. It is killed if a test forgets to wait for it.
class started_program {
 public:
  /// `path` is looked up in the device's programs unless it holds a slash. Output goes to
  /// `out_path` instead of being kept, when one is given.
  started_program(const std::string& path, std::vector<std::string> words,
                  std::string_view input = {}, const char* out_path = nullptr);
  ~started_program();
  started_program(const started_program&) = delete;
  started_program& operator=(const started_program&) = delete;

  pid_t pid() const { return pid_; }
  void send(int signal) const;
  ended wait();

 private:
  int out_;
  int err_;
  pid_t pid_ = -1;
};

ended run_cfc(std::vector<std::string> words, std::string_view input = {});

/// Sends it a signal when it has made its n-th request of the service and waits for the answer.
ended run_cfc_and_signal_it(int signal, scripted_service& service, std::size_t nth,
                            std::vector<std::string> words, std::string_view input = {});

/// Runs it with a terminal for standard input and standard error. What is typed waits there from
/// the start; `err` is what the terminal shows, which is not what was typed.
ended run_cfc_on_terminal(std::vector<std::string> words, std::string_view typed = {});

/// What the kernel calls a process: its program's name, or the emulator's that runs the program.
std::string name_of(pid_t process);

/// A text with its LF, as programs print it.
std::string line(std::string_view text);

#endif
