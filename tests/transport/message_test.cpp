#include "transport/message.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/msg.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>

#include "tests/support/child.h"
#include "tests/support/faults.h"
#include "tests/support/request_queue.h"
#include "tests/support/signal_storm.h"
#include "transport/lock.h"

using namespace proreflax;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

namespace {

constexpr std::size_t header_bytes = sizeof(long) == 8 ? 32 : 24;

bytes zeros(std::size_t count) {
  return bytes(count, 0);
}

/// A lock and a queue, both attached, and a record with room for 8 bytes of payload.
class Exchange : public testing::Test {
 protected:
  Exchange() { EXPECT_EQ(cfc_get_mutex(), 0U); }
  ~Exchange() override { cfc_put_mutex(); }

  std::string diagnostics(std::uint32_t expected_result) {
    CaptureStdout();
    EXPECT_EQ(cfc_exchange(msg.get()), expected_result);
    return GetCapturedStdout();
  }

  std::string failed_send_line() const {
    return "msq_id=" + std::to_string(queue.queue_id()) +
           ", mtype=1, real_len=" + std::to_string(header_bytes) + "\n";
  }

  request_queue queue;
  owned_msg msg{cfc_msg_alloc(8)};
};

}  // namespace

TEST(MessageLayout, is_as_on_the_device_where_the_message_type_has_32_bits) {
  using record = basic_cfc_msg<std::int32_t>;
  EXPECT_EQ(sizeof(record), 24U);
  EXPECT_EQ(offsetof(record, capacity), 0U);
  EXPECT_EQ(offsetof(record, used_len), 2U);
  EXPECT_EQ(offsetof(record, mtype), 4U);
  EXPECT_EQ(offsetof(record, reply_mtype), 8U);
  EXPECT_EQ(offsetof(record, op_result), 12U);
  EXPECT_EQ(offsetof(record, section_off), 16U);
  EXPECT_EQ(offsetof(record, key_off), 18U);
  EXPECT_EQ(offsetof(record, value_off), 20U);
  EXPECT_EQ(offsetof(record, value_len), 22U);
}

TEST(MessageLayout, has_the_same_text_behind_a_message_type_of_64_bits) {
  using record = basic_cfc_msg<std::int64_t>;
  EXPECT_EQ(sizeof(record), 32U);
  EXPECT_EQ(offsetof(record, capacity), 0U);
  EXPECT_EQ(offsetof(record, used_len), 2U);
  EXPECT_EQ(offsetof(record, mtype), 8U);
  EXPECT_EQ(offsetof(record, reply_mtype), 16U);
  EXPECT_EQ(offsetof(record, op_result), 20U);
  EXPECT_EQ(offsetof(record, section_off), 24U);
  EXPECT_EQ(offsetof(record, key_off), 26U);
  EXPECT_EQ(offsetof(record, value_off), 28U);
  EXPECT_EQ(offsetof(record, value_len), 30U);
}

TEST(MessageLayout, text_begins_right_behind_the_platforms_message_type) {
  EXPECT_EQ(sizeof(cfc_msg), header_bytes);
  EXPECT_EQ(text_off, offsetof(cfc_msg, mtype) + sizeof(long));
  EXPECT_EQ(text_header_bytes, 16U);
}

TEST(MessageLayout, payload_follows_the_header) {
  const owned_msg msg{cfc_msg_alloc(1)};
  EXPECT_EQ(payload(*msg) - reinterpret_cast<char*>(msg.get()),
            static_cast<std::ptrdiff_t>(header_bytes));
}

TEST(MessageLayout, opcodes_have_their_numbers) {
  EXPECT_EQ(CFC_OP_ADD_APP, 1U);
  EXPECT_EQ(CFC_OP_SET, 9U);
  EXPECT_EQ(CFC_OP_GET, 10U);
  EXPECT_EQ(CFC_OP_FLUSH_ALL, 12U);
  EXPECT_EQ(CFC_OP_TO_DEFAULT, 16U);
}

