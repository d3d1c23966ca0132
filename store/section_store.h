// Sections and entries in memory: the operations that implement store.h and are not exported.
//
// Each section is in one of eight hash chains and in one list in order of creation. The entries of
// a section form a ring with a cursor, `current`: the entry last found or written. A search starts
// at the cursor, so reading keys in stored order costs two comparisons per key. A new key is
// inserted directly after the cursor. `head` is where the ring starts for export and release.
//
// Every section and every entry is one allocation of exactly the size of its record and strings.
#ifndef PROREFLAX_STORE_SECTION_STORE_H
#define PROREFLAX_STORE_SECTION_STORE_H

#include <proreflax/store.h>

#include <cstddef>
#include <cstdint>

namespace proreflax {

/// The hash of a string: h * 31 + byte for each byte, from 0, wrapping. `length` receives the
/// string's length.
std::uint32_t cfg_hash(const char* text, std::uint32_t* length);

/// The section with that name, or null. Tries the cached section first, and caches the section that
/// it finds. The cache is null in an empty store. In a store that was not loaded it is null until a
/// section is found.
cfg_segment* segment_find(const char* name);

/// 0 and the value's address, with the cursor on the entry; or 201 and null.
std::uint32_t item_find(cfg_segment* section, const char* key, const char** out);

/// 0 with the cursor on the entry; 12 when there is no memory, with the old value unchanged. The
/// key has at most 254 bytes and the value 255.
std::uint32_t item_set(cfg_segment* section, const char* key, const char* value);

/// A Bloom filter of hashes with one bit per hash: it may report a hash that was never added, but
/// always reports one that was.
template <std::size_t Bits>
class bloom_filter {
 public:
  /// Adds a hash. Whether it may have been added before.
  bool add(std::uint32_t hash) {
    const std::uint32_t bit = hash * 0x9E3779B1U >> 16;  // spreads strings with similar endings
    std::uint32_t& word = words_[bit / 32 % (Bits / 32)];
    const std::uint32_t mask = std::uint32_t{1} << bit % 32;
    const bool may_be_present = (word & mask) != 0;
    word |= mask;
    return may_be_present;
  }

  void clear() { fill(0); }
  void add_all() { fill(~std::uint32_t{0}); }

 private:
  void fill(std::uint32_t word) {
    for (std::uint32_t& each : words_) {
      each = word;
    }
  }

  std::uint32_t words_[Bits / 32] = {};
};

/// Adds sections and entries as segment_alloc() and item_set() do, but skips the search for a name
/// or key that cannot exist yet: otherwise every new section costs a walk along its chain, and
/// every new entry one around its ring. It skips searches only if the store was empty at the
/// beginning, since it tracks only its own additions; nothing else may add entries meanwhile.
class bulk_loader {
 public:
  bulk_loader();

  /// The section with that name becomes g_config_mgmt.cache; null when there is no memory.
  cfg_segment* add_section(const char* name);

  /// Sets an entry of g_config_mgmt.cache. 0; or 12 when there is no memory.
  std::uint32_t add_item(const char* key, const char* value, std::uint32_t value_length);

 private:
  cfg_segment** chain_ends_[CFG_BUCKETS];
  bloom_filter<16384> names_;  // 2 KiB: few false positives up to about a thousand sections
  bloom_filter<512> keys_;     // of the section in g_config_mgmt.cache
};

/// Frees every section and entry and zeroes the root.
void config_free_all(config_mgmt* root);

}  // namespace proreflax

#endif
