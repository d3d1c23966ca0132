// The inside of the time helpers; gui_get_offsetTime() and gui_get_localtime() are in sections.h.
#ifndef PROREFLAX_ACCESSORS_TIME_H
#define PROREFLAX_ACCESSORS_TIME_H

#include <cstdint>

namespace proreflax {

/// The offset in seconds that was found last; stays when the section or a zone in it is missing.
extern std::int32_t g_offset_time;

/// The text that gui_get_localtime() returns; the next call overwrites it.
extern char g_localtime_text[200];

/// Reads hours, minutes and seconds, two digits at most each, with or without ":" between them;
/// what is missing at the end counts as 0. Returns the first character behind them, and the seconds
/// in `out`; or null, with `out` untouched, for hours above 24, minutes or seconds above 59, a ":"
/// without a digit behind it, or a fourth number other than 0.
const char* parse_tz_offset(const char* text, std::int32_t* out);

}  // namespace proreflax

#endif
