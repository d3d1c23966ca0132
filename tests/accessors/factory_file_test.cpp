// The factory file that ships: every key of every section, each in the form that the setters write.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <proreflax/sections.h>
#include <proreflax/store.h>

#include <map>
#include <string>
#include <vector>

#include "accessors/section_list.h"
#include "store/ini_text.h"
#include "tests/accessors/answering_service.h"

using namespace proreflax;
using testing::ElementsAreArray;

namespace {

using entries = std::vector<std::pair<std::string, std::string>>;
using sections = std::map<std::string, entries>;

entries entries_of(const cfg_segment& section) {
  entries all;
  const cfg_item* item = section.head;
  while (item != nullptr) {
    all.emplace_back(cfg_item_key(item), cfg_item_value(item));
    item = item->next == section.head ? nullptr : item->next;
  }
  return all;
}

class FactoryFile : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(config_load_file(PROREFLAX_SOURCE_DIR "/device/etc/config-file.ini"), 0U);
    for (const cfg_segment* each = g_config_mgmt.first; each != nullptr; each = each->list_next) {
      loaded[cfg_segment_name(each)] = entries_of(*each);
    }
    config_center_close();
    for (const auto& [name, all] : loaded) {
      for (const auto& [key, value] : all) {
        service.holds(name, key, value);
      }
    }
  }

  sections loaded;
  answering_service service;
};

std::vector<std::string> keys_of(const section_table& table) {
  std::vector<std::string> keys;
  key_text key;
  for (const field& each : table) {
    for (unsigned i = 0; i < (each.is_array() ? each.count : 1U); ++i) {
      keys.emplace_back(format_key(each, i, key));
    }
  }
  return keys;
}

}  // namespace

TEST_F(FactoryFile, holds_every_key_of_every_section_in_order_and_no_other) {
  EXPECT_EQ(loaded.size(), all_sections().size());
  for (const listed_section& each : all_sections()) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : loaded[each.table.name()]) {
      keys.push_back(key);
    }
    EXPECT_THAT(keys, ElementsAreArray(keys_of(each.table))) << each.table.name();
  }
}

TEST_F(FactoryFile, every_value_is_read_and_written_back_as_it_stands) {
  for (const listed_section& each : all_sections()) {
    std::vector<char> record(each.record_bytes);
    service.requests();
    EXPECT_EQ(get_section(each.table, record.data()), 0U) << each.table.name();
    service.requests();
    EXPECT_EQ(set_section(each.table, record.data()), 0U) << each.table.name();
    entries written;
    for (const asked& one : service.requests()) {
      written.emplace_back(one.key, one.value);
    }
    EXPECT_EQ(written, loaded[each.table.name()]);
  }
}

TEST_F(FactoryFile, holds_no_value_that_a_getter_would_forget_to_refuse) {
  // A failing element of an array is forgotten: each value is tried in the last element's place.
  for (const listed_section& each : all_sections()) {
    for (const field& which : each.table) {
      key_text last;
      format_key(which, which.count - 1U, last);
      for (unsigned i = 0; i + 1 < which.count; ++i) {
        key_text key;
        format_key(which, i, key);
        const std::string kept = service.value(each.table.name(), last);
        service.holds(each.table.name(), last, service.value(each.table.name(), key));
        std::vector<char> record(each.record_bytes);
        EXPECT_EQ(get_section(each.table, record.data()), 0U) << each.table.name() << " " << key;
        service.holds(each.table.name(), last, kept);
      }
    }
  }
}

TEST_F(FactoryFile, gives_an_offset_of_local_time) {
  EXPECT_EQ(gui_get_offsetTime(), 0);
  EXPECT_EQ(service.value("SNTPC", "tzdetail").substr(0, 5), "(GMT)");
}
