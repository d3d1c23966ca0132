#include "transport/raw_value.h"

#include <gtest/gtest.h>
#include <proreflax/config.h>

#include <array>
#include <cerrno>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/faults.h"
#include "tests/support/no_request.h"
#include "tests/support/request_queue.h"
#include "transport/lock.h"

using namespace proreflax;

namespace {

constexpr char untouched = 0x5A;

std::string characters(std::size_t count) {
  return std::string(count, 'n');
}

/// A queue whose lock is held, as the functions ending in _sem need it.
class held_queue : public request_queue {
 public:
  held_queue() { EXPECT_EQ(cfc_get_mutex(), 0U); }
  ~held_queue() { cfc_put_mutex(); }
};

/// A buffer of a pattern, as large as the largest value.
struct room {
  explicit room(std::int32_t room_bytes) : length{room_bytes}, asked{room_bytes} {
    buffer.fill(untouched);
  }

  std::uint32_t get_sem(const char* section, const char* key) {
    return __cfc_get_raw_sem(section, key, buffer.data(), &length);
  }

  bool is_untouched() const { return length == asked && is_untouched_from(0); }
  bool is_untouched_from(std::size_t position) const {
    for (; position < buffer.size(); ++position) {
      if (buffer[position] != untouched) {
        return false;
      }
    }
    return true;
  }
  std::string_view value() const { return {buffer.data(), static_cast<std::size_t>(length)}; }

  std::array<char, 300> buffer;
  std::int32_t length;
  std::int32_t asked;
};

bytes reply_of(std::uint16_t value_off, std::uint16_t value_len, const bytes& payload = {}) {
  return row(own_reply_type(), u32(0), u16(0), u16(0), u16(value_off), u16(value_len), payload);
}

const char* const bad_sections[] = {nullptr, "", "a\rb", "a\n", "1234567890123456789012345"};
const char* const bad_keys[] = {
    nullptr, "",    "[a",  "a=b",
    "a*b",   "a\r", "\na", "12345678901234567890123456789012345678901234567890"};

}  // namespace

TEST(RawGet, request_carries_section_and_key_and_points_behind_the_key) {
  held_queue queue;
  queue.reply_with_value("10.0.0.5");
  room out{16};
  ASSERT_EQ(out.get_sem("LAN", "LanIPAddr"), 0U);
  const auto request = queue.take();
  ASSERT_TRUE(request);
  EXPECT_EQ(request->type, 1);
  EXPECT_EQ(request->text, row(own_reply_type(), u32(10), u16(0), u16(4), u16(14), u16(0),
                               text("LAN"), text("LanIPAddr")));
}

TEST(RawGet, hands_out_the_value_without_a_nul_and_its_length) {
  held_queue queue;
  queue.reply_with_value("10.0.0.5");
  room out{16};
  ASSERT_EQ(out.get_sem("LAN", "LanIPAddr"), 0U);
  EXPECT_EQ(out.value(), "10.0.0.5");
  EXPECT_TRUE(out.is_untouched_from(8));
}

TEST(RawGet, hands_out_an_empty_value) {
  held_queue queue;
  queue.reply_with_value("");
  room out{16};
  ASSERT_EQ(out.get_sem("LAN", "LanIPAddr"), 0U);
  EXPECT_EQ(out.length, 0);
  EXPECT_TRUE(out.is_untouched_from(0));
}

TEST(RawGet, reads_the_value_where_the_reply_says_it_stands) {
  held_queue queue;
  queue.reply(reply_of(6, 5, row(text("LAN"), text("K"), raw("value"))));
  room out{16};
  ASSERT_EQ(out.get_sem("LAN", "K"), 0U);
  EXPECT_EQ(out.value(), "value");
}

TEST(RawGet, section_name_of_24_characters_is_sent) {
  held_queue queue;
  queue.reply_with_value("v");
  room out{16};
  EXPECT_EQ(out.get_sem(characters(24).c_str(), "K"), 0U);
  const auto request = queue.take();
  ASSERT_TRUE(request);
  EXPECT_EQ(request->text, row(own_reply_type(), u32(10), u16(0), u16(25), u16(27), u16(0),
                               text(characters(24)), text("K")));
}

