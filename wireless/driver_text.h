// Parsers of the wireless driver's files: what the exported readers do after the file was read.
//
// `length` counts the bytes read, which are followed by a NUL; nothing after it is accessed. The
// bytes may contain further NULs: a search ends there, a step of a fixed distance passes it.
// Outputs and results are those of the exported readers; no argument may be null.
#ifndef PROREFLAX_WIRELESS_DRIVER_TEXT_H
#define PROREFLAX_WIRELESS_DRIVER_TEXT_H

#include <proreflax/wireless.h>

#include <cstddef>
#include <cstdint>

namespace proreflax {

/// Splits the text in place: NULs replace '=' and newline of each line.
std::uint32_t parse_wls_status(char* text, wls_11g_status* status);

/// Stores one value in every field whose name the line's name begins with.
void parse_wls_status_field(wls_11g_status* status, const char* name, const char* value);

std::uint32_t parse_wls_event_log(const char* text, std::size_t length, int* count,
                                  wls_event_log_entry* table);

/// Ends the text after its last newline.
std::uint32_t parse_wls_associate(char* text, std::size_t length, wls_associate_entry* table,
                                  int* count);

}  // namespace proreflax

#endif
