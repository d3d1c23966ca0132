// The store as INI text: loading a file, line by line, and exporting to a stream.
//
// A load is all or nothing: at the first malformed line everything is released. Loading an exported
// file restores the same sections and entries in the same order, if names, keys and values are
// within the limits of ini_line.h.
#ifndef PROREFLAX_STORE_INI_TEXT_H
#define PROREFLAX_STORE_INI_TEXT_H

#include <proreflax/store.h>

#include <cstdint>
#include <cstdio>

namespace proreflax {

/// Replaces the store with the file's content. 0; 206 when it cannot be opened; 205 for a malformed
/// line or a file without a section; 12 when no memory is left for a section. The store is empty
/// after every failure.
std::uint32_t config_load_file(const char* path);

/// Adds one line to the store. Entries are added to the section in g_config_mgmt.cache, which a
/// header sets. The line is modified. 0, 12 or 205. No operation calls it; config_load_file() uses
/// the faster bulk_loader.
std::uint32_t config_parse_line(char* line);

/// Writes the sections of the store in order of creation. 0; or 215 when a write is incomplete.
std::uint32_t config_export(const config_mgmt* root, std::FILE* stream);

}  // namespace proreflax

#endif
