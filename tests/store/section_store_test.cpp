// Sections and entries in memory: hash, chains, rings, cursor, cache, and the two exported calls.
//
// Names are chosen for their hashes: one of a single letter lands in the chain of that letter % 8,
// so "A", "I" and "Q" share chain 1; "Aa" and "BB" have the same hash, and so have "LAN" and
// "LANBOGOLOJ", of which one begins with the other.
#include "store/section_store.h"

#include <gmock/gmock.h>

#include <cstddef>
#include <cstring>
#include <string>

#include "store/ini_text.h"
#include "tests/store/loaded_store.h"
#include "tests/support/faults.h"

using namespace proreflax;
using namespace loaded_store;
using faults::call;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::uint32_t hash_of(const std::string& text) {
  std::uint32_t length = 0;
  const std::uint32_t hash = cfg_hash(text.c_str(), &length);
  EXPECT_EQ(length, text.size());
  return hash;
}

bool is_dirty() {
  return (g_config_mgmt.flags & CFG_DIRTY) != 0;
}

/// Looks a key up, as a reader does, to put the cursor on it.
void read_key(const char* section_name, const char* key) {
  const char* unused = nullptr;
  ASSERT_EQ(item_find(section(section_name), key, &unused), 0U);
}

/// The bytes of every record that a refused call must not have touched.
struct snapshot {
  config_mgmt root = g_config_mgmt;
  std::string text = exported();
  std::vector<std::string> cursors = [] {
    std::vector<std::string> all;
    for (const std::string& name : sections()) {
      all.push_back(cursor(name));
    }
    return all;
  }();
};

bool operator==(const snapshot& a, const snapshot& b) {
  return std::memcmp(&a.root, &b.root, sizeof a.root) == 0 && a.text == b.text &&
         a.cursors == b.cursors;
}

class SectionStore : public loaded_store::test {};

class ThreeKeys : public loaded_store::test {
 protected:
  ThreeKeys() {
    EXPECT_EQ(load("[LAN]\none=11\ntwo=22\nthree=33\n"), 0U);
    lan = section("LAN");
  }
  cfg_segment* lan;
};

}  // namespace

// ---- Records ----------------------------------------------------------------------------------

TEST(StoreRecords, fields_stand_in_the_order_laid_down) {
  constexpr std::size_t pointer = sizeof(void*);
  EXPECT_EQ(offsetof(config_mgmt, flags), 0U);
  EXPECT_EQ(offsetof(config_mgmt, cache), pointer);
  EXPECT_EQ(offsetof(config_mgmt, first), 2 * pointer);
  EXPECT_EQ(offsetof(config_mgmt, last), 3 * pointer);
  EXPECT_EQ(offsetof(config_mgmt, buckets), 4 * pointer);
  EXPECT_EQ(sizeof(config_mgmt), 12 * pointer);
  EXPECT_EQ(offsetof(cfg_segment, bucket_next), 0U);
  EXPECT_EQ(offsetof(cfg_segment, list_next), pointer);
  EXPECT_EQ(offsetof(cfg_segment, hash), 2 * pointer);
  EXPECT_EQ(offsetof(cfg_segment, name_off), 2 * pointer + 4);
  EXPECT_EQ(offsetof(cfg_segment, name_len), 2 * pointer + 5);
  EXPECT_EQ(offsetof(cfg_segment, current), 2 * pointer + 8);
  EXPECT_EQ(offsetof(cfg_segment, head), 3 * pointer + 8);
  EXPECT_EQ(sizeof(cfg_segment), 4 * pointer + 8);
  EXPECT_EQ(offsetof(cfg_item, next), 0U);
  EXPECT_EQ(offsetof(cfg_item, hash), pointer);
  EXPECT_EQ(offsetof(cfg_item, key_off), pointer + 4);
  EXPECT_EQ(offsetof(cfg_item, key_len), pointer + 5);
  EXPECT_EQ(offsetof(cfg_item, val_off), pointer + 6);
  EXPECT_EQ(offsetof(cfg_item, val_len), pointer + 7);
  EXPECT_EQ(sizeof(cfg_item), pointer + 8);
}

TEST(StoreRecords, flags_are_the_four_highest_bits_in_the_order_laid_down) {
  EXPECT_EQ(CFG_INITIALIZED, 0x80000000U);
  EXPECT_EQ(CFG_LOADED, 0x40000000U);
  EXPECT_EQ(CFG_DIRTY, 0x20000000U);
  EXPECT_EQ(CFG_BUSY, 0x10000000U);
  EXPECT_EQ(sizeof g_config_mgmt.flags, 4U);
}

TEST_F(SectionStore, root_is_all_zero_before_first_use) {
  EXPECT_TRUE(is_all_zero());
}

// ---- Hash -------------------------------------------------------------------------------------

TEST(StoreHash, is_31_times_the_hash_so_far_plus_each_byte_from_0) {
  EXPECT_EQ(hash_of(""), 0U);
  EXPECT_EQ(hash_of("a"), 97U);
  EXPECT_EQ(hash_of("ab"), 97U * 31 + 98);
  EXPECT_EQ(hash_of("LAN"), 75129U);
}

