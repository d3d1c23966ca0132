// The editors of the MAC access list, step by step, with every exchange counted.
#include <gtest/gtest.h>
#include <proreflax/sections.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

#include "tests/accessors/listing.h"
#include "tests/accessors/section_values.h"
#include "tests/support/faults.h"
#include "tests/support/scripted_service.h"

namespace {

using mac_address = std::array<unsigned char, 6>;

constexpr std::size_t slots = 80;
constexpr mac_address no_address{};
constexpr mac_address known{0x00, 0x11, 0x22, 0x33, 0x44, 0x55};

std::string key_of(std::size_t slot) {
  return "macFilters[" + std::to_string(slot) + "]";
}

std::string text_of(const mac_address& mac) {
  return binary_value({mac.begin(), mac.end()}).text;
}

/// Addresses that differ from each other and from `known`.
mac_address other(std::size_t number) {
  return {0x02, 0, 0, 0, 0, static_cast<unsigned char>(number + 1)};
}

class MacAccessList : public testing::Test {
 protected:
  MacAccessList() { holds_none(); }

  void holds(std::size_t slot, const mac_address& mac) {
    service.holds("WLS_ACL", key_of(slot), text_of(mac));
    list_[slot] = mac;
  }

  void holds_none() {
    for (std::size_t slot = 0; slot < slots; ++slot) {
      holds(slot, no_address);
    }
  }

  void holds_others_in_all() {
    for (std::size_t slot = 0; slot < slots; ++slot) {
      holds(slot, other(slot));
    }
  }

  /// The service holds what it held, but for the slots changed by `becomes`.
  void becomes(std::size_t slot, const mac_address& mac) { list_[slot] = mac; }

  void expect_list() const {
    for (std::size_t slot = 0; slot < slots; ++slot) {
      EXPECT_EQ(service.value("WLS_ACL", key_of(slot)), text_of(list_[slot])) << slot;
    }
  }

  /// The requests since the last call: the whole list
  /// read `reads` times, then written `writes` times.
  void expect_exchanges(int reads, int writes) {
    const std::vector<seen_request> requests = service.take_requests();
    ASSERT_EQ(requests.size(), slots * static_cast<std::size_t>(reads + writes));
    for (std::size_t i = 0; i < requests.size(); ++i) {
      EXPECT_EQ(requests[i].operation, i < slots * static_cast<std::size_t>(reads) ? 10U : 9U);
      EXPECT_EQ(requests[i].section, "WLS_ACL");
      EXPECT_EQ(requests[i].key, key_of(i % slots));
      EXPECT_TRUE(requests[i].lock_held);
    }
    EXPECT_EQ(service.lock_value(), 1);
  }

  scripted_service service;

 private:
  std::array<mac_address, slots> list_{};
};

}  // namespace

// ---- Adding -------------------------------------------------------------------------------------

TEST_F(MacAccessList, an_all_zero_address_is_refused_with_1_before_the_list_is_read) {
  faults::reset();
  EXPECT_EQ(gui_wls_ac_add(no_address.data()), 1U);
  EXPECT_EQ(faults::calls(faults::call::semop), 0);
  expect_exchanges(0, 0);
}

TEST_F(MacAccessList, an_address_that_begins_with_zeros_is_not_all_zero) {
  const mac_address last_byte_set{0, 0, 0, 0, 0, 1};
  EXPECT_EQ(gui_wls_ac_add(last_byte_set.data()), 0U);
  expect_exchanges(1, 1);
  becomes(0, last_byte_set);
  expect_list();
}

TEST_F(MacAccessList, an_address_added_to_an_empty_list_lands_in_slot_0) {
  EXPECT_EQ(gui_wls_ac_add(known.data()), 0U);
  expect_exchanges(1, 1);
  becomes(0, known);
  expect_list();
}

TEST_F(MacAccessList, an_address_in_slot_5_is_not_added_again_to_the_free_slot_2) {
  holds_others_in_all();
  holds(2, no_address);
  holds(5, known);
  EXPECT_EQ(gui_wls_ac_add(known.data()), 0U);
  expect_exchanges(1, 0);
  expect_list();
}

