// The store as INI text: loading a file, line by line, and exporting to a stream.
//
// A load is all or nothing: the first malformed line releases everything. What the export writes,
// the loader reads back to the same sections, entries and orders, as long as names, keys and values
// keep to the limits of ini_line.h.
#ifndef PROREFLAX_STORE_INI_TEXT_H
#define PROREFLAX_STORE_INI_TEXT_H

#include <proreflax/store.h>

#include <cstdint>
#include <cstdio>

namespace proreflax {

/// Replaces the store by the file's content. 0; 206 when it cannot be opened; 205 for a malformed
/// line or a text without a section; 12 when a section finds no memory. The store is empty after
/// every failure.
std::uint32_t config_load_file(const char* path);

/// Adds one line to the store; entries go to the section in g_config_mgmt.cache, which a header
/// sets. The line is modified. 0, 12 or 205. No operation calls it; config_load_file() adds its
/// lines with less searching.
std::uint32_t config_parse_line(char* line);

/// Writes the store, section by section, in order of creation. 0; or 215 when a write came short.
std::uint32_t config_export(const config_mgmt* root, std::FILE* stream);

}  // namespace proreflax

#endif
