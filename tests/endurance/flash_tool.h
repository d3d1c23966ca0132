// The flash copy tool as a process that a run starts, and may kill.
#ifndef PROREFLAX_TESTS_ENDURANCE_FLASH_TOOL_H
#define PROREFLAX_TESTS_ENDURANCE_FLASH_TOOL_H

#include <fcntl.h>

#include <optional>
#include <string>

#include "tests/endurance/config_service.h"
#include "tests/support/device_root.h"

namespace endurance {

class flash_tool {
 public:
  flash_tool() : folder_{device_root::path("/etc")} {}

  /// Starts "writeflash OPTION FILE" without waiting for it; what it says goes to message().
  pid_t launch(const char* option) const {
    const std::string program = device_root::path("/programs/writeflash");
    return start_child([&] {
      const int messages = open(messages_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
      dup2(messages, STDERR_FILENO);
      execl(program.c_str(), program.c_str(), option, file_.c_str(), nullptr);
      return 127;
    });
  }

  /// Runs it to its end. The file that it reads or writes is file().
  int run(const char* option) const { return wait_for_child(launch(option)); }

  int save(const std::string& text) const {
    files::write(file_, text);
    return run("-w");
  }

  /// What a read gives; nothing when it fails.
  std::optional<std::string> saved() const {
    std::filesystem::remove(file_);
    return run("-r") == 0 ? files::read(file_) : std::nullopt;
  }

  std::string message() const { return files::read(messages_).value_or(""); }
  const std::string& file() const { return file_; }

 private:
  files::temporary_folder folder_;
  std::string file_ = folder_.path() / "text";
  std::string messages_ = folder_.path() / "messages";
};

/// A text unlike any other, of some bytes or of many.
inline std::string any_text(dice& random, unsigned number) {
  std::string text = "text " + std::to_string(number) + '\n';
  for (unsigned left = random.below(random.one_in(3) ? 12000 : 600); left > 0; --left) {
    const unsigned five = random.any();
    for (unsigned bits = 0; bits < 30; bits += 6) {
      text += static_cast<char>('0' + (five >> bits & 63U));
    }
  }
  return text;
}

}  // namespace endurance

#endif
