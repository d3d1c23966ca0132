#include "wireless/proc_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <proreflax/wireless.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>

#include "tests/support/child.h"
#include "tests/support/device_root.h"
#include "tests/support/faults.h"

using namespace proreflax;
using faults::call;

namespace {

class ProcFile : public testing::Test {
 protected:
  ProcFile() { device_root::clear(); }
  ~ProcFile() override {
    faults::reset();
    g_proc_buf_size = proc_buf_capacity;
  }

  std::uint32_t read() { return read_proc_file(status_file, &text, &length); }

  char* text = nullptr;
  std::size_t length = 77;
};

/// The lowest descriptor that is free: the same before and behind a call that leaves none open.
int free_descriptor() {
  const int descriptor = dup(0);
  close(descriptor);
  return descriptor;
}

}  // namespace

TEST_F(ProcFile, is_read_into_the_one_buffer_and_terminated) {
  device_root::write("/proc/wireless", "some text\n");
  EXPECT_EQ(read(), 0U);
  EXPECT_EQ(text, g_proc_buf);
  EXPECT_EQ(length, 10U);
  EXPECT_STREQ(text, "some text\n");
}

TEST_F(ProcFile, that_is_missing_gives_1_and_leaves_the_outputs) {
  EXPECT_EQ(read(), 1U);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(length, 77U);
}

TEST_F(ProcFile, longer_than_the_buffer_is_seen_up_to_its_4095th_byte) {
  device_root::write("/proc/wireless", std::string(5000, 'x'));
  EXPECT_EQ(read(), 0U);
  EXPECT_EQ(length, 4095U);
  EXPECT_EQ(text, std::string(4095, 'x'));
}

TEST_F(ProcFile, is_read_as_far_as_the_buffer_size_says_at_each_call) {
  device_root::write("/proc/wireless", "0123456789");
  g_proc_buf_size = 5;
  EXPECT_EQ(read(), 0U);
  EXPECT_STREQ(text, "0123");
  g_proc_buf_size = 11;
  EXPECT_EQ(read(), 0U);
  EXPECT_STREQ(text, "0123456789");
}

TEST_F(ProcFile, never_outgrows_the_buffer_whatever_its_size_says) {
  device_root::write("/proc/wireless", std::string(9000, 'x'));
  g_proc_buf_size = 9000;
  EXPECT_EQ(read(), 0U);
  EXPECT_EQ(length, 4095U);
  for (const int size : {0, -1, 1}) {
    g_proc_buf_size = size;
    EXPECT_EQ(read(), 0U);
    EXPECT_EQ(length, 0U);
  }
}

TEST_F(ProcFile, that_is_empty_is_a_text_of_no_characters) {
  device_root::write("/proc/wireless", "");
  EXPECT_EQ(read(), 0U);
  EXPECT_EQ(length, 0U);
  EXPECT_STREQ(text, "");
}

TEST_F(ProcFile, that_cannot_be_opened_gives_1_and_is_not_read) {
  device_root::write("/proc/wireless", "some text\n");
  const int free_before = free_descriptor();
  faults::fail(call::fopen, 1);
  EXPECT_EQ(read(), 1U);
  EXPECT_TRUE(faults::happened());
  EXPECT_EQ(faults::calls(call::fread) + faults::calls(call::fclose), 0);
  EXPECT_EQ(free_descriptor(), free_before);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(length, 77U);
}

TEST_F(ProcFile, is_opened_read_and_closed_as_a_stream_with_one_call_each) {
  device_root::write("/proc/wireless", "some text\n");
  const int free_before = free_descriptor();
  faults::reset();
  EXPECT_EQ(read(), 0U);
  EXPECT_EQ(faults::calls(call::fopen), 1);
  EXPECT_EQ(faults::mode_of_last_fopen(), "r");
  EXPECT_EQ(faults::calls(call::fread), 1);
  EXPECT_EQ(faults::calls(call::fclose), 1);
  EXPECT_EQ(faults::calls(call::open) + faults::calls(call::read), 0);
  EXPECT_EQ(free_descriptor(), free_before);
}

TEST_F(ProcFile, whose_reading_fails_ends_with_the_bytes_read_until_then) {
  device_root::write("/proc/wireless", "some text\n");
  faults::fail(call::fread, 1);
  EXPECT_EQ(read(), 0U);
  EXPECT_TRUE(faults::happened());
  EXPECT_EQ(length, 0U);
  EXPECT_STREQ(text, "");
  EXPECT_EQ(faults::calls(call::fclose), 1);
}

TEST_F(ProcFile, that_is_a_folder_is_a_text_of_no_characters) {
  EXPECT_EQ(read_proc_file("/", &text, &length), 0U);
  EXPECT_EQ(length, 0U);
}

TEST_F(ProcFile, whose_close_fails_is_read_all_the_same) {
  device_root::write("/proc/wireless", "some text\n");
  faults::fail(call::fclose, 1);
  EXPECT_EQ(read(), 0U);
  EXPECT_STREQ(text, "some text\n");
}

TEST_F(ProcFile, that_comes_in_pieces_is_read_to_its_end) {
  const std::string path = device_root::path("/proc/wireless");
  device_root::write("/proc/wireless", "");
  ASSERT_EQ(unlink(path.c_str()), 0);
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  child driver{[&] {
    const int pipe = open(path.c_str(), O_WRONLY);
    for (const char* piece : {"recv_", "unicast", "=1\n"}) {
      if (write(pipe, piece, std::strlen(piece)) < 0) {
        return 1;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds{20});
    }
    return 0;
  }};
  EXPECT_EQ(read(), 0U);
  EXPECT_STREQ(text, "recv_unicast=1\n");
  EXPECT_EQ(driver.wait(), 0);
}

TEST_F(ProcFile, with_a_nul_has_the_length_of_the_bytes_read) {
  device_root::write("/proc/wireless", std::string("a\0b\n", 4));
  EXPECT_EQ(read(), 0U);
  EXPECT_EQ(length, 4U);
  EXPECT_EQ(std::string(text, 5), std::string("a\0b\n\0", 5));
}

TEST_F(ProcFile, that_is_missing_makes_every_reader_fail_with_its_outputs_untouched) {
  static wls_11g_status status;
  static wls_event_log_entry events[1];
  static wls_associate_entry stations[1];
  status.recv_failed = 5;
  events[0].number = 6;
  stations[0].number = 7;
  int count = 8;
  EXPECT_EQ(gui_get_wls_11g_status(&status), 1U);
  EXPECT_EQ(gui_get_wls_event_log_table(&count, events), 1U);
  EXPECT_EQ(gui_get_wls_associate(stations, &count), 1U);
  EXPECT_EQ(status.recv_failed, 5U);
  EXPECT_EQ(events[0].number, 6);
  EXPECT_EQ(stations[0].number, 7);
  EXPECT_EQ(count, 8);
}
