#include <gtest/gtest.h>
#include <proreflax/config.h>

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "tests/support/faults.h"
#include "tests/support/no_request.h"
#include "tests/support/request_queue.h"

namespace {

/// What a number getter gave, and the output that it left; a failure leaves the pattern.
template <typename Number>
struct got {
  std::uint32_t result;
  Number out;
  bool operator==(const got&) const = default;
};

template <typename Number>
void PrintTo(const got<Number>& each, std::ostream* stream) {
  *stream << "result " << each.result << ", out " << +each.out;
}

template <typename Number>
constexpr auto untouched = static_cast<Number>(0xA5A5A5A5);

template <typename Number>
got<Number> fails(std::uint32_t result) {
  return {result, untouched<Number>};
}

/// A service whose replies are laid out and whose requests are looked at, one by one.
class TypedValues : public testing::Test {
 protected:
  template <typename Number>
  got<Number> read(std::uint32_t (*getter)(int, const char*, const char*, Number*),
                   const std::string& stored) {
    queue.reply_with_value(stored);
    Number out = untouched<Number>;
    const std::uint32_t result = getter(0, "LAN", "Key", &out);
    EXPECT_EQ(taken(), row(own_reply_type(), u32(10), u16(0), u16(4), u16(8), u16(0), text("LAN"),
                           text("Key")));
    EXPECT_EQ(queue.lock_value(), 1);
    return {result, out};
  }
  got<std::uint8_t> u8_of(const std::string& stored) { return read(__cfc_get_u8, stored); }
  got<std::uint16_t> u16_of(const std::string& stored) { return read(__cfc_get_u16, stored); }
  got<std::uint32_t> u32_of(const std::string& stored) { return read(__cfc_get_u32, stored); }
  got<std::uint32_t> ip_of(const std::string& stored) { return read(__cfc_get_ip, stored); }

  /// A set of a value is one request that carries this text.
  template <typename Value>
  void expect_sent(std::uint32_t (*setter)(int, const char*, const char*, Value), Value value,
                   const std::string& sent) {
    queue.reply_with(0);
    EXPECT_EQ(setter(0, "LAN", "Key", value), 0U);
    EXPECT_EQ(taken(), set_request(sent));
    EXPECT_EQ(queue.lock_value(), 1);
  }

  static bytes set_request(const std::string& sent) {
    return row(own_reply_type(), u32(9), u16(0), u16(4), u16(8),
               u16(static_cast<std::uint16_t>(sent.size() + 1)), text("LAN"), text("Key"),
               text(sent));
  }

  bytes taken() {
    const auto request = queue.take();
    EXPECT_TRUE(request);
    EXPECT_EQ(queue.waiting(), 0);
    return request ? request->text : bytes{};
  }

  request_queue queue;
};

using GetU8 = TypedValues;
using GetU16 = TypedValues;
using GetU32 = TypedValues;
using GetIp = TypedValues;

/// What the four getters give without an output: u8, u16, u32, address.
using codes = std::array<std::uint32_t, 4>;

codes all_give(std::uint32_t code) {
  return {code, code, code, code};
}

class GetNumberOrAddress : public TypedValues {
 protected:
  /// `prepare` lays out the reply of each.
  template <typename Prepare>
  codes null_results(int locked, Prepare prepare) {
    codes results{};
    const auto get = [&](std::size_t which, auto getter) {
      prepare();
      results[which] = getter(locked, "LAN", "Key", nullptr);
    };
    if (locked != 0) {
      EXPECT_EQ(cfc_get_mutex(), 0U);
    }
    get(0, __cfc_get_u8);
    get(1, __cfc_get_u16);
    get(2, __cfc_get_u32);
    get(3, __cfc_get_ip);
    if (locked != 0) {
      cfc_put_mutex();
    }
    return results;
  }

  /// Each getter makes one exchange, with the lock held by either side.
  codes into_null(const std::string& stored) {
    const auto reply = [&] { queue.reply_with_value(stored); };
    const codes results = null_results(0, reply);
    EXPECT_EQ(null_results(1, reply), results);
    for (int request = 0; request < 8; ++request) {
      EXPECT_TRUE(queue.take());
    }
    EXPECT_EQ(queue.waiting(), 0);
    EXPECT_EQ(queue.lock_value(), 1);
    return results;
  }
};

using SetNumber = TypedValues;
using SetIp = TypedValues;
using SetString = TypedValues;

}  // namespace

