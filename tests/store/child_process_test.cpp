// The two runners: what a program is started with, and what each way it can end is reported as.
//
// Where a child's own exit status must be seen, the runner's wait is made to fail, and the test
// waits for the child itself.
#include "store/child_process.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <string>

#include "tests/store/unnamed_file.h"
#include "tests/support/child.h"
#include "tests/support/device_root.h"
#include "tests/support/faults.h"

using namespace proreflax;
using faults::call;
namespace fs = std::filesystem;

namespace {

constexpr int reading = 0;
constexpr int writing = 1;
constexpr int packing = 0;
constexpr int unpacking = 1;
constexpr const char* unused_file = "/unused";

/// Waits for any child; its exit status, or -1 when there is none or it ended otherwise.
int exit_status_of_a_child() {
  int status = 0;
  return waitpid(-1, &status, 0) > 0 && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool has_no_child() {
  return waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD;
}

pid_t start_child_that_exits_with(int status) {
  return start_child([status] { return status; });
}

class ChildProcess : public testing::Test {
 protected:
  ChildProcess() {
    device_root::clear();
    fs::create_directories(device_root::path("/bin"));
    fs::remove(multi_call_binary);
    faults::reset();
  }
  ~ChildProcess() override {
    faults::reset();
    fs::remove(multi_call_binary);
  }

  void install_script_as_multi_call_binary(const std::string& commands) {
    device_root::install_flash_script(commands);
    fs::rename(flash_tool, multi_call_binary);
  }

  const fs::path flash_tool = device_root::path("/sbin/writeflash");
  const fs::path multi_call_binary = device_root::path("/bin/busybox");
};

class FlashTool : public ChildProcess {};
class Compressor : public ChildProcess {};

}  // namespace

// ---- The flash tool ---------------------------------------------------------------------------

TEST_F(FlashTool, is_started_by_its_path_with_option_and_file) {
  fs::create_symlink(ARGUMENT_RECORDER, flash_tool);
  ASSERT_EQ(config_run_writeflash(writing, "/some/file"), 0U);
  EXPECT_EQ(device_root::read("/var/arguments"), flash_tool.string() + "\n-w\n/some/file\n");
  ASSERT_EQ(config_run_writeflash(reading, "/other file"), 0U);
  EXPECT_EQ(device_root::read("/var/arguments"), flash_tool.string() + "\n-r\n/other file\n");
}

TEST_F(FlashTool, any_number_but_zero_means_write) {
  device_root::install_flash_script("test $1 = -w");
  EXPECT_EQ(config_run_writeflash(-1, unused_file), 0U);
  EXPECT_EQ(config_run_writeflash(256, unused_file), 0U);
  EXPECT_EQ(config_run_writeflash(0, unused_file), 223U);
}

TEST_F(FlashTool, exit_status_0_is_success) {
  device_root::install_flash_script("exit 0");
  EXPECT_EQ(config_run_writeflash(writing, unused_file), 0U);
  EXPECT_EQ(config_run_writeflash(reading, unused_file), 0U);
  EXPECT_TRUE(has_no_child());
}

TEST_F(FlashTool, every_other_exit_status_gives_222_for_write_and_223_for_read) {
  for (const char* status : {"1", "2", "127", "128", "226", "227", "255"}) {
    device_root::install_flash_script("exit " + std::string{status});
    EXPECT_EQ(config_run_writeflash(writing, unused_file), 222U) << status;
    EXPECT_EQ(config_run_writeflash(reading, unused_file), 223U) << status;
  }
  EXPECT_TRUE(has_no_child());
}

TEST_F(FlashTool, killed_by_a_signal_gives_222_for_write_and_223_for_read) {
  device_root::install_flash_script("kill -KILL $$");
  EXPECT_EQ(config_run_writeflash(writing, unused_file), 222U);
  EXPECT_EQ(config_run_writeflash(reading, unused_file), 223U);
  EXPECT_TRUE(has_no_child());
}

TEST_F(FlashTool, that_is_not_there_gives_222_for_write_and_223_for_read) {
  EXPECT_EQ(config_run_writeflash(writing, unused_file), 222U);
  EXPECT_EQ(config_run_writeflash(reading, unused_file), 223U);
  EXPECT_TRUE(has_no_child());
}

TEST_F(FlashTool, a_child_whose_exec_fails_exits_with_226_for_write_and_227_for_read) {
  faults::fail(call::waitpid, 1, ECHILD);
  EXPECT_EQ(config_run_writeflash(writing, unused_file), 222U);
  EXPECT_EQ(exit_status_of_a_child(), 226);
  faults::fail(call::waitpid, 1, ECHILD);
  EXPECT_EQ(config_run_writeflash(reading, unused_file), 223U);
  EXPECT_EQ(exit_status_of_a_child(), 227);
}

TEST_F(FlashTool, a_fork_that_fails_gives_218_for_write_and_219_for_read_and_waits_for_nobody) {
  const pid_t other = start_child_that_exits_with(5);
  faults::fail(call::fork, 1, EAGAIN);
  EXPECT_EQ(config_run_writeflash(writing, unused_file), 218U);
  faults::fail(call::fork, 1, EAGAIN);
  EXPECT_EQ(config_run_writeflash(reading, unused_file), 219U);
  faults::reset();
  EXPECT_EQ(wait_for_child(other), 5);
}

TEST_F(FlashTool, waits_for_its_own_child_and_no_other) {
  device_root::install_flash_script("exit 0");
  const pid_t other = start_child_that_exits_with(5);
  EXPECT_EQ(config_run_writeflash(writing, unused_file), 0U);
  EXPECT_EQ(wait_for_child(other), 5);
}

TEST_F(FlashTool, a_wait_that_a_signal_interrupts_is_taken_up_again) {
  device_root::install_flash_script("exit 0");
  faults::fail(call::waitpid, 1, EINTR);
  EXPECT_EQ(config_run_writeflash(writing, unused_file), 0U);
  EXPECT_EQ(faults::calls(call::waitpid), 2);
  device_root::install_flash_script("exit 1");
  faults::fail(call::waitpid, 1, EINTR);
  EXPECT_EQ(config_run_writeflash(reading, unused_file), 223U);
  faults::reset();
  EXPECT_TRUE(has_no_child());
}

volatile std::sig_atomic_t signals_seen = 0;

TEST_F(FlashTool, a_tool_that_signals_its_parent_is_waited_for_to_its_end) {
  struct sigaction counting {};
  counting.sa_handler = [](int) { signals_seen = signals_seen + 1; };
  struct sigaction before {};
  ASSERT_EQ(sigaction(SIGUSR1, &counting, &before), 0);
  device_root::install_flash_script("kill -USR1 $PPID; echo done > \"$2\"");
  const fs::path file = device_root::path("/var/tool-output");
  EXPECT_EQ(config_run_writeflash(writing, file.c_str()), 0U);
  EXPECT_EQ(signals_seen, 1);
  EXPECT_EQ(device_root::read("/var/tool-output"), "done\n");
  sigaction(SIGUSR1, &before, nullptr);
}

// ---- The compressor ---------------------------------------------------------------------------

TEST_F(Compressor, is_the_multi_call_binary_under_the_name_of_its_applet) {
  fs::create_symlink(ARGUMENT_RECORDER, multi_call_binary);
  ASSERT_EQ(config_run_gzip(packing, "/some/file"), 0U);
  EXPECT_EQ(device_root::read("/var/arguments"), "gzip\n/some/file\n");
  ASSERT_EQ(config_run_gzip(unpacking, "/some/file"), 0U);
  EXPECT_EQ(device_root::read("/var/arguments"), "gunzip\n/some/file\n");
}

TEST_F(Compressor, exit_status_0_is_success_and_any_other_gives_220_for_gzip_and_221_for_gunzip) {
  install_script_as_multi_call_binary("exit 0");
  EXPECT_EQ(config_run_gzip(packing, unused_file), 0U);
  EXPECT_EQ(config_run_gzip(unpacking, unused_file), 0U);
  for (const char* status : {"1", "224", "225", "255"}) {
    install_script_as_multi_call_binary("exit " + std::string{status});
    EXPECT_EQ(config_run_gzip(packing, unused_file), 220U) << status;
    EXPECT_EQ(config_run_gzip(unpacking, unused_file), 221U) << status;
  }
  EXPECT_TRUE(has_no_child());
}

TEST_F(Compressor, killed_by_a_signal_gives_220_for_gzip_and_221_for_gunzip) {
  install_script_as_multi_call_binary("kill -KILL $$");
  EXPECT_EQ(config_run_gzip(packing, unused_file), 220U);
  EXPECT_EQ(config_run_gzip(unpacking, unused_file), 221U);
}

TEST_F(Compressor, a_child_whose_exec_fails_exits_with_224_for_gzip_and_225_for_gunzip) {
  EXPECT_EQ(config_run_gzip(packing, unused_file), 220U);
  EXPECT_EQ(config_run_gzip(unpacking, unused_file), 221U);
  faults::fail(call::waitpid, 1, ECHILD);
  static_cast<void>(config_run_gzip(packing, unused_file));
  EXPECT_EQ(exit_status_of_a_child(), 224);
  faults::fail(call::waitpid, 1, ECHILD);
  static_cast<void>(config_run_gzip(unpacking, unused_file));
  EXPECT_EQ(exit_status_of_a_child(), 225);
}

TEST_F(Compressor, a_wait_that_fails_behind_a_fork_counts_as_success) {
  install_script_as_multi_call_binary("exit 1");
  faults::fail(call::waitpid, 1, ECHILD);
  EXPECT_EQ(config_run_gzip(packing, unused_file), 0U);
  EXPECT_EQ(exit_status_of_a_child(), 1);
}

TEST_F(Compressor, a_fork_that_fails_with_no_other_child_gives_216_for_gzip_and_217_for_gunzip) {
  ASSERT_TRUE(has_no_child());
  faults::fail(call::fork, 1, EAGAIN);
  EXPECT_EQ(config_run_gzip(packing, unused_file), 216U);
  faults::fail(call::fork, 1, EAGAIN);
  EXPECT_EQ(config_run_gzip(unpacking, unused_file), 217U);
}

TEST_F(Compressor, a_fork_that_fails_waits_for_any_child_and_stands_when_that_ended_well) {
  start_child_that_exits_with(0);
  faults::fail(call::fork, 1, EAGAIN);
  EXPECT_EQ(config_run_gzip(packing, unused_file), 216U);
  EXPECT_TRUE(has_no_child());
  start_child_that_exits_with(0);
  faults::fail(call::fork, 1, EAGAIN);
  EXPECT_EQ(config_run_gzip(unpacking, unused_file), 217U);
  EXPECT_TRUE(has_no_child());
}

TEST_F(Compressor, a_fork_that_fails_becomes_220_or_221_when_any_child_ended_badly) {
  start_child_that_exits_with(3);
  faults::fail(call::fork, 1, EAGAIN);
  EXPECT_EQ(config_run_gzip(packing, unused_file), 220U);
  EXPECT_TRUE(has_no_child());
  start_child_that_exits_with(3);
  faults::fail(call::fork, 1, EAGAIN);
  EXPECT_EQ(config_run_gzip(unpacking, unused_file), 221U);
  EXPECT_TRUE(has_no_child());
}

TEST_F(Compressor, waits_for_its_own_child_and_no_other) {
  install_script_as_multi_call_binary("exit 0");
  const pid_t other = start_child_that_exits_with(5);
  EXPECT_EQ(config_run_gzip(packing, unused_file), 0U);
  EXPECT_EQ(wait_for_child(other), 5);
}

TEST_F(Compressor, a_wait_that_a_signal_interrupts_is_taken_up_again) {
  install_script_as_multi_call_binary("exit 1");
  faults::fail(call::waitpid, 1, EINTR);
  EXPECT_EQ(config_run_gzip(packing, unused_file), 220U);
  faults::reset();
  EXPECT_TRUE(has_no_child());
}

// ---- A child whose exec fails -----------------------------------------------------------------

TEST_F(ChildProcess, whose_exec_fails_does_not_flush_what_it_inherited) {
  std::string told;
  const unnamed_file file;
  std::FILE* const stream = std::fopen(file.path().c_str(), "w");
  ASSERT_NE(stream, nullptr);
  std::fputs("not yet flushed", stream);
  {
    const captured_stdout output;
    ASSERT_EQ(setvbuf(stdout, nullptr, _IOFBF, 4096), 0);
    std::printf("not yet flushed");
    EXPECT_EQ(config_run_writeflash(writing, unused_file), 222U);
    EXPECT_EQ(config_run_writeflash(reading, unused_file), 223U);
    EXPECT_EQ(config_run_gzip(packing, unused_file), 220U);
    EXPECT_EQ(config_run_gzip(unpacking, unused_file), 221U);
    told = output.text();
  }
  EXPECT_EQ(file.content(), "");
  std::fclose(stream);
  EXPECT_EQ(file.content(), "not yet flushed");
  EXPECT_EQ(told, "not yet flushed");
}
