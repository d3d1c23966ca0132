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

/// Visits each entry once, the cursor last.
ring_place find_place(const cfg_segment& section, const hashed_text& key) {
  cfg_item* const cursor = section.current;
  if (cursor == nullptr) {
    return {nullptr, nullptr, false};
  }
  ring_place place{cursor, cursor->next, false};
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

bool has_flag(std::uint32_t flag) {
  return (g_config_mgmt.flags & flag) != 0;
}

}  // namespace

std::uint32_t cfg_hash(const char* text, std::uint32_t* length) {
  std::uint32_t hash = 0;
  const char* at = text;
  for (; *at != '\0'; ++at) {
    hash = hash * 31 + static_cast<unsigned char>(*at);
  }
  *length = static_cast<std::uint32_t>(at - text);
  return hash;
}

cfg_segment* segment_find(const char* name) {
  cfg_segment* const cached = g_config_mgmt.cache;
  if (cached == nullptr) {
    return nullptr;
  }
  if (std::strlen(name) == cached->name_len &&
      std::memcmp(cfg_segment_name(cached), name, cached->name_len) == 0) {
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
  const hashed_text searched{key};
  do {
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
  const auto value_length = static_cast<std::uint32_t>(std::strlen(value));
  const ring_place place = find_place(*section, searched);
  // Against the present length, not the room once allocated, on purpose: an entry whose value was
  // shortened gets a new record as soon as its value grows again.
  if (place.found && value_length <= place.at->val_len) {
    replace_value(place.at, value, value_length);
    section->current = place.at;
    return CFC_OK;
  }
  cfg_item* const item = allocate_item(searched, value, value_length);
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
  if (*link != nullptr) {
    return *link;
  }
  const std::size_t size = sizeof(cfg_segment) + searched.length + 1;
  auto* section = static_cast<cfg_segment*>(std::malloc(size));
  if (section == nullptr) {
    return nullptr;
  }
  std::memset(section, 0, size);
  section->hash = searched.hash;
  section->name_len = static_cast<std::uint8_t>(searched.length);
  std::memcpy(section + 1, name, searched.length);
  *link = section;
  (g_config_mgmt.first == nullptr ? g_config_mgmt.first : g_config_mgmt.last->list_next) = section;
  g_config_mgmt.last = section;
  return section;
}

std::uint32_t cfc_get_val(const char* section, const char* key, char* out, std::uint32_t* length) {
  if (section == nullptr || key == nullptr || out == nullptr || length == nullptr) {
    return CFC_ERR_BAD_ARGUMENT;
  }
  if (has_flag(CFG_BUSY)) {
    return CFC_ERR_BUSY;
  }
  cfg_segment* const found = segment_find(section);
  if (found == nullptr) {
    return CFC_ERR_NO_SECTION;
  }
  const char* value = nullptr;
  if (const std::uint32_t result = item_find(found, key, &value); result != CFC_OK) {
    return result;
  }
  *length = found->current->val_len;
  std::memcpy(out, value, *length);
  return CFC_OK;
}

std::uint32_t cfc_set_val(const char* section, const char* key, const char* value) {
  if (section == nullptr || key == nullptr || value == nullptr || std::strlen(key) > key_len_max ||
      std::strlen(value) > val_len_max) {
    return CFC_ERR_BAD_ARGUMENT;
  }
  if (has_flag(CFG_BUSY)) {
    return CFC_ERR_BUSY;
  }
  cfg_segment* const found = segment_find(section);
  if (found == nullptr) {
    return CFC_ERR_NO_SECTION;
  }
  const std::uint32_t result = item_set(found, key, value);
  if (result == CFC_OK) {
    g_config_mgmt.flags |= CFG_DIRTY;
  }
  return result;
}
