// Written aside, synced, renamed.
#include "tools/writeflash/replaced_file.h"

#include <unistd.h>

namespace proreflax {

replaced_file::~replaced_file() {
  if (pending_) {
    unlink(part_.text());
  }
}

bool replaced_file::refuses_place(remark& why) const {
  struct stat about {};
  if (lstat(file_.path(), &about) == 0) {
    return !S_ISREG(about.st_mode) && !why.about(file_.path(), "not a regular file");
  }
  return errno != ENOENT && !why.about(file_.path(), errno);
}

bool replaced_file::open(remark& why) {
  if (!part_.fits()) {
    return why.about(file_.path(), ENAMETOOLONG);
  }
  if (refuses_place(why)) {
    return false;
  }
  if (unlink(part_.text()) != 0 && errno != ENOENT) {
    return why.about(file_.path(), errno);
  }
  // O_EXCL: nobody else shall have it open, nor have put a link in its place.
  pending_ = file_.open(AT_FDCWD, part_.text(), O_WRONLY | O_CREAT | O_EXCL, why);
  return pending_;
}

bool replaced_file::finish(remark& why) {
  if (!file_.sync(why)) {
    return false;
  }
  if (std::rename(part_.text(), file_.path()) != 0) {
    return why.about(file_.path(), errno);
  }
  pending_ = false;
  return true;
}

}  // namespace proreflax
