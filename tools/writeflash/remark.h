// One line about what went wrong: the file, a colon and the reason. Empty when all is well.
#ifndef PROREFLAX_TOOLS_WRITEFLASH_REMARK_H
#define PROREFLAX_TOOLS_WRITEFLASH_REMARK_H

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>

namespace proreflax {

class remark {
 public:
  /// Both give false, the result of the operation that failed.
  bool about(const char* path, const char* reason) {
    std::snprintf(text_, sizeof text_, "%s: %s", path, reason);
    return false;
  }
  bool about(const char* path, int error) {
    error_ = error;
    return about(path, error == ENODATA ? "ends too soon" : std::strerror(error));
  }

  const char* text() const { return text_; }

  /// The errno of the system call that failed, 0 if none did.
  int error() const { return error_; }

 private:
  char text_[PATH_MAX + 256] = "";
  int error_ = 0;
};

}  // namespace proreflax

#endif