TEST(RawGet, key_of_49_characters_is_sent) {
  held_queue queue;
  queue.reply_with_value("v");
  room out{16};
  EXPECT_EQ(out.get_sem("S", characters(49).c_str()), 0U);
  const auto request = queue.take();
  ASSERT_TRUE(request);
  EXPECT_EQ(request->text, row(own_reply_type(), u32(10), u16(0), u16(2), u16(52), u16(0),
                               text("S"), text(characters(49))));
}

TEST(RawGet, equals_sign_in_a_section_and_bracket_inside_a_key_are_sent) {
  held_queue queue;
  queue.reply_with_value("v");
  room out{16};
  EXPECT_EQ(out.get_sem("a=*b", "a[1"), 0U);
  const auto request = queue.take();
  ASSERT_TRUE(request);
  EXPECT_EQ(request->text, row(own_reply_type(), u32(10), u16(0), u16(5), u16(9), u16(0),
                               text("a=*b"), text("a[1")));
}

TEST(RawGet, bad_section_gives_204_and_sends_nothing) {
  held_queue queue;
  for (const char* section : bad_sections) {
    const no_request none{queue};
    room out{16};
    EXPECT_EQ(out.get_sem(section, "K"), 204U) << testing::PrintToString(section);
    EXPECT_TRUE(out.is_untouched());
  }
}

TEST(RawGet, bad_key_gives_204_and_sends_nothing) {
  held_queue queue;
  for (const char* key : bad_keys) {
    const no_request none{queue};
    room out{16};
    EXPECT_EQ(out.get_sem("S", key), 204U) << testing::PrintToString(key);
    EXPECT_TRUE(out.is_untouched());
  }
}

TEST(RawGet, null_buffer_or_length_gives_204_and_sends_nothing) {
  held_queue queue;
  const no_request none{queue};
  room out{16};
  EXPECT_EQ(__cfc_get_raw_sem("S", "K", nullptr, &out.length), 204U);
  EXPECT_EQ(__cfc_get_raw_sem("S", "K", out.buffer.data(), nullptr), 204U);
  EXPECT_TRUE(out.is_untouched());
}

TEST(RawGet, room_below_1_gives_204_and_sends_nothing) {
  held_queue queue;
  for (const std::int32_t room_bytes : {0, -1, std::numeric_limits<std::int32_t>::min()}) {
    const no_request none{queue};
    room out{room_bytes};
    EXPECT_EQ(out.get_sem("S", "K"), 204U) << room_bytes;
    EXPECT_TRUE(out.is_untouched());
  }
}

TEST(RawGet, without_memory_gives_12_and_sends_nothing) {
  held_queue queue;
  room out{16};
  faults::fail(faults::call::malloc, 1);
  EXPECT_EQ(out.get_sem("S", "K"), 12U);
  EXPECT_TRUE(faults::happened());
  faults::reset();
  EXPECT_TRUE(out.is_untouched());
  EXPECT_EQ(queue.waiting(), 0);
}

TEST(RawGet, services_error_reaches_the_caller_unchanged) {
  held_queue queue;
  for (const std::uint32_t code : {1U, 12U, 201U, 208U, 209U, 4242U, 0xFFFFFFFFU}) {
    queue.reply(row(own_reply_type(), u32(code), u16(0), u16(0), u16(0), u16(5), raw("value")));
    room out{16};
    EXPECT_EQ(out.get_sem("S", "K"), code);
    EXPECT_TRUE(out.is_untouched());
  }
}

TEST(RawGet, value_as_long_as_the_room_is_read) {
  held_queue queue;
  queue.reply_with_value("12345");
  room out{5};
  EXPECT_EQ(out.get_sem("S", "K"), 0U);
  EXPECT_EQ(out.value(), "12345");
  EXPECT_TRUE(out.is_untouched_from(5));
}