TEST(MessageAllocation, counts_the_header_into_capacity_and_used_length) {
  const owned_msg msg{cfc_msg_alloc(206)};
  ASSERT_NE(msg, nullptr);
  EXPECT_EQ(msg->capacity, header_bytes + 206);
  EXPECT_EQ(msg->used_len, header_bytes);
}

TEST(MessageAllocation, of_no_payload_is_the_header_alone) {
  const owned_msg msg{cfc_msg_alloc(0)};
  ASSERT_NE(msg, nullptr);
  EXPECT_EQ(msg->capacity, header_bytes);
  EXPECT_EQ(msg->used_len, header_bytes);
}

TEST(MessageAllocation, zeroes_everything_else) {
  // The allocator hands the block of a record that was just freed to the next of its size.
  constexpr std::size_t payload_bytes = 100;
  void* const dirty = std::malloc(header_bytes + payload_bytes);
  std::memset(dirty, 0xFF, header_bytes + payload_bytes);
  asm volatile("" : : "r"(dirty) : "memory");
  std::free(dirty);
  const owned_msg msg{cfc_msg_alloc(payload_bytes)};
  ASSERT_NE(msg, nullptr);
  bytes record(header_bytes + payload_bytes);
  std::memcpy(record.data(), msg.get(), record.size());
  std::fill_n(record.begin(), 4, std::uint8_t{0});  // capacity and used_len
  EXPECT_EQ(record, zeros(header_bytes + payload_bytes));
}

TEST(MessageAllocation, cuts_the_size_to_16_bits) {
  const owned_msg msg{cfc_msg_alloc(0x10000 + 5)};
  ASSERT_NE(msg, nullptr);
  EXPECT_EQ(msg->capacity, header_bytes + 5);
}

TEST(MessageAllocation, of_65535_bytes_is_the_largest) {
  const owned_msg msg{cfc_msg_alloc(0xFFFF - header_bytes)};
  ASSERT_NE(msg, nullptr);
  EXPECT_EQ(msg->capacity, 65535U);
}

TEST(MessageAllocation, refuses_a_size_that_would_lose_its_own_header) {
  EXPECT_EQ(cfc_msg_alloc(0x10000 - header_bytes), nullptr);
  EXPECT_EQ(cfc_msg_alloc(0x10000 - 1), nullptr);
  EXPECT_EQ(cfc_msg_alloc(0xFFFFFFFF), nullptr);
}

TEST(MessageAllocation, without_memory_is_null) {
  faults::fail(faults::call::malloc, 1);
  EXPECT_EQ(cfc_msg_alloc(8), nullptr);
  faults::reset();
}

TEST_F(Exchange, request_has_message_type_1_and_names_the_reply_type) {
  queue.reply_with(0);
  msg->op_result = 0x01020304;
  msg->section_off = 0x1112;
  msg->key_off = 0x2122;
  msg->value_off = 0x3132;
  msg->value_len = 0x4142;
  ASSERT_EQ(cfc_exchange(msg.get()), 0U);
  const auto request = queue.take();
  ASSERT_TRUE(request);
  EXPECT_EQ(request->type, 1);
  EXPECT_EQ(request->text, row(i32(getpid() + 2), u32(0x01020304), u16(0x1112), u16(0x2122),
                               u16(0x3132), u16(0x4142)));
}

TEST_F(Exchange, sends_the_record_up_to_its_used_length) {
  queue.reply_with(0);
  std::memcpy(payload(*msg), "abcdefgh", 8);
  msg->used_len = header_bytes + 3;
  ASSERT_EQ(cfc_exchange(msg.get()), 0U);
  const auto request = queue.take();
  ASSERT_TRUE(request);
  EXPECT_EQ(request->text, row(own_reply_type(), zeros(12), raw("abc")));
}

