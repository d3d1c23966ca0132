#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <proreflax/sections.h>

#include <algorithm>
#include <string>

#include "tests/accessors/answering_service.h"
#include "tests/support/faults.h"

using testing::IsEmpty;

namespace {

constexpr unsigned char mac[6] = {0x02, 0x00, 0x5E, 0x10, 0x20, 0x30};
constexpr unsigned char zero[6] = {};
const std::string mac_text = "0x3020105e0002";
const std::string other_text = "0x3020105e0003";
const std::string free_text = "0x000000000000";

std::string slot(int index) {
  return "macFilters[" + std::to_string(index) + "]";
}

class MacAccessList : public testing::Test {
 protected:
  MacAccessList() { fill(free_text); }

  void fill(const std::string& value) {
    for (int i = 0; i < 80; ++i) {
      put(i, value);
    }
  }
  void put(int index, const std::string& value) { service.holds("WLS_ACL", slot(index), value); }
  std::string at(int index) const { return service.value("WLS_ACL", slot(index)); }

  /// How many gets and sets the service was asked for since the last call.
  std::pair<int, int> gets_and_sets() {
    const auto requests = service.requests();
    const auto sets = std::count_if(requests.begin(), requests.end(),
                                    [](const asked& each) { return each.is_set; });
    return {static_cast<int>(requests.size()) - static_cast<int>(sets), static_cast<int>(sets)};
  }

  answering_service service;
};

using counts = std::pair<int, int>;

}  // namespace

TEST_F(MacAccessList, an_address_added_to_an_empty_list_lands_in_slot_0) {
  EXPECT_EQ(gui_wls_ac_add(mac), 0U);
  EXPECT_EQ(at(0), mac_text);
  EXPECT_EQ(at(1), free_text);
  EXPECT_EQ(gets_and_sets(), counts(80, 80));
}

TEST_F(MacAccessList, an_address_is_added_in_the_lowest_free_slot) {
  fill(other_text);
  put(7, free_text);
  put(60, free_text);
  EXPECT_EQ(gui_wls_ac_add(mac), 0U);
  EXPECT_EQ(at(7), mac_text);
  EXPECT_EQ(at(60), free_text);
}

TEST_F(MacAccessList, the_last_slot_is_used_too) {
  fill(other_text);
  put(79, free_text);
  EXPECT_EQ(gui_wls_ac_add(mac), 0U);
  EXPECT_EQ(at(79), mac_text);
}

TEST_F(MacAccessList, an_address_that_is_present_is_not_written_again) {
  put(5, mac_text);
  EXPECT_EQ(gui_wls_ac_add(mac), 0U);
  EXPECT_EQ(gets_and_sets(), counts(80, 0));
  EXPECT_EQ(at(2), free_text);
}

TEST_F(MacAccessList, a_full_list_takes_no_address) {
  fill(other_text);
  EXPECT_EQ(gui_wls_ac_add(mac), 1U);
  EXPECT_EQ(gets_and_sets(), counts(80, 0));
}

TEST_F(MacAccessList, an_address_that_is_in_a_full_list_is_added_with_success) {
  fill(other_text);
  put(79, mac_text);
  EXPECT_EQ(gui_wls_ac_add(mac), 0U);
  EXPECT_EQ(gets_and_sets(), counts(80, 0));
}

TEST_F(MacAccessList, all_zero_is_never_added_and_never_looked_for) {
  EXPECT_EQ(gui_wls_ac_add(zero), 1U);
  EXPECT_EQ(gui_wls_ac_delete(zero), 0U);
  EXPECT_THAT(service.keys(), IsEmpty());
}

TEST_F(MacAccessList, null_is_refused_before_anything_is_read) {
  EXPECT_EQ(gui_wls_ac_add(nullptr), 204U);
  EXPECT_EQ(gui_wls_ac_delete(nullptr), 204U);
  EXPECT_THAT(service.keys(), IsEmpty());
}

TEST_F(MacAccessList, deleting_clears_every_occurrence_and_moves_nothing) {
  fill(other_text);
  put(3, mac_text);
  put(40, mac_text);
  EXPECT_EQ(gui_wls_ac_delete(mac), 0U);
  EXPECT_EQ(gets_and_sets(), counts(80, 80));
  for (int i = 0; i < 80; ++i) {
    EXPECT_EQ(at(i), i == 3 || i == 40 ? free_text : other_text) << i;
  }
}

TEST_F(MacAccessList, deleting_an_absent_address_writes_nothing) {
  fill(other_text);
  EXPECT_EQ(gui_wls_ac_delete(mac), 0U);
  EXPECT_EQ(gets_and_sets(), counts(80, 0));
}

TEST_F(MacAccessList, addresses_are_compared_in_all_six_bytes) {
  fill(other_text);  // differs in the first byte of the address alone
  put(0, "0x3120105e0002");
  EXPECT_EQ(gui_wls_ac_delete(mac), 0U);
  EXPECT_EQ(gets_and_sets(), counts(80, 0));
}

TEST_F(MacAccessList, a_missing_slot_counts_as_free) {
  fill(other_text);
  service.lacks("WLS_ACL", slot(10));
  EXPECT_EQ(gui_wls_ac_add(mac), 0U);
  EXPECT_EQ(at(10), mac_text);
}

TEST_F(MacAccessList, a_list_that_cannot_be_read_is_not_written) {
  service.refuses("WLS_ACL", slot(79), 208);
  EXPECT_EQ(gui_wls_ac_add(mac), 208U);
  EXPECT_EQ(gui_wls_ac_delete(mac), 208U);
  EXPECT_EQ(gets_and_sets(), counts(160, 0));
}

TEST_F(MacAccessList, reading_and_writing_take_the_lock_each_for_itself) {
  faults::reset();
  EXPECT_EQ(gui_wls_ac_add(mac), 0U);
  EXPECT_EQ(faults::calls(faults::call::semop), 4);
  EXPECT_EQ(service.queue().lock_value(), 1);
}

TEST(MacAccessListWithoutService, passes_the_failure_to_read_on) {
  EXPECT_EQ(gui_wls_ac_add(mac), 230U);
  EXPECT_EQ(gui_wls_ac_delete(mac), 230U);
}

TEST_F(MacAccessList, a_failure_to_write_is_passed_on) {
  // The lock is looked up twice: before reading, and before writing.
  put(0, mac_text);
  faults::fail(faults::call::semget, 2);
  EXPECT_EQ(gui_wls_ac_delete(mac), 230U);
  EXPECT_TRUE(faults::happened());
  EXPECT_EQ(at(0), mac_text);
  faults::fail(faults::call::semget, 2);
  put(0, free_text);
  EXPECT_EQ(gui_wls_ac_add(mac), 230U);
  EXPECT_EQ(at(0), free_text);
  faults::reset();
}