TEST_F(MacAccessList, an_address_in_the_last_slot_is_found_behind_free_ones) {
  holds(79, known);
  EXPECT_EQ(gui_wls_ac_add(known.data()), 0U);
  expect_exchanges(1, 0);
  expect_list();
}

TEST_F(MacAccessList, an_address_goes_into_the_lowest_of_several_free_slots) {
  holds_others_in_all();
  for (const std::size_t slot : {7U, 8U, 60U}) {
    holds(slot, no_address);
  }
  EXPECT_EQ(gui_wls_ac_add(known.data()), 0U);
  expect_exchanges(1, 1);
  becomes(7, known);
  expect_list();
}

TEST_F(MacAccessList, the_last_slot_is_used_too) {
  holds_others_in_all();
  holds(79, no_address);
  EXPECT_EQ(gui_wls_ac_add(known.data()), 0U);
  expect_exchanges(1, 1);
  becomes(79, known);
  expect_list();
}

TEST_F(MacAccessList, an_address_added_to_a_full_list_is_refused_with_1) {
  holds_others_in_all();
  EXPECT_EQ(gui_wls_ac_add(known.data()), 1U);
  expect_exchanges(1, 0);
  expect_list();
}

TEST_F(MacAccessList, an_address_that_is_in_a_full_list_is_added_with_success) {
  holds_others_in_all();
  holds(79, known);
  EXPECT_EQ(gui_wls_ac_add(known.data()), 0U);
  expect_exchanges(1, 0);
  expect_list();
}

TEST_F(MacAccessList, addresses_are_compared_in_all_six_bytes) {
  holds_others_in_all();
  holds(20, no_address);
  for (std::size_t i = 0; i < known.size(); ++i) {
    mac_address nearly = known;
    nearly[i] ^= 0x01;
    holds(i, nearly);
    mac_address nearly_free{};
    nearly_free[i] = 0x80;
    holds(10 + i, nearly_free);
  }
  EXPECT_EQ(gui_wls_ac_add(known.data()), 0U);
  expect_exchanges(1, 1);
  becomes(20, known);
  expect_list();
}

TEST_F(MacAccessList, a_failed_reading_ends_the_addition_with_its_code) {
  service.fails("WLS_ACL", key_of(79), 77);
  EXPECT_EQ(gui_wls_ac_add(known.data()), 77U);
  expect_exchanges(1, 0);
}

TEST_F(MacAccessList, a_failed_writing_is_the_result_of_the_addition) {
  faults::fail(faults::call::msgsnd, 160, EIDRM);
  EXPECT_EQ(gui_wls_ac_add(known.data()), static_cast<std::uint32_t>(EIDRM));
  EXPECT_TRUE(faults::happened());
  faults::reset();
  EXPECT_EQ(service.take_requests().size(), 159U);
  EXPECT_EQ(service.lock_value(), 1);
}

TEST_F(MacAccessList, reading_and_writing_take_the_lock_once_each) {
  faults::reset();
  EXPECT_EQ(gui_wls_ac_add(known.data()), 0U);
  EXPECT_EQ(faults::calls(faults::call::semop), 4);
  faults::reset();
  EXPECT_EQ(gui_wls_ac_add(known.data()), 0U);
  EXPECT_EQ(faults::calls(faults::call::semop), 2);
  faults::reset();
  EXPECT_EQ(gui_wls_ac_delete(known.data()), 0U);
  EXPECT_EQ(faults::calls(faults::call::semop), 4);
}

TEST_F(MacAccessList, an_added_address_is_only_read) {
  mac_address mac = known;
  EXPECT_EQ(gui_wls_ac_add(mac.data()), 0U);
  EXPECT_EQ(gui_wls_ac_delete(mac.data()), 0U);
  EXPECT_EQ(mac, known);
}

// ---- Deleting -----------------------------------------------------------------------------------

TEST_F(MacAccessList, deleting_an_all_zero_address_gives_0_without_reading_the_list) {
  faults::reset();
  EXPECT_EQ(gui_wls_ac_delete(no_address.data()), 0U);
  EXPECT_EQ(faults::calls(faults::call::semop), 0);
  expect_exchanges(0, 0);
}

