#include "tools/cfc/output/output.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <thread>

#include "tests/support/files.h"
#include "tests/tools/cfc/run_program.h"

using cfc::output;

TEST(Output, a_failed_write_is_remembered) {
  const int full = open("/dev/full", O_WRONLY);
  output out{full, STDERR_FILENO};
  EXPECT_EQ(out.write_error(), 0);
  out.result("value");
  EXPECT_EQ(out.write_error(), ENOSPC);
  close(full);
  out.result("value");
  EXPECT_EQ(out.write_error(), ENOSPC) << "the first failure counts";
}

TEST(Output, a_pipe_that_does_not_block_is_waited_for) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe2(ends.data(), O_NONBLOCK), 0);
  const std::string longer_than_a_pipe(1 << 20, 'x');
  std::size_t read_bytes = 0;
  std::thread reader{[&] {
    std::array<char, 4096> buffer{};
    while (read_bytes < longer_than_a_pipe.size() + 1) {
      const ssize_t count = read(ends[0], buffer.data(), buffer.size());
      read_bytes += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
  }};
  output out{ends[1], STDERR_FILENO};
  out.result(longer_than_a_pipe);
  EXPECT_EQ(out.write_error(), 0);
  reader.join();
  close(ends[0]);
  close(ends[1]);
}

TEST(OutputOfTheProgram, a_full_device_costs_the_exit_status) {
  for (const std::vector<std::string>& line :
       {std::vector<std::string>{"--help"}, {"--version"}, {"check", "--json", "/dev/null"}}) {
    const ended full = started_program{"cfc", line, {}, "/dev/full"}.wait();
    EXPECT_EQ(full.status, 1);
    EXPECT_NE(full.err.find("cfc: standard output: No space left on device\n"), std::string::npos);
  }
}

TEST(OutputOfTheProgram, a_reader_that_has_gone_costs_the_exit_status) {
  const ended gone = started_program{"/bin/sh",
                                     {"-c", "(sleep 0.1; " PROREFLAX_DEVICE_ROOT
                                            "/programs/cfc --version; echo $? >&2) | true"}}
                         .wait();
  EXPECT_EQ(gone.err, "cfc: standard output: Broken pipe\n1\n");
}

TEST(OutputOfTheProgram, a_closed_standard_output_costs_the_exit_status) {
  const ended closed =
      started_program{"/bin/sh",
                      {"-c", PROREFLAX_DEVICE_ROOT "/programs/cfc --version >&-; echo $?"}}
          .wait();
  EXPECT_EQ(closed.out, "1\n");
  EXPECT_EQ(closed.err, "cfc: standard output: Bad file descriptor\n");
}

TEST(OutputOfTheProgram, closed_descriptors_bring_nothing_into_a_file) {
  const files::temporary_folder folder;
  const std::string data = folder.path() / "data";
  files::write(data, "the data");
  const auto pack = [&](const std::string& name, const std::string& redirections) {
    const std::string image = folder.path() / name;
    const std::string command = PROREFLAX_DEVICE_ROOT
                                "/programs/cfc firmware pack --type kernel --time 0 -o " +
                                image + " " + data + redirections;
    static_cast<void>(started_program{"/bin/sh", {"-c", command}}.wait());
    return files::read(image);
  };
  const auto usual = pack("usual", "");
  ASSERT_TRUE(usual.has_value());
  EXPECT_EQ(pack("closed", " <&- >&- 2>&-"), usual);
}