TEST_F(GetU8, reads_decimal_and_hexadecimal_texts) {
  EXPECT_EQ(u8_of("10"), (got<std::uint8_t>{0, 10}));
  EXPECT_EQ(u8_of("0x0a"), (got<std::uint8_t>{0, 10}));
  EXPECT_EQ(u8_of("0"), (got<std::uint8_t>{0, 0}));
}

TEST_F(GetU8, reads_255_and_gives_205_for_256) {
  EXPECT_EQ(u8_of("255"), (got<std::uint8_t>{0, 255}));
  EXPECT_EQ(u8_of("256"), fails<std::uint8_t>(205));
  EXPECT_EQ(u8_of("4294967295"), fails<std::uint8_t>(205));
}

TEST_F(GetU8, gives_205_for_a_negative_number) {
  EXPECT_EQ(u8_of("-1"), fails<std::uint8_t>(205));
  EXPECT_EQ(u8_of("-255"), fails<std::uint8_t>(205));
}

TEST_F(GetU8, gives_the_parsers_code_for_a_text_that_is_no_number) {
  EXPECT_EQ(u8_of(""), fails<std::uint8_t>(204));
  EXPECT_EQ(u8_of("abc"), fails<std::uint8_t>(210));
  EXPECT_EQ(u8_of("4294967296"), fails<std::uint8_t>(211));
}

TEST_F(GetU16, reads_65535_and_gives_205_for_65536) {
  EXPECT_EQ(u16_of("65535"), (got<std::uint16_t>{0, 65535}));
  EXPECT_EQ(u16_of("0x01bb"), (got<std::uint16_t>{0, 443}));
  EXPECT_EQ(u16_of("0x10000"), fails<std::uint16_t>(205));
}

TEST_F(GetU16, gives_205_for_a_negative_number) {
  EXPECT_EQ(u16_of("-1"), fails<std::uint16_t>(205));
}

TEST_F(GetU16, gives_the_parsers_code_for_a_text_that_is_no_number) {
  EXPECT_EQ(u16_of(""), fails<std::uint16_t>(204));
  EXPECT_EQ(u16_of("1 "), fails<std::uint16_t>(210));
  EXPECT_EQ(u16_of("0x100000000"), fails<std::uint16_t>(211));
}

TEST_F(GetU32, reads_every_number_of_32_bits) {
  EXPECT_EQ(u32_of("0xc0a83e01"), (got<std::uint32_t>{0, 0xC0A83E01}));
  EXPECT_EQ(u32_of("4294967295"), (got<std::uint32_t>{0, 0xFFFFFFFF}));
}

TEST_F(GetU32, reads_a_negative_number_as_its_twos_complement) {
  EXPECT_EQ(u32_of("-1"), (got<std::uint32_t>{0, 0xFFFFFFFF}));
}

TEST_F(GetU32, leaves_0_for_a_text_that_is_no_number) {
  EXPECT_EQ(u32_of("abc"), (got<std::uint32_t>{210, 0}));
  EXPECT_EQ(u32_of(""), (got<std::uint32_t>{204, 0}));
  EXPECT_EQ(u32_of("4294967296"), (got<std::uint32_t>{211, 0}));
}

TEST_F(GetIp, reads_a_dotted_quad) {
  EXPECT_EQ(ip_of("192.168.62.1"), (got<std::uint32_t>{0, 0xC0A83E01}));
  EXPECT_EQ(ip_of("255.255.255.255"), (got<std::uint32_t>{0, 0xFFFFFFFF}));
}

TEST_F(GetIp, gives_all_ones_for_anything_else) {
  for (const char* stored : {"1.2.3", "", "abc", "0xc0a83e01", "1.2.3.4 "}) {
    EXPECT_EQ(ip_of(stored), fails<std::uint32_t>(0xFFFFFFFF)) << stored;
  }
}