TEST(StoreHash, reads_bytes_as_unsigned) {
  EXPECT_EQ(hash_of("\xff\xff"), 255U * 31 + 255);
}

TEST(StoreHash, wraps_at_32_bits) {
  EXPECT_EQ(hash_of("PANEL_WIRELESS"), 0x1C957799U);
  EXPECT_EQ(hash_of(std::string(255, 'x')), 0x78D66F78U);
}

TEST(StoreHash, stops_at_the_first_nul) {
  std::uint32_t length = 7;
  EXPECT_EQ(cfg_hash("a\0b", &length), 97U);
  EXPECT_EQ(length, 1U);
}

// ---- segment_alloc ----------------------------------------------------------------------------

TEST_F(SectionStore, a_new_section_has_its_name_and_nothing_else) {
  const cfg_segment* const lan = segment_alloc("LAN");
  ASSERT_NE(lan, nullptr);
  EXPECT_EQ(lan->bucket_next, nullptr);
  EXPECT_EQ(lan->list_next, nullptr);
  EXPECT_EQ(lan->hash, 75129U);
  EXPECT_EQ(lan->name_off, 0);
  EXPECT_EQ(lan->name_len, 3);
  EXPECT_EQ(lan->current, nullptr);
  EXPECT_EQ(lan->head, nullptr);
  EXPECT_STREQ(cfg_segment_name(lan), "LAN");
}

TEST_F(SectionStore, a_new_section_is_one_allocation_of_record_name_and_nul) {
  faults::reset();
  ASSERT_NE(segment_alloc("LAN"), nullptr);
  EXPECT_EQ(faults::calls(call::malloc), 1);
  EXPECT_EQ(faults::bytes_of_last_malloc(), sizeof(cfg_segment) + 4);
}

TEST_F(SectionStore, the_first_section_is_first_and_last) {
  const cfg_segment* const lan = segment_alloc("LAN");
  EXPECT_EQ(g_config_mgmt.first, lan);
  EXPECT_EQ(g_config_mgmt.last, lan);
}

TEST_F(SectionStore, sections_stand_in_order_of_creation) {
  for (const char* name : {"WAN", "LAN", "DMZ"}) {
    ASSERT_NE(segment_alloc(name), nullptr);
  }
  EXPECT_THAT(sections(), ElementsAre("WAN", "LAN", "DMZ"));
  EXPECT_EQ(g_config_mgmt.last, section("DMZ"));
}

TEST_F(SectionStore, a_section_hangs_in_the_chain_of_its_hashs_low_three_bits) {
  for (const char* name : {"A", "B", "C", "D", "E", "F", "G", "H"}) {
    ASSERT_NE(segment_alloc(name), nullptr);
    EXPECT_THAT(chain(static_cast<std::uint32_t>(name[0]) & 7), ElementsAre(name));
  }
}

TEST_F(SectionStore, a_section_of_an_occupied_chain_goes_to_the_end_of_chain_and_list) {
  for (const char* name : {"A", "B", "I", "C", "Q"}) {
    ASSERT_NE(segment_alloc(name), nullptr);
  }
  EXPECT_THAT(chain(1), ElementsAre("A", "I", "Q"));
  EXPECT_THAT(sections(), ElementsAre("A", "B", "I", "C", "Q"));
  EXPECT_TRUE(is_well_formed());
}

TEST_F(SectionStore, an_existing_name_gives_the_same_record_and_allocates_nothing) {
  cfg_segment* const first = segment_alloc("A");
  cfg_segment* const second = segment_alloc("I");
  faults::reset();
  EXPECT_EQ(segment_alloc("A"), first);
  EXPECT_EQ(segment_alloc("I"), second);
  EXPECT_EQ(faults::calls(call::malloc), 0);
  EXPECT_THAT(sections(), ElementsAre("A", "I"));
}

TEST_F(SectionStore, names_of_the_same_hash_are_sections_of_their_own) {
  ASSERT_EQ(hash_of("Aa"), hash_of("BB"));
  ASSERT_EQ(hash_of("LAN"), hash_of("LANBOGOLOJ"));
  for (const char* name : {"Aa", "BB", "LANBOGOLOJ", "LAN"}) {
    ASSERT_NE(segment_alloc(name), nullptr);
  }
  EXPECT_THAT(sections(), ElementsAre("Aa", "BB", "LANBOGOLOJ", "LAN"));
  EXPECT_EQ(segment_alloc("BB"), section("BB"));
  EXPECT_EQ(segment_alloc("LAN"), section("LAN"));
}

TEST_F(SectionStore, names_are_compared_with_their_case) {
  EXPECT_NE(segment_alloc("LAN"), segment_alloc("Lan"));
}

TEST_F(SectionStore, creating_a_section_changes_neither_cache_nor_flags) {
  ASSERT_EQ(load("[LAN]\nk=v\n[WAN]\n"), 0U);
  const std::uint32_t flags = g_config_mgmt.flags;
  ASSERT_NE(segment_alloc("DMZ"), nullptr);
  ASSERT_NE(segment_alloc("LAN"), nullptr);
  EXPECT_EQ(cache(), "WAN");
  EXPECT_EQ(g_config_mgmt.flags, flags);
}

