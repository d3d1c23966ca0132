#include "store/section_store.h"

#include <cstdlib>
#include <cstring>

config_mgmt g_config_mgmt;

namespace proreflax {
namespace {

constexpr std::uint32_t name_len_max = 255;
constexpr std::uint32_t key_len_max = 254;
constexpr std::uint32_t val_len_max = 255;

/// A string to search for, with its hash and length.
struct hashed_string {
  explicit hashed_string(const char* searched) : bytes{searched}, hash{cfg_hash(bytes, &length)} {}

  const char* bytes;
  std::uint32_t length = 0;
  std::uint32_t hash;
};

bool same_bytes(const char* stored, std::uint32_t stored_length, const hashed_string& searched) {
  return stored_length == searched.length &&
         std::memcmp(stored, searched.bytes, searched.length) == 0;
}

bool matches(const cfg_segment& section, const hashed_string& name) {
  return section.hash == name.hash &&
         same_bytes(cfg_segment_name(&section), section.name_len, name);
}

bool matches(const cfg_item& item, const hashed_string& key) {
  return item.hash == key.hash && same_bytes(cfg_item_key(&item), item.key_len, key);
}

/// The link to the section with that name, or the null link at the end of its chain.
cfg_segment** find_link(const hashed_string& name) {
  cfg_segment** link = &g_config_mgmt.buckets[name.hash % CFG_BUCKETS];
  while (*link != nullptr && !matches(**link, name)) {
    link = &(*link)->bucket_next;
  }
  return link;
}

/// Appends a section without entries to its chain, whose end is `link`, and to the list. Null when
/// there is no memory.
cfg_segment* new_section(cfg_segment** link, const hashed_string& name) {
  const std::size_t size = sizeof(cfg_segment) + name.length + 1;
  auto* section = static_cast<cfg_segment*>(std::malloc(size));
  if (section == nullptr) {
    return nullptr;
  }
  std::memset(section, 0, size);
  section->hash = name.hash;
  section->name_len = static_cast<std::uint8_t>(name.length);
  std::memcpy(section + 1, name.bytes, name.length);
  *link = section;
  (g_config_mgmt.first == nullptr ? g_config_mgmt.first : g_config_mgmt.last->list_next) = section;
  g_config_mgmt.last = section;
  return section;
}

char* strings_of(cfg_item* item) {
  return reinterpret_cast<char*>(item + 1);
}

void replace_value(cfg_item* item, const char* value, std::uint32_t length) {
  // The new value may be part of the old one.
  std::memmove(strings_of(item) + item->val_off, value, length + 1);
  item->val_len = static_cast<std::uint8_t>(length);
}

cfg_item* allocate_item(const hashed_string& key, const char* value, std::uint32_t value_length) {
  auto* item =
      static_cast<cfg_item*>(std::malloc(sizeof(cfg_item) + key.length + value_length + 2));
  if (item != nullptr) {
    *item = {.next = nullptr,
             .hash = key.hash,
             .key_off = 0,
             .key_len = static_cast<std::uint8_t>(key.length),
             .val_off = static_cast<std::uint8_t>(key.length + 1),
             .val_len = 0};
    std::memcpy(strings_of(item), key.bytes, key.length + 1);
    replace_value(item, value, value_length);
  }
  return item;
}

/// The position of a key in a ring: its entry `at` and the entry `before` it. Without a match
/// `before` is the cursor and `at` the entry after it; without entries both are null.
struct ring_position {
  cfg_item* before;
  cfg_item* at;
  bool found;
};

/// The position of a key that the section does not contain.
ring_position position_of_new(const cfg_segment& section) {
  cfg_item* const cursor = section.current;
  return {cursor, cursor == nullptr ? nullptr : cursor->next, false};
}

/// Compares each entry once, the cursor last.
ring_position find_position(const cfg_segment& section, const hashed_string& key) {
  cfg_item* const cursor = section.current;
  ring_position position = position_of_new(section);
  if (cursor == nullptr) {
    return position;
  }
  do {
    if (matches(*position.at, key)) {
      position.found = true;
      return position;
    }
    position.before = position.at;
    position.at = position.at->next;
  } while (position.before != cursor);
  return position;
}

/// Replaces the entry found, which is freed, with `item`, or inserts `item` after
/// `position.before`.
void link_item(cfg_segment* section, const ring_position& position, cfg_item* item) {
  const bool only_entry =
      position.at == nullptr || (position.found && position.before == position.at);
  if (only_entry) {
    item->next = item;
  } else {
    position.before->next = item;
    item->next = position.found ? position.at->next : position.at;
  }
  if (position.found) {
    if (section->head == position.at) {
      section->head = item;
    }
    std::free(position.at);
  }
}

std::uint32_t write_item(cfg_segment* section, const ring_position& position,
                         const hashed_string& key, const char* value, std::uint32_t value_length) {
  // The limit is the current length, because the allocated size is not stored: an entry whose value
  // was shortened gets a new record when its value grows again.
  if (position.found && value_length <= position.at->val_len) {
    replace_value(position.at, value, value_length);
    section->current = position.at;
    return CFC_OK;
  }
  cfg_item* const item = allocate_item(key, value, value_length);
  if (item == nullptr) {
    return CFC_ERR_NO_MEMORY;
  }
  link_item(section, position, item);
  section->current = item;
  if (section->head == nullptr) {
    section->head = item;
  }
  return CFC_OK;
}

void free_items(const cfg_segment& section) {
  cfg_item* item = section.head;
  if (item == nullptr) {
    return;
  }
  do {
    cfg_item* const next = item->next;
    std::free(item);
    item = next;
  } while (item != section.head);
}

constexpr std::size_t cache_line_bytes = 64;
constexpr std::size_t lines_ahead = 3;

/// Prefetches memory at a distance after an entry. A load places the entries of a section one after
/// another in the order of the ring, so the search reads that memory next; if it only followed the
/// links, it would wait at every entry.
void prefetch_after(const cfg_item* item, std::size_t lines) {
  __builtin_prefetch(reinterpret_cast<const char*>(item) + lines * cache_line_bytes);
}

bool has_flag(std::uint32_t flag) {
  return (g_config_mgmt.flags & flag) != 0;
}

}  // namespace

std::uint32_t cfg_hash(const char* text, std::uint32_t* length) {
  std::uint32_t hash = 0;
  const auto* at = reinterpret_cast<const unsigned char*>(text);
  // Two bytes per step halve the chain of dependent multiplications.
  for (; at[0] != '\0' && at[1] != '\0'; at += 2) {
    hash = hash * (31 * 31) + (at[0] * 31U + at[1]);
  }
  if (*at != '\0') {
    hash = hash * 31 + *at++;
  }
  *length = static_cast<std::uint32_t>(reinterpret_cast<const char*>(at) - text);
  return hash;
}

cfg_segment* segment_find(const char* name) {
  cfg_segment* const cached = g_config_mgmt.cache;
  if (cached != nullptr && std::strcmp(cfg_segment_name(cached), name) == 0) {
    return cached;
  }
  cfg_segment* const found = *find_link(hashed_string{name});
  if (found != nullptr) {
    g_config_mgmt.cache = found;
  }
  return found;
}

std::uint32_t item_find(cfg_segment* section, const char* key, const char** out) {
  *out = nullptr;
  cfg_item* item = section->current;
  if (item == nullptr) {
    return CFC_ERR_NO_KEY;
  }
  for (std::size_t lines = 0; lines <= lines_ahead; ++lines) {
    prefetch_after(item, lines);
  }
  const hashed_string searched{key};
  do {
    prefetch_after(item, lines_ahead);
    if (matches(*item, searched)) {
      section->current = item;
      *out = cfg_item_value(item);
      return CFC_OK;
    }
    item = item->next;
  } while (item != section->current);
  return CFC_ERR_NO_KEY;
}

std::uint32_t item_set(cfg_segment* section, const char* key, const char* value) {
  const hashed_string searched{key};
  return write_item(section, find_position(*section, searched), searched, value,
                    static_cast<std::uint32_t>(std::strlen(value)));
}

bulk_loader::bulk_loader() {
  if (g_config_mgmt.first != nullptr) {
    names_.add_all();
    keys_.add_all();
  }
  for (std::size_t i = 0; i < CFG_BUCKETS; ++i) {
    chain_ends_[i] = &g_config_mgmt.buckets[i];
  }
}

cfg_segment* bulk_loader::add_section(const char* name) {
  const hashed_string searched{name};
  cfg_segment**& chain_end = chain_ends_[searched.hash % CFG_BUCKETS];
  cfg_segment** const link = names_.add(searched.hash) ? find_link(searched) : chain_end;
  if (*link != nullptr) {
    keys_.add_all();
    return g_config_mgmt.cache = *link;
  }
  g_config_mgmt.cache = new_section(link, searched);
  if (g_config_mgmt.cache != nullptr) {
    chain_end = &g_config_mgmt.cache->bucket_next;
    keys_.clear();
  }
  return g_config_mgmt.cache;
}

std::uint32_t bulk_loader::add_item(const char* key, const char* value,
                                    std::uint32_t value_length) {
  const hashed_string searched{key};
  cfg_segment* const section = g_config_mgmt.cache;
  const ring_position position =
      keys_.add(searched.hash) ? find_position(*section, searched) : position_of_new(*section);
  return write_item(section, position, searched, value, value_length);
}

void config_free_all(config_mgmt* root) {
  cfg_segment* section = root->first;
  while (section != nullptr) {
    cfg_segment* const next = section->list_next;
    free_items(*section);
    std::free(section);
    section = next;
  }
  *root = {};
}

}  // namespace proreflax

