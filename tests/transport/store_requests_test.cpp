#include <gtest/gtest.h>
#include <proreflax/config.h>

#include <cerrno>
#include <string>

#include "tests/support/child.h"
#include "tests/support/faults.h"
#include "tests/support/no_request.h"
#include "tests/support/request_queue.h"

namespace {

const std::string longest_name(24, 'n');

constexpr std::uint32_t too_big = E2BIG;

bytes header_only(std::uint32_t opcode) {
  return row(own_reply_type(), u32(opcode), u16(0), u16(0), u16(0), u16(0));
}

/// Takes the next request off the queue; no bytes when there is none.
bytes taken_request(const request_queue& queue) {
  const auto request = queue.take();
  EXPECT_TRUE(request);
  return request ? request->text : bytes{};
}

bool touched_the_lock() {
  return faults::calls(faults::call::semget) + faults::calls(faults::call::semop) != 0;
}

}  // namespace

TEST(AddApp, request_carries_the_name_with_its_nul) {
  request_queue queue;
  queue.reply_with(0);
  EXPECT_EQ(cfc_add_app_nosem("sensord"), 0U);
  EXPECT_EQ(taken_request(queue),
            row(own_reply_type(), u32(1), u16(0), u16(0), u16(0), u16(0), text("sensord")));
}

TEST(AddApp, name_of_24_characters_makes_41_bytes_of_text) {
  request_queue queue;
  queue.reply_with(0);
  EXPECT_EQ(cfc_add_app_nosem(longest_name.c_str()), 0U);
  const bytes request = taken_request(queue);
  EXPECT_EQ(request.size(), 41U);
  EXPECT_EQ(request, row(header_only(1), text(longest_name)));
}

TEST(AddApp, reply_may_be_as_long_as_the_request_and_no_longer) {
  request_queue queue;
  queue.reply(bytes(41));
  EXPECT_EQ(cfc_add_app_nosem(longest_name.c_str()), 0U);
  queue.reply(bytes(42));
  EXPECT_EQ(cfc_add_app_nosem(longest_name.c_str()), too_big);
  EXPECT_EQ(queue.lock_value(), 1);
}

TEST(AddApp, name_that_breaks_the_rules_of_a_section_gives_204_and_sends_nothing) {
  request_queue queue;
  ASSERT_EQ(cfc_get_mutex(), 0U);
  for (const char* name :
       {static_cast<const char*>(nullptr), "", "a\r", "\na", "1234567890123456789012345"}) {
    const no_request none{queue};
    faults::reset();
    EXPECT_EQ(cfc_add_app_sem(name), 204U) << testing::PrintToString(name);
    EXPECT_FALSE(touched_the_lock());
  }
  EXPECT_EQ(queue.lock_value(), 0);
}

TEST(AddApp, name_of_one_character_or_with_an_equals_sign_is_sent) {
  request_queue queue;
  for (const char* name : {"a", "=", "[*]"}) {
    queue.reply_with(0);
    EXPECT_EQ(cfc_add_app_nosem(name), 0U);
    EXPECT_EQ(taken_request(queue), row(header_only(1), text(name)));
  }
}

TEST(AddApp, takes_the_lock_and_gives_it_back) {
  request_queue queue;
  queue.reply_with(12);
  faults::reset();
  EXPECT_EQ(cfc_add_app_nosem("sensord"), 12U);
  EXPECT_EQ(faults::calls(faults::call::semop), 2);
  EXPECT_EQ(queue.lock_value(), 1);
}

TEST(AddApp, with_the_lock_held_never_touches_it) {
  request_queue queue;
  queue.reply_with(0);
  ASSERT_EQ(cfc_get_mutex(), 0U);
  faults::reset();
  EXPECT_EQ(cfc_add_app_sem("sensord"), 0U);
  EXPECT_FALSE(touched_the_lock());
  EXPECT_EQ(queue.lock_value(), 0);
}

TEST(FlushAll, request_is_the_header_alone) {
  request_queue queue;
  queue.reply_with(0);
  EXPECT_EQ(cfc_flush_all_nosem(), 0U);
  const bytes request = taken_request(queue);
  EXPECT_EQ(request.size(), 16U);
  EXPECT_EQ(request, header_only(12));
}