TEST_F(SectionStore, creating_a_section_does_not_consult_the_cache) {
  cfg_segment* const lan = segment_alloc("LAN");
  struct {
    cfg_segment record;
    char name[4];
  } impostor{{}, "LAN"};
  impostor.record.name_len = 3;
  g_config_mgmt.cache = &impostor.record;
  EXPECT_EQ(segment_alloc("LAN"), lan);
}

TEST_F(SectionStore, a_name_of_255_bytes_is_taken_whole) {
  const std::string longest(255, 'n');
  const cfg_segment* const created = segment_alloc(longest.c_str());
  ASSERT_NE(created, nullptr);
  EXPECT_EQ(created->name_len, 255);
  EXPECT_EQ(cfg_segment_name(created), longest);
  EXPECT_EQ(segment_alloc(longest.c_str()), created);
}

TEST_F(SectionStore, a_name_of_256_bytes_or_none_is_refused_and_changes_nothing) {
  ASSERT_EQ(load("[LAN]\nk=v\n"), 0U);
  const snapshot before;
  EXPECT_EQ(segment_alloc(std::string(256, 'n').c_str()), nullptr);
  EXPECT_EQ(segment_alloc(nullptr), nullptr);
  EXPECT_TRUE(snapshot{} == before);
}

TEST_F(SectionStore, a_section_that_finds_no_memory_is_null_and_changes_nothing) {
  ASSERT_EQ(load("[A]\nk=v\n"), 0U);
  const snapshot before;
  for (const char* name : {"B", "I"}) {
    faults::fail(call::malloc, 1, ENOMEM);
    EXPECT_EQ(segment_alloc(name), nullptr);
    faults::reset();
    EXPECT_TRUE(snapshot{} == before);
  }
}

// ---- segment_find -----------------------------------------------------------------------------

TEST_F(SectionStore, a_store_never_loaded_has_no_section) {
  EXPECT_EQ(segment_find("LAN"), nullptr);
}

TEST_F(SectionStore, a_section_found_becomes_the_cache) {
  ASSERT_EQ(load("[A]\n[I]\n[Q]\n"), 0U);
  for (const char* name : {"I", "A", "A", "Q"}) {
    EXPECT_EQ(segment_find(name), section(name));
    EXPECT_EQ(cache(), name);
  }
}

TEST_F(SectionStore, a_section_that_is_not_there_leaves_the_cache_alone) {
  ASSERT_EQ(load("[A]\n[I]\n"), 0U);
  for (const char* name : {"Q", "B", "a", "", "AA", "II"}) {
    EXPECT_EQ(segment_find(name), nullptr) << name;
    EXPECT_EQ(cache(), "I");
  }
}

TEST_F(SectionStore, the_cache_is_looked_at_first_and_by_name_alone) {
  ASSERT_EQ(load("[LAN]\n"), 0U);
  cfg_segment* const lan = section("LAN");
  lan->hash = 0;
  g_config_mgmt.buckets[75129 % CFG_BUCKETS] = nullptr;
  EXPECT_EQ(segment_find("LAN"), lan);
  lan->hash = 75129;
}

TEST_F(SectionStore, a_chain_is_searched_by_hash_as_well) {
  ASSERT_EQ(load("[LAN]\n[WAN]\n"), 0U);
  section("LAN")->hash += 8;
  EXPECT_EQ(segment_find("LAN"), nullptr);
}

TEST_F(SectionStore, a_cached_name_is_no_match_for_its_beginning_or_for_a_longer_one) {
  ASSERT_EQ(load("[LAN]\n"), 0U);
  EXPECT_EQ(segment_find("LA"), nullptr);
  EXPECT_EQ(segment_find("LAN2"), nullptr);
  EXPECT_EQ(segment_find("LAM"), nullptr);
}

TEST_F(SectionStore, a_chained_name_is_no_match_for_its_beginning_or_for_a_longer_one) {
  ASSERT_EQ(load("[LANBOGOLOJ]\n[WAN]\n"), 0U);
  EXPECT_EQ(segment_find("LAN"), nullptr);
  ASSERT_EQ(load("[LAN]\n[WAN]\n"), 0U);
  EXPECT_EQ(segment_find("LANBOGOLOJ"), nullptr);
}

TEST_F(SectionStore, names_of_the_same_hash_are_told_apart) {
  ASSERT_EQ(load("[Aa]\n[BB]\n[WAN]\n"), 0U);
  EXPECT_EQ(segment_find("BB"), section("BB"));
  EXPECT_EQ(segment_find("Aa"), section("Aa"));
}

// ---- item_find --------------------------------------------------------------------------------

TEST_F(SectionStore, a_section_without_entries_has_no_key) {
  const char* out = "untouched";
  EXPECT_EQ(item_find(segment_alloc("LAN"), "key", &out), 201U);
  EXPECT_EQ(out, nullptr);
}

