// One line per event on standard error. Values never appear: they may be passwords.
//
// Standard error must not wait for its reader (see inherited_state.h): a line that finds no room is
// dropped and counted, and the count is logged as soon as there is room again.
#ifndef PROREFLAX_SERVICE_LOG_H
#define PROREFLAX_SERVICE_LOG_H

#include <cstdint>

namespace proreflax {

enum class log_level : std::uint8_t { error, warning, info, debug };

/// Lines above this level are left out.
void set_log_level(log_level most);

/// The level of a name ("error", "warning", "info", "debug"); false for any other name.
bool read_log_level(const char* name, log_level* level);

[[gnu::format(printf, 2, 3)]] void log_line(log_level level, const char* format, ...);

/// Logs how many lines were dropped, if any were and there is room now.
void log_dropped_lines();

}  // namespace proreflax

#endif
