#include "accessors/section_engine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <proreflax/config.h>
#include <proreflax/sections.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "tests/support/faults.h"
#include "tests/support/scripted_service.h"

using namespace proreflax;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::Field;

/// One field of every kind, alone and as an array.
struct sample {
  std::uint8_t byte;
  std::uint16_t word;
  std::uint16_t words[2];
  std::uint32_t number;
  std::uint32_t address;
  char text[5];
  unsigned char bytes[3];
  char texts[3][4];
  std::uint8_t last;
};

namespace proreflax {

template <>
struct section<sample> {
  using record = sample;
  static constexpr char name[] = "SAMPLE";
  // clang-format off
  static constexpr row rows[] = {
      FIELD("byte", byte),
      FIELD("word", word),
      FIELD("words[%d]", words),
      FIELD("number", number),
      IP_FIELD("address", address),
      FIELD("text", text),
      FIELD("bytes", bytes),
      FIELD("texts[%d]", texts),
      FIELD("last", last),
  };
  // clang-format on
};

}  // namespace proreflax

namespace {

const std::vector<std::string> sample_keys{"byte",     "word",     "words[0]", "words[1]",
                                           "number",   "address",  "text",     "bytes",
                                           "texts[0]", "texts[1]", "texts[2]", "last"};
const std::vector<std::string> sample_values{"0x12",       "0x1234",   "0x0001", "0x0002",
                                             "0x12345678", "10.0.0.5", "word",   "0x030201",
                                             "one",        "",         "two",    "0xff"};

constexpr unsigned char untouched = 0xA5;

sample untouched_sample() {
  sample record;
  std::memset(&record, untouched, sizeof record);
  return record;
}

bool same(const sample& one, const sample& other) {
  return std::memcmp(&one, &other, sizeof one) == 0;
}

class SectionEngine : public testing::Test {
 protected:
  SectionEngine() {
    for (std::size_t i = 0; i < sample_keys.size(); ++i) {
      service.holds("SAMPLE", sample_keys[i], sample_values[i]);
    }
  }

  std::uint32_t get() { return get_record(&record); }
  std::uint32_t set() { return set_record(&record); }

  /// The keys of the sample up to and with one of them.
  static std::vector<std::string> keys_up_to(const std::string& last) {
    const auto end = std::find(sample_keys.begin(), sample_keys.end(), last);
    return {sample_keys.begin(), end + 1};
  }

  scripted_service service;
  sample record = untouched_sample();
};

}  // namespace

TEST_F(SectionEngine, reads_every_kind_into_its_member) {
  ASSERT_EQ(get(), 0U);
  EXPECT_EQ(record.byte, 0x12);
  EXPECT_EQ(record.word, 0x1234);
  EXPECT_EQ(record.words[0], 1);
  EXPECT_EQ(record.words[1], 2);
  EXPECT_EQ(record.number, 0x12345678U);
  EXPECT_EQ(record.address, 0x0A000005U);
  EXPECT_STREQ(record.text, "word");
  EXPECT_THAT(record.bytes, ElementsAre(1, 2, 3));
  EXPECT_STREQ(record.texts[0], "one");
  EXPECT_STREQ(record.texts[1], "");
  EXPECT_STREQ(record.texts[2], "two");
  EXPECT_EQ(record.last, 0xFF);
}

TEST_F(SectionEngine, writes_every_kind_in_its_text_form) {
  ASSERT_EQ(get(), 0U);
  service.take_requests();
  ASSERT_EQ(set(), 0U);
  std::vector<std::string> values;
  for (const seen_request& each : service.take_requests()) {
    EXPECT_EQ(each.operation, 9U);
    values.push_back(each.value);
  }
  EXPECT_THAT(values, ElementsAreArray(sample_values));
}

TEST_F(SectionEngine, visits_the_keys_in_the_order_of_the_record) {
  ASSERT_EQ(get(), 0U);
  EXPECT_THAT(service.take_keys(), ElementsAreArray(sample_keys));
  ASSERT_EQ(set(), 0U);
  EXPECT_THAT(service.take_keys(), ElementsAreArray(sample_keys));
}

TEST_F(SectionEngine, writes_nothing_between_the_members) {
  ASSERT_EQ(get(), 0U);
  const auto* byte = reinterpret_cast<const unsigned char*>(&record);
  EXPECT_EQ(byte[1], untouched);                            // between byte and word
  EXPECT_EQ(byte[sizeof record - 1], untouched);            // behind last
  EXPECT_EQ(byte[offsetof(sample, texts) + 5], untouched);  // behind the NUL of texts[1]
}

TEST_F(SectionEngine, a_setter_leaves_its_record_as_it_was) {
  ASSERT_EQ(get(), 0U);
  const sample before = record;
  ASSERT_EQ(set(), 0U);
  EXPECT_TRUE(same(record, before));
}

// ---- The lock rule ------------------------------------------------------------------------------

TEST_F(SectionEngine, takes_the_lock_once_holds_it_throughout_and_gives_it_back) {
  for (const bool reading : {true, false}) {
    faults::reset();
    ASSERT_EQ(reading ? get() : set(), 0U);
    EXPECT_EQ(faults::calls(faults::call::semop), 2);
    EXPECT_THAT(service.take_requests(), Each(Field(&seen_request::lock_held, true)));
    EXPECT_EQ(service.lock_value(), 1);
  }
}