TEST_F(ThreeKeys, a_key_found_gives_the_address_of_its_value_and_gets_the_cursor) {
  for (const char* key : {"two", "one", "three", "three"}) {
    const char* out = nullptr;
    EXPECT_EQ(item_find(lan, key, &out), 0U);
    EXPECT_EQ(out, cfg_item_value(entry("LAN", key)));
    EXPECT_EQ(cursor("LAN"), key);
  }
}

TEST_F(ThreeKeys, a_key_that_is_not_there_gives_null_and_leaves_the_cursor) {
  read_key("LAN", "two");
  for (const char* key : {"four", "tw", "twoo", "TWO", ""}) {
    const char* out = "untouched";
    EXPECT_EQ(item_find(lan, key, &out), 201U) << key;
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(cursor("LAN"), "two");
  }
}

TEST_F(SectionStore, keys_of_the_same_hash_are_told_apart) {
  ASSERT_EQ(load("[S]\nAa=1\nBB=2\nLANBOGOLOJ=3\nLAN=4\n"), 0U);
  EXPECT_THAT(keys("S"), ElementsAre("Aa", "BB", "LANBOGOLOJ", "LAN"));
  EXPECT_EQ(value("S", "Aa"), "1");
  EXPECT_EQ(value("S", "BB"), "2");
  EXPECT_EQ(value("S", "LANBOGOLOJ"), "3");
  EXPECT_EQ(value("S", "LAN"), "4");
}

TEST_F(SectionStore, a_search_compares_the_hash_as_well) {
  ASSERT_EQ(load("[S]\nkey=v\n"), 0U);
  entry("S", "key")->hash += 1;
  EXPECT_EQ(value("S", "key"), "?201");
}

/// Two entries of one key never arise; they are forged here to see where a walk begins.
class TwinKeys : public loaded_store::test {
 protected:
  TwinKeys() {
    EXPECT_EQ(load("[S]\nfirst=x\nAa=1\nBB=2\nlast=x\n"), 0U);
    twin = entry("S", "BB");
    std::memcpy(const_cast<char*>(cfg_item_key(twin)), "Aa", 2);
  }
  cfg_item* twin;
};

TEST_F(TwinKeys, a_search_starts_at_the_cursor_itself) {
  section("S")->current = twin;
  EXPECT_EQ(value("S", "Aa"), "2");
}

TEST_F(TwinKeys, a_search_follows_the_ring_from_the_cursor) {
  section("S")->current = twin->next;
  EXPECT_EQ(value("S", "Aa"), "1");
}

TEST_F(TwinKeys, a_write_examines_the_cursor_last) {
  section("S")->current = twin;
  ASSERT_EQ(item_set(section("S"), "Aa", "w"), 0U);
  EXPECT_STREQ(cfg_item_value(twin), "2");
  EXPECT_STREQ(cfg_item_value(entry("S", "Aa")), "w");
}

// ---- item_set ---------------------------------------------------------------------------------

TEST_F(SectionStore, the_first_entry_points_to_itself_and_is_head_and_cursor) {
  cfg_segment* const lan = segment_alloc("LAN");
  ASSERT_EQ(item_set(lan, "key", "value"), 0U);
  EXPECT_EQ(lan->head->next, lan->head);
  EXPECT_EQ(lan->current, lan->head);
}

TEST_F(SectionStore, an_entry_holds_key_and_value_each_with_its_nul) {
  cfg_segment* const lan = segment_alloc("LAN");
  ASSERT_EQ(item_set(lan, "key", "value"), 0U);
  const cfg_item& item = *lan->head;
  EXPECT_EQ(item.hash, hash_of("key"));
  EXPECT_EQ(item.key_off, 0);
  EXPECT_EQ(item.key_len, 3);
  EXPECT_EQ(item.val_off, 4);
  EXPECT_EQ(item.val_len, 5);
  EXPECT_EQ(std::memcmp(&item + 1, "key\0value", 10), 0);
}

TEST_F(SectionStore, an_entry_is_one_allocation_without_spare_room) {
  cfg_segment* const lan = segment_alloc("LAN");
  faults::reset();
  ASSERT_EQ(item_set(lan, "key", "value"), 0U);
  EXPECT_EQ(faults::calls(call::malloc), 1);
  EXPECT_EQ(faults::bytes_of_last_malloc(), sizeof(cfg_item) + 3 + 5 + 2);
}

TEST_F(SectionStore, a_key_of_254_bytes_and_a_value_of_255_fit_the_one_byte_lengths) {
  const std::string key(254, 'k');
  const std::string longest(255, 'v');
  cfg_segment* const lan = segment_alloc("LAN");
  ASSERT_EQ(item_set(lan, key.c_str(), longest.c_str()), 0U);
  EXPECT_EQ(lan->head->key_len, 254);
  EXPECT_EQ(lan->head->val_off, 255);
  EXPECT_EQ(lan->head->val_len, 255);
  EXPECT_EQ(cfg_item_key(lan->head), key);
  EXPECT_EQ(cfg_item_value(lan->head), longest);
}

