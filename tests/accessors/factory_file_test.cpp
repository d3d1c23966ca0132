// The factory file against the listing, and every accessor over the real service that loaded it.
#include <gtest/gtest.h>
#include <proreflax/config.h>
#include <proreflax/sections.h>

#include <fstream>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "tests/accessors/listed_accessors.h"
#include "tests/accessors/listing.h"
#include "tests/accessors/section_values.h"
#include "tests/support/device_root.h"
#include "tests/support/files.h"
#include "tests/support/service_process.h"

namespace {

constexpr auto factory_file = PROREFLAX_SOURCE_DIR "/device/etc/config-file.ini";

struct entry {
  std::string section;
  std::string key;
  std::string value;

  friend bool operator==(const entry&, const entry&) = default;
  friend void PrintTo(const entry& each, std::ostream* out) {
    *out << "[" << each.section << "] " << each.key << "=" << each.value;
  }
};

/// The file's entries as they stand there, read without the library.
std::vector<entry> factory_entries() {
  std::ifstream file{factory_file};
  std::vector<entry> entries;
  std::string section;
  for (std::string line; std::getline(file, line);) {
    const std::size_t equals = line.find('=');
    if (equals != std::string::npos) {
      entries.push_back({section, line.substr(0, equals), line.substr(equals + 1)});
    } else if (line.size() > 2 && line.front() == '[' && line.back() == ']') {
      section = line.substr(1, line.size() - 2);
    }
  }
  return entries;
}

std::vector<std::string> keys_of(const std::vector<entry>& entries, const std::string& section) {
  std::vector<std::string> keys;
  for (const entry& each : entries) {
    if (each.section == section) {
      keys.push_back(each.key);
    }
  }
  return keys;
}

/// The entries that the service holds under the names of the factory file.
std::vector<entry> stored_entries() {
  std::vector<entry> entries = factory_entries();
  for (entry& each : entries) {
    char value[256];
    const std::uint32_t result =
        __cfc_get_string(0, each.section.c_str(), each.key.c_str(), value, sizeof value);
    each.value = result == 0 ? value : "result " + std::to_string(result);
  }
  return entries;
}

guarded_record random_record(const listed_section& section, std::mt19937& random) {
  guarded_record record{section};
  for (const element& each : elements_of(section)) {
    record.put(each, random_value(*each.field, random));
  }
  return record;
}

/// A device as it leaves the factory.
class FactoryDevice : public testing::Test {
 protected:
  FactoryDevice() {
    device_root::clear();
    device_root::write("/etc/config-file.ini", files::text_of(factory_file));
    device_root::install_flash_tool();
  }
  ~FactoryDevice() override { device_root::clear(); }
};

}  // namespace

TEST(FactoryFile, holds_every_listed_key_in_its_sections_order_and_no_other) {
  const std::vector<entry> entries = factory_entries();
  std::size_t listed = 0;
  for (const listed_section& section : listed_sections()) {
    if (section.getter == "gui_get_lan_ip_setting") {
      continue;  // two keys of the section that gui_get_lan_info() reads
    }
    std::vector<std::string> keys;
    for (const element& each : elements_of(section)) {
      keys.push_back(each.key);
    }
    listed += keys.size();
    EXPECT_EQ(keys_of(entries, section.name), keys);
  }
  EXPECT_EQ(listed, 785U);
  EXPECT_EQ(entries.size(), listed);
}

TEST_F(FactoryDevice, every_section_is_read_and_written_back_without_a_change) {
  service_process service;
  EXPECT_EQ(stored_entries(), factory_entries());
  for (const listed_section& section : listed_sections()) {
    SCOPED_TRACE(section.getter);
    const accessor_pair& accessors = accessors_of(section.getter);
    // All zero: an element that is refused, and forgotten, is written back as zero or empty.
    guarded_record record{section, 0};
    EXPECT_EQ(accessors.get(record.get()), 0U);
    EXPECT_EQ(accessors.set(record.get()), 0U);
  }
  // Numbers, addresses and bytes stand in the file as a setter writes them.
  EXPECT_EQ(stored_entries(), factory_entries());
  EXPECT_EQ(service.end(), 0);
}

TEST_F(FactoryDevice, has_an_offset_of_local_time) {
  service_process service;
  EXPECT_EQ(gui_get_offsetTime(), 0);
  sntpc_info record{};
  EXPECT_EQ(gui_get_sntpc_info(&record), 0U);
  EXPECT_EQ(std::string(record.tzdetail, 5), "(GMT)");
}

TEST_F(FactoryDevice, every_section_keeps_other_values_over_a_flush_and_a_restart) {
  std::mt19937 random{5};
  std::vector<guarded_record> written;
  {
    service_process service;
    for (const listed_section& section : listed_sections()) {
      SCOPED_TRACE(section.getter);
      written.push_back(random_record(section, random));
      EXPECT_EQ(accessors_of(section.getter).set(written.back().get()), 0U);
    }
    EXPECT_EQ(cfc_flush_all_nosem(), 0U);
    service.end(SIGKILL);
  }
  service_process service;
  for (std::size_t i = 0; i < written.size(); ++i) {
    const listed_section& section = listed_sections()[i];
    SCOPED_TRACE(section.getter);
    guarded_record record{section};
    EXPECT_EQ(accessors_of(section.getter).get(record.get()), 0U);
    if (section.getter != "gui_get_lan_info") {  // the LAN address pair was written behind it
      EXPECT_EQ(record, written[i]);
    }
  }
  EXPECT_EQ(service.end(), 0);
}
