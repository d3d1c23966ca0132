#include "tests/store/loaded_store.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "store/ini_text.h"
#include "tests/store/unnamed_file.h"

using namespace proreflax;

namespace loaded_store {
namespace {

std::string_view name_of(const cfg_segment& section) {
  return {cfg_segment_name(&section), section.name_len};
}

std::string_view key_of(const cfg_item& item) {
  return {cfg_item_key(&item), item.key_len};
}

bool ring_is_well_formed(const cfg_segment& section) {
  if (section.head == nullptr || section.current == nullptr) {
    return section.head == section.current;
  }
  bool has_cursor = false;
  const cfg_item* item = section.head;
  for (int left = 10'000; left > 0; --left) {
    has_cursor = has_cursor || item == section.current;
    if (item->key_off != 0 || item->val_off != item->key_len + 1 ||
        cfg_item_key(item)[item->key_len] != '\0' || cfg_item_value(item)[item->val_len] != '\0') {
      return false;
    }
    item = item->next;
    if (item == section.head) {
      return has_cursor;
    }
  }
  return false;
}

}  // namespace

std::uint32_t load(std::string_view text) {
  const unnamed_file file{text};
  return config_load_file(file.path().c_str());
}

std::string exported() {
  const captured_stdout unheard;
  char* text = nullptr;
  std::size_t size = 0;
  std::FILE* const stream = open_memstream(&text, &size);
  const std::uint32_t result = config_export(&g_config_mgmt, stream);
  std::fclose(stream);
  std::string all{text, size};
  std::free(text);
  return result == CFC_OK ? all : "export failed";
}

cfg_segment* section(std::string_view name) {
  cfg_segment* at = g_config_mgmt.first;
  while (at != nullptr && name_of(*at) != name) {
    at = at->list_next;
  }
  return at;
}

cfg_item* entry(std::string_view section_name, std::string_view key) {
  const cfg_segment* const holder = section(section_name);
  cfg_item* item = holder == nullptr ? nullptr : holder->head;
  while (item != nullptr && key_of(*item) != key) {
    item = item->next == holder->head ? nullptr : item->next;
  }
  return item;
}

names sections() {
  names all;
  for (const cfg_segment* at = g_config_mgmt.first; at != nullptr; at = at->list_next) {
    all.emplace_back(name_of(*at));
  }
  return all;
}

names chain(std::uint32_t bucket) {
  names all;
  for (const cfg_segment* at = g_config_mgmt.buckets[bucket]; at != nullptr; at = at->bucket_next) {
    all.emplace_back(name_of(*at));
  }
  return all;
}

names keys(std::string_view section_name) {
  names all;
  const cfg_segment* const holder = section(section_name);
  const cfg_item* item = holder == nullptr ? nullptr : holder->head;
  while (item != nullptr) {
    all.emplace_back(key_of(*item));
    item = item->next == holder->head ? nullptr : item->next;
  }
  return all;
}

std::string cursor(std::string_view section_name) {
  const cfg_segment* const holder = section(section_name);
  return holder == nullptr || holder->current == nullptr ? std::string{}
                                                         : std::string{key_of(*holder->current)};
}

std::string cache() {
  return g_config_mgmt.cache == nullptr ? std::string{}
                                        : std::string{name_of(*g_config_mgmt.cache)};
}

std::string value(const char* section_name, const char* key) {
  char out[255];
  std::uint32_t length = 0;
  const std::uint32_t result = cfc_get_val(section_name, key, out, &length);
  return result == CFC_OK ? std::string{out, length} : "?" + std::to_string(result);
}

bool is_all_zero() {
  const auto* const bytes = reinterpret_cast<const unsigned char*>(&g_config_mgmt);
  return std::all_of(bytes, bytes + sizeof g_config_mgmt, [](unsigned char b) { return b == 0; });
}

testing::AssertionResult is_well_formed() {
  names chained[CFG_BUCKETS];
  const cfg_segment* last = nullptr;
  for (const cfg_segment* at = g_config_mgmt.first; at != nullptr; at = at->list_next) {
    chained[at->hash % CFG_BUCKETS].emplace_back(name_of(*at));
    last = at;
    if (!ring_is_well_formed(*at)) {
      return testing::AssertionFailure() << "the ring of " << name_of(*at) << " is broken";
    }
  }
  for (std::uint32_t bucket = 0; bucket < CFG_BUCKETS; ++bucket) {
    if (chain(bucket) != chained[bucket]) {
      return testing::AssertionFailure() << "chain " << bucket << " is broken";
    }
  }
  return g_config_mgmt.last == last ? testing::AssertionSuccess()
                                    : testing::AssertionFailure() << "last is wrong";
}

}  // namespace loaded_store