TEST_F(ThreeKeys, a_new_key_lands_right_behind_the_key_that_was_read) {
  read_key("LAN", "one");
  ASSERT_EQ(item_set(lan, "new", "n"), 0U);
  EXPECT_THAT(keys("LAN"), ElementsAre("one", "new", "two", "three"));
  EXPECT_EQ(exported(), "\n[LAN]\none=11\nnew=n\ntwo=22\nthree=33\n");
}

TEST_F(ThreeKeys, a_new_key_lands_right_behind_the_key_that_was_written) {
  ASSERT_EQ(item_set(lan, "two", "2"), 0U);
  ASSERT_EQ(item_set(lan, "new", "n"), 0U);
  EXPECT_THAT(keys("LAN"), ElementsAre("one", "two", "new", "three"));
}

TEST_F(ThreeKeys, a_new_key_lands_right_behind_the_new_key_before) {
  read_key("LAN", "one");
  ASSERT_EQ(item_set(lan, "newer", "n"), 0U);
  ASSERT_EQ(item_set(lan, "newest", "n"), 0U);
  EXPECT_THAT(keys("LAN"), ElementsAre("one", "newer", "newest", "two", "three"));
}

TEST_F(ThreeKeys, a_new_key_behind_the_last_one_is_the_last_and_not_the_head) {
  read_key("LAN", "three");
  ASSERT_EQ(item_set(lan, "new", "n"), 0U);
  EXPECT_THAT(keys("LAN"), ElementsAre("one", "two", "three", "new"));
}

TEST_F(ThreeKeys, a_new_key_gets_the_cursor) {
  ASSERT_EQ(item_set(lan, "new", "n"), 0U);
  EXPECT_EQ(cursor("LAN"), "new");
}

TEST_F(ThreeKeys, a_search_that_fails_does_not_move_where_a_new_key_lands) {
  read_key("LAN", "one");
  EXPECT_EQ(value("LAN", "missing"), "?201");
  ASSERT_EQ(item_set(lan, "new", "n"), 0U);
  EXPECT_THAT(keys("LAN"), ElementsAre("one", "new", "two", "three"));
}

TEST_F(ThreeKeys, a_value_of_equal_or_smaller_length_keeps_the_entry_and_allocates_nothing) {
  for (const char* key : {"one", "two", "three"}) {
    for (const char* text : {"xy", "x", ""}) {
      const cfg_item* const before = entry("LAN", key);
      faults::reset();
      ASSERT_EQ(item_set(lan, key, text), 0U);
      EXPECT_EQ(faults::calls(call::malloc), 0);
      EXPECT_EQ(entry("LAN", key), before);
      EXPECT_EQ(before->val_len, std::strlen(text));
      EXPECT_STREQ(cfg_item_value(before), text);
      EXPECT_EQ(cursor("LAN"), key);
    }
  }
  EXPECT_THAT(keys("LAN"), ElementsAre("one", "two", "three"));
}

TEST_F(ThreeKeys, a_value_longer_than_the_shortened_one_gets_a_new_entry_in_the_same_place) {
  for (const char* key : {"one", "two", "three"}) {
    const cfg_item* const behind = entry("LAN", key)->next;
    ASSERT_EQ(item_set(lan, key, "x"), 0U);
    faults::reset();
    ASSERT_EQ(item_set(lan, key, "xy"), 0U);  // as long as the room first allocated
    EXPECT_EQ(faults::calls(call::malloc), 1) << key;
    EXPECT_EQ(faults::bytes_of_last_malloc(), sizeof(cfg_item) + std::strlen(key) + 2 + 2);
    EXPECT_EQ(entry("LAN", key)->next, behind);
    EXPECT_EQ(value("LAN", key), "xy");
    EXPECT_EQ(cursor("LAN"), key);
    EXPECT_TRUE(is_well_formed());
  }
  EXPECT_THAT(keys("LAN"), ElementsAre("one", "two", "three"));
}

TEST_F(ThreeKeys, a_head_that_grows_stays_the_head_wherever_the_cursor_was) {
  std::string text = "11";
  for (const char* at : {"one", "two", "three"}) {
    read_key("LAN", at);
    text += 'x';
    ASSERT_EQ(item_set(lan, "one", text.c_str()), 0U);
    EXPECT_EQ(lan->head, entry("LAN", "one"));
    EXPECT_EQ(exported(), "\n[LAN]\none=" + text + "\ntwo=22\nthree=33\n");
  }
}

TEST_F(ThreeKeys, an_entry_behind_the_head_that_grows_leaves_the_head) {
  const cfg_item* const head = lan->head;
  ASSERT_EQ(item_set(lan, "two", "longer"), 0U);
  ASSERT_EQ(item_set(lan, "three", "longer"), 0U);
  EXPECT_EQ(lan->head, head);
}

TEST_F(SectionStore, the_only_entry_that_grows_points_to_itself_again) {
  cfg_segment* const lan = segment_alloc("LAN");
  ASSERT_EQ(item_set(lan, "key", "v"), 0U);
  ASSERT_EQ(item_set(lan, "key", "longer"), 0U);
  EXPECT_EQ(lan->head->next, lan->head);
  EXPECT_EQ(lan->current, lan->head);
  EXPECT_EQ(exported(), "\n[LAN]\nkey=longer\n");
}