TEST_F(MacAccessList, an_address_in_slots_3_and_40_is_deleted_from_both_in_one_writing) {
  holds_others_in_all();
  holds(3, known);
  holds(40, known);
  EXPECT_EQ(gui_wls_ac_delete(known.data()), 0U);
  expect_exchanges(1, 1);
  becomes(3, no_address);
  becomes(40, no_address);
  expect_list();
}

TEST_F(MacAccessList, first_and_last_slot_are_deleted_from_too) {
  holds_others_in_all();
  holds(0, known);
  holds(79, known);
  EXPECT_EQ(gui_wls_ac_delete(known.data()), 0U);
  expect_exchanges(1, 1);
  becomes(0, no_address);
  becomes(79, no_address);
  expect_list();
}

TEST_F(MacAccessList, deleting_an_address_that_is_absent_gives_0_and_writes_nothing) {
  holds_others_in_all();
  mac_address nearly = known;
  nearly[5] ^= 0x01;
  holds(9, nearly);
  EXPECT_EQ(gui_wls_ac_delete(known.data()), 0U);
  expect_exchanges(1, 0);
  expect_list();
}

TEST_F(MacAccessList, a_hole_is_filled_by_the_next_addition) {
  holds_others_in_all();
  EXPECT_EQ(gui_wls_ac_delete(other(33).data()), 0U);
  expect_exchanges(1, 1);
  EXPECT_EQ(gui_wls_ac_add(known.data()), 0U);
  expect_exchanges(1, 1);
  becomes(33, known);
  expect_list();
}

TEST_F(MacAccessList, a_failed_reading_ends_the_deletion_with_its_code) {
  holds(3, known);
  service.fails("WLS_ACL", key_of(79), 77);
  EXPECT_EQ(gui_wls_ac_delete(known.data()), 77U);
  expect_exchanges(1, 0);
}

TEST_F(MacAccessList, a_failed_writing_is_the_result_of_the_deletion) {
  holds(3, known);
  faults::fail(faults::call::msgsnd, 160, EIDRM);
  EXPECT_EQ(gui_wls_ac_delete(known.data()), static_cast<std::uint32_t>(EIDRM));
  EXPECT_TRUE(faults::happened());
  faults::reset();
  EXPECT_EQ(service.take_requests().size(), 159U);
  EXPECT_EQ(service.lock_value(), 1);
}

// ---- Both ---------------------------------------------------------------------------------------

TEST_F(MacAccessList, a_missing_slot_10_does_not_keep_the_list_from_being_read_and_edited) {
  holds_others_in_all();
  holds(50, no_address);
  service.lacks("WLS_ACL", key_of(10));
  wls_mac_ac list{};
  EXPECT_EQ(gui_get_wls_mac_ac(&list), 0U);
  EXPECT_EQ(std::memcmp(list.macFilters[79], other(79).data(), 6), 0);
  EXPECT_EQ(gui_wls_ac_delete(other(3).data()), 0U);
  becomes(3, no_address);
  becomes(10, no_address);  // and not what happened to stand where it was to be read
  expect_list();
}

TEST_F(MacAccessList, a_missing_slot_is_a_free_one) {
  holds_others_in_all();
  service.lacks("WLS_ACL", key_of(10));
  EXPECT_EQ(gui_wls_ac_add(known.data()), 0U);
  becomes(10, known);
  expect_list();
}

TEST_F(MacAccessList, null_is_refused_with_204_before_anything_is_read) {
  EXPECT_EQ(gui_wls_ac_add(nullptr), 204U);
  EXPECT_EQ(gui_wls_ac_delete(nullptr), 204U);
  expect_exchanges(0, 0);
}

TEST_F(MacAccessList, a_missing_last_slot_stops_both_editors) {
  service.lacks("WLS_ACL", key_of(79));
  EXPECT_EQ(gui_wls_ac_add(known.data()), 201U);
  EXPECT_EQ(gui_wls_ac_delete(known.data()), 201U);
  expect_exchanges(2, 0);
}

TEST(MacAccessListWithoutService, both_editors_give_230) {
  EXPECT_EQ(gui_wls_ac_add(known.data()), 230U);
  EXPECT_EQ(gui_wls_ac_delete(known.data()), 230U);
}
