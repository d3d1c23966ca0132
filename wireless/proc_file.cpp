// Reading a driver's text.
//
// One buffer serves every read, so nothing is allocated for the text. The stream has no buffer of
// its own: fread() fills g_proc_buf directly. A driver may hand its text over in pieces; fread()
// goes on until there is no more room or the text has ended. A read error ends the text as well:
// fread() reports it as a short count, and what was read until then is parsed.
#include "wireless/proc_file.h"

#include <proreflax/result.h>

#include <algorithm>
#include <cstdio>

namespace proreflax {

std::int32_t g_proc_buf_size = proc_buf_capacity;
char g_proc_buf[proc_buf_capacity];

namespace {

/// Room for text in the buffer, its NUL left out, whatever g_proc_buf_size says.
std::size_t room() {
  constexpr auto capacity = static_cast<std::int32_t>(proc_buf_capacity);
  return static_cast<std::size_t>(std::clamp(g_proc_buf_size, 1, capacity) - 1);
}

}  // namespace

std::uint32_t read_proc_file(const char* path, char** text, std::size_t* length) {
  std::FILE* const file = std::fopen(path, "r");
  if (file == nullptr) {
    return CFC_FAILED;
  }
  std::setvbuf(file, nullptr, _IONBF, 0);
  const std::size_t count = std::fread(g_proc_buf, 1, room(), file);
  std::fclose(file);
  g_proc_buf[count] = '\0';
  *text = g_proc_buf;
  *length = count;
  return CFC_OK;
}

}  // namespace proreflax
