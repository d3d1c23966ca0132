// One line an event on standard error. Values never appear: they may be passwords.
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

}  // namespace proreflax

#endif
