// Sections and entries in memory: the operations behind store.h that are not exported.
//
// Sections hang in one of eight hash chains and in one list in order of creation. The entries of a
// section form a ring with a cursor, `current`: the entry last found or written. A search starts at
// the cursor, so reading keys in stored order costs two comparisons a key, and a new key lands right
// behind the cursor. `head` is where the ring starts for export and release.
//
// Every section and every entry is one allocation, record and text together, without spare room.
#ifndef PROREFLAX_STORE_SECTION_STORE_H
#define PROREFLAX_STORE_SECTION_STORE_H

#include <proreflax/store.h>

#include <cstdint>

namespace proreflax {

/// h * 31 + byte over the text, from 0, wrapping. The text's length goes to `length`.
std::uint32_t cfg_hash(const char* text, std::uint32_t* length);

/// The section of that name, or null. Looks at the cache first and moves it to a section found. A
/// store that was never loaded, or was closed, has no cache and holds nothing.
cfg_segment* segment_find(const char* name);

/// 0 and the value's address, with the cursor on the entry; or 201 and null.
std::uint32_t item_find(cfg_segment* section, const char* key, const char** out);

/// 0 with the cursor on the entry; 12 when there is no memory, with the old value in place. The key
/// must fit 254 bytes and the value 255.
std::uint32_t item_set(cfg_segment* section, const char* key, const char* value);

/// Frees every section and entry and zeroes the root.
void config_free_all(config_mgmt* root);

}  // namespace proreflax

#endif
