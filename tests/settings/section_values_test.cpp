#include "settings/section_values.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "settings/export.h"
#include "tests/support/faults.h"
#include "tests/support/scripted_service.h"

using namespace proreflax::settings;
using std::string;
using testing::Each;
using testing::Field;

namespace {

class SectionsUnderLock : public testing::Test {
 protected:
  SectionsUnderLock() {
    for (const auto& section : proreflax::all_sections()) {
      for (const known_key& key : keys_of(section)) {
        service_.lacks(section.table.name(), key.name());
        ++all_keys_;
      }
    }
  }
  ~SectionsUnderLock() override { faults::reset(); }

  /// The requests of a reading; each must have come under the lock.
  template <typename Read>
  std::vector<seen_request> requests_of(Read read) {
    faults::reset();
    read();
    std::vector<seen_request> requests = service_.take_requests();
    EXPECT_THAT(requests, Each(Field(&seen_request::lock_held, true)));
    EXPECT_EQ(service_.lock_value(), 1);
    return requests;
  }

  static int times_locked() {
    EXPECT_EQ(faults::calls(faults::call::semop) % 2, 0);
    return faults::calls(faults::call::semop) / 2;
  }

  scripted_service service_;
  std::size_t all_keys_ = 0;
};

}  // namespace

TEST_F(SectionsUnderLock, a_section_takes_the_lock_once_and_holds_it_throughout) {
  EXPECT_EQ(requests_of([] { read_values(*find_known_section("WLS_ACL")); }).size(), 80U);
  EXPECT_EQ(times_locked(), 1);
}

TEST_F(SectionsUnderLock, all_sections_take_the_lock_once_each) {
  EXPECT_EQ(requests_of([] { read_all_sections(); }).size(), all_keys_);
  EXPECT_EQ(times_locked(), static_cast<int>(proreflax::all_sections().size()));
}

TEST_F(SectionsUnderLock, a_reading_that_fails_ends_there_and_gives_the_lock_back) {
  service_.fails("LAN", "LanIPAddr", 208);
  faults::reset();
  const section_values lan = read_values(*find_known_section("LAN"));
  EXPECT_EQ(lan.code, 208U);
  EXPECT_EQ(lan.sentence, "the store is being written out; try again");
  EXPECT_TRUE(lan.entries.empty());
  EXPECT_EQ(service_.take_keys(), (std::vector<string>{"ConnType", "LanIPAddr"}));
  EXPECT_EQ(times_locked(), 1);
  EXPECT_EQ(service_.lock_value(), 1);
}

TEST(SectionsWithoutALock, are_not_read_and_the_reason_is_told) {
  const section_values lan = read_values(*find_known_section("LAN"));
  EXPECT_EQ(lan.code, 230U);
  EXPECT_EQ(lan.sentence, "the access lock does not exist: config-center is not running");
  EXPECT_TRUE(lan.entries.empty());
}