TEST_F(SectionStore, two_entries_that_grow_keep_their_ring) {
  ASSERT_EQ(load("[S]\na=1\nb=2\n"), 0U);
  ASSERT_EQ(item_set(section("S"), "b", "22"), 0U);
  ASSERT_EQ(item_set(section("S"), "a", "11"), 0U);
  EXPECT_TRUE(is_well_formed());
  EXPECT_EQ(exported(), "\n[S]\na=11\nb=22\n");
}

TEST_F(ThreeKeys, an_entry_that_finds_no_memory_gives_12_and_changes_nothing) {
  read_key("LAN", "two");
  const snapshot before;
  for (const char* key : {"one", "two", "three", "new"}) {
    const cfg_item* const old = entry("LAN", key);
    faults::fail(call::malloc, 1, ENOMEM);
    EXPECT_EQ(item_set(lan, key, "much longer"), 12U);
    faults::reset();
    EXPECT_EQ(entry("LAN", key), old);
    EXPECT_TRUE(snapshot{} == before) << key;
  }
}

TEST_F(SectionStore, a_first_entry_that_finds_no_memory_leaves_the_section_empty) {
  cfg_segment* const lan = segment_alloc("LAN");
  faults::fail(call::malloc, 1, ENOMEM);
  EXPECT_EQ(item_set(lan, "key", "value"), 12U);
  EXPECT_EQ(lan->head, nullptr);
  EXPECT_EQ(lan->current, nullptr);
}

TEST_F(ThreeKeys, a_value_and_a_key_may_come_from_the_store_itself) {
  const cfg_item* const three = entry("LAN", "three");
  ASSERT_EQ(item_set(lan, "three", cfg_item_value(three) + 1), 0U);
  EXPECT_EQ(value("LAN", "three"), "3");
  ASSERT_EQ(item_set(lan, cfg_item_key(three), cfg_item_key(three)), 0U);
  EXPECT_EQ(value("LAN", "three"), "three");
}

// ---- cfc_get_val ------------------------------------------------------------------------------

TEST_F(ThreeKeys, a_value_is_read_with_its_length_and_without_a_nul) {
  char out[4] = {'.', '.', '.', '.'};
  std::uint32_t length = 99;
  EXPECT_EQ(cfc_get_val("LAN", "two", out, &length), 0U);
  EXPECT_EQ(length, 2U);
  EXPECT_EQ(std::string_view(out, 4), "22..");
}

TEST_F(SectionStore, an_empty_value_reads_as_length_0) {
  ASSERT_EQ(load("[LAN]\nkey=\n"), 0U);
  char out = '.';
  std::uint32_t length = 99;
  EXPECT_EQ(cfc_get_val("LAN", "key", &out, &length), 0U);
  EXPECT_EQ(length, 0U);
  EXPECT_EQ(out, '.');
}

TEST_F(ThreeKeys, a_value_of_255_bytes_is_read_whole) {
  const std::string longest(255, 'v');
  ASSERT_EQ(cfc_set_val("LAN", "one", longest.c_str()), 0U);
  EXPECT_EQ(value("LAN", "one"), longest);
}

TEST_F(SectionStore, reading_moves_cache_and_cursor_to_what_was_found) {
  ASSERT_EQ(load("[LAN]\na=1\nb=2\n[WAN]\nc=3\n"), 0U);
  EXPECT_EQ(value("LAN", "a"), "1");
  EXPECT_EQ(cache(), "LAN");
  EXPECT_EQ(cursor("LAN"), "a");
  EXPECT_EQ(cursor("WAN"), "c");
}

TEST_F(SectionStore, a_missing_key_gives_201_with_outputs_untouched_and_the_section_cached) {
  ASSERT_EQ(load("[LAN]\na=1\n[WAN]\n"), 0U);
  char out[] = "..";
  std::uint32_t length = 99;
  EXPECT_EQ(cfc_get_val("LAN", "b", out, &length), 201U);
  EXPECT_STREQ(out, "..");
  EXPECT_EQ(length, 99U);
  EXPECT_EQ(cache(), "LAN");
}

TEST_F(SectionStore, a_missing_section_gives_209_with_outputs_and_cache_untouched) {
  ASSERT_EQ(load("[LAN]\na=1\n[WAN]\n"), 0U);
  char out[] = "..";
  std::uint32_t length = 99;
  EXPECT_EQ(cfc_get_val("DMZ", "a", out, &length), 209U);
  EXPECT_STREQ(out, "..");
  EXPECT_EQ(length, 99U);
  EXPECT_EQ(cache(), "WAN");
}

TEST_F(ThreeKeys, reading_leaves_the_store_clean) {
  EXPECT_EQ(value("LAN", "one"), "11");
  EXPECT_EQ(g_config_mgmt.flags, CFG_INITIALIZED | CFG_LOADED);
}

