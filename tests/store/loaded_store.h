// The store as the tests speak of it: loaded from a text, written to a text, its sections and rings
// as lists of names. Nothing here moves a cache or a cursor.
#ifndef PROREFLAX_TESTS_STORE_LOADED_STORE_H
#define PROREFLAX_TESTS_STORE_LOADED_STORE_H

#include <gtest/gtest.h>
#include <proreflax/store.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace loaded_store {

using names = std::vector<std::string>;

/// The loader's result for a file of that text.
std::uint32_t load(std::string_view text);

/// What the export writes; "export failed" when it fails.
std::string exported();

/// The section or the entry of that name, or null.
cfg_segment* section(std::string_view name);
cfg_item* entry(std::string_view section_name, std::string_view key);

/// Section names in order of creation, and those of one hash chain.
names sections();
names chain(std::uint32_t bucket);

/// The keys of a section, from its head around the ring.
names keys(std::string_view section_name);

/// The key at a section's cursor, "" when it has none; the name in the cache, "" when it is null.
std::string cursor(std::string_view section_name);
std::string cache();

/// A value as cfc_get_val() reads it; "?" and the result when it fails.
std::string value(const char* section_name, const char* key);

/// Whether the root is zero, byte for byte.
bool is_all_zero();

/// Whether every section hangs in its one chain, in order of creation, and every ring closes.
testing::AssertionResult is_well_formed();

/// A test that leaves an empty store behind.
class test : public testing::Test {
 protected:
  ~test() override { config_center_close(); }
};

}  // namespace loaded_store

#endif
