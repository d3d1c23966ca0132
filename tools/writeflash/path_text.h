// A path put together from parts, in a buffer of its own.
#ifndef PROREFLAX_TOOLS_WRITEFLASH_PATH_TEXT_H
#define PROREFLAX_TOOLS_WRITEFLASH_PATH_TEXT_H

#include <climits>
#include <cstdio>

namespace proreflax {

class path_text {
 public:
  path_text(const char* front, const char* middle, const char* back = "")
      : length_{std::snprintf(text_, sizeof text_, "%s%s%s", front, middle, back)} {}

  /// A path that does not fit is cut, and good for messages only.
  bool fits() const { return length_ >= 0 && length_ < PATH_MAX; }

  const char* text() const { return text_; }

 private:
  char text_[PATH_MAX];
  int length_;
};

}  // namespace proreflax

#endif
