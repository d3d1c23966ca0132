#include "accessors/section_engine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <proreflax/config.h>
#include <proreflax/sections.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "accessors/section_list.h"
#include "tests/accessors/answering_service.h"
#include "tests/support/faults.h"

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

  answering_service service;
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
  service.requests();
  ASSERT_EQ(set(), 0U);
  std::vector<std::string> values;
  for (const asked& each : service.requests()) {
    EXPECT_TRUE(each.is_set);
    values.push_back(each.value);
  }
  EXPECT_THAT(values, ElementsAreArray(sample_values));
}

TEST_F(SectionEngine, visits_the_keys_in_the_order_of_the_record) {
  ASSERT_EQ(get(), 0U);
  EXPECT_THAT(service.keys(), ElementsAreArray(sample_keys));
  ASSERT_EQ(set(), 0U);
  EXPECT_THAT(service.keys(), ElementsAreArray(sample_keys));
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
    EXPECT_THAT(service.requests(), Each(Field(&asked::lock_value, 0)));
    EXPECT_EQ(service.queue().lock_value(), 1);
  }
}

TEST_F(SectionEngine, gives_the_lock_back_after_a_failure) {
  service.refuses("SAMPLE", "number", 208);
  EXPECT_EQ(get(), 208U);
  EXPECT_EQ(service.queue().lock_value(), 1);
  EXPECT_EQ(set(), 208U);
  EXPECT_EQ(service.queue().lock_value(), 1);
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
    service.requests();
    service.refuses("SAMPLE", key, 217);
    EXPECT_EQ(get(), 217U) << key;
    EXPECT_THAT(service.keys(), ElementsAreArray(keys_up_to(key)));
    EXPECT_EQ(set(), 217U) << key;
    EXPECT_THAT(service.keys(), ElementsAreArray(keys_up_to(key)));
    service.accepts("SAMPLE", key);
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
  service.refuses("SAMPLE", "number", 217);
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
  EXPECT_THAT(service.keys(), ElementsAreArray(sample_keys));
  EXPECT_EQ(static_cast<unsigned char>(record.texts[0][0]), untouched);
  EXPECT_STREQ(record.texts[2], "two");
  EXPECT_EQ(record.last, 0xFF);
}

TEST_F(SectionEngine, a_failure_of_the_last_element_ends_the_walk) {
  service.lacks("SAMPLE", "texts[2]");
  EXPECT_EQ(get(), 201U);
  EXPECT_THAT(service.keys(), ElementsAreArray(keys_up_to("texts[2]")));
  EXPECT_STREQ(record.texts[0], "one");
  EXPECT_STREQ(record.texts[1], "");
  EXPECT_EQ(record.last, untouched);
}

TEST_F(SectionEngine, elements_behind_a_failing_one_are_still_visited) {
  service.refuses("SAMPLE", "words[0]", 205);
  ASSERT_EQ(get(), 0U);
  EXPECT_EQ(record.words[0], 0xA5A5);
  EXPECT_EQ(record.words[1], 2);
}

TEST_F(SectionEngine, a_setter_goes_by_the_last_element_too) {
  ASSERT_EQ(get(), 0U);
  service.requests();
  service.refuses("SAMPLE", "texts[0]", 208);
  EXPECT_EQ(set(), 0U);
  EXPECT_THAT(service.keys(), ElementsAreArray(sample_keys));
  service.refuses("SAMPLE", "texts[2]", 209);
  EXPECT_EQ(set(), 209U);
  EXPECT_THAT(service.keys(), ElementsAreArray(keys_up_to("texts[2]")));
}

TEST_F(SectionEngine, a_later_failure_of_the_same_array_decides) {
  service.refuses("SAMPLE", "texts[1]", 208);
  service.refuses("SAMPLE", "texts[2]", 209);
  EXPECT_EQ(get(), 209U);
}

// ---- All sections -------------------------------------------------------------------------------

namespace {

using record_bytes = std::vector<std::uint8_t>;
std::mt19937 generator{20240607};

int random_number(int from, int to) {
  return std::uniform_int_distribution{from, to}(generator);
}

/// Printable characters, as many as there is room and a value may have.
void fill_with_text(std::uint8_t* place, std::size_t capacity) {
  const int length = random_number(0, static_cast<int>(std::min<std::size_t>(capacity - 1, 199)));
  std::memset(place, 0, capacity);
  for (int i = 0; i < length; ++i) {
    place[i] = static_cast<std::uint8_t>(random_number(' ', '~'));
  }
}

void fill_with_bytes(std::uint8_t* place, std::size_t count) {
  std::generate_n(place, count, [] { return static_cast<std::uint8_t>(random_number(0, 255)); });
}

/// Every field filled, the gaps zero.
record_bytes random_record(const listed_section& section) {
  record_bytes record(section.record_bytes);
  for (const field& each : section.table) {
    for (std::size_t at = each.offset; at < each.end(); at += each.capacity) {
      (each.kind == value_kind::text ? fill_with_text : fill_with_bytes)(&record[at],
                                                                         each.capacity);
    }
  }
  return record;
}

}  // namespace

TEST(AllSections, a_random_record_written_and_read_back_is_the_same) {
  answering_service service;
  for (int round = 0; round < 3; ++round) {
    for (const listed_section& each : all_sections()) {
      const record_bytes written = random_record(each);
      record_bytes read(written.size());
      ASSERT_EQ(set_section(each.table, written.data()), 0U) << each.table.name();
      ASSERT_EQ(get_section(each.table, read.data()), 0U) << each.table.name();
      EXPECT_EQ(read, written) << each.table.name();
    }
  }
}
