// Reading a driver's text.
//
// One buffer serves every read, so nothing is allocated. A driver may hand its text over in pieces:
// the read goes on until the buffer is full or the text has ended.
#include "wireless/proc_file.h"

#include <fcntl.h>
#include <proreflax/result.h>
#include <unistd.h>

#include <algorithm>

namespace proreflax {

std::int32_t g_proc_buf_size = proc_buf_capacity;
char g_proc_buf[proc_buf_capacity];

namespace {

class open_file {
 public:
  explicit open_file(const char* path) : descriptor_{open(path, O_RDONLY | O_CLOEXEC)} {}
  ~open_file() {
    if (is_open()) {
      close(descriptor_);
    }
  }
  open_file(const open_file&) = delete;
  open_file& operator=(const open_file&) = delete;

  bool is_open() const { return descriptor_ >= 0; }

  /// How many bytes were read; negative on failure.
  ssize_t read_up_to(char* buffer, std::size_t size) const {
    std::size_t have = 0;
    ssize_t more = 1;
    while (have < size && more > 0) {
      more = read(descriptor_, buffer + have, size - have);
      have += more > 0 ? static_cast<std::size_t>(more) : 0;
    }
    return more < 0 ? more : static_cast<ssize_t>(have);
  }

 private:
  int descriptor_;
};

/// Room for text in the buffer, its NUL left out, whatever g_proc_buf_size says.
std::size_t room() {
  constexpr auto capacity = static_cast<std::int32_t>(proc_buf_capacity);
  return static_cast<std::size_t>(std::clamp(g_proc_buf_size, 1, capacity) - 1);
}

}  // namespace

std::uint32_t read_proc_file(const char* path, char** text, std::size_t* length) {
  const open_file file{path};
  if (!file.is_open()) {
    return CFC_FAILED;
  }
  const ssize_t count = file.read_up_to(g_proc_buf, room());
  if (count < 0) {
    return CFC_FAILED;
  }
  g_proc_buf[count] = '\0';
  *text = g_proc_buf;
  *length = static_cast<std::size_t>(count);
  return CFC_OK;
}

}  // namespace proreflax