TEST_F(GetNumberOrAddress, reads_a_text_of_15_characters) {
  EXPECT_EQ(u8_of("0x0000000000012"), (got<std::uint8_t>{0, 0x12}));
  EXPECT_EQ(u16_of("000000000000443"), (got<std::uint16_t>{0, 443}));
  EXPECT_EQ(u32_of("0x00000c0a83e01"), (got<std::uint32_t>{0, 0xC0A83E01}));
  EXPECT_EQ(ip_of("000192.168.62.1"), (got<std::uint32_t>{0, 0xC0A83E01}));
}

TEST_F(GetNumberOrAddress, gives_212_for_a_text_of_16_characters) {
  const std::string stored = "0x00000000000001";
  EXPECT_EQ(u8_of(stored), fails<std::uint8_t>(212));
  EXPECT_EQ(u16_of(stored), fails<std::uint16_t>(212));
  EXPECT_EQ(u32_of(stored), fails<std::uint32_t>(212));
  EXPECT_EQ(ip_of("0000192.168.62.1"), fails<std::uint32_t>(212));
}

TEST_F(GetNumberOrAddress, ends_the_text_where_the_reply_ends_it) {
  // The record behind the value holds what the service left there: digits, here.
  queue.reply(row(own_reply_type(), u32(0), u16(0), u16(0), u16(0), u16(2), raw("1234567890")));
  std::uint32_t out = 0;
  EXPECT_EQ(__cfc_get_u32(0, "LAN", "Key", &out), 0U);
  EXPECT_EQ(out, 12U);
}

TEST_F(GetNumberOrAddress, into_null_gives_204_once_a_number_would_be_stored) {
  EXPECT_EQ(into_null("7"), (codes{204, 204, 204, 0xFFFFFFFF}));
}

TEST_F(GetNumberOrAddress, into_null_gives_the_result_of_the_conversion_first) {
  EXPECT_EQ(into_null(""), (codes{204, 204, 204, 0xFFFFFFFF}));
  EXPECT_EQ(into_null("abc"), (codes{210, 210, 204, 0xFFFFFFFF}));
  EXPECT_EQ(into_null("4294967296"), (codes{211, 211, 204, 0xFFFFFFFF}));
  EXPECT_EQ(into_null("65536"), (codes{205, 205, 204, 0xFFFFFFFF}));
  EXPECT_EQ(into_null("256"), (codes{205, 204, 204, 0xFFFFFFFF}));
  EXPECT_EQ(into_null("-1"), (codes{205, 205, 204, 0xFFFFFFFF}));
}

TEST_F(GetNumberOrAddress, into_null_gives_all_ones_for_every_address) {
  EXPECT_EQ(into_null("10.0.0.1")[3], 0xFFFFFFFFU);
  EXPECT_EQ(into_null("10.0.0")[3], 0xFFFFFFFFU);
}

TEST_F(GetNumberOrAddress, into_null_gives_the_result_of_the_exchange_before_any_other) {
  EXPECT_EQ(into_null("0000000000000001"), all_give(212));
  for (const std::uint32_t code : {201U, 208U, 209U, 4242U}) {
    EXPECT_EQ(null_results(0, [&] { queue.reply_with(code); }), all_give(code));
    EXPECT_EQ(null_results(1, [&] { queue.reply_with(code); }), all_give(code));
  }
}

TEST_F(GetNumberOrAddress, into_null_gives_the_failure_to_lock_before_any_other) {
  queue.remove_queue();
  EXPECT_EQ(null_results(0, [] {}), all_give(231));
  queue.remove_lock();
  EXPECT_EQ(null_results(0, [] {}), all_give(230));
}

TEST_F(GetNumberOrAddress, into_null_refuses_a_bad_name_before_anything_is_sent) {
  const no_request none{queue};
  EXPECT_EQ(__cfc_get_u8(1, "", "Key", nullptr), 204U);
  EXPECT_EQ(__cfc_get_u16(1, "LAN", "a=b", nullptr), 204U);
  EXPECT_EQ(__cfc_get_u32(1, nullptr, "Key", nullptr), 204U);
  EXPECT_EQ(__cfc_get_ip(1, "LAN", nullptr, nullptr), 204U);
}

namespace {

class GetString : public TypedValues {
 protected:
  GetString() { buffer.fill('#'); }

