// The internals of local time; gui_get_offsetTime() and gui_get_localtime() are in sections.h.
#ifndef PROREFLAX_ACCESSORS_TIME_H
#define PROREFLAX_ACCESSORS_TIME_H

#include <cstdint>

namespace proreflax {

/// The last offset found, in seconds; unchanged when the section or its zone is missing.
extern std::int32_t g_offset_time;

/// The string that gui_get_localtime() returns; the next call overwrites it.
extern char g_localtime_text[200];

/// Reads hours, minutes and seconds, two digits at most each, with or without ":" between them;
/// missing fields at the end count as 0. Returns the first character after them, and the seconds in
/// `out`; or null, with `out` untouched, for hours above 24, minutes or seconds above 59, a ":"
/// that is not followed by a digit, or a fourth number other than 0.
const char* parse_tz_offset(const char* text, std::int32_t* out);

}  // namespace proreflax

#endif
