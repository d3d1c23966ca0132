// The system calls behind an open file.
#include "tools/writeflash/open_file.h"

#include <sys/file.h>
#include <unistd.h>

namespace proreflax {
namespace {

/// Makes a call until no signal interrupts it; its result.
template <typename Call>
auto uninterrupted(Call call) {
  auto result = call();
  while (result == -1 && errno == EINTR) {
    result = call();
  }
  return result;
}

void close_if_open(int descriptor) {
  if (descriptor != -1) {
    close(descriptor);
  }
}

}  // namespace

open_file::~open_file() {
  close_if_open(descriptor_);
}

bool open_file::open(int folder, const char* name, int flags, remark& why) {
  constexpr mode_t owner_alone = 0600;
  // O_NONBLOCK: a pipe in the place of a file shall not be waited for.
  constexpr int always = O_CLOEXEC | O_NONBLOCK;
  const int opened =
      uninterrupted([&] { return openat(folder, name, flags | always, owner_alone); });
  if (opened == -1) {
    return why.about(path_, errno);
  }
  close_if_open(descriptor_);
  descriptor_ = opened;
  return true;
}

bool open_file::describe(struct stat& about, remark& why) const {
  return fstat(descriptor_, &about) == 0 || why.about(path_, errno);
}

bool open_file::lock(remark& why) const {
  return uninterrupted([&] { return flock(descriptor_, LOCK_EX); }) == 0 || why.about(path_, errno);
}

bool open_file::read_at(std::uint64_t offset, void* bytes, std::size_t count, remark& why) const {
  auto* next = static_cast<unsigned char*>(bytes);
  while (count > 0) {
    const ssize_t got =
        uninterrupted([&] { return pread(descriptor_, next, count, static_cast<off_t>(offset)); });
    if (got <= 0) {
      return why.about(path_, got == 0 ? ENODATA : errno);
    }
    next += got;
    offset += static_cast<std::size_t>(got);
    count -= static_cast<std::size_t>(got);
  }
  return true;
}

bool open_file::write_at(std::uint64_t offset, const void* bytes, std::size_t count,
                         remark& why) const {
  const auto* next = static_cast<const unsigned char*>(bytes);
  while (count > 0) {
    const ssize_t put =
        uninterrupted([&] { return pwrite(descriptor_, next, count, static_cast<off_t>(offset)); });
    if (put <= 0) {
      return why.about(path_, put == 0 ? ENOSPC : errno);
    }
    next += put;
    offset += static_cast<std::size_t>(put);
    count -= static_cast<std::size_t>(put);
  }
  return true;
}

bool open_file::make_empty(remark& why) const {
  return uninterrupted([&] { return ftruncate(descriptor_, 0); }) == 0 || why.about(path_, errno);
}

bool open_file::sync(remark& why) const {
  return uninterrupted([&] { return fsync(descriptor_); }) == 0 || why.about(path_, errno);
}

bool open_file::sync_names(remark& why) const {
  remark trouble;
  return sync(trouble) || trouble.error() == EINVAL || trouble.error() == EROFS ||
         why.about(path_, trouble.error());
}

}  // namespace proreflax
