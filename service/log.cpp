#include "service/log.h"

#include <unistd.h>

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <iterator>

namespace proreflax {
namespace {

constexpr const char* level_names[] = {"error", "warning", "info", "debug"};

log_level most_shown = log_level::info;

const char* name_of(log_level level) {
  return level_names[static_cast<std::size_t>(level)];
}

}  // namespace

void set_log_level(log_level most) {
  most_shown = most;
}

bool read_log_level(const char* name, log_level* level) {
  for (std::size_t i = 0; i < std::size(level_names); ++i) {
    if (std::strcmp(name, level_names[i]) == 0) {
      *level = static_cast<log_level>(i);
      return true;
    }
  }
  return false;
}

void log_line(log_level level, const char* format, ...) {
  if (level > most_shown) {
    return;
  }
  char text[400];
  std::va_list arguments;
  va_start(arguments, format);
  // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the line above is not understood
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  char line[sizeof text + 40];
  std::snprintf(line, sizeof line, "config-center: %s: %s\n", name_of(level), text);
  // One write, so that lines of several processes do not mix. A log that nobody takes is no reason
  // to stop.
  if (write(STDERR_FILENO, line, std::strlen(line)) < 0) {
    return;
  }
}

}  // namespace proreflax
