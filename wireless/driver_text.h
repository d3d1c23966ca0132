// The three texts of the wireless driver, once they are in memory: what the exported readers do
// behind the reading of the file.
//
// `length` counts the bytes read, which a NUL follows; nothing after that is looked at. The bytes
// may hold a NUL themselves: a search ends there, a fixed distance passes it. Outputs and results
// are those of the exported readers; no argument may be null.
#ifndef PROREFLAX_WIRELESS_DRIVER_TEXT_H
#define PROREFLAX_WIRELESS_DRIVER_TEXT_H

#include <proreflax/wireless.h>

#include <cstddef>
#include <cstdint>

namespace proreflax {

/// Splits the text in place: NULs replace '=' and newline of each line.
std::uint32_t parse_wls_status(char* text, wls_11g_status* status);

/// Stores one value under every field whose name the line's name begins with.
void parse_wls_status_field(wls_11g_status* status, const char* name, const char* value);

std::uint32_t parse_wls_event_log(const char* text, std::size_t length, int* count,
                                  wls_event_log_entry* table);

/// Ends the text after its last newline.
std::uint32_t parse_wls_associate(char* text, std::size_t length, wls_associate_entry* table,
                                  int* count);

}  // namespace proreflax

#endif
