#include "service/log.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <sstream>
#include <string>

using namespace proreflax;

namespace {

/// Standard error is another file while this exists.
class redirected_log {
 public:
  explicit redirected_log(int file) : before_{dup(STDERR_FILENO)} { dup2(file, STDERR_FILENO); }
  ~redirected_log() {
    dup2(before_, STDERR_FILENO);
    close(before_);
  }
  redirected_log(const redirected_log&) = delete;
  redirected_log& operator=(const redirected_log&) = delete;

 private:
  int before_;
};

/// Reads at most so many bytes, without waiting.
std::string read_some(int file, std::size_t most) {
  std::string bytes(most, '\0');
  const ssize_t count = read(file, bytes.data(), most);
  bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
  return bytes;
}

std::string read_all(int file) {
  std::string all;
  for (std::string piece; !(piece = read_some(file, 4096)).empty();) {
    all += piece;
  }
  return all;
}

}  // namespace

TEST(Log, counts_a_line_of_which_a_terminal_took_a_part_alone) {
  const int reader = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
  grantpt(reader);
  unlockpt(reader);
  const int terminal = open(ptsname(reader), O_RDWR | O_NOCTTY | O_NONBLOCK);
  ASSERT_NE(terminal, -1);
  termios plain{};
  cfmakeraw(&plain);
  tcsetattr(terminal, TCSANOW, &plain);
  constexpr long logged = 2000;
  std::string output;
  {
    const redirected_log log{terminal};
    for (long i = 0; i < logged; ++i) {
      log_line(log_level::info, "line of some length %300ld", i);
      output += read_some(reader, i % 3 == 0 ? 0 : 100);
    }
    for (int i = 0; i < 100; ++i) {
      output += read_all(reader);
      log_dropped_lines();
      usleep(1000);
    }
    output += read_all(reader);
  }
  long whole = 0;
  long dropped = 0;
  std::istringstream lines{output};
  for (std::string line; std::getline(lines, line);) {
    long number = 0;
    int end = 0;
    if (std::sscanf(line.c_str(), "config-center: info: line of some length %ld%n", &number,
                    &end) == 1 &&
        end == 341) {
      ++whole;
    } else if (std::sscanf(line.c_str(),
                           "config-center: warning: %ld log lines were dropped: nobody read them%n",
                           &number, &end) == 1 &&
               end > 0) {
      dropped += number;
    }
  }
  EXPECT_GT(whole, 10);
  EXPECT_GT(dropped, 10);
  EXPECT_GE(whole + dropped, logged) << whole << " lines";
  close(terminal);
  close(reader);
}

TEST(Log, does_not_count_what_can_never_be_written) {
  signal(SIGPIPE, SIG_IGN);
  int broken[2];
  ASSERT_EQ(pipe(broken), 0);
  close(broken[0]);
  int whole[2];
  ASSERT_EQ(pipe(whole), 0);
  {
    const redirected_log log{broken[1]};
    log_line(log_level::error, "lost");
  }
  {
    const redirected_log log{whole[1]};
    log_line(log_level::error, "read");
  }
  EXPECT_EQ(read_some(whole[0], 1000), "config-center: error: read\n");
  for (const int file : {broken[1], whole[0], whole[1]}) {
    close(file);
  }
}
