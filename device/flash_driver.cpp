// The flash driver of a development machine: the plain file "/dev/flash" in the device's directory,
// created when it is first opened.
//
// "/etc/flash-regions" lists the base address and the regions, one per line; it is read for every
// request, so that it can be edited while programs run. Nothing is written outside a region: a
// position must be inside a region, and a write must end in it.
//
// PROREFLAX_FLASH_FAIL makes calls fail: "seek" every call, "write:2" the second write since the
// device was opened. The names are open, close, region, base, seek, write, and short for a write
// that accepts all bytes except the last. A close that fails still closes the file.
//
// The library that ships contains none of this: see firmware/flash_device.h.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "firmware/flash_device.h"

namespace proreflax {
namespace {

constexpr char region_file[] = PROREFLAX_DEVICE_ROOT "/etc/flash-regions";

enum class call { open, close, region, base, seek, write, short_write, count };

constexpr const char* call_names[] = {"open", "close", "region", "base", "seek", "write", "short"};

int call_counts[static_cast<int>(call::count)];

/// Counts a call; true, with errno set, when it must fail.
bool must_fail(call which) {
  const int calls = ++call_counts[static_cast<int>(which)];
  const char* const failing = std::getenv("PROREFLAX_FLASH_FAIL");
  const char* const name = call_names[static_cast<int>(which)];
  const std::size_t length = std::strlen(name);
  if (failing == nullptr || std::strncmp(failing, name, length) != 0) {
    return false;
  }
  errno = EIO;
  return failing[length] == '\0' ||
         (failing[length] == ':' && std::atoi(failing + length + 1) == calls);
}

struct region {
  unsigned kind = 0;
  unsigned address = 0;
  unsigned size = 0;
};

/// The region file, read line by line.
class region_table {
 public:
  region_table() : file_{std::fopen(region_file, "re")} {}
  ~region_table() {
    if (file_ != nullptr) {
      std::fclose(file_);
    }
  }
  region_table(const region_table&) = delete;
  region_table& operator=(const region_table&) = delete;

  bool find_base(unsigned* base) {
    while (next_line()) {
      if (std::sscanf(line_, "base %x", base) == 1) {
        return true;
      }
    }
    return false;
  }

  bool next(region* found) {
    while (next_line()) {
      if (std::sscanf(line_, "region %u %x %x", &found->kind, &found->address, &found->size) == 3) {
        return true;
      }
    }
    return false;
  }

 private:
  bool next_line() { return file_ != nullptr && std::fgets(line_, sizeof line_, file_) != nullptr; }

  char line_[128] = "";
  std::FILE* file_;
};

bool base_address(unsigned* base) {
  return region_table{}.find_base(base);
}

bool find_region(std::uint32_t kind, region* found) {
  region_table table;
  while (table.next(found)) {
    if (found->kind == kind) {
      return true;
    }
  }
  return false;
}

/// Whether `length` bytes from an offset on are inside one region; `length` may be 0.
bool inside_a_region(std::uint64_t offset, std::uint64_t length) {
  unsigned base = 0;
  region_table table;
  region each;
  if (!base_address(&base)) {
    return false;
  }
  while (table.next(&each)) {
    const std::uint64_t start = std::uint64_t{each.address} - base;
    if (offset >= start && offset - start < each.size && length <= each.size - (offset - start)) {
      return true;
    }
  }
  return false;
}

}  // namespace

int flash_open() {
  std::memset(call_counts, 0, sizeof call_counts);
  constexpr int owner_only = 0600;
  return must_fail(call::open) ? -1
                               : open(flash_device_path, O_RDWR | O_CREAT | O_CLOEXEC, owner_only);
}

int flash_close(int descriptor) {
  const int result = close(descriptor);
  return must_fail(call::close) ? -1 : result;
}

int flash_get_region(int descriptor, flash_region_req* request) {
  region found;
  if (must_fail(call::region) || descriptor < 0 || !find_region(request->kind, &found)) {
    return -1;
  }
  request->address = found.address;
  request->size = found.size;
  return 1;
}

std::uint32_t flash_get_base(int descriptor) {
  unsigned base = 0;
  const bool known = !must_fail(call::base) && descriptor >= 0 && base_address(&base);
  return known ? base : flash_no_base;
}

off_t flash_seek(int descriptor, std::uint32_t offset) {
  if (must_fail(call::seek)) {
    return -1;
  }
  if (!inside_a_region(offset, 0)) {
    errno = EINVAL;
    return -1;
  }
  return lseek(descriptor, static_cast<off_t>(offset), SEEK_SET);
}

ssize_t flash_write(int descriptor, const std::uint8_t* data, std::size_t length) {
  if (must_fail(call::write)) {
    return -1;
  }
  const off_t position = lseek(descriptor, 0, SEEK_CUR);
  if (position < 0 || !inside_a_region(static_cast<std::uint64_t>(position), length)) {
    errno = ENOSPC;
    return -1;
  }
  return write(descriptor, data, must_fail(call::short_write) ? length - 1 : length);
}

}  // namespace proreflax
