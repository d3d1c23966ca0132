#include "tools/cfc/section_values.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/faults.h"
#include "tests/support/scripted_service.h"
#include "tools/cfc/export.h"
#include "tools/cfc/show.h"

using namespace cfc;
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
  ~SectionsUnderLock() override {
    faults::reset();
    close(nowhere_);
  }

  /// Carries a command out and takes its requests; each must have come under the lock.
  template <typename Command>
  std::vector<seen_request> requests_of(const Command& command) {
    faults::reset();
    output out{nowhere_, STDERR_FILENO};
    EXPECT_EQ(run(command, out), exit_status::done);
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
  int nowhere_ = open("/dev/null", O_WRONLY | O_CLOEXEC);
};

}  // namespace

TEST_F(SectionsUnderLock, show_takes_the_lock_once_for_a_section_and_holds_it_throughout) {
  for (const bool json : {false, true}) {
    EXPECT_EQ(requests_of(show_command{.section = "WLS_ACL", .json = json}).size(), 80U);
    EXPECT_EQ(times_locked(), 1);
  }
}

TEST_F(SectionsUnderLock, all_sections_take_the_lock_once_each) {
  const auto sections = static_cast<int>(proreflax::all_sections().size());
  EXPECT_EQ(requests_of(show_command{}).size(), all_keys_);
  EXPECT_EQ(times_locked(), sections);
  EXPECT_EQ(requests_of(export_command{}).size(), all_keys_);
  EXPECT_EQ(times_locked(), sections);
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
  EXPECT_EQ(lan.sentence, "there is no access lock: config-center does not run");
  EXPECT_TRUE(lan.entries.empty());
}
