// Reading a driver's file.
//
// All reads use one buffer, so nothing is allocated. The stream is unbuffered: fread() fills
// g_proc_buf directly. A driver may deliver its file in pieces; fread() continues until the buffer
// is full or the file ends. A read error also counts as the end: fread() reports a short count, and
// the bytes read until then are parsed.
#include "wireless/proc_file.h"

#include <proreflax/result.h>

#include <algorithm>
#include <cstdio>

namespace proreflax {

std::int32_t g_proc_buf_size = proc_buf_capacity;
char g_proc_buf[proc_buf_capacity];

namespace {

/// Size of the buffer without its NUL, for any g_proc_buf_size.
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
