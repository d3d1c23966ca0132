#include "tools/cfc/output/output.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace cfc {
namespace {

/// Whether a failed write is worth another try. A descriptor that does not block is waited for.
bool may_write_again(int descriptor) {
  if (errno == EAGAIN) {
    pollfd wanted{descriptor, POLLOUT, 0};
    return poll(&wanted, 1, -1) >= 0 || errno == EINTR;
  }
  return errno == EINTR;
}

/// 0, or the errno of the write that failed.
int write_whole(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(descriptor, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (!may_write_again(descriptor)) {
      return errno;
    }
  }
  return 0;
}

}  // namespace

void output::result(std::string_view line) {
  const int error = write_whole(results_, std::string{line} + '\n');
  if (write_error_ == 0) {
    write_error_ = error;
  }
}

void output::complain(std::string_view line) const {
  // A complaint that cannot be written has nobody to be told.
  write_whole(complaints_, std::string{line} + '\n');
}

void output::progress(std::string_view text) const {
  if (isatty(complaints_) == 1) {
    write_whole(complaints_, "\r\x1b[K" + std::string{text});
  }
}

}  // namespace cfc