  std::uint32_t read_string(const std::string& stored, std::uint32_t size_bytes) {
    queue.reply_with_value(stored);
    const std::uint32_t result = __cfc_get_string(0, "LAN", "Key", buffer.data(), size_bytes);
    EXPECT_EQ(taken(), row(own_reply_type(), u32(10), u16(0), u16(4), u16(8), u16(0), text("LAN"),
                           text("Key")));
    return result;
  }

  /// The text, its NUL, and the pattern in all the rest of the buffer.
  void expect_holds(const std::string& expected) const {
    EXPECT_EQ(std::string(buffer.data(), buffer.size()),
              expected + '\0' + std::string(buffer.size() - expected.size() - 1, '#'));
  }
  void expect_untouched() const {
    EXPECT_EQ(std::string(buffer.data(), buffer.size()), std::string(buffer.size(), '#'));
  }

  std::array<char, 220> buffer;
};

class GetBinary : public TypedValues {
 protected:
  using buffer = std::array<std::uint8_t, 8>;
  static constexpr std::uint8_t unwritten = 0xA5;

  GetBinary() { out.fill(unwritten); }

  std::uint32_t read_binary(const std::string& stored, std::int32_t wanted) {
    queue.reply_with_value(stored);
    std::int32_t count = wanted;
    const std::uint32_t result = __cfc_get_binary(0, "LAN", "Key", out.data(), &count);
    EXPECT_EQ(taken(), row(own_reply_type(), u32(10), u16(0), u16(4), u16(8), u16(0), text("LAN"),
                           text("Key")));
    EXPECT_EQ(count, wanted);
    return result;
  }

  void expect_holds(const bytes& expected) const {
    buffer all;
    all.fill(unwritten);
    std::copy(expected.begin(), expected.end(), all.begin());
    EXPECT_EQ(out, all);
  }
  void expect_untouched() const { expect_holds({}); }

  buffer out;
};

class SetBinary : public TypedValues {
 protected:
  std::uint32_t write(const bytes& data) {
    return __cfc_set_binary(0, "LAN", "Key", data.data(), static_cast<std::int32_t>(data.size()));
  }
};

}  // namespace

TEST_F(GetString, reads_the_text_as_it_stands_and_terminates_it) {
  EXPECT_EQ(read_string(" my camera = 1 ", 32), 0U);
  expect_holds(" my camera = 1 ");
}

TEST_F(GetString, reads_an_empty_text) {
  EXPECT_EQ(read_string("", 2), 0U);
  expect_holds("");
}

TEST_F(GetString, of_size_2_reads_one_character) {
  EXPECT_EQ(read_string("a", 2), 0U);
  expect_holds("a");
}

TEST_F(GetString, of_size_2_gives_212_for_two_characters) {
  EXPECT_EQ(read_string("ab", 2), 212U);
  expect_untouched();
}

TEST_F(GetString, reads_a_text_that_fills_the_buffer) {
  EXPECT_EQ(read_string("1234567", 8), 0U);
  expect_holds("1234567");
}

TEST_F(GetString, gives_212_for_a_text_as_long_as_the_buffer) {
  EXPECT_EQ(read_string("12345678", 8), 212U);
  expect_untouched();
}

TEST_F(GetString, reads_the_longest_value) {
  const std::string longest(199, 'v');
  EXPECT_EQ(read_string(longest, 200), 0U);
  expect_holds(longest);
}

TEST_F(GetString, takes_a_size_of_up_to_2_to_the_31st) {
  EXPECT_EQ(read_string("v", 0x80000000), 0U);
  expect_holds("v");
}

TEST_F(GetString, of_size_below_2_or_above_2_to_the_31st_gives_204_and_sends_nothing) {
  for (const std::uint32_t size_bytes : {0U, 1U, 0x80000001U, 0xFFFFFFFFU}) {
    const no_request none{queue};
    EXPECT_EQ(__cfc_get_string(0, "LAN", "Key", buffer.data(), size_bytes), 204U) << size_bytes;
  }
  expect_untouched();
}

TEST_F(GetString, into_null_gives_204_and_sends_nothing) {
  const no_request none{queue};
  EXPECT_EQ(__cfc_get_string(0, "LAN", "Key", nullptr, 16), 204U);
}