TEST_F(ThreeKeys, a_read_without_an_output_gives_204_for_a_key_that_exists_alone) {
  char out[] = "..";
  std::uint32_t length = 99;
  EXPECT_EQ(cfc_get_val("LAN", "four", nullptr, &length), 201U);
  EXPECT_EQ(cfc_get_val("LAN", "four", out, nullptr), 201U);
  EXPECT_EQ(cfc_get_val("WAN", "one", nullptr, nullptr), 209U);
  EXPECT_EQ(cfc_get_val("WAN", nullptr, nullptr, nullptr), 204U);
  EXPECT_EQ(cfc_get_val(nullptr, "one", nullptr, nullptr), 204U);
  EXPECT_EQ(cursor("LAN"), "three");
}

TEST_F(ThreeKeys, null_arguments_of_a_read_give_204_with_outputs_untouched) {
  char out[] = "..";
  std::uint32_t length = 99;
  EXPECT_EQ(cfc_get_val(nullptr, "one", out, &length), 204U);
  EXPECT_EQ(cfc_get_val("LAN", nullptr, out, &length), 204U);
  EXPECT_EQ(cfc_get_val("LAN", "one", nullptr, &length), 204U);
  EXPECT_EQ(cfc_get_val("LAN", "one", out, nullptr), 204U);
  EXPECT_STREQ(out, "..");
  EXPECT_EQ(length, 99U);
}

// ---- cfc_set_val ------------------------------------------------------------------------------

TEST_F(ThreeKeys, a_value_set_is_read_back_and_makes_the_store_dirty) {
  ASSERT_FALSE(is_dirty());
  EXPECT_EQ(cfc_set_val("LAN", "two", "222"), 0U);
  EXPECT_EQ(value("LAN", "two"), "222");
  EXPECT_TRUE(is_dirty());
}

TEST_F(ThreeKeys, a_value_set_to_what_it_was_makes_the_store_dirty) {
  EXPECT_EQ(cfc_set_val("LAN", "two", "22"), 0U);
  EXPECT_EQ(g_config_mgmt.flags, CFG_INITIALIZED | CFG_LOADED | CFG_DIRTY);
}

TEST_F(ThreeKeys, a_key_that_is_new_is_created) {
  EXPECT_EQ(cfc_set_val("LAN", "four", "44"), 0U);
  EXPECT_EQ(value("LAN", "four"), "44");
}

TEST_F(SectionStore, a_value_goes_to_the_section_named_and_caches_it) {
  ASSERT_EQ(load("[LAN]\na=1\n[WAN]\na=2\n"), 0U);
  EXPECT_EQ(cfc_set_val("LAN", "a", "x"), 0U);
  EXPECT_EQ(cache(), "LAN");
  EXPECT_EQ(exported(), "\n[LAN]\na=x\n\n[WAN]\na=2\n");
}

TEST_F(ThreeKeys, a_missing_section_is_not_created_and_leaves_the_store_clean) {
  const snapshot before;
  EXPECT_EQ(cfc_set_val("WAN", "one", "1"), 209U);
  EXPECT_TRUE(snapshot{} == before);
}

TEST_F(ThreeKeys, a_registered_section_takes_values) {
  ASSERT_NE(segment_alloc("WAN"), nullptr);
  EXPECT_EQ(cfc_set_val("WAN", "key", "v"), 0U);
  EXPECT_EQ(exported(), "\n[LAN]\none=11\ntwo=22\nthree=33\n\n[WAN]\nkey=v\n");
}

TEST_F(ThreeKeys, a_value_that_finds_no_memory_gives_12_and_leaves_the_store_clean) {
  faults::fail(call::malloc, 1, ENOMEM);
  EXPECT_EQ(cfc_set_val("LAN", "two", "much longer"), 12U);
  faults::reset();
  EXPECT_FALSE(is_dirty());
  EXPECT_EQ(value("LAN", "two"), "22");
}

TEST_F(ThreeKeys, a_key_of_254_bytes_is_taken_and_one_of_255_is_refused) {
  EXPECT_EQ(cfc_set_val("LAN", std::string(254, 'k').c_str(), "v"), 0U);
  EXPECT_EQ(value("LAN", std::string(254, 'k').c_str()), "v");
  const snapshot before;
  EXPECT_EQ(cfc_set_val("LAN", std::string(255, 'k').c_str(), "v"), 204U);
  EXPECT_TRUE(snapshot{} == before);
}

TEST_F(ThreeKeys, a_value_of_255_bytes_is_taken_and_one_of_256_is_refused) {
  EXPECT_EQ(cfc_set_val("LAN", "one", std::string(255, 'v').c_str()), 0U);
  const snapshot before;
  EXPECT_EQ(cfc_set_val("LAN", "two", std::string(256, 'v').c_str()), 204U);
  EXPECT_TRUE(snapshot{} == before);
}

TEST_F(ThreeKeys, null_arguments_of_a_write_give_204_and_change_nothing) {
  const snapshot before;
  EXPECT_EQ(cfc_set_val(nullptr, "one", "1"), 204U);
  EXPECT_EQ(cfc_set_val("LAN", nullptr, "1"), 204U);
  EXPECT_EQ(cfc_set_val("LAN", "one", nullptr), 204U);
  EXPECT_TRUE(snapshot{} == before);
}

