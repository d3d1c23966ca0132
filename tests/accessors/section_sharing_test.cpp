// Several processes on one section at once: the lock makes each reading and each writing one unit.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "tests/accessors/listed_accessors.h"
#include "tests/accessors/listing.h"
#include "tests/accessors/section_values.h"
#include "tests/support/child.h"
#include "tests/support/scripted_service.h"

namespace {

constexpr int rounds = 10;

/// A process that writes the record again and again; it
/// ends with the number of writings that failed.
pid_t start_writer(const accessor_pair& accessors, const guarded_record& record) {
  return start_child([&] {
    int failed = 0;
    for (int round = 0; round < rounds; ++round) {
      failed += accessors.set(record.get()) == 0 ? 0 : 1;
    }
    return failed;
  });
}

guarded_record record_of(const listed_section& section, const std::vector<section_value>& values) {
  guarded_record record{section};
  const std::vector<element> elements = elements_of(section);
  for (std::size_t i = 0; i < elements.size(); ++i) {
    record.put(elements[i], values[i]);
  }
  return record;
}

/// Each run of requests, as long as the section has elements, came from one process alone.
bool are_whole_sections(const std::vector<seen_request>& requests, std::size_t elements) {
  for (std::size_t i = 0; i < requests.size(); ++i) {
    const seen_request& first = requests[i - i % elements];
    if (requests[i].asker != first.asker || requests[i].operation != first.operation) {
      return false;
    }
  }
  return requests.size() % elements == 0;
}

}  // namespace

TEST(SharedSections, two_writers_and_a_reader_never_meet_a_mixed_section) {
  std::mt19937 random{11};
  scripted_service service;
  for (const listed_section& section : listed_sections()) {
    SCOPED_TRACE(section.getter);
    service.starts_anew();
    const accessor_pair& accessors = accessors_of(section.getter);
    const std::vector<section_value> ours = random_values(section, random);
    const std::vector<section_value> theirs = random_values(section, random);
    const guarded_record our_record = record_of(section, ours);
    const guarded_record their_record = record_of(section, theirs);
    hold(service, section, ours);

    const pid_t one = start_writer(accessors, our_record);
    const pid_t other = start_writer(accessors, their_record);
    for (int round = 0; round < rounds; ++round) {
      guarded_record record{section};
      EXPECT_EQ(accessors.get(record.get()), 0U);
      EXPECT_TRUE(record == our_record || record == their_record) << "a mixed section was read";
    }
    EXPECT_EQ(wait_for_child(one), 0);
    EXPECT_EQ(wait_for_child(other), 0);

    const std::vector<seen_request> requests = service.take_requests();
    EXPECT_EQ(requests.size(), 3U * rounds * ours.size());
    EXPECT_TRUE(are_whole_sections(requests, ours.size()));
    EXPECT_EQ(service.lock_value(), 1);
  }
}
