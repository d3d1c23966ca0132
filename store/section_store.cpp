#include "store/section_store.h"

#include <cstdlib>
#include <cstring>

config_mgmt g_config_mgmt;

namespace proreflax {
namespace {

constexpr std::uint32_t name_len_max = 255;
constexpr std::uint32_t key_len_max = 254;
constexpr std::uint32_t val_len_max = 255;

/// A searched text, hashed and measured once.
struct hashed_text {
  explicit hashed_text(const char* searched) : text{searched}, hash{cfg_hash(text, &length)} {}

  const char* text;
  std::uint32_t length = 0;
  std::uint32_t hash;
};

bool same_bytes(const char* stored, std::uint32_t stored_length, const hashed_text& searched) {
  return stored_length == searched.length &&
         std::memcmp(stored, searched.text, searched.length) == 0;
}

bool matches(const cfg_segment& section, const hashed_text& name) {
  return section.hash == name.hash &&
         same_bytes(cfg_segment_name(&section), section.name_len, name);
}

bool matches(const cfg_item& item, const hashed_text& key) {
  return item.hash == key.hash && same_bytes(cfg_item_key(&item), item.key_len, key);
}

/// The link that holds the section of that name, or the null link at the end of its chain.
cfg_segment** find_link(const hashed_text& name) {
  cfg_segment** link = &g_config_mgmt.buckets[name.hash % CFG_BUCKETS];
  while (*link != nullptr && !matches(**link, name)) {
    link = &(*link)->bucket_next;
  }
  return link;
}

/// Hangs a section without entries at the end of its chain, which is `link`, and of the list. Null
/// when there is no memory.
cfg_segment* new_section(cfg_segment** link, const hashed_text& name) {
  const std::size_t size = sizeof(cfg_segment) + name.length + 1;
  auto* section = static_cast<cfg_segment*>(std::malloc(size));
  if (section == nullptr) {
    return nullptr;
  }
  std::memset(section, 0, size);
  section->hash = name.hash;
  section->name_len = static_cast<std::uint8_t>(name.length);
  std::memcpy(section + 1, name.text, name.length);
  *link = section;
  (g_config_mgmt.first == nullptr ? g_config_mgmt.first : g_config_mgmt.last->list_next) = section;
  g_config_mgmt.last = section;
  return section;
}

char* text_of(cfg_item* item) {
  return reinterpret_cast<char*>(item + 1);
}

void replace_value(cfg_item* item, const char* value, std::uint32_t length) {
  // The value may come from this very entry.
  std::memmove(text_of(item) + item->val_off, value, length + 1);
  item->val_len = static_cast<std::uint8_t>(length);
}

cfg_item* allocate_item(const hashed_text& key, const char* value, std::uint32_t value_length) {
  auto* item =
      static_cast<cfg_item*>(std::malloc(sizeof(cfg_item) + key.length + value_length + 2));
  if (item != nullptr) {
    *item = {.next = nullptr,
             .hash = key.hash,
             .key_off = 0,
             .key_len = static_cast<std::uint8_t>(key.length),
             .val_off = static_cast<std::uint8_t>(key.length + 1),
             .val_len = 0};
    std::memcpy(text_of(item), key.text, key.length + 1);
    replace_value(item, value, value_length);
  }
  return item;
}

/// Where a key stands in a ring: at `at`, with `before` in front of it. Without a match `before` is
/// the cursor and `at` the entry behind it; without entries both are null.
struct ring_place {
  cfg_item* before;
  cfg_item* at;
  bool found;
};

/// The place of a key that the section does not hold.
ring_place place_of_new(const cfg_segment& section) {
  cfg_item* const cursor = section.current;
  return {cursor, cursor == nullptr ? nullptr : cursor->next, false};
}

/// Visits each entry once, the cursor last.
ring_place find_place(const cfg_segment& section, const hashed_text& key) {
  cfg_item* const cursor = section.current;
  ring_place place = place_of_new(section);
  if (cursor == nullptr) {
    return place;
  }
  do {
    if (matches(*place.at, key)) {
      place.found = true;
      return place;
    }
    place.before = place.at;
    place.at = place.at->next;
  } while (place.before != cursor);
  return place;
}

/// Links `item` in place of the entry found, which is freed, or behind `place.before`.
void link_item(cfg_segment* section, const ring_place& place, cfg_item* item) {
  const bool alone = place.at == nullptr || (place.found && place.before == place.at);
  if (alone) {
    item->next = item;
  } else {
    place.before->next = item;
    item->next = place.found ? place.at->next : place.at;
  }
  if (place.found) {
    if (section->head == place.at) {
      section->head = item;
    }
    std::free(place.at);
  }
}

std::uint32_t write_item(cfg_segment* section, const ring_place& place, const hashed_text& key,
                         const char* value, std::uint32_t value_length) {
  // Against the present length, not the room once allocated, on purpose: an entry whose value was
  // shortened gets a new record as soon as its value grows again.
  if (place.found && value_length <= place.at->val_len) {
    replace_value(place.at, value, value_length);
    section->current = place.at;
    return CFC_OK;
  }
  cfg_item* const item = allocate_item(key, value, value_length);
  if (item == nullptr) {
    return CFC_ERR_NO_MEMORY;
  }
  link_item(section, place, item);
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

/// Asks the processor for the memory some way behind an entry. A load lays the entries of a section
/// out one behind the other in the order of the ring, so the search comes by there; following the
/// links alone, it would wait at every entry.
void fetch_behind(const cfg_item* item, std::size_t lines) {
  __builtin_prefetch(reinterpret_cast<const char*>(item) + lines * cache_line_bytes);
}

bool has_flag(std::uint32_t flag) {
  return (g_config_mgmt.flags & flag) != 0;
}

}  // namespace

std::uint32_t cfg_hash(const char* text, std::uint32_t* length) {
  std::uint32_t hash = 0;
  const auto* at = reinterpret_cast<const unsigned char*>(text);
  // Two bytes a step: half as many multiplications wait for each other.
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
  cfg_segment* const found = *find_link(hashed_text{name});
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
    fetch_behind(item, lines);
  }
  const hashed_text searched{key};
  do {
    fetch_behind(item, lines_ahead);
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
  const hashed_text searched{key};
  return write_item(section, find_place(*section, searched), searched, value,
                    static_cast<std::uint32_t>(std::strlen(value)));
}

store_filler::store_filler() {
  if (g_config_mgmt.first != nullptr) {
    names_.meet_all();
    keys_.meet_all();
  }
  for (std::size_t i = 0; i < CFG_BUCKETS; ++i) {
    chain_ends_[i] = &g_config_mgmt.buckets[i];
  }
}

cfg_segment* store_filler::add_section(const char* name) {
  const hashed_text searched{name};
  cfg_segment**& chain_end = chain_ends_[searched.hash % CFG_BUCKETS];
  cfg_segment** const link = names_.meet(searched.hash) ? find_link(searched) : chain_end;
  if (*link != nullptr) {
    keys_.meet_all();
    return g_config_mgmt.cache = *link;
  }
  g_config_mgmt.cache = new_section(link, searched);
  if (g_config_mgmt.cache != nullptr) {
    chain_end = &g_config_mgmt.cache->bucket_next;
    keys_.forget();
  }
  return g_config_mgmt.cache;
}

std::uint32_t store_filler::add_item(const char* key, const char* value,
                                     std::uint32_t value_length) {
  const hashed_text searched{key};
  cfg_segment* const section = g_config_mgmt.cache;
  const ring_place place =
      keys_.meet(searched.hash) ? find_place(*section, searched) : place_of_new(*section);
  return write_item(section, place, searched, value, value_length);
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
  const hashed_text searched{name};
  if (searched.length > name_len_max) {
    return nullptr;
  }
  cfg_segment** const link = find_link(searched);
  return *link != nullptr ? *link : new_section(link, searched);
}

// What it calls is compiled into it: the one function that every request for a value goes through.
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
  // Not memcpy: knowing that a value has at most 255 bytes, compilers put a string instruction in
  // its place, which takes longer than all the rest of this function.
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