TEST(RawGet, value_one_byte_longer_than_the_room_gives_212) {
  held_queue queue;
  queue.reply_with_value("123456");
  room out{5};
  EXPECT_EQ(out.get_sem("S", "K"), 212U);
  EXPECT_TRUE(out.is_untouched());
}

TEST(RawGet, value_of_200_bytes_behind_the_key_is_read) {
  held_queue queue;
  queue.reply(reply_of(4, 200, row(text("S"), text("K"), raw(characters(200)))));
  room out{200};
  EXPECT_EQ(out.get_sem("S", "K"), 0U);
  EXPECT_EQ(out.value(), characters(200));
}

TEST(RawGet, value_may_fill_the_whole_record) {
  held_queue queue;
  queue.reply(reply_of(0, 204, raw(characters(204))));
  room out{300};
  EXPECT_EQ(out.get_sem("S", "K"), 0U);
  EXPECT_EQ(out.value(), characters(204));
}

TEST(RawGet, value_beyond_the_record_gives_205) {
  held_queue queue;
  const struct {
    std::uint16_t off, len;
  } rows[] = {{0, 205}, {5, 200}, {204, 1}, {205, 0}, {65535, 1}, {65535, 300}};
  for (const auto& [off, len] : rows) {
    queue.reply(reply_of(off, len));
    room out{300};
    EXPECT_EQ(out.get_sem("S", "K"), 205U) << off << " " << len;
    EXPECT_TRUE(out.is_untouched());
  }
}

TEST(RawGet, offset_and_length_whose_sum_needs_17_bits_give_205) {
  held_queue queue;
  queue.reply(reply_of(65535, 65535));
  room out{std::numeric_limits<std::int32_t>::max()};
  EXPECT_EQ(out.get_sem("S", "K"), 205U);
  EXPECT_TRUE(out.is_untouched());
}

TEST(RawGet, room_is_tested_before_the_records_bounds) {
  held_queue queue;
  queue.reply(reply_of(65535, 17));
  room out{16};
  EXPECT_EQ(out.get_sem("S", "K"), 212U);
  EXPECT_TRUE(out.is_untouched());
}

TEST(RawGet, record_has_room_for_200_bytes_behind_the_names) {
  held_queue queue;
  queue.reply(reply_of(0, 0, bytes(204)));
  room fits{16};
  EXPECT_EQ(fits.get_sem("S", "K"), 0U);
  queue.reply(reply_of(0, 0, bytes(205)));
  room too_long{16};
  EXPECT_EQ(too_long.get_sem("S", "K"), static_cast<std::uint32_t>(E2BIG));
  EXPECT_TRUE(too_long.is_untouched());
}

TEST(RawGet, success_without_a_whole_header_gives_205) {
  held_queue queue;
  for (std::size_t size = 0; size < 16; ++size) {
    queue.reply(bytes(size));
    room out{16};
    EXPECT_EQ(out.get_sem("S", "K"), 205U) << size;
    EXPECT_TRUE(out.is_untouched());
  }
}

