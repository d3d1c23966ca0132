// One line per event on standard error. Values never appear: they may be passwords.
//
// Standard error must not wait for its reader (see inherited_state.h): a line that does not fit is
// dropped and counted, and the count is logged as soon as there is room again.
#ifndef PROREFLAX_SERVICE_LOG_H
#define PROREFLAX_SERVICE_LOG_H

#include <cstdint>

namespace proreflax {

enum class log_level : std::uint8_t { error, warning, info, debug };

/// Lines above this level are not written.
void set_log_level(log_level max);

/// The level with a name ("error", "warning", "info", "debug"); false for any other name.
bool read_log_level(const char* name, log_level* level);

[[gnu::format(printf, 2, 3)]] void log_line(log_level level, const char* format, ...);

/// Logs the number of dropped lines, if there are any and there is room now.
void log_dropped_lines();

}  // namespace proreflax

#endif