TEST_F(GetBinary, reads_as_many_bytes_as_are_wanted) {
  EXPECT_EQ(read_binary("0x04030201", 4), 0U);
  expect_holds({1, 2, 3, 4});
}

TEST_F(GetBinary, fills_up_with_zeros_when_fewer_are_stored) {
  EXPECT_EQ(read_binary("0x0201", 4), 0U);
  expect_holds({1, 2, 0, 0});
}

TEST_F(GetBinary, of_an_empty_text_is_all_zeros) {
  EXPECT_EQ(read_binary("", 4), 0U);
  expect_holds({0, 0, 0, 0});
}

TEST_F(GetBinary, gives_212_when_more_are_stored) {
  EXPECT_EQ(read_binary("0x0504030201", 4), 212U);
  expect_untouched();
}

TEST_F(GetBinary, gives_205_for_a_malformed_text_with_the_output_zeroed) {
  for (const char* stored : {"0x0", "0x123", "abcd", "0x", "0x01020g"}) {
    out.fill(unwritten);
    EXPECT_EQ(read_binary(stored, 4), 205U) << stored;
    expect_holds({0, 0, 0, 0});
  }
}

TEST_F(GetBinary, keeps_what_was_decoded_before_a_bad_digit) {
  EXPECT_EQ(read_binary("0xg10201", 4), 205U);
  expect_holds({1, 2, 0, 0});
}

TEST_F(GetBinary, of_one_byte_has_room_for_4_characters) {
  EXPECT_EQ(read_binary("0x7f", 1), 0U);
  expect_holds({0x7F});
  EXPECT_EQ(read_binary("0x7f00", 1), 212U);
}

TEST_F(GetBinary, into_null_gives_204_and_sends_nothing) {
  const no_request none{queue};
  std::int32_t count = 4;
  EXPECT_EQ(__cfc_get_binary(0, "LAN", "Key", nullptr, &count), 204U);
  EXPECT_EQ(__cfc_get_binary(0, "LAN", "Key", out.data(), nullptr), 204U);
  expect_untouched();
}

TEST_F(GetBinary, of_a_count_below_1_gives_204_and_sends_nothing) {
  for (std::int32_t count : {0, -1, std::numeric_limits<std::int32_t>::min()}) {
    const no_request none{queue};
    EXPECT_EQ(__cfc_get_binary(0, "LAN", "Key", out.data(), &count), 204U) << count;
  }
  expect_untouched();
}

TEST_F(GetBinary, of_a_count_whose_text_length_overflows_gives_204_and_allocates_nothing) {
  const no_request none{queue};
  faults::reset();
  for (std::int32_t count : {1073741823, 1073741824, std::numeric_limits<std::int32_t>::max()}) {
    EXPECT_EQ(__cfc_get_binary(0, "LAN", "Key", out.data(), &count), 204U) << count;
  }
  EXPECT_EQ(faults::calls(faults::call::malloc), 0);
}

TEST_F(GetBinary, of_the_largest_count_gets_as_far_as_its_scratch_buffer) {
  faults::fail(faults::call::malloc, 1);
  std::int32_t count = 1073741822;
  EXPECT_EQ(__cfc_get_binary(0, "LAN", "Key", out.data(), &count), 12U);
  EXPECT_TRUE(faults::happened());
  expect_untouched();
}

TEST_F(SetNumber, writes_lower_case_hexadecimal_in_the_full_width_of_the_type) {
  expect_sent<std::uint8_t>(__cfc_set_u8, 10, "0x0a");
  expect_sent<std::uint8_t>(__cfc_set_u8, 0, "0x00");
  expect_sent<std::uint8_t>(__cfc_set_u8, 255, "0xff");
  expect_sent<std::uint16_t>(__cfc_set_u16, 443, "0x01bb");
  expect_sent<std::uint16_t>(__cfc_set_u16, 0, "0x0000");
  expect_sent<std::uint16_t>(__cfc_set_u16, 65535, "0xffff");
  expect_sent<std::uint32_t>(__cfc_set_u32, 0xC0A83E01, "0xc0a83e01");
  expect_sent<std::uint32_t>(__cfc_set_u32, 0, "0x00000000");
  expect_sent<std::uint32_t>(__cfc_set_u32, 0xFFFFFFFF, "0xffffffff");
}

