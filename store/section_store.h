// Sections and entries in memory: the operations behind store.h that are not exported.
//
// Sections hang in one of eight hash chains and in one list in order of creation. The entries of a
// section form a ring with a cursor, `current`: the entry last found or written. A search starts at
// the cursor, so reading keys in stored order costs two comparisons a key, and a new key lands
// right behind the cursor. `head` is where the ring starts for export and release.
//
// Every section and every entry is one allocation, record and text together, without spare room.
#ifndef PROREFLAX_STORE_SECTION_STORE_H
#define PROREFLAX_STORE_SECTION_STORE_H

#include <proreflax/store.h>

#include <cstddef>
#include <cstdint>

namespace proreflax {

/// h * 31 + byte over the text, from 0, wrapping. The text's length goes to `length`.
std::uint32_t cfg_hash(const char* text, std::uint32_t* length);

/// The section of that name, or null. Looks at the cache first and moves it to a section found. The
/// cache is null in an empty store, and in one that was not loaded until a section is found.
cfg_segment* segment_find(const char* name);

/// 0 and the value's address, with the cursor on the entry; or 201 and null.
std::uint32_t item_find(cfg_segment* section, const char* key, const char** out);

/// 0 with the cursor on the entry; 12 when there is no memory, with the old value in place. The key
/// must fit 254 bytes and the value 255.
std::uint32_t item_set(cfg_segment* section, const char* key, const char* value);

/// Remembers hashes, or rather their traces in a few bits: one that was never met may seem met, but
/// never the other way round.
template <std::size_t Bits>
class met_hashes {
 public:
  /// Whether the hash may have been met before; it has been from now on.
  bool meet(std::uint32_t hash) {
    const std::uint32_t bit = hash * 0x9E3779B1U >> 16;  // spreads texts that end alike
    std::uint32_t& word = words_[bit / 32 % (Bits / 32)];
    const std::uint32_t mask = std::uint32_t{1} << bit % 32;
    const bool met = (word & mask) != 0;
    word |= mask;
    return met;
  }

  void forget() { fill(0); }
  void meet_all() { fill(~std::uint32_t{0}); }

 private:
  void fill(std::uint32_t word) {
    for (std::uint32_t& each : words_) {
      each = word;
    }
  }

  std::uint32_t words_[Bits / 32] = {};
};

/// Adds sections and entries as segment_alloc() and item_set() do, but without their search where
/// the name or key cannot be there yet: otherwise every new section costs a walk along its chain,
/// and every new entry one around its ring. It knows this for what it has added itself, if the
/// store was empty when it began; nothing else may add meanwhile.
class store_filler {
 public:
  store_filler();

  /// The section of that name becomes g_config_mgmt.cache; null when there is no memory.
  cfg_segment* add_section(const char* name);

  /// Writes an entry of g_config_mgmt.cache. 0; or 12 when there is no memory.
  std::uint32_t add_item(const char* key, const char* value, std::uint32_t value_length);

 private:
  cfg_segment** chain_ends_[CFG_BUCKETS];
  met_hashes<16384> names_;  // 2 KiB: hardly a false one among some thousand sections
  met_hashes<512> keys_;     // of the section in g_config_mgmt.cache
};

/// Frees every section and entry and zeroes the root.
void config_free_all(config_mgmt* root);

}  // namespace proreflax

#endif