TEST(FlushAll, reply_may_be_the_header_and_no_longer) {
  request_queue queue;
  queue.reply(bytes(16));
  EXPECT_EQ(cfc_flush_all_nosem(), 0U);
  queue.reply(bytes(17));
  EXPECT_EQ(cfc_flush_all_nosem(), too_big);
  EXPECT_EQ(queue.lock_value(), 1);
}

TEST(FlushAll, services_failure_reaches_the_caller_unchanged) {
  request_queue queue;
  for (const std::uint32_t code : {215U, 218U, 222U, 0xFFFFFFFFU}) {
    queue.reply_with(code);
    EXPECT_EQ(cfc_flush_all_nosem(), code);
    EXPECT_EQ(queue.lock_value(), 1);
  }
}

TEST(FlushAll, takes_the_lock_and_gives_it_back) {
  request_queue queue;
  queue.reply_with(0);
  faults::reset();
  EXPECT_EQ(cfc_flush_all_nosem(), 0U);
  EXPECT_EQ(faults::calls(faults::call::semop), 2);
  EXPECT_EQ(queue.lock_value(), 1);
}

TEST(FlushAll, with_the_lock_held_never_touches_it) {
  request_queue queue;
  queue.reply_with(0);
  ASSERT_EQ(cfc_get_mutex(), 0U);
  faults::reset();
  EXPECT_EQ(cfc_flush_all_sem(), 0U);
  EXPECT_FALSE(touched_the_lock());
  EXPECT_EQ(taken_request(queue), header_only(12));
  EXPECT_EQ(queue.lock_value(), 0);
}

TEST(ToDefault, request_is_the_header_alone) {
  request_queue queue;
  queue.reply_with(0);
  EXPECT_EQ(cfc_to_default(), 0U);
  EXPECT_EQ(taken_request(queue), header_only(16));
}

TEST(ToDefault, reply_may_be_the_header_and_no_longer) {
  request_queue queue;
  queue.reply(bytes(16));
  EXPECT_EQ(cfc_to_default(), 0U);
  queue.reply(bytes(17));
  EXPECT_EQ(cfc_to_default(), too_big);
  EXPECT_EQ(queue.lock_value(), 1);
}

TEST(ToDefault, gives_the_lock_back_after_success_and_after_the_services_failure) {
  request_queue queue;
  for (const std::uint32_t code : {0U, 205U, 206U}) {
    queue.reply_with(code);
    faults::reset();
    EXPECT_EQ(cfc_to_default(), code);
    EXPECT_EQ(faults::calls(faults::call::semop), 2);
    EXPECT_EQ(queue.lock_value(), 1);
  }
}

TEST(ToDefault, without_memory_gives_12_and_the_lock_back) {
  request_queue queue;
  faults::fail(faults::call::malloc, 1);
  EXPECT_EQ(cfc_to_default(), 12U);
  EXPECT_TRUE(faults::happened());
  EXPECT_EQ(queue.waiting(), 0);
  EXPECT_EQ(queue.lock_value(), 1);
}

TEST(ToDefault, of_a_process_that_holds_the_lock_waits_for_ever) {
  request_queue queue;
  child asker{[] { return cfc_get_mutex() == 0 ? static_cast<int>(cfc_to_default()) : 1; }};
  ASSERT_TRUE(eventually([&] { return queue.waiting_for_lock() == 1; }));
  EXPECT_EQ(queue.waiting(), 0);
  EXPECT_EQ(queue.lock_value(), 0);
  asker.kill_and_wait();
  EXPECT_EQ(queue.lock_value(), 1);
}

TEST(StoreWideRequests, without_a_lock_give_230) {
  EXPECT_EQ(cfc_add_app_nosem("sensord"), 230U);
  EXPECT_EQ(cfc_flush_all_nosem(), 230U);
  EXPECT_EQ(cfc_to_default(), 230U);
}

TEST(StoreWideRequests, without_a_queue_give_231_and_the_lock_back) {
  request_queue queue;
  queue.remove_queue();
  EXPECT_EQ(cfc_add_app_nosem("sensord"), 231U);
  EXPECT_EQ(cfc_flush_all_nosem(), 231U);
  EXPECT_EQ(cfc_to_default(), 231U);
  EXPECT_EQ(queue.lock_value(), 1);
}