TEST_F(Exchange, reply_rewrites_all_but_capacity_and_used_length) {
  queue.reply(row(i32(-7), u32(4242), u16(1), u16(2), u16(3), u16(4), raw("reply")));
  msg->used_len = header_bytes + 8;
  ASSERT_EQ(cfc_exchange(msg.get()), 0U);
  EXPECT_EQ(msg->capacity, header_bytes + 8);
  EXPECT_EQ(msg->used_len, header_bytes + 8);
  EXPECT_EQ(msg->mtype, getpid() + 2);
  EXPECT_EQ(msg->reply_mtype, -7);
  EXPECT_EQ(msg->op_result, 4242U);
  EXPECT_EQ(msg->section_off, 1);
  EXPECT_EQ(msg->key_off, 2);
  EXPECT_EQ(msg->value_off, 3);
  EXPECT_EQ(msg->value_len, 4);
  EXPECT_EQ(std::string_view(payload(*msg), 5), "reply");
}

TEST_F(Exchange, leaves_the_services_verdict_in_the_record) {
  queue.reply_with(209);
  EXPECT_EQ(cfc_exchange(msg.get()), 0U);
  EXPECT_EQ(msg->op_result, 209U);
}

TEST_F(Exchange, asking_gives_the_services_verdict) {
  for (const std::uint32_t verdict : {0U, 1U, 209U, 0xFFFFFFFFU}) {
    queue.reply_with(verdict);
    EXPECT_EQ(send_request(*msg), verdict);
  }
}

TEST_F(Exchange, asking_gives_a_failed_sends_errno_over_any_verdict) {
  msg->op_result = 209;
  faults::fail(faults::call::msgsnd, 1, EACCES);
  CaptureStdout();
  EXPECT_EQ(send_request(*msg), static_cast<std::uint32_t>(EACCES));
  GetCapturedStdout();
}

TEST_F(Exchange, takes_no_reply_meant_for_another_process) {
  const struct {
    long type;
    char text[16];
  } foreign{getpid() + 3, {}};
  ASSERT_EQ(msgsnd(queue.queue_id(), &foreign, sizeof foreign.text, 0), 0);
  queue.reply_with(7);
  ASSERT_EQ(cfc_exchange(msg.get()), 0U);
  EXPECT_EQ(msg->op_result, 7U);
  EXPECT_TRUE(queue.take(getpid() + 3));
}

TEST_F(Exchange, failed_send_gives_its_errno_and_prints_one_line) {
  for (const int error : {EACCES, EAGAIN, EIDRM, ENOMEM}) {
    faults::fail(faults::call::msgsnd, 1, error);
    EXPECT_EQ(diagnostics(static_cast<std::uint32_t>(error)), failed_send_line());
    EXPECT_EQ(faults::calls(faults::call::msgrcv), 0);
  }
}

TEST_F(Exchange, failed_sends_line_tells_the_used_length_with_the_header) {
  msg->used_len = header_bytes + 5;
  faults::fail(faults::call::msgsnd, 1);
  EXPECT_THAT(diagnostics(EIO),
              testing::EndsWith("real_len=" + std::to_string(header_bytes + 5) + "\n"));
}

TEST_F(Exchange, on_a_queue_that_was_removed_fails_and_prints_the_line_once) {
  const std::string line = failed_send_line();
  queue.remove_queue();
  EXPECT_EQ(diagnostics(EINVAL), line);
}

TEST_F(Exchange, failed_send_keeps_its_errno_when_the_line_cannot_be_printed) {
  child silent{[this] {
    dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO);
    setvbuf(stdout, nullptr, _IONBF, 0);
    faults::fail(faults::call::msgsnd, 1, EACCES);
    return static_cast<int>(cfc_exchange(msg.get()));
  }};
  EXPECT_EQ(silent.wait(), EACCES);
}

TEST_F(Exchange, failed_receive_gives_its_errno_and_prints_nothing) {
  for (const int error : {EACCES, EIDRM, ENOMSG, EINTR}) {
    faults::fail(faults::call::msgrcv, 1, error);
    EXPECT_EQ(diagnostics(static_cast<std::uint32_t>(error)), "");
    EXPECT_EQ(faults::calls(faults::call::msgsnd), 1);
  }
}

TEST_F(Exchange, success_prints_nothing) {
  queue.reply_with(0);
  EXPECT_EQ(diagnostics(0), "");
}