using namespace proreflax;

cfg_segment* segment_alloc(const char* name) {
  if (name == nullptr) {
    return nullptr;
  }
  const hashed_string searched{name};
  if (searched.length > name_len_max) {
    return nullptr;
  }
  cfg_segment** const link = find_link(searched);
  return *link != nullptr ? *link : new_section(link, searched);
}

// All calls are inlined, since every request for a value goes through this function.
[[gnu::flatten]] std::uint32_t cfc_get_val(const char* section, const char* key, char* out,
                                           std::uint32_t* length) {
  if (has_flag(CFG_BUSY)) {
    return CFC_ERR_BUSY;
  }
  if (section == nullptr || key == nullptr) {
    return CFC_ERR_BAD_ARGUMENT;
  }
  cfg_segment* const found = segment_find(section);
  if (found == nullptr) {
    return CFC_ERR_NO_SECTION;
  }
  const char* value = nullptr;
  if (const std::uint32_t result = item_find(found, key, &value); result != CFC_OK) {
    return result;
  }
  if (out == nullptr || length == nullptr) {
    return CFC_ERR_BAD_ARGUMENT;
  }
  *length = found->current->val_len;
  // Not memcpy: because a value has at most 255 bytes, compilers replace it with a string
  // instruction, which takes longer than the rest of this function.
  std::memmove(out, value, *length);
  return CFC_OK;
}

std::uint32_t cfc_set_val(const char* section, const char* key, const char* value) {
  if (has_flag(CFG_BUSY)) {
    return CFC_ERR_BUSY;
  }
  if (section == nullptr || key == nullptr || value == nullptr) {
    return CFC_ERR_BAD_ARGUMENT;
  }
  cfg_segment* const found = segment_find(section);
  if (found == nullptr) {
    return CFC_ERR_NO_SECTION;
  }
  if (std::strlen(key) > key_len_max || std::strlen(value) > val_len_max) {
    return CFC_ERR_BAD_ARGUMENT;
  }
  const std::uint32_t result = item_set(found, key, value);
  if (result == CFC_OK) {
    g_config_mgmt.flags |= CFG_DIRTY;
  }
  return result;
}
