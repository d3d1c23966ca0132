#include "service/log.h"

#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <iterator>

namespace proreflax {
namespace {

constexpr const char* level_names[] = {"error", "warning", "info", "debug"};

log_level most_shown = log_level::info;
unsigned long dropped_lines;
bool ends_in_a_part;

const char* name_of(log_level level) {
  return level_names[static_cast<std::size_t>(level)];
}

/// One write, so that lines of several processes do not mix. False when there is no room; a log
/// that cannot be written at all is no reason to count. A terminal may take a part of the line:
/// that counts as dropped, and the next line starts on its own.
bool write_line(log_level level, const char* text) {
  char line[440];
  std::snprintf(line, sizeof line, "%sconfig-center: %s: %s\n", ends_in_a_part ? "\n" : "",
                name_of(level), text);
  const auto length = static_cast<ssize_t>(std::strlen(line));
  const ssize_t written = write(STDERR_FILENO, line, static_cast<std::size_t>(length));
  if (written < 0) {
    return errno != EAGAIN;
  }
  ends_in_a_part = written < length;
  return !ends_in_a_part;
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

void log_dropped_lines() {
  if (dropped_lines == 0) {
    return;
  }
  char text[80];
  std::snprintf(text, sizeof text, "%lu log lines were dropped: nobody read them", dropped_lines);
  if (write_line(log_level::warning, text)) {
    dropped_lines = 0;
  }
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
  log_dropped_lines();
  if (dropped_lines > 0 || !write_line(level, text)) {
    ++dropped_lines;
  }
}

}  // namespace proreflax
