#include "wireless/proc_file.h"

#include <gtest/gtest.h>
#include <proreflax/wireless.h>
#include <unistd.h>

#include <filesystem>
#include <string>

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

TEST_F(ProcFile, that_cannot_be_opened_or_read_gives_1_and_stays_closed) {
  device_root::write("/proc/wireless", "some text\n");
  const int free_before = free_descriptor();
  for (const call kind : {call::open, call::read}) {
    for (int nth = 1; nth < 9; ++nth) {
      faults::fail(kind, nth);
      const std::uint32_t result = read();
      if (!faults::happened()) {
        EXPECT_EQ(result, 0U);
        EXPECT_GT(nth, 1);
        break;
      }
      EXPECT_EQ(result, 1U);
      EXPECT_EQ(faults::calls(call::close), kind == call::open ? 0 : 1);
      EXPECT_EQ(free_descriptor(), free_before);
    }
  }
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