TEST_F(SetIp, writes_a_dotted_quad) {
  expect_sent<std::uint32_t>(__cfc_set_ip, 0xC0A83E01, "192.168.62.1");
  expect_sent<std::uint32_t>(__cfc_set_ip, 0, "0.0.0.0");
  expect_sent<std::uint32_t>(__cfc_set_ip, 0xFFFFFFFF, "255.255.255.255");
}

TEST_F(SetString, writes_the_text_as_it_stands) {
  expect_sent<const char*>(__cfc_set_string, " my camera = 1 ", " my camera = 1 ");
  expect_sent<const char*>(__cfc_set_string, "[\x80\xff\t]", "[\x80\xff\t]");
}

TEST_F(SetString, writes_an_empty_text) {
  expect_sent<const char*>(__cfc_set_string, "", "");
}

TEST_F(SetString, writes_199_characters_and_gives_204_for_200) {
  const std::string longest(199, 'v');
  expect_sent<const char*>(__cfc_set_string, longest.c_str(), longest);
  const no_request none{queue};
  EXPECT_EQ(__cfc_set_string(0, "LAN", "Key", std::string(200, 'v').c_str()), 204U);
  EXPECT_EQ(__cfc_set_string(0, "LAN", "Key", std::string(70000, 'v').c_str()), 204U);
}

TEST_F(SetString, of_null_or_with_a_line_break_gives_204_and_sends_nothing) {
  for (const char* value : {static_cast<const char*>(nullptr), "\r", "\n", "a\nb", "a\r"}) {
    const no_request none{queue};
    for (const int locked : {0, 1}) {
      EXPECT_EQ(__cfc_set_string(locked, "LAN", "Key", value), 204U);
    }
  }
}

TEST_F(SetString, that_no_value_can_be_is_refused_before_the_lock_is_asked_for) {
  queue.remove_lock();
  EXPECT_EQ(__cfc_set_string(0, "LAN", "Key", nullptr), 204U);
  EXPECT_EQ(__cfc_set_string(0, "LAN", "Key", "a\nb"), 204U);
  EXPECT_EQ(__cfc_set_string(0, "LAN", "Key", std::string(200, 'v').c_str()), 230U)
      << "its length is the raw set's business, behind the lock";
}

TEST_F(SetBinary, writes_the_last_byte_first) {
  queue.reply_with(0);
  EXPECT_EQ(write({0x01, 0x02, 0xAB}), 0U);
  EXPECT_EQ(taken(), set_request("0xab0201"));
}

TEST_F(SetBinary, writes_98_bytes_as_198_characters) {
  queue.reply_with(0);
  EXPECT_EQ(write(bytes(98, 0xC5)), 0U);
  std::string digits = "0x";
  for (int i = 0; i < 98; ++i) {
    digits += "c5";
  }
  EXPECT_EQ(digits.size(), 198U);
  EXPECT_EQ(taken(), set_request(digits));
}

TEST_F(SetBinary, of_99_bytes_gives_204_and_sends_nothing) {
  const no_request none{queue};
  EXPECT_EQ(write(bytes(99)), 204U);
  EXPECT_EQ(write(bytes(40000)), 204U) << "whose text length does not fit 16 bits";
}

TEST_F(SetBinary, of_null_or_a_count_below_1_gives_204_and_sends_nothing) {
  const no_request none{queue};
  const std::uint8_t data[4] = {};
  EXPECT_EQ(__cfc_set_binary(0, "LAN", "Key", nullptr, 4), 204U);
  for (const std::int32_t count : {0, -1, std::numeric_limits<std::int32_t>::min()}) {
    EXPECT_EQ(__cfc_set_binary(0, "LAN", "Key", data, count), 204U) << count;
  }
}

TEST_F(SetBinary, of_a_count_whose_text_length_overflows_gives_204_and_allocates_nothing) {
  const std::uint8_t data[4] = {};
  faults::reset();
  EXPECT_EQ(__cfc_set_binary(0, "LAN", "Key", data, 1073741823), 204U);
  EXPECT_EQ(__cfc_set_binary(0, "LAN", "Key", data, std::numeric_limits<std::int32_t>::max()),
            204U);
  EXPECT_EQ(faults::calls(faults::call::malloc), 0);
}