TEST_F(Exchange, signal_while_waiting_for_the_reply_ends_it_with_EINTR) {
  std::atomic<int> signals = 0;
  const signal_storm storm{signals, 2000};
  EXPECT_EQ(diagnostics(EINTR), "");
  EXPECT_TRUE(queue.take()) << "the request was sent";
}

TEST_F(Exchange, send_to_a_full_queue_waits_for_room_until_a_signal_comes) {
  struct {
    long type;
    char text[4096];
  } const filler{9, {}};
  while (msgsnd(queue.queue_id(), &filler, sizeof filler.text, IPC_NOWAIT) == 0) {
  }
  while (msgsnd(queue.queue_id(), &filler, 1, IPC_NOWAIT) == 0) {
  }
  std::atomic<int> signals = 0;
  const signal_storm storm{signals, 2000};
  EXPECT_EQ(diagnostics(EINTR), failed_send_line());
  EXPECT_GE(signals, 1);
}

TEST_F(Exchange, reply_may_fill_the_record_exactly) {
  queue.reply(row(own_reply_type(), zeros(12), raw("12345678")));
  EXPECT_EQ(cfc_exchange(msg.get()), 0U);
  EXPECT_EQ(std::string_view(payload(*msg), 8), "12345678");
}

TEST_F(Exchange, reply_one_byte_too_long_gives_E2BIG_and_stays_on_the_queue) {
  queue.reply(row(own_reply_type(), zeros(12), raw("123456789")));
  EXPECT_EQ(diagnostics(E2BIG), "");
  const auto left = queue.take(getpid() + 2);
  ASSERT_TRUE(left);
  EXPECT_EQ(left->text.size(), 25U);
}

TEST_F(Exchange, reply_that_was_too_long_is_what_the_next_receive_takes) {
  queue.reply(row(own_reply_type(), u32(77), zeros(8), raw("123456789")));
  ASSERT_EQ(cfc_exchange(msg.get()), static_cast<std::uint32_t>(E2BIG));
  queue.reply_with(0);
  const owned_msg larger{cfc_msg_alloc(9)};
  EXPECT_EQ(send_request(*larger), 77U);
}

TEST_F(Exchange, reply_of_any_length_is_a_success_and_reports_how_much_of_the_text_it_wrote) {
  for (std::size_t size = 0; size <= 24; ++size) {
    queue.reply(bytes(size));
    std::size_t text_bytes = 77;
    EXPECT_EQ(cfc_exchange(msg.get(), &text_bytes), 0U);
    EXPECT_EQ(text_bytes, size);
    queue.reply(bytes(size));
    EXPECT_EQ(diagnostics(0), "") << size;
  }
}

TEST_F(Exchange, message_type_is_the_reply_type_once_the_request_was_sent) {
  faults::fail(faults::call::msgrcv, 1, EIDRM);
  EXPECT_EQ(cfc_exchange(msg.get()), static_cast<std::uint32_t>(EIDRM));
  EXPECT_EQ(msg->mtype, getpid() + 2);
  faults::fail(faults::call::msgsnd, 1, EIDRM);
  diagnostics(EIDRM);
  EXPECT_EQ(msg->mtype, 1);
}

TEST_F(Exchange, asking_gives_205_for_a_reply_that_ends_before_its_result_does) {
  const bytes whole = row(own_reply_type(), u32(209), zeros(8));
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    msg->op_result = 10;
    queue.reply(bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
    EXPECT_EQ(send_request(*msg), size < 8 ? 205U : 209U) << size;
  }
}

TEST_F(Exchange, asking_gives_205_for_a_success_that_is_shorter_than_it_has_to_be) {
  for (std::size_t size = 8; size <= 16; ++size) {
    queue.reply(bytes(size));
    EXPECT_EQ(send_request(*msg, 12), size < 12 ? 205U : 0U) << size;
    queue.reply(row(own_reply_type(), u32(201), zeros(size - 8)));
    EXPECT_EQ(send_request(*msg, 12), 201U) << size;
  }
}

TEST_F(Exchange, reply_may_be_the_header_alone) {
  queue.reply(row(own_reply_type(), zeros(12)));
  EXPECT_EQ(cfc_exchange(msg.get()), 0U);
}