TEST_F(SectionEngine, gives_the_lock_back_after_a_failure) {
  service.fails("SAMPLE", "number", 208);
  EXPECT_EQ(get(), 208U);
  EXPECT_EQ(service.lock_value(), 1);
  EXPECT_EQ(set(), 208U);
  EXPECT_EQ(service.lock_value(), 1);
}

TEST(SectionEngineWithoutService, without_the_lock_nothing_is_touched) {
  sample record = untouched_sample();
  EXPECT_EQ(get_record(&record), 230U);
  EXPECT_EQ(set_record(&record), 230U);
  EXPECT_TRUE(same(record, untouched_sample()));
}

TEST(SectionEngineWithoutService, without_the_queue_the_lock_is_given_back_once) {
  request_queue queue;
  queue.remove_queue();
  sample record = untouched_sample();
  EXPECT_EQ(get_record(&record), 231U);
  EXPECT_EQ(set_record(&record), 231U);
  EXPECT_TRUE(same(record, untouched_sample()));
  EXPECT_EQ(queue.lock_value(), 1);
}

// ---- The stop rule ------------------------------------------------------------------------------

TEST_F(SectionEngine, the_first_failing_scalar_ends_the_walk_with_its_code) {
  for (const char* key : {"byte", "word", "number", "address", "text", "bytes", "last"}) {
    ASSERT_EQ(get(), 0U);
    service.take_requests();
    service.fails("SAMPLE", key, 217);
    EXPECT_EQ(get(), 217U) << key;
    EXPECT_THAT(service.take_keys(), ElementsAreArray(keys_up_to(key)));
    EXPECT_EQ(set(), 217U) << key;
    EXPECT_THAT(service.take_keys(), ElementsAreArray(keys_up_to(key)));
    service.obeys();
  }
}

TEST_F(SectionEngine, fields_before_a_failure_are_filled_and_later_ones_untouched) {
  service.lacks("SAMPLE", "address");
  EXPECT_EQ(get(), 201U);
  EXPECT_EQ(record.number, 0x12345678U);
  constexpr std::size_t from = offsetof(sample, address);
  const sample fresh = untouched_sample();
  EXPECT_EQ(std::memcmp(reinterpret_cast<const char*>(&record) + from,
                        reinterpret_cast<const char*>(&fresh) + from, sizeof record - from),
            0);
}

TEST_F(SectionEngine, what_a_setter_wrote_before_a_failure_stands) {
  ASSERT_EQ(get(), 0U);
  record.byte = 7;
  record.last = 8;
  service.fails("SAMPLE", "number", 217);
  EXPECT_EQ(set(), 217U);
  EXPECT_EQ(service.value("SAMPLE", "byte"), "0x07");
  EXPECT_EQ(service.value("SAMPLE", "last"), "0xff");
}

TEST_F(SectionEngine, a_text_longer_than_its_field_is_not_cut) {
  service.holds("SAMPLE", "text", "words");
  EXPECT_EQ(get(), 212U);
  EXPECT_EQ(static_cast<unsigned char>(record.text[0]), untouched);
}

TEST_F(SectionEngine, a_malformed_address_gives_all_ones) {
  service.holds("SAMPLE", "address", "10.0.0");
  EXPECT_EQ(get(), 0xFFFFFFFFU);
}

// ---- The array rule -----------------------------------------------------------------------------

TEST_F(SectionEngine, a_failure_before_the_last_element_is_forgotten) {
  service.lacks("SAMPLE", "texts[0]");
  service.lacks("SAMPLE", "texts[1]");
  ASSERT_EQ(get(), 0U);
  EXPECT_THAT(service.take_keys(), ElementsAreArray(sample_keys));
  EXPECT_EQ(static_cast<unsigned char>(record.texts[0][0]), untouched);
  EXPECT_STREQ(record.texts[2], "two");
  EXPECT_EQ(record.last, 0xFF);
}

TEST_F(SectionEngine, a_failure_of_the_last_element_ends_the_walk) {
  service.lacks("SAMPLE", "texts[2]");
  EXPECT_EQ(get(), 201U);
  EXPECT_THAT(service.take_keys(), ElementsAreArray(keys_up_to("texts[2]")));
  EXPECT_STREQ(record.texts[0], "one");
  EXPECT_STREQ(record.texts[1], "");
  EXPECT_EQ(record.last, untouched);
}

TEST_F(SectionEngine, elements_behind_a_failing_one_are_still_visited) {
  service.fails("SAMPLE", "words[0]", 205);
  ASSERT_EQ(get(), 0U);
  EXPECT_EQ(record.words[0], 0xA5A5);
  EXPECT_EQ(record.words[1], 2);
}

TEST_F(SectionEngine, a_setter_goes_by_the_last_element_too) {
  ASSERT_EQ(get(), 0U);
  service.take_requests();
  service.fails("SAMPLE", "texts[0]", 208);
  EXPECT_EQ(set(), 0U);
  EXPECT_THAT(service.take_keys(), ElementsAreArray(sample_keys));
  service.fails("SAMPLE", "texts[2]", 209);
  EXPECT_EQ(set(), 209U);
  EXPECT_THAT(service.take_keys(), ElementsAreArray(keys_up_to("texts[2]")));
}

TEST_F(SectionEngine, a_later_failure_of_the_same_array_decides) {
  service.fails("SAMPLE", "texts[1]", 208);
  service.fails("SAMPLE", "texts[2]", 209);
  EXPECT_EQ(get(), 209U);
}