TEST_F(ThreeKeys, a_text_too_long_is_refused_after_a_missing_section) {
  const std::string key(255, 'k');
  const std::string long_value(256, 'v');
  EXPECT_EQ(cfc_set_val("WAN", key.c_str(), "v"), 209U);
  EXPECT_EQ(cfc_set_val("WAN", "one", long_value.c_str()), 209U);
  EXPECT_EQ(cfc_set_val("WAN", nullptr, long_value.c_str()), 204U);
  EXPECT_EQ(cfc_set_val("WAN", key.c_str(), nullptr), 204U);
  EXPECT_EQ(value("LAN", key.c_str()), "?201");
}

// ---- Busy, unloaded, closed -------------------------------------------------------------------

TEST_F(SectionStore, a_busy_store_refuses_reads_and_writes_and_touches_nothing) {
  ASSERT_EQ(load("[LAN]\na=1\nb=2\n[WAN]\n"), 0U);
  g_config_mgmt.flags |= CFG_BUSY;
  const snapshot before;
  char out[] = "..";
  std::uint32_t length = 99;
  EXPECT_EQ(cfc_get_val("LAN", "a", out, &length), 208U);
  EXPECT_EQ(cfc_get_val("DMZ", "a", out, &length), 208U);
  EXPECT_EQ(cfc_set_val("LAN", "a", "2"), 208U);
  EXPECT_EQ(cfc_set_val("DMZ", "a", "2"), 208U);
  EXPECT_EQ(cfc_get_val(nullptr, nullptr, nullptr, nullptr), 208U);
  EXPECT_EQ(cfc_set_val(nullptr, nullptr, nullptr), 208U);
  EXPECT_EQ(cfc_set_val("LAN", std::string(255, 'k').c_str(), "v"), 208U);
  EXPECT_STREQ(out, "..");
  EXPECT_EQ(length, 99U);
  EXPECT_TRUE(snapshot{} == before);
}

TEST_F(SectionStore, calls_before_any_load_give_209) {
  EXPECT_EQ(value("LAN", "key"), "?209");
  EXPECT_EQ(cfc_set_val("LAN", "key", "v"), 209U);
  EXPECT_TRUE(is_all_zero());
}

TEST_F(SectionStore, a_section_registered_before_any_load_takes_and_gives_values) {
  ASSERT_NE(segment_alloc("LAN"), nullptr);
  ASSERT_NE(segment_alloc("WAN"), nullptr);
  EXPECT_EQ(cache(), "");
  EXPECT_EQ(value("LAN", "key"), "?201");
  EXPECT_EQ(cache(), "LAN");
  EXPECT_EQ(cfc_set_val("WAN", "key", "v"), 0U);
  EXPECT_EQ(cache(), "WAN");
  EXPECT_EQ(value("WAN", "key"), "v");
  EXPECT_EQ(value("DMZ", "key"), "?209");
  EXPECT_EQ(g_config_mgmt.flags, CFG_DIRTY);
}

TEST_F(ThreeKeys, a_section_registered_after_a_close_takes_and_gives_values) {
  config_center_close();
  ASSERT_NE(segment_alloc("LAN"), nullptr);
  EXPECT_EQ(cfc_set_val("LAN", "one", "1"), 0U);
  EXPECT_EQ(value("LAN", "one"), "1");
  EXPECT_EQ(exported(), "\n[LAN]\none=1\n");
}

TEST_F(ThreeKeys, calls_after_a_close_give_209) {
  config_center_close();
  EXPECT_EQ(value("LAN", "one"), "?209");
  EXPECT_EQ(cfc_set_val("LAN", "one", "1"), 209U);
  EXPECT_EQ(cfc_set_val("LAN", std::string(255, 'k').c_str(), "1"), 209U);
  EXPECT_EQ(cfc_get_val("LAN", "one", nullptr, nullptr), 209U);
  EXPECT_TRUE(is_all_zero());
}

// ---- Release ----------------------------------------------------------------------------------

TEST_F(SectionStore, a_release_frees_every_record_and_zeroes_the_root) {
  ASSERT_EQ(load("[A]\na=1\nb=2\nc=3\n[I]\n[B]\nd=4\n"), 0U);
  ASSERT_EQ(cfc_set_val("A", "b", "longer"), 0U);
  g_config_mgmt.flags |= CFG_BUSY;
  config_free_all(&g_config_mgmt);
  EXPECT_TRUE(is_all_zero());
}

TEST_F(SectionStore, a_release_is_of_the_root_handed_over) {
  ASSERT_EQ(load("[A]\na=1\n"), 0U);
  config_mgmt moved = g_config_mgmt;
  g_config_mgmt = {};
  ASSERT_EQ(load("[B]\nb=2\n"), 0U);
  config_free_all(&moved);
  EXPECT_EQ(moved.first, nullptr);
  EXPECT_EQ(moved.flags, 0U);
  EXPECT_EQ(exported(), "\n[B]\nb=2\n");
}

TEST_F(SectionStore, a_release_of_an_empty_store_does_nothing) {
  config_free_all(&g_config_mgmt);
  EXPECT_TRUE(is_all_zero());
}