TEST(RawGet, error_needs_a_reply_as_far_as_its_result_and_no_header) {
  held_queue queue;
  const bytes whole = row(own_reply_type(), u32(209), bytes(8));
  for (std::size_t size = 0; size <= 16; ++size) {
    queue.reply(bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
    room out{16};
    EXPECT_EQ(out.get_sem("S", "K"), size < 8 ? 205U : 209U) << size;
    EXPECT_TRUE(out.is_untouched());
  }
}

TEST(RawGet, with_the_lock_held_never_touches_it) {
  held_queue queue;
  queue.reply_with_value("v");
  room out{16};
  faults::reset();
  EXPECT_EQ(out.get_sem("S", "K"), 0U);
  EXPECT_EQ(faults::calls(faults::call::semget) + faults::calls(faults::call::semop), 0);
  EXPECT_EQ(queue.lock_value(), 0);
}

TEST(RawGet, takes_the_lock_and_gives_it_back) {
  request_queue queue;
  queue.reply_with_value("v");
  room out{16};
  faults::reset();
  EXPECT_EQ(__cfc_get_raw_nosem("S", "K", out.buffer.data(), &out.length), 0U);
  EXPECT_EQ(out.value(), "v");
  EXPECT_EQ(faults::calls(faults::call::semop), 2);
  EXPECT_EQ(queue.lock_value(), 1);
}

TEST(RawGet, gives_the_lock_back_after_a_failure) {
  request_queue queue;
  queue.reply_with(209);
  room out{16};
  EXPECT_EQ(__cfc_get_raw_nosem("S", "K", out.buffer.data(), &out.length), 209U);
  EXPECT_TRUE(out.is_untouched());
  EXPECT_EQ(queue.lock_value(), 1);
}

TEST(RawGet, without_a_lock_gives_its_code_before_anything_else) {
  room out{16};
  EXPECT_EQ(__cfc_get_raw_nosem("S", "K", out.buffer.data(), &out.length), 230U);
  EXPECT_EQ(__cfc_get_raw_nosem(nullptr, "K", out.buffer.data(), &out.length), 230U);
  EXPECT_TRUE(out.is_untouched());
}

TEST(RawSet, request_carries_section_key_and_value_each_with_its_nul) {
  held_queue queue;
  queue.reply_with(0);
  ASSERT_EQ(__cfc_set_raw_sem("LAN", "LanIPAddr", "10.0.0.5", 8), 0U);
  const auto request = queue.take();
  ASSERT_TRUE(request);
  EXPECT_EQ(request->type, 1);
  EXPECT_EQ(request->text, row(own_reply_type(), u32(9), u16(0), u16(4), u16(14), u16(9),
                               text("LAN"), text("LanIPAddr"), text("10.0.0.5")));
}

TEST(RawSet, empty_value_is_sent_as_its_nul) {
  held_queue queue;
  queue.reply_with(0);
  ASSERT_EQ(__cfc_set_raw_sem("S", "K2", "", 0), 0U);
  const auto request = queue.take();
  ASSERT_TRUE(request);
  EXPECT_EQ(request->text, row(own_reply_type(), u32(9), u16(0), u16(2), u16(5), u16(1), text("S"),
                               text("K2"), text("")));
}

TEST(RawSet, sends_exactly_the_bytes_given_of_a_value_without_a_nul) {
  held_queue queue;
  queue.reply_with(0);
  const auto value = std::make_unique<char[]>(3);
  value[0] = 'a';
  value[1] = '=';
  value[2] = 'c';
  ASSERT_EQ(__cfc_set_raw_sem("S", "K", value.get(), 3), 0U);
  const auto request = queue.take();
  ASSERT_TRUE(request);
  EXPECT_EQ(request->text, row(own_reply_type(), u32(9), u16(0), u16(2), u16(4), u16(4), text("S"),
                               text("K"), text("a=c")));
}

TEST(RawSet, length_cuts_a_longer_text) {
  held_queue queue;
  queue.reply_with(0);
  ASSERT_EQ(__cfc_set_raw_sem("S", "K", "12345", 2), 0U);
  const auto request = queue.take();
  ASSERT_TRUE(request);
  EXPECT_EQ(request->text, row(own_reply_type(), u32(9), u16(0), u16(2), u16(4), u16(3), text("S"),
                               text("K"), text("12")));
}

TEST(RawSet, value_of_199_characters_fills_the_record_exactly) {
  held_queue queue;
  queue.reply(row(own_reply_type(), bytes(12), bytes(2 + 2 + 200)));
  ASSERT_EQ(__cfc_set_raw_sem("S", "K", characters(199).c_str(), 199), 0U)
      << "the longest reply that the record takes has as many bytes as the request";
  const auto request = queue.take();
  ASSERT_TRUE(request);
  EXPECT_EQ(request->text, row(own_reply_type(), u32(9), u16(0), u16(2), u16(4), u16(200),
                               text("S"), text("K"), text(characters(199))));
  EXPECT_EQ(request->text.size(), 16U + 2 + 2 + 200);
}

TEST(RawSet, value_of_200_characters_gives_204_and_sends_nothing) {
  held_queue queue;
  const no_request none{queue};
  EXPECT_EQ(__cfc_set_raw_sem("S", "K", characters(200).c_str(), 200), 204U);
  EXPECT_EQ(__cfc_set_raw_sem("S", "K", "v", std::numeric_limits<std::int32_t>::max()), 204U);
}

TEST(RawSet, negative_length_gives_204_and_sends_nothing) {
  held_queue queue;
  const no_request none{queue};
  EXPECT_EQ(__cfc_set_raw_sem("S", "K", "v", -1), 204U);
  EXPECT_EQ(__cfc_set_raw_sem("S", "K", "v", std::numeric_limits<std::int32_t>::min()), 204U);
}

TEST(RawSet, null_value_gives_204_and_sends_nothing) {
  held_queue queue;
  const no_request none{queue};
  EXPECT_EQ(__cfc_set_raw_sem("S", "K", nullptr, 0), 204U);
}

TEST(RawSet, bad_section_gives_204_and_sends_nothing) {
  held_queue queue;
  for (const char* section : bad_sections) {
    const no_request none{queue};
    EXPECT_EQ(__cfc_set_raw_sem(section, "K", "v", 1), 204U) << testing::PrintToString(section);
  }
}

TEST(RawSet, bad_key_gives_204_and_sends_nothing) {
  held_queue queue;
  for (const char* key : bad_keys) {
    const no_request none{queue};
    EXPECT_EQ(__cfc_set_raw_sem("S", key, "v", 1), 204U) << testing::PrintToString(key);
  }
}

TEST(RawSet, without_memory_gives_12_and_sends_nothing) {
  held_queue queue;
  faults::fail(faults::call::malloc, 1);
  EXPECT_EQ(__cfc_set_raw_sem("S", "K", "v", 1), 12U);
  EXPECT_TRUE(faults::happened());
  faults::reset();
  EXPECT_EQ(queue.waiting(), 0);
}

TEST(RawSet, services_error_reaches_the_caller_unchanged) {
  held_queue queue;
  for (const std::uint32_t code : {1U, 12U, 204U, 208U, 209U, 4242U, 0xFFFFFFFFU}) {
    queue.reply_with(code);
    EXPECT_EQ(__cfc_set_raw_sem("S", "K", "v", 1), code);
  }
}

TEST(RawSet, ignores_where_the_reply_says_that_a_value_stands) {
  held_queue queue;
  queue.reply(reply_of(65535, 65535));
  EXPECT_EQ(__cfc_set_raw_sem("S", "K", "v", 1), 0U);
}

TEST(RawSet, reply_is_good_once_it_reaches_as_far_as_its_result) {
  held_queue queue;
  for (const std::uint32_t code : {0U, 209U}) {
    const bytes whole = row(own_reply_type(), u32(code), bytes(8));
    for (std::size_t size = 0; size <= 16; ++size) {
      queue.reply(bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
      EXPECT_EQ(__cfc_set_raw_sem("S", "K", "v", 1), size < 8 ? 205U : code) << size;
    }
  }
}

TEST(RawSet, with_the_lock_held_never_touches_it) {
  held_queue queue;
  queue.reply_with(0);
  faults::reset();
  EXPECT_EQ(__cfc_set_raw_sem("S", "K", "v", 1), 0U);
  EXPECT_EQ(faults::calls(faults::call::semget) + faults::calls(faults::call::semop), 0);
  EXPECT_EQ(queue.lock_value(), 0);
}

TEST(RawSet, takes_the_lock_and_gives_it_back) {
  request_queue queue;
  queue.reply_with(209);
  faults::reset();
  EXPECT_EQ(__cfc_set_raw_nosem("S", "K", "v", 1), 209U);
  EXPECT_EQ(faults::calls(faults::call::semop), 2);
  EXPECT_EQ(queue.lock_value(), 1);
}

TEST(RawSet, without_a_lock_gives_its_code_before_anything_else) {
  EXPECT_EQ(__cfc_set_raw_nosem("S", "K", "v", 1), 230U);
  EXPECT_EQ(__cfc_set_raw_nosem("S", "K", nullptr, 1), 230U);
}
