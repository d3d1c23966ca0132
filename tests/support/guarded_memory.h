// Memory between two pages that nobody may touch: code under test that reads or writes one byte too
// far ends the test at once, with or without a sanitizer.
#ifndef PROREFLAX_TESTS_SUPPORT_GUARDED_MEMORY_H
#define PROREFLAX_TESTS_SUPPORT_GUARDED_MEMORY_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string_view>

class guarded_memory {
 public:
  /// Room for size bytes, zeroed, that end where the page behind begins.
  explicit guarded_memory(std::size_t size)
      : page_{static_cast<std::size_t>(sysconf(_SC_PAGESIZE))},
        mapped_{(size + page_ - 1) / page_ * page_ + 2 * page_},
        size_{size} {
    void* const start = mmap(nullptr, mapped_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (start == MAP_FAILED) {
      throw std::runtime_error("no memory for guarded pages");
    }
    start_ = static_cast<std::uint8_t*>(start);
    mprotect(start_ + page_, mapped_ - 2 * page_, PROT_READ | PROT_WRITE);
  }
  ~guarded_memory() { munmap(start_, mapped_); }
  guarded_memory(const guarded_memory&) = delete;
  guarded_memory& operator=(const guarded_memory&) = delete;

  std::uint8_t* bytes() { return first_page() + (mapped_ - 2 * page_) - size_; }

  /// Where the guarded page in front ends.
  std::uint8_t* first_page() { return start_ + page_; }

  /// The last characters of the room, filled with a text and its NUL.
  char* text(std::string_view characters) {
    char* const at = reinterpret_cast<char*>(bytes() + size_ - characters.size() - 1);
    std::memcpy(at, characters.data(), characters.size());
    at[characters.size()] = '\0';
    return at;
  }

  /// The last elements of the room, each byte of them 0xA5.
  template <typename Record>
  Record* records(std::size_t count = 1) {
    void* const at = bytes() + size_ - count * sizeof(Record);
    std::memset(at, 0xA5, count * sizeof(Record));
    return static_cast<Record*>(at);
  }

 private:
  std::size_t page_;
  std::size_t mapped_;
  std::size_t size_;
  std::uint8_t* start_ = nullptr;
};

#endif
